// What a negotiation waits for: the user, a receiver that wants a pause, one that gets up.
#include "Sender/NegotiatedControl.h"
#include "Sender/PlaybackFailure.h"

#include <QCoreApplication>

#include <utility>

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace velmora {

namespace {

using Kind = PairingError::Kind;

constexpr Clock::Duration wakingAfter = 3s;
/// A receiver that wants a longer pause is left alone.
constexpr std::chrono::seconds longestPause = 5min;
/// How often a PIN is shown anew because the receiver hung up before any was typed.
constexpr int mostRenewals = 2;

/// Receivers break off now and then although the PIN was right, and hang up on users who take their time.
bool isWorthAnother(const ConnectionError& error) {
    if (error.step != Answers::Step::pairing) return false;
    return error.kind == ConnectionError::Kind::closed || error.kind == ConnectionError::Kind::timeout ||
           (error.kind == ConnectionError::Kind::pairing && error.pairing.kind == Kind::refused);
}

}  // namespace

QCoro::Task<VideoControl::Outcome> NegotiatedControl::askPassword() {
    const auto self = shared_from_this();
    const QString why = isPasswordRefused_ ? PlaybackFailure::wrongPassword() : QString();
    const Completion<Supplied> asked = ask({.kind = Hold::Kind::password, .message = why});
    const Supplied supplied = co_await asked;
    if (closed_) co_return std::unexpected(ConnectionError());
    credentials_.password = supplied.secret;
    hasFreshPassword_ = true;
    co_return Outcome();
}

/// Until there is a pairing, or no more hope for one. A wrong PIN is asked for again.
QCoro::Task<VideoControl::Outcome> NegotiatedControl::pair(Approach approach) {
    const auto self = shared_from_this();
    QString message = pairingMessage_;
    bool isFirstPin = true;
    for (int losses = 0;;) {
        pairing_ = PinPairing::make(clock_, receiver_, approach.flavour);
        const PinPairing::Paired paired = co_await converse(message);
        pairing_->close();
        if (closed_) co_return std::unexpected(ConnectionError());
        if (paired.isDone()) {
            takePairing(paired);
            answers_.note(approach, Step::pairing, 200);
            co_return Outcome();
        }
        const ConnectionError& error = paired.error;
        const bool isPairingError = error.kind == ConnectionError::Kind::pairing;
        if (isPairingError && error.pairing.kind == Kind::wait && error.pairing.wait > 0s &&
            error.pairing.wait <= longestPause) {
            const bool isOver = co_await sitOut(error.pairing);
            if (!isOver) co_return std::unexpected(ConnectionError());
        } else if (isPairingError && error.pairing.kind == Kind::wrongPin) {
            // Right codes are refused now and then: the user is not blamed for the first one.
            const bool isFirst = std::exchange(isFirstPin, false);
            message = isFirst ? PlaybackFailure::pinNotTaken() : explanation(error.pairing);
        } else if (isWorthAnother(error) && losses++ < mostRenewals) {
            message = PlaybackFailure::newPin();
        } else {
            co_return std::unexpected(error);
        }
    }
}

/// One PIN, from its showing to the receiver's verdict.
QCoro::Task<PinPairing::Paired> NegotiatedControl::converse(QString message) {
    const auto self = shared_from_this();
    const auto pairing = pairing_;
    watchForWaking();
    const Outcome started = co_await pairing->start();
    setHold({});
    if (!started) co_return PinPairing::Paired{.error = started.error()};
    const Completion<Supplied> asked = ask({.kind = Hold::Kind::pin, .message = message});
    pairing->onLost([asked] { asked.complete({.kind = Supplied::Kind::lost}); });
    const Supplied supplied = co_await asked;
    if (supplied.kind != Supplied::Kind::given) {
        supplied_.reset();
        setHold({});
        const ConnectionError lost{.kind = ConnectionError::Kind::closed, .step = Step::pairing};
        co_return PinPairing::Paired{.error = lost};
    }
    co_return co_await pairing->finish(supplied.secret);
}

/// The pause that the receiver wants, in front of the user. False: closed meanwhile.
QCoro::Task<bool> NegotiatedControl::sitOut(PairingError pause) {
    const auto self = shared_from_this();
    setHold(
        Hold{.kind = Hold::Kind::pin, .message = explanation(pause), .notBefore = clock_.now() + pause.wait});
    const Completion<bool> over = nap_.wait(clock_, pause.wait);
    co_await over;
    setHold({});
    co_return !closed_;
}

Completion<NegotiatedControl::Supplied> NegotiatedControl::ask(const Hold& hold) {
    const Completion<Supplied> asked;
    supplied_ = asked;
    setHold(hold);
    return asked;
}

void NegotiatedControl::supply(const QString& secret) {
    const auto supplied = std::exchange(supplied_, std::nullopt);
    if (!supplied) return;
    setHold({});
    supplied->complete({Supplied::Kind::given, secret});
}

void NegotiatedControl::takePairing(const PinPairing::Paired& paired) {
    ++pairings_;
    pairingMessage_.clear();
    if (paired.pairing) credentials_.pairing = paired.pairing;
    if (paired.legacyPairing) credentials_.legacyPairing = paired.legacyPairing;
    keepCredentials();
}

void NegotiatedControl::keepCredentials() {
    if (!memory_.credentials) return;
    Credentials proven = credentials_;
    if (hasFreshPassword_) proven.password.clear();
    memory_.credentials->save(receiver_.identifier, proven);
}

std::optional<VideoControl::Hold> NegotiatedControl::hold() const {
    if (hold_) return hold_;
    return control_ ? control_->hold() : std::nullopt;
}

void NegotiatedControl::watchForWaking() {
    waking_ = clock_.after(wakingAfter, [this] { setHold(Hold{.kind = Hold::Kind::waking}); });
}

void NegotiatedControl::setHold(const std::optional<Hold>& hold) {
    waking_.cancel();
    if (std::exchange(hold_, hold) == hold || closed_) return;
    // Not from inside: whoever listens may be the one who called.
    QMetaObject::invokeMethod(
        QCoreApplication::instance(),
        [weak = weak_from_this()] {
            if (const auto self = weak.lock(); self && !self->closed_) self->holdChanged();
        },
        Qt::QueuedConnection);
}

}  // namespace velmora
