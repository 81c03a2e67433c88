// What a negotiation learns from errors.
#include "Diagnostics/Log.h"
#include "Sender/NegotiatedControl.h"
#include "Sender/PlaybackFailure.h"

#include <utility>

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace velmora {

namespace {

using Kind = ConnectionError::Kind;

struct Note {
    Answers::Step step;
    int status;
};

/// What an error says among the receiver's answers; nothing if no other way would cure it.
std::optional<Note> noteOf(const ConnectionError& error, Answers::Step step, Flavour flavour) {
    using Step = Answers::Step;
    constexpr int unauthorised = 470;
    switch (error.kind) {
        case Kind::status:
            return Note{step, error.status};
        case Kind::closed:
            return Note{step, Answers::closed};
        case Kind::pairing:
            break;
        default:
            return std::nullopt;
    }
    switch (error.pairing.kind) {
        case PairingError::Kind::accessRestricted:
            return Note{Step::showPin, 400};
        case PairingError::Kind::forgotten:
        case PairingError::Kind::pinNeeded:
        case PairingError::Kind::wrongPin:  // of a pairing that asks nobody
            return Note{Step::pairing, unauthorised};
        case PairingError::Kind::unavailable:
            return Note{Step::pairing, 404};
        case PairingError::Kind::malformed:
            return Note{Step::pairing, 400};
        case PairingError::Kind::refused:
            // With a pairing at hand it is trouble of another kind.
            if (flavour == Flavour::paired || flavour == Flavour::legacyPin) return std::nullopt;
            return Note{Step::pairing, unauthorised};
        default:
            return std::nullopt;
    }
}

}  // namespace

/// What the receiver made of an attempt; true if that leaves something else to try.
bool NegotiatedControl::note(const Approach& approach, const ConnectionError& error, Step usualStep) {
    lastError_ = error;
    logger().notice(u"television: %1 %2"_s.arg(PlaybackFailure::refused(error), error.detail));
    if (!error.step && isEncrypted(approach.flavour)) return false;
    const Step step = error.step.value_or(usualStep);
    if (error.kind == Kind::timeout && step == Step::handover)
        answers_.note(approach, step, Answers::timedOut);
    const auto answer = noteOf(error, step, approach.flavour);
    if (!answer) return false;
    const int status = answer->status;
    const bool asksPassword =
        status == 401 && (answer->step == Step::session || answer->step == Step::handover);
    if (asksPassword) {
        forgetPassword();
    } else if ((status == 401 || status == 403 || status == 470) && !noteDistrust(approach)) {
        return false;
    }
    answers_.note(approach, answer->step, status);
    return true;
}

/// False if the receiver distrusts what it was paired with in this very start: pairing further would end the
/// same.
bool NegotiatedControl::noteDistrust(const Approach& approach) {
    constexpr int mostPairings = 2;
    if (pairings_ >= mostPairings) {
        lastError_ = pairingFailure(PairingError{PairingError::Kind::refused});
        return false;
    }
    const bool wasPaired = (approach.flavour == Flavour::paired && credentials_.pairing) ||
                           (approach.flavour == Flavour::legacyPin && credentials_.legacyPairing);
    if (wasPaired) pairingMessage_ = explanation(PairingError{PairingError::Kind::forgotten});
    return true;
}

void NegotiatedControl::forgetPassword() {
    hasFreshPassword_ = false;
    isPasswordRefused_ = !credentials_.password.isEmpty();
    if (!isPasswordRefused_) return;
    credentials_.password.clear();
    keepCredentials();
}

/// A receiver may need a moment to end what was there before, a question of its own included. True: try the
/// same again.
QCoro::Task<bool> NegotiatedControl::waitForRoom(ConnectionError error) {
    const auto self = shared_from_this();
    constexpr int notEnoughBandwidth = 453;
    if (error.status != notEnoughBandwidth || std::exchange(hasWaitedForRoom_, true)) co_return false;
    const Completion<bool> pause = nap_.wait(clock_, 2s);
    co_await pause;
    co_return !closed_;
}

}  // namespace velmora
