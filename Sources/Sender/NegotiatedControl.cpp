#include "Sender/NegotiatedControl.h"

#include "Diagnostics/Log.h"
#include "Sender/Discovery/KnownReceivers.h"
#include "Sender/PlaybackFailure.h"

#include <algorithm>
#include <utility>

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace velmora {

namespace {

using Kind = ConnectionError::Kind;

constexpr int attemptLimit = 24;  // far more than there are ways

QString nameOf(const Approach& approach) {
    return flavourNames.at(static_cast<std::size_t>(approach.flavour)) + u'/' +
           handoverNames.at(static_cast<std::size_t>(approach.handover));
}

/// Whether another way remains after a conversation about a PIN has failed. What else can fail there would
/// fail again.
bool isLessonOfPairing(const ConnectionError& error) {
    using PairingKind = PairingError::Kind;
    if (error.kind != Kind::pairing) return false;
    const PairingKind kind = error.pairing.kind;
    return kind == PairingKind::accessRestricted || kind == PairingKind::unavailable ||
           kind == PairingKind::malformed;
}

}  // namespace

std::shared_ptr<NegotiatedControl> NegotiatedControl::make(Clock& clock, const Receiver& receiver,
                                                           const ReceiverMemory& memory, Factory factory) {
    return std::shared_ptr<NegotiatedControl>(
        new NegotiatedControl(clock, receiver, memory, std::move(factory)));
}

NegotiatedControl::NegotiatedControl(Clock& clock, const Receiver& receiver, const ReceiverMemory& memory,
                                     Factory factory)
    : clock_(clock), receiver_(receiver), memory_(memory), factory_(std::move(factory)) {}

NegotiatedControl::~NegotiatedControl() {
    NegotiatedControl::close();
}

QCoro::Task<VideoControl::Outcome> NegotiatedControl::open() {
    const auto self = shared_from_this();
    if (memory_.known) worked_ = memory_.known->capability(receiver_.identifier);
    if (memory_.credentials) {
        const Completion<Credentials> loaded = memory_.credentials->load(receiver_.identifier);
        loading_ = loaded;
        credentials_ = co_await loaded;
        loading_.reset();
    }
    co_return co_await reach();
}

QCoro::Task<VideoControl::Outcome> NegotiatedControl::reach() {
    const auto self = shared_from_this();
    for (int attempts = 0; attempts < attemptLimit; ++attempts) {
        if (closed_) co_return std::unexpected(ConnectionError());
        const Course course = decide();
        if (course.approaches.isEmpty()) {
            lastError_.explanation = course.explanation;
            break;
        }
        if (course.needsPassword && !hasFreshPassword_) {
            const Outcome asked = co_await askPassword();
            if (!asked) co_return asked;
            continue;
        }
        const auto approach = course.needsPin ? std::nullopt : provable(course);
        const Approach next = approach.value_or(course.approaches.first());
        logger().notice(u"television: trying "_s + nameOf(next));
        Outcome outcome;
        if (approach)
            outcome = co_await attempt(next);
        else
            outcome = co_await pair(next);
        if (closed_) co_return std::unexpected(ConnectionError());
        if (outcome && approach) co_return outcome;
        if (outcome) continue;
        const bool isRoomLater = co_await waitForRoom(outcome.error());
        if (isRoomLater) continue;
        const bool goesOn = note(next, outcome.error(), Step::session);
        if (!goesOn || (!approach && !isLessonOfPairing(outcome.error()))) break;
    }
    co_return std::unexpected(lastError_);
}

Course NegotiatedControl::decide() const {
    const bool hasPairing = credentials_.pairing || credentials_.legacyPairing;
    return Course::decide(receiver_, {hasPairing, !credentials_.password.isEmpty()}, answers_, worked_);
}

/// The first way that nobody has to be asked for: the pairing at hand may be for another one.
std::optional<Approach> NegotiatedControl::provable(const Course& course) const {
    const auto place = std::ranges::find_if(course.approaches, [this](const Approach& approach) {
        if (approach.flavour == Flavour::paired) return credentials_.pairing.has_value();
        return approach.flavour != Flavour::legacyPin || credentials_.legacyPairing;
    });
    return place == course.approaches.end() ? std::nullopt : std::optional(*place);
}

QCoro::Task<VideoControl::Outcome> NegotiatedControl::attempt(Approach approach) {
    const auto self = shared_from_this();
    access_ = Access::make(clock_, receiver_, approach.flavour, credentials_);
    const auto control = factory_(approach, access_);
    control_ = control;
    approach_ = approach;
    control->onEvent([weak = weak_from_this()](const PlaybackEvent& event) {
        if (const auto alive = weak.lock()) alive->deliver(event);
    });
    control->onHold([weak = weak_from_this()] {
        if (const auto alive = weak.lock()) alive->holdChanged();
    });
    watchForWaking();
    const Outcome outcome = co_await control->open();
    setHold({});
    if (!outcome && !closed_) retire();
    co_return outcome;
}

/// An encrypted session wants to be told that it is over; a plain one has begun nothing yet.
void NegotiatedControl::retire() {
    const auto control = std::exchange(control_, nullptr);
    if (!control) return;
    if (isEncrypted(approach_.flavour)) control->abandon();
    control->close();
}

QCoro::Task<VideoControl::Outcome> NegotiatedControl::play(Movie movie) {
    const auto self = shared_from_this();
    if (const auto silent = std::exchange(silent_, nullptr)) {
        co_await silent->stop();
        silent->close();
    }
    for (;;) {
        if (!control_) {
            const Outcome reached = co_await reach();
            if (!reached) co_return reached;
        }
        if (closed_) co_return std::unexpected(ConnectionError());
        const auto control = control_;
        const Outcome outcome = co_await control->play(movie);
        if (closed_) co_return std::unexpected(ConnectionError());
        if (outcome) {
            hasAccepted_ = true;
            answers_.note(approach_, Step::handover, 200);
            if (std::exchange(hasFreshPassword_, false)) keepCredentials();
            co_return outcome;
        }
        if (hasAccepted_) co_return outcome;
        const bool isRoomLater = co_await waitForRoom(outcome.error());
        if (!isRoomLater) {
            if (!note(approach_, outcome.error(), Step::handover)) co_return outcome;
            const Course course = decide();
            lastError_.explanation = course.explanation;
            if (course.approaches.isEmpty()) co_return std::unexpected(lastError_);
        }
        retire();
    }
}

bool NegotiatedControl::tryAnotherWay() {
    // Only encrypted receivers answer kindly to what they ignore; elsewhere it is a firewall.
    if (closed_ || !hasAccepted_ || !isEncrypted(approach_.flavour)) return false;
    answers_.noteSilence(approach_);
    const Course course = decide();
    const bool isAsEasy = !course.approaches.isEmpty() && !course.needsPin &&
                          course.approaches.first().flavour == approach_.flavour;
    if (!isAsEasy) return false;
    logger().notice(u"television: took the movie and ignores it"_s);
    hasAccepted_ = false;
    silent_ = std::exchange(control_, nullptr);
    return true;
}

void NegotiatedControl::noteFetched() {
    answers_.noteFetched();
    if (control_) control_->noteFetched();
    if (!memory_.known || std::exchange(isRemembered_, true)) return;
    memory_.known->remember(receiver_, Capability{versionOf(receiver_), approach_});
}

QHostAddress NegotiatedControl::localAddress() const {
    return control_ ? control_->localAddress() : QHostAddress();
}

QHostAddress NegotiatedControl::peerAddress() const {
    return control_ ? control_->peerAddress() : QHostAddress();
}

QCoro::Task<VideoControl::Outcome> NegotiatedControl::setRate(double rate) {
    const auto control = control_;
    if (!control) co_return std::unexpected(ConnectionError());
    co_return co_await control->setRate(rate);
}

QCoro::Task<VideoControl::Outcome> NegotiatedControl::seek(double seconds) {
    const auto control = control_;
    if (!control) co_return std::unexpected(ConnectionError());
    co_return co_await control->seek(seconds);
}

QCoro::Task<VideoControl::Reported> NegotiatedControl::playbackInfo() {
    const auto control = control_;
    if (!control) co_return std::unexpected(ConnectionError());
    co_return co_await control->playbackInfo();
}

QCoro::Task<VideoControl::Outcome> NegotiatedControl::stop() {
    const auto control = control_;
    if (!control) co_return std::unexpected(ConnectionError());
    co_return co_await control->stop();
}

void NegotiatedControl::close() {
    closed_ = true;
    onEvent({});
    onHold({});
    waking_.cancel();
    nap_.end();
    if (loading_) loading_->complete({});
    if (silent_) silent_->close();
    if (pairing_) pairing_->close();
    if (access_) access_->close();
    if (control_) control_->close();
    hold_.reset();
    if (const auto supplied = std::exchange(supplied_, std::nullopt)) supplied->complete({});
}

void NegotiatedControl::abandon() {
    if (silent_) silent_->abandon();
    if (control_) control_->abandon();
    close();
}

}  // namespace velmora
