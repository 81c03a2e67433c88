#pragma once

#include "Sender/Session/MediaRemote/RemotePlayer.h"
#include "Sender/Session/SessionEvent.h"
#include "System/Clock.h"

#include <optional>

namespace velmora {

/// What is known about a receiver's player that tells of its changes and cannot be polled. Between two of
/// them the position goes on by the clock.
class PlayerState {
  public:
    using Instant = Clock::Instant;

    /// Another movie was handed over. `start`: seconds, where the receiver is known to begin; `duration`:
    /// seconds, 0 when unknown.
    void begin(const QString& uuid, double start, double duration);

    void take(const SessionEvent& event, Instant now);
    void take(const RemotePlayer::Sample& sample, Instant now);

    /// Playing, paused, or loading behind the beginning.
    [[nodiscard]] bool isUnderWay() const { return phase_ == Phase::running || phase_ == Phase::standing; }
    [[nodiscard]] bool isOver() const { return phase_ == Phase::over; }
    [[nodiscard]] PlaybackReport report(Instant now) const;

  private:
    enum class Phase { loading, running, standing, over };

    [[nodiscard]] double position(Instant now) const;
    void move(double position, Instant now);
    void enter(Phase phase, std::optional<double> rate, Instant now);

    QString uuid_;
    Phase phase_ = Phase::loading;
    double position_ = 0;
    Instant positionAt_{};
    double duration_ = 0;
    std::optional<double> rate_;
};

}  // namespace velmora
