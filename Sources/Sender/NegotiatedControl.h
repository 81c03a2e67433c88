#pragma once

#include "Sender/Access.h"
#include "Sender/CredentialStore.h"
#include "Sender/PinPairing.h"
#include "Sender/VideoControl.h"

#include <functional>
#include <memory>
#include <optional>

namespace velmora {

/// One receiver, by whatever way in it takes: tries them in the order of `Course`, asks the user for PIN and
/// password, and remembers what worked. What it hands its verbs to is one of the other controls.
///
/// Once the receiver has taken a movie there is no other way any more, since it could play twice; only where
/// it turns out never to have asked for the movie, `tryAnotherWay` may find one.
class NegotiatedControl : public VideoControl, public std::enable_shared_from_this<NegotiatedControl> {
  public:
    /// An encrypted control's errors tell their step; without one the receiver may have taken the movie.
    using Factory = std::function<std::shared_ptr<VideoControl>(const Approach&, std::shared_ptr<Access>)>;

    [[nodiscard]] static std::shared_ptr<NegotiatedControl> make(Clock& clock, const Receiver& receiver,
                                                                 const ReceiverMemory& memory,
                                                                 Factory factory);
    ~NegotiatedControl() override;

    [[nodiscard]] QCoro::Task<Outcome> open() override;
    [[nodiscard]] bool isOpen() const override { return control_ && control_->isOpen(); }
    [[nodiscard]] QHostAddress localAddress() const override;
    [[nodiscard]] QHostAddress peerAddress() const override;
    [[nodiscard]] QCoro::Task<Outcome> play(Movie movie) override;
    [[nodiscard]] bool tryAnotherWay() override;
    void noteFetched() override;
    [[nodiscard]] QCoro::Task<Outcome> setRate(double rate) override;
    [[nodiscard]] QCoro::Task<Outcome> seek(double seconds) override;
    [[nodiscard]] QCoro::Task<Reported> playbackInfo() override;
    [[nodiscard]] QCoro::Task<Outcome> stop() override;
    void close() override;
    void abandon() override;
    [[nodiscard]] std::optional<Hold> hold() const override;
    void supply(const QString& secret) override;

  private:
    using Step = Answers::Step;
    /// What came of asking the user.
    struct Supplied {
        enum class Kind { given, lost, closed };
        Kind kind = Kind::closed;
        QString secret{};
    };

    NegotiatedControl(Clock& clock, const Receiver& receiver, const ReceiverMemory& memory, Factory factory);

    [[nodiscard]] QCoro::Task<Outcome> reach();
    [[nodiscard]] QCoro::Task<Outcome> attempt(Approach approach);
    [[nodiscard]] QCoro::Task<Outcome> askPassword();
    [[nodiscard]] QCoro::Task<Outcome> pair(Approach approach);
    [[nodiscard]] QCoro::Task<PinPairing::Paired> converse(QString message);
    [[nodiscard]] QCoro::Task<bool> sitOut(PairingError pause);
    [[nodiscard]] Completion<Supplied> ask(const Hold& hold);

    [[nodiscard]] Course decide() const;
    [[nodiscard]] std::optional<Approach> provable(const Course& course) const;
    [[nodiscard]] bool note(const Approach& approach, const ConnectionError& error, Step usualStep);
    [[nodiscard]] bool noteDistrust(const Approach& approach);
    void forgetPassword();
    [[nodiscard]] QCoro::Task<bool> waitForRoom(ConnectionError error);
    void takePairing(const PinPairing::Paired& paired);
    void keepCredentials();
    void retire();
    void watchForWaking();
    void setHold(const std::optional<Hold>& hold);

    Clock& clock_;
    Receiver receiver_;
    ReceiverMemory memory_;
    Factory factory_;

    Credentials credentials_;
    std::optional<Completion<Credentials>> loading_;
    std::optional<Capability> worked_;
    Answers answers_;
    ConnectionError lastError_{.kind = ConnectionError::Kind::unreachable};

    std::shared_ptr<VideoControl> control_;
    std::shared_ptr<VideoControl> silent_;  // took the movie and never asked for it
    std::shared_ptr<Access> access_;
    Approach approach_;  // of control_
    bool hasAccepted_ = false;
    bool isRemembered_ = false;

    std::shared_ptr<PinPairing> pairing_;
    QString pairingMessage_;  // why a PIN is wanted again
    int pairings_ = 0;
    bool hasFreshPassword_ = false;  // typed, and not refused yet
    bool isPasswordRefused_ = false;
    bool hasWaitedForRoom_ = false;

    std::optional<Hold> hold_;
    std::optional<Completion<Supplied>> supplied_;
    Clock::Timer waking_;
    Nap nap_;
    bool closed_ = false;
};

}  // namespace velmora
