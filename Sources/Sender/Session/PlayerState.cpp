#include "Sender/Session/PlayerState.h"

#include <algorithm>

namespace velmora {

void PlayerState::begin(const QString& uuid, double start, double duration) {
    *this = PlayerState();
    uuid_ = uuid;
    position_ = start;
    duration_ = duration;
}

void PlayerState::take(const SessionEvent& event, Instant now) {
    using State = PlaybackEvent::State;
    if (phase_ == Phase::over) return;
    if (event.duration.value_or(0) > 0) duration_ = *event.duration;
    if (event.position) move(*event.position, now);
    if (event.event.state == State::stopped) {
        enter(Phase::over, 0, now);
    } else if (event.event.state == State::loading) {
        // In the middle of a movie it fills its buffer; one receiver calls a pause so.
        if (isUnderWay()) enter(Phase::standing, event.rate, now);
    } else if (event.event.state == State::paused || (event.rate == 0.0 && (event.isReady || isUnderWay()))) {
        enter(Phase::standing, 0, now);
    } else if (event.event.state == State::playing || event.rate.value_or(0) > 0) {
        enter(Phase::running, 1, now);
    }
}

void PlayerState::take(const RemotePlayer::Sample& sample, Instant now) {
    if (phase_ == Phase::over) return;
    move(sample.position + sample.age * sample.rate, now);
    if (sample.rate > 0) {
        enter(Phase::running, 1, now);
    } else if (isUnderWay()) {
        enter(Phase::standing, 0, now);
    }
}

PlaybackReport PlayerState::report(Instant now) const {
    if (!isUnderWay()) return {};
    return {.isReady = true, .position = position(now), .duration = duration_, .rate = rate_, .uuid = uuid_};
}

double PlayerState::position(Instant now) const {
    const std::chrono::duration<double> since = now - positionAt_;
    const double reached = position_ + (phase_ == Phase::running ? since.count() : 0);
    return duration_ > 0 ? std::min(reached, duration_) : reached;
}

void PlayerState::move(double position, Instant now) {
    position_ = position;
    positionAt_ = now;
}

void PlayerState::enter(Phase phase, std::optional<double> rate, Instant now) {
    if (phase != phase_) move(position(now), now);
    phase_ = phase;
    rate_ = rate;
}

}  // namespace velmora
