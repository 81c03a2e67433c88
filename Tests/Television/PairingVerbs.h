#pragma once

#include "Television/Context.h"
#include "Television/Pairing/HapReceiver.h"
#include "Television/Pairing/LegacyReceiver.h"

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

    /// Whether a right PIN is refused once more.
    [[nodiscard]] bool doubtPin();

  private:
    Context& context_;
    HapMessages::Identity identity_;
    int wrongPins_ = 0;
    Clock::Instant pausedUntil_{};
    int doubted_ = 0;
};

/// The requests by which a sender comes to be trusted, on one connection.
class PairingVerbs {
  public:
    PairingVerbs(Context& context, Pairings& pairings) : context_(context), pairings_(pairings) {}

    [[nodiscard]] static bool takes(const Request& request);
    [[nodiscard]] Response answer(const Request& request);

    /// Whether the sender has proved an old pairing, where there is no encryption.
    [[nodiscard]] bool isVerified() const { return legacyVerify_ && legacyVerify_->isVerified(); }
    /// Once, what the connection's keys come from, when the answer at hand was the last plain one.
    [[nodiscard]] std::optional<Secret> takeShared() { return std::exchange(shared_, std::nullopt); }

  private:
    [[nodiscard]] Response startPin(const Request& request);
    [[nodiscard]] Response setUp(const Request& request);
    [[nodiscard]] Response setUpTransient(const QByteArray& body);
    [[nodiscard]] Response setUpPin(const QByteArray& body);
    [[nodiscard]] Response verify(const Request& request);
    [[nodiscard]] Response exchangeKeys(const QByteArray& key);
    [[nodiscard]] Response setUpLegacyPin(const Request& request);
    [[nodiscard]] Response verifyLegacy(const QByteArray& body);
    [[nodiscard]] bool isTransientAttempt(const QByteArray& body) const;
    [[nodiscard]] bool wantsPin() const;
    void beginSetup();
    [[nodiscard]] Response wrongPin();
    [[nodiscard]] Response blame(const QString& reason);

    Context& context_;
    Pairings& pairings_;
    bool pinShown_ = false;
    std::optional<HapSetupReceiver> setup_;
    std::optional<HapVerifyReceiver> verify_;
    std::optional<LegacySetupReceiver> legacySetup_;
    std::optional<LegacyVerifyReceiver> legacyVerify_;
    std::optional<Secret> shared_;
};

}  // namespace velmora::test
