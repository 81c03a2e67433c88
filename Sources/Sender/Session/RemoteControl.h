#pragma once

#include "Sender/Session/DataStream.h"
#include "Sender/Session/EncryptedSession.h"
#include "Sender/Session/MediaRemote/RemotePlayer.h"

#include <functional>
#include <memory>

namespace velmora {

/// A second session with an Apple TV, which carries no media. While it is there, the box brings its player
/// to the screen; and it takes pause and seek, tells of positions, and can be woken by it. Main thread only.
class RemoteControl : public std::enable_shared_from_this<RemoteControl> {
  public:
    using Outcome = VideoControl::Outcome;

    [[nodiscard]] static std::shared_ptr<RemoteControl> make(Clock& clock, SessionRoad road);
    ~RemoteControl();

    /// Success means that it is there. Whether it also takes commands, `canCommand` tells.
    [[nodiscard]] QCoro::Task<Outcome> open();
    /// False: the receiver could not even be reached, or did not trust us.
    [[nodiscard]] bool wasReached() const { return session_->wasLinked(); }
    [[nodiscard]] bool isPresent() const { return session_->isOpen(); }
    [[nodiscard]] bool canCommand() const { return isPresent() && stream_ && stream_->isOpen(); }

    [[nodiscard]] bool isAsleep() const { return canCommand() && devices_ == 0; }
    /// Returns when it has been awake for a while, or does not wake up.
    [[nodiscard]] QCoro::Task<> wake();

    /// `position`: seconds, with `seek`.
    [[nodiscard]] QCoro::Task<Outcome> command(MediaRemote::Command command, std::optional<double> position);

    /// From now on the movie of this length is ours.
    void expect(double duration) { player_.expect(duration); }
    [[nodiscard]] const std::optional<RemotePlayer::Sample>& sample() const { return player_.sample(); }

    /// As `close`, but waits for the receiver's word.
    [[nodiscard]] QCoro::Task<> tearDown();
    /// As those of its session.
    void close();
    void abandon();

    /// Both are called from the event loop. Our movie's position or rate changed.
    void onSample(std::function<void(const RemotePlayer::Sample&)> handler) {
        sampleHandler_ = std::move(handler);
    }
    /// It ended by itself.
    void onEnded(std::function<void(const ConnectionError&)> handler) {
        session_->onEnded(std::move(handler));
    }

  private:
    RemoteControl(Clock& clock, SessionRoad road);

    [[nodiscard]] QCoro::Task<bool> openStream();
    [[nodiscard]] QCoro::Task<bool> shakeHands();
    void take(const remote::Envelope& message);
    void scheduleHeartbeat();

    Clock& clock_;
    SessionRoad road_;
    std::shared_ptr<EncryptedSession> session_;
    std::shared_ptr<DataStream> stream_;
    RemotePlayer player_;
    std::optional<quint32> devices_;  // 0: asleep
    Clock::Timer heartbeat_;
    Nap nap_;
    bool isDialing_ = false;
    bool closed_ = false;
    std::function<void(const RemotePlayer::Sample&)> sampleHandler_;
};

}  // namespace velmora
