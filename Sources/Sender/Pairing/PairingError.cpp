#include "Sender/Pairing/PairingError.h"

#include <array>

namespace velmora {

namespace {

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
    struct Unit {
        std::chrono::seconds length;
        QString name;
    };
    const std::array units{Unit{std::chrono::hours(1), QStringLiteral("hour")},
                           Unit{std::chrono::minutes(1), QStringLiteral("minute")},
                           Unit{std::chrono::seconds(1), QStringLiteral("second")}};
    for (const auto& [length, name] : units) {
        if (duration < 2 * length && length.count() > 1) continue;
        const auto count = (duration + length - std::chrono::seconds(1)) / length;
        return QStringLiteral("%1 %2%3").arg(count).arg(name, count == 1 ? QString() : QStringLiteral("s"));
    }
    return {};
}

QString waitText(std::chrono::seconds wait) {
    if (wait <= std::chrono::seconds::zero())
        return QStringLiteral("The television wants a pause before the next try. Wait a few minutes.");
    return QStringLiteral("The television wants a pause before the next try. Wait %1, then try again.")
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
            return QStringLiteral(
                "That was not the code the television expected. Try again with the code it shows then.");
        case Kind::wait:
            return waitText(error.wait);
        case Kind::tooManyTries:
            return QStringLiteral(
                "The television has seen too many wrong codes. Restart it, then try again.");
        case Kind::tooManyPeers:
            return QStringLiteral(
                "The television cannot remember any more devices. Remove one in its AirPlay settings, then "
                "try "
                "again.");
        case Kind::accessRestricted:
            return QStringLiteral(
                "The television lets only members of its home play. In its AirPlay settings, under \"Allow "
                "Access\", choose \"Everyone\" or \"Anyone on the Same Network\".");
        case Kind::busy:
            return QStringLiteral("The television is busy with another device. Stop that, then try again.");
        case Kind::unavailable:
            return QStringLiteral(
                "The television does not take new devices now. Close what is open in its AirPlay settings, "
                "then "
                "try again.");
        case Kind::pinNeeded:
            return QStringLiteral("The television wants a code before it plays.");
        case Kind::forgotten:
            return QStringLiteral(
                "The television does not know this computer any more. Pair it again with a new code.");
        case Kind::untrusted:
            return QStringLiteral(
                "The television could not prove that it is the one you paired. If you reset or replaced it, "
                "forget it here and pair again.");
        case Kind::malformed:
            return QStringLiteral(
                "The television answered in a way that makes no sense. Restart it, then try again.");
        case Kind::refused:
            return QStringLiteral(
                "The television refused to pair and gave no reason. Try once more; if that does not help, "
                "restart it.");
    }
    return {};
}

}  // namespace velmora
