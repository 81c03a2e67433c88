// What the viewer steers.
#include "Playback/Session.h"

#include <algorithm>

using namespace std::chrono_literals;

namespace velmora {

namespace {

constexpr double seekEarly = 0.5;     // seconds that a seek may land before its target; never behind it
constexpr double beforeTheEnd = 1.0;  // seconds; a seek to the very end would end the movie
constexpr Clock::Duration longestSeek = 5s;

}  // namespace

bool Session::canControlPlayback() const {
    return phase_.ready() && !handingOverTo_ && airPlay_.deviceName() && isOnAppleTV_;
}

void Session::seek(double seconds) {
    if (!canControlPlayback()) return;
    double target = seconds > 0 ? seconds : 0;  // also for what is no number
    if (duration_ > 0) target = std::min(target, std::max(0.0, duration_ - beforeTheEnd));
    setTimeline(target, duration_);
    setSeeking(true);
    const int number = ++seekGeneration_;
    const QPointer<Session> self(this);
    player_->seek(target, {.before = seekEarly, .after = 0}, [self, number, target](bool) {
        if (!self || self->seekGeneration_ != number) return;
        self->finishSeek();
        self->capturePoster(target);
    });
    watchSeek(number);
    rememberPosition(target);
}

// A seek that is never reported as done must not freeze the timeline.
QCoro::Task<> Session::watchSeek(int number) {
    const QPointer<Session> self(this);
    const Completion<bool> pause = waits_.sleep(longestSeek);
    co_await pause;
    if (self && seekGeneration_ == number && isSeeking_) finishSeek();
}

void Session::finishSeek() {
    setSeeking(false);
    setScrubPreview({});
}

void Session::togglePlayPause() {
    if (!canControlPlayback()) return;
    ++toggles_;
    if (player_->timeControlStatus() == Player::TimeControlStatus::paused)
        player_->play();
    else
        player_->pause();
}

void Session::startOver() {
    const auto* playback = phase_.ready();
    if (playback && canControlPlayback()) {
        memory_.forget(playback->source);
        seek(0);
    } else {
        startLastMovieOver();
        askForAppleTV();
    }
}

bool Session::canStartOver() const {
    return canControlPlayback() || (phase_.isIdle() && lastMovie_ && lastMovie_->position);
}

void Session::playAction() {
    if (phase_.isIdle()) {
        if (!lastMovie_) return;
        const QUrl movie = lastMovie_->source;
        open(movie, false);
        askForAppleTV();
    } else if (phase_.preparing()) {
        askForAppleTV();
    } else if (phase_.ready() && !handingOverTo_) {
        if (!airPlay_.deviceName())
            airPlay_.presentPicker();
        else if (isStalled())
            retryHandover();
        else
            togglePlayPause();
    }
}

bool Session::canPlayAction() const {
    if (phase_.isIdle()) return lastMovie_.has_value();
    if (phase_.preparing()) return !airPlay_.deviceName();
    return phase_.ready() && !handingOverTo_;
}

void Session::askForAppleTV() {
    if (!airPlay_.deviceName() && currentSource()) airPlay_.presentPicker();
}

}  // namespace velmora
