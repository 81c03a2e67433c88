// What the session hears of its player.
#include "Diagnostics/Log.h"
#include "Playback/Session.h"
#include "Playback/SessionText.h"

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace velmora {

namespace {

constexpr Clock::Duration tickInterval = 500ms;
constexpr int ticksPerPosition = 10;  // every 5 s
constexpr int ticksPerPoster = 120;   // every minute
constexpr double blackOpening = 5;    // seconds in which no picture is worth keeping

}  // namespace

void Session::observePlayer() {
    detachObservers();
    Player* const player = player_.get();
    playerObservers_ = {
        connect(player, &Player::externalPlaybackActiveChanged, this, &Session::noteExternalPlayback),
        connect(player, &Player::timeControlStatusChanged, this, &Session::noteTimeControlStatus),
    };
    timeObserver_ = player->observeTime(tickInterval, [this](std::optional<double> time) { tick(time); });
    // A player that was handed over has changed before anybody listened, and one that was not taken by the
    // device has nothing to change.
    noteExternalPlayback();
    updateIsPlaying();
}

void Session::detachObservers() {
    for (const auto* observers : {&playerObservers_, &itemObservers_})
        for (const QMetaObject::Connection& observer : *observers) disconnect(observer);
    playerObservers_.clear();
    itemObservers_.clear();
    timeObserver_ = {};
}

void Session::noteExternalPlayback() {
    const bool isActive = player_->isExternalPlaybackActive();
    logger().notice(u"externalPlayback "_s + SessionText::truth(isActive));
    if (isActive) {
        setOnAppleTV(true);
        return;
    }
    recoverExternalPlayback();
    pauseIfStalled();
    noteLastingDrop();
}

void Session::noteTimeControlStatus() {
    updateIsPlaying();
    if (isPlaying_) return;
    const std::optional<double> time = player_->currentTime();
    rememberPosition(time);
    if (time && *time > blackOpening) capturePoster(time);
}

void Session::updateIsPlaying() {
    const bool isPlaying = player_->timeControlStatus() != Player::TimeControlStatus::paused;
    sleepGuard_.setActive(isPlaying);
    if (std::exchange(isPlaying_, isPlaying) != isPlaying) Q_EMIT playingChanged();
}

void Session::tick(std::optional<double> time) {
    const auto item = player_->currentItem();
    const std::optional<double> length = item ? item->duration() : std::nullopt;
    setTimeline(time && !isSeeking_ ? *time : currentTime_, length.value_or(duration_));
    ++ticks_;
    if (ticks_ % ticksPerPosition == 0) rememberPosition(time);
    if (ticks_ % ticksPerPoster == 0 && isPlaying_ && time && *time > blackOpening) capturePoster(time);
}

}  // namespace velmora
