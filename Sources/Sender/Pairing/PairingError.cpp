#include "Sender/Pairing/PairingError.h"

#include <QCoreApplication>

namespace velmora {

namespace {

/// The texts of this file, for translators.
struct Texts {
    Q_DECLARE_TR_FUNCTIONS(Pairing)
};

using Kind = PairingError::Kind;

/// 401, 403 and 470 all say "not you, not like this"; receivers choose among them freely.
Kind meaningOfDenial(PairingStage stage) {
    switch (stage) {
        case PairingStage::pinStart:
        case PairingStage::setupStart:
            return Kind::accessRestricted;
        case PairingStage::transient:
            return Kind::pinNeeded;
        case PairingStage::setupProof:
            return Kind::wrongPin;
        case PairingStage::setupIdentity:
            return Kind::refused;
        case PairingStage::verify:
            return Kind::forgotten;
    }
    return Kind::refused;
}

/// "45 seconds", "12 minutes", "3 hours": never shorter than the time itself.
QString inWords(std::chrono::seconds duration) {
    const auto count = [duration](std::chrono::seconds unit) {
        return static_cast<int>((duration + unit - std::chrono::seconds(1)) / unit);
    };
    constexpr std::chrono::seconds hour = std::chrono::hours(1);
    constexpr std::chrono::seconds minute = std::chrono::minutes(1);
    if (duration >= 2 * hour) return Texts::tr("%n hours", nullptr, count(hour));
    if (duration >= 2 * minute) return Texts::tr("%n minutes", nullptr, count(minute));
    if (duration > std::chrono::seconds(1))
        return Texts::tr("%n seconds", nullptr, count(std::chrono::seconds(1)));
    return Texts::tr("1 second");
}

QString waitText(std::chrono::seconds wait) {
    if (wait <= std::chrono::seconds::zero())
        return Texts::tr("The television wants a pause before the next try. Wait a few minutes.");
    return Texts::tr("The television wants a pause before the next try. Wait %1, then try again.")
        .arg(inWords(wait));
}

}  // namespace

std::optional<PairingError> pairingErrorFromStatus(int status, PairingStage stage) {
    if (status >= 200 && status < 300) return std::nullopt;
    // Some Apple TVs announce the PIN with "not enough bandwidth" and show it nevertheless.
    if (stage == PairingStage::pinStart && status == 453) return std::nullopt;
    switch (status) {
        case 400:
            return PairingError{stage == PairingStage::pinStart ? Kind::accessRestricted : Kind::malformed};
        case 401:
        case 403:
        case 470:
            return PairingError{meaningOfDenial(stage)};
        case 409:
        case 453:
        case 503:
            return PairingError{Kind::busy};
        case 404:
        case 501:
            return PairingError{Kind::unavailable};
        default:
            return PairingError{Kind::refused};
    }
}

QString explanation(const PairingError& error) {
    switch (error.kind) {
        case Kind::wrongPin:
            return Texts::tr(
                "That was not the code the television expected. Try again with the code it shows then.");
        case Kind::wait:
            return waitText(error.wait);
        case Kind::tooManyTries:
            return Texts::tr("The television has seen too many wrong codes. Restart it, then try again.");
        case Kind::tooManyPeers:
            return Texts::tr(
                "The television cannot remember any more devices. Remove one in its AirPlay settings, then "
                "try again.");
        case Kind::accessRestricted:
            return Texts::tr(
                "The television lets only members of its home play. In its AirPlay settings, under \"Allow "
                "Access\", choose \"Everyone\" or \"Anyone on the Same Network\".");
        case Kind::busy:
            return Texts::tr("The television is busy with another device. Stop that, then try again.");
        case Kind::unavailable:
            return Texts::tr(
                "The television does not take new devices now. Close what is open in its AirPlay settings, "
                "then try again.");
        case Kind::pinNeeded:
            return Texts::tr("The television wants a code before it plays.");
        case Kind::forgotten:
            return Texts::tr(
                "The television does not know this computer any more. Pair it again with a new code.");
        case Kind::untrusted:
            return Texts::tr(
                "The television could not prove that it is the one you paired. If you reset or replaced it, "
                "forget it here and pair again.");
        case Kind::malformed:
            return Texts::tr(
                "The television answered in a way that makes no sense. Restart it, then try again.");
        case Kind::refused:
            return Texts::tr(
                "The television refused to pair and gave no reason. Try once more; if that does not help, "
                "restart it.");
    }
    return {};
}

}  // namespace velmora
