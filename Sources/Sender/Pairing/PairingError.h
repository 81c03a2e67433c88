#pragma once

#include <QString>

#include <chrono>
#include <expected>
#include <optional>

namespace velmora {

/// Why pairing, or proving an old pairing, did not work. Nothing here is worth an automatic retry: every
/// failed try can lengthen the receiver's next pause.
struct PairingError {
    enum class Kind {
        wrongPin,
        wait,              ///< the receiver wants no try for `wait`
        tooManyTries,      ///< until the receiver restarts
        tooManyPeers,      ///< the receiver can remember no more senders
        accessRestricted,  ///< only members of a home may play
        busy,
        unavailable,  ///< takes no pairings now
        pinNeeded,    ///< does not pair without a PIN
        forgotten,    ///< the receiver does not know this sender any more: forget it too and pair again
        untrusted,    ///< the receiver could not prove that it is the one that was paired, or knows the PIN
        malformed,    ///< an answer out of order or against the rules
        refused,      ///< without a reason
    };

    Kind kind = Kind::refused;
    std::chrono::seconds wait{};  ///< for `Kind::wait`; zero when the receiver does not say how long

    bool operator==(const PairingError&) const = default;
};

template <typename T>
using PairingResult = std::expected<T, PairingError>;

/// Which request a status or an error belongs to; the same code means different things.
enum class PairingStage {
    pinStart,       ///< asking for a PIN on the screen
    setupStart,     ///< the first message of a pair-setup with PIN
    transient,      ///< any message of a pair-setup without PIN
    setupProof,     ///< the message with the PIN's proof
    setupIdentity,  ///< the exchange of keys after it
    verify,         ///< any message of a pair-verify
};

/// What an HTTP status other than success means; nothing if the conversation can go on.
[[nodiscard]] std::optional<PairingError> pairingErrorFromStatus(int status, PairingStage stage);

/// What to tell the user: what happened, and what to do next. Complete sentences.
[[nodiscard]] QString explanation(const PairingError& error);

}  // namespace velmora
