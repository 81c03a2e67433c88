#include "Sender/Discovery/Discovery.h"

#include "Diagnostics/Log.h"
#include "Sender/Discovery/AvahiBrowser.h"
#include "Sender/Discovery/Naming.h"

#include <QCoreApplication>
#include <QHostInfo>
#include <QPointer>

#include <algorithm>
#include <optional>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace velmora {

namespace {

/// The texts of this file, for translators.
struct Texts {
    Q_DECLARE_TR_FUNCTIONS(Televisions)
};

/// A receiver comes as a dozen messages: each interface, protocol and address by itself.
constexpr auto settlingTime = 150ms;
constexpr auto lookInterval = 50ms;

using Result = std::expected<Receiver, QString>;

/// A name's look-up under way. Destroying it abandons the answer.
class HostLookup {
  public:
    explicit HostLookup(const QString& host)
        : id_(QHostInfo::lookupHost(host, &context_,
                                    [this](const QHostInfo& info) { answer_ = info.addresses(); })) {}
    ~HostLookup() { QHostInfo::abortHostLookup(id_); }
    HostLookup(const HostLookup&) = delete;
    HostLookup& operator=(const HostLookup&) = delete;

    [[nodiscard]] const std::optional<QList<QHostAddress>>& answer() const { return answer_; }

  private:
    QObject context_;
    std::optional<QList<QHostAddress>> answer_;
    int id_;
};

QCoro::Task<Result> lookUp(Clock& clock, Receiver receiver, Clock::Duration deadline) {
    const HostLookup lookup(receiver.host);
    const Clock::Instant end = clock.now() + deadline;
    while (!lookup.answer() && clock.now() < end) co_await clock.sleep(lookInterval);
    receiver.addresses = Addresses::inOrder(lookup.answer().value_or(QList<QHostAddress>()), true);
    if (receiver.addresses.isEmpty())
        co_return std::unexpected(
            Texts::tr("There is no computer or television named “%1” on the network.").arg(receiver.host));
    receiver.address = receiver.addresses.first();
    co_return receiver;
}

std::optional<Receiver> withIdentifier(const QList<Receiver>& receivers, const QString& identifier) {
    for (const Receiver& receiver : receivers)
        if (receiver.identifier == identifier) return receiver;
    return std::nullopt;
}

/// Those of the name; the one of the identifier alone, if there is one.
QList<Receiver> named(const QList<Receiver>& receivers, const QString& text) {
    if (const auto exact = withIdentifier(receivers, text)) return {*exact};
    QList<Receiver> matching;
    for (const Receiver& receiver : receivers)
        if (Naming::isCalled(receiver, text)) matching.append(receiver);
    return matching;
}

Result onlyOne(const QList<Receiver>& matching, const QString& text, const QString& reason) {
    if (matching.size() == 1) return matching.first();
    if (!matching.isEmpty())
        return std::unexpected(
            Texts::tr("Several televisions are named “%1”. Say which by its address.").arg(text));
    const QString failure = Texts::tr("No television named “%1” was found.").arg(text);
    return std::unexpected(reason.isEmpty() ? failure : failure + u' ' + reason);
}

}  // namespace

class Discovery::Private {
  public:
    Private(Clock& clock, QString busAddress) : browser(clock, std::move(busAddress)) {}

    [[nodiscard]] QList<Receiver> seen() const { return receiversFrom(browser.sightings()); }

    AvahiBrowser browser;
    std::optional<Clock::Timer> settling;
};

Discovery::Discovery(Clock& clock, QString busAddress, QObject* parent)
    : QObject(parent), clock_(clock), d_(std::make_unique<Private>(clock, std::move(busAddress))) {
    connect(&d_->browser, &AvahiBrowser::changed, this, &Discovery::publishSoon);
}

Discovery::~Discovery() = default;

void Discovery::start() {
    d_->browser.start();
}

void Discovery::publishSoon() {
    // The first change sets the time: a network that never rests must not keep the list back.
    if (!d_->settling) d_->settling = clock_.after(settlingTime, [this] { publish(); });
}

void Discovery::publish() {
    d_->settling.reset();
    const QList<Receiver> receivers = d_->seen();
    const bool receiversDiffer = receivers != receivers_;
    const bool reasonDiffers = d_->browser.reason() != reason_;
    receivers_ = receivers;
    reason_ = d_->browser.reason();
    if (reasonDiffers && !reason_.isEmpty()) logger().notice(reason_);
    const QPointer<Discovery> alive = this;
    if (reasonDiffers) Q_EMIT unavailableReasonChanged();
    if (alive && receiversDiffer) Q_EMIT receiversChanged();
}

QCoro::Task<Result> Discovery::resolve(Receiver receiver, Clock::Duration deadline) {
    if (!receiver.host.isEmpty()) co_return co_await lookUp(clock_, receiver, deadline);
    if (receiver.isTyped()) co_return receiver;

    Clock& clock = clock_;
    const Clock::Instant end = clock.now() + deadline;
    const QPointer<Discovery> alive = this;
    while (alive) {
        const auto current = withIdentifier(d_->seen(), receiver.identifier);
        if (current) co_return *current;
        if (clock.now() >= end || !d_->browser.reason().isEmpty()) break;
        co_await clock.sleep(lookInterval);
    }
    // It may answer where it was last, even if nobody announces it now.
    if (!receiver.address.isNull()) co_return receiver;
    co_return std::unexpected(Texts::tr("%1 was not found on the network.").arg(receiver.name));
}

QCoro::Task<Result> Discovery::find(QString nameOrIdentifier, Clock::Duration deadline) {
    Clock& clock = clock_;
    const Clock::Instant end = clock.now() + deadline;
    const QPointer<Discovery> alive = this;
    QList<Receiver> matching;
    QString reason;
    while (alive && matching.isEmpty()) {
        matching = named(d_->seen(), nameOrIdentifier);
        reason = d_->browser.reason();
        if (clock.now() >= end || !reason.isEmpty()) break;
        if (matching.isEmpty()) co_await clock.sleep(lookInterval);
    }
    co_return onlyOne(matching, nameOrIdentifier, reason);
}

}  // namespace velmora
