#include "Sender/Dialer.h"

#include <QHostInfo>

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace velmora {

std::shared_ptr<Dialer> Dialer::make(Clock& clock, Receiver receiver) {
    return std::shared_ptr<Dialer>(new Dialer(clock, std::move(receiver)));
}

QCoro::Task<Dialer::Dialed> Dialer::dial(std::optional<quint16> port) {
    const auto self = shared_from_this();
    const QList<QHostAddress> candidates = co_await addresses();
    ConnectionError error{.kind = ConnectionError::Kind::unreachable, .detail = u"no such host"_s};
    for (const QHostAddress& address : candidates) {
        if (closed_) break;
        dialing_ = std::make_unique<TcpChannel>(clock_);
        const TcpChannel::Opened opened = dialing_->open(address, port.value_or(receiver_.port), deadline());
        const std::expected<void, ConnectionError> outcome = co_await opened;
        if (closed_) break;
        if (outcome) {
            chosen_ = address;
            co_return Dialed{std::move(dialing_), {}};
        }
        error = outcome.error();
    }
    co_return Dialed{nullptr, closed_ ? ConnectionError() : error};
}

void Dialer::close() {
    closed_ = true;
    dialing_.reset();
    if (lookup_) lookup_->complete({});
}

QByteArray Dialer::hostHeader() const {
    const QString text = chosen_.toString().section(u'%', 0, 0);
    const bool isIPv6 = chosen_.protocol() == QAbstractSocket::IPv6Protocol;
    return (isIPv6 ? u"[%1]:%2"_s : u"%1:%2"_s).arg(text).arg(receiver_.port).toLatin1();
}

QCoro::Task<QList<QHostAddress>> Dialer::addresses() {
    if (!chosen_.isNull()) co_return QList<QHostAddress>(1, chosen_);
    QList<QHostAddress> known = receiver_.addresses;
    known.removeAll(receiver_.address);
    if (!receiver_.address.isNull()) known.prepend(receiver_.address);
    if (!known.isEmpty() || receiver_.host.isEmpty()) co_return known;

    const Completion<QList<QHostAddress>> lookup;
    lookup_ = lookup;
    constexpr Clock::Duration lookupDeadline = 5s;
    const Clock::Timer timer = clock_.after(lookupDeadline, [lookup] { lookup.complete({}); });
    QHostInfo::lookupHost(receiver_.host, QCoreApplication::instance(), [lookup](const QHostInfo& info) {
        lookup.complete(Addresses::inOrder(info.addresses(), true));
    });
    co_return co_await lookup;
}

Clock::Duration Dialer::deadline() const {
    // An Apple TV that sleeps needs fifteen to twenty seconds before it accepts the connection that woke it.
    const bool mayBeAsleep = receiver_.model.startsWith("AppleTV"_L1);
    return mayBeAsleep ? 25s : 5s;
}

}  // namespace velmora
