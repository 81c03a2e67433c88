#pragma once

#include "Sender/Credentials.h"
#include "Sender/Dialer.h"
#include "Sender/Discovery/Flavour.h"
#include "Sender/PairingMessenger.h"
#include "Sender/VideoControl.h"

#include <functional>
#include <memory>
#include <optional>

namespace velmora {

/// One try to pair with the PIN on a receiver's screen: a conversation that stays open while the user types.
/// Main thread only.
class PinPairing : public std::enable_shared_from_this<PinPairing> {
  public:
    /// One of the two pairings, or the error.
    struct Paired {
        std::optional<HapCredentials> pairing{};
        std::optional<LegacyCredentials> legacyPairing{};
        ConnectionError error{};

        [[nodiscard]] bool isDone() const { return pairing || legacyPairing; }
    };

    /// `flavour`: `paired` or `legacyPin`.
    [[nodiscard]] static std::shared_ptr<PinPairing> make(Clock& clock, const Receiver& receiver,
                                                          Flavour flavour);

    /// Has the receiver show a PIN. Once.
    [[nodiscard]] QCoro::Task<VideoControl::Outcome> start();
    /// With the PIN. Once, after `start`.
    [[nodiscard]] QCoro::Task<Paired> finish(QString pin);

    /// Called at most once, from the event loop, if the receiver hangs up after `start`: the PIN that it
    /// shows, if it still does, is of no more use.
    void onLost(std::function<void()> handler) { lost_ = std::move(handler); }
    /// Ends a wait with `closed`.
    void close();

  private:
    PinPairing(Clock& clock, const Receiver& receiver, Flavour flavour);

    [[nodiscard]] QCoro::Task<VideoControl::Outcome> startEncrypted();
    [[nodiscard]] QCoro::Task<Paired> finishEncrypted(QString pin);
    [[nodiscard]] QCoro::Task<Paired> finishLegacy(QString pin);

    Clock& clock_;
    Receiver receiver_;
    Flavour flavour_;
    HapIdentity identity_;
    HapPinSetup setup_;
    LegacyPinSetup legacySetup_;
    std::shared_ptr<Dialer> dialer_;
    std::shared_ptr<PairingMessenger> messenger_;
    std::function<void()> lost_;
    bool closed_ = false;
};

}  // namespace velmora
