#pragma once

#include "Sender/Pairing/HapMessages.h"
#include "Television/Context.h"

#include <optional>

namespace velmora::test {

/// What a television keeps of pairings: its own identity, the sender that it knows, and how many wrong PINs
/// there were.
class Pairings {
  public:
    explicit Pairings(Context& context);

    [[nodiscard]] const HapMessages::Identity& identity() const { return identity_; }

    std::optional<HapMessages::Peer> sender{};
    std::optional<QByteArray> legacySender{};
    void forget();

    /// For every wrong PIN the next pause is longer.
    void countWrongPin();
    /// How long no PIN is taken now; nothing: not before it is switched off and on again.
    [[nodiscard]] std::optional<std::chrono::seconds> pause() const;

    /// Whether a misbehaviour that comes a number of times is due once more.
    [[nodiscard]] bool strikes(Misbehaviour misbehaviour);

  private:
    Context& context_;
    HapMessages::Identity identity_;
    int wrongPins_ = 0;
    Clock::Instant pausedUntil_{};
    QMap<Misbehaviour, int> struck_;
};

}  // namespace velmora::test
