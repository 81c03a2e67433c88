// What happens in a session, in its order.
#include "Diagnostics/Log.h"
#include "Sender/PlaybackFailure.h"
#include "Sender/PlaybackSession.h"

#include <QUuid>

#include <algorithm>
#include <cmath>

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace velmora {

namespace {

constexpr Clock::Duration longestReattaching = 60s;

bool mayComeBack(const ConnectionError& error) {
    using Kind = ConnectionError::Kind;
    return error.kind == Kind::refused || error.kind == Kind::unreachable || error.kind == Kind::timeout ||
           error.kind == Kind::closed;
}

// One receiver ends itself over an identifier that has not exactly 36 characters.
QString newIdentifier() {
    return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
}

}  // namespace

QCoro::Task<> PlaybackSession::run(std::shared_ptr<PlaybackSession> previous) {
    const auto self = shared_from_this();
    const bool isReached = co_await reach(std::move(previous));
    bool hasBegun = false;
    if (isReached) hasBegun = co_await begin();
    if (hasBegun) co_await watchUntilOver();
    co_await leave();
    if (!isOver_) finish(Phase::stopped);
    left_.complete(true);
}

QCoro::Task<bool> PlaybackSession::reach(std::shared_ptr<PlaybackSession> previous) {
    if (previous) {
        previous_ = previous;
        control_ = previous->giveWay(receiver_);
        replacesOurs_ = owesStop_ = control_ != nullptr;
        const Completion<bool> left = previous->left_;
        // Its stop must not reach the receiver behind our play.
        if (previous->isAt(receiver_)) co_await left;
        previous.reset();
        if (!goesOn()) co_return false;
    }
    if (!control_ || !control_->isOpen()) {
        const VideoControl::Outcome outcome = co_await connect();
        if (isOver_) co_return false;
        if (!outcome) finish(Phase::failed, PlaybackFailure::unreachable(receiver_, outcome.error()));
    } else {
        listen();
    }
    co_return goesOn();
}

QCoro::Task<VideoControl::Outcome> PlaybackSession::connect() {
    constexpr Clock::Duration longestPause = 4s;  // whoever restarts a television waits for it to play again
    const Clock::Instant givesUpAt = clock_.now() + (isPatient_ ? longestReattaching : 0s);
    for (Clock::Duration pause = 500ms;; pause = std::min(pause * 2, longestPause)) {
        control_ = world_.control(receiver_);
        listen();
        const VideoControl::Outcome outcome = co_await control_->open();
        if (outcome || isOver_ || !mayComeBack(outcome.error()) || clock_.now() + pause >= givesUpAt)
            co_return outcome;
        control_->close();
        const Completion<bool> rest = nap_.wait(clock_, pause);
        co_await rest;
        if (!goesOn()) co_return outcome;
    }
}

QCoro::Task<bool> PlaybackSession::begin() {
    if (!Addresses::carriesMedia(control_->localAddress())) {
        finish(Phase::failed, PlaybackFailure::unusableAddress());
        co_return false;
    }
    offeredTracks_ = item_.tracks;
    auto published = world_.publish(item_.file, control_->peerAddress(), offeredTracks_);
    if (!published) {
        finish(Phase::failed, published.error());
        co_return false;
    }
    publication_ = *std::move(published);
    enter(Phase::loading);
    co_return co_await sendPlay();
}

QCoro::Task<bool> PlaybackSession::sendPlay() {
    if (const auto seek = std::exchange(wantedSeek_, std::nullopt)) item_.startPosition = *seek;
    const QString uuid = newIdentifier();
    const VideoControl::Movie movie{.url = publication_->url(control_->localAddress()),
                                    .start = item_.startPosition,
                                    .duration = item_.duration,
                                    .uuid = uuid};
    owesStop_ = true;
    const VideoControl::Outcome outcome = co_await control_->play(movie);
    if (!goesOn()) co_return false;
    if (!outcome) {
        const bool isLost = isReloading_ && mayComeBack(outcome.error());
        if (isLost) owesStop_ = false;
        finish(isLost ? Phase::dropped : Phase::failed,
               isLost ? PlaybackFailure::dropped() : PlaybackFailure::refused(outcome.error()));
        co_return false;
    }
    if (watch_) {
        watch_->startedAgain(uuid, item_.startPosition, clock_.now());
    } else {
        const PlaybackWatch::Movie watched{item_.duration, item_.startPosition, uuid, replacesOurs_};
        watch_.emplace(watched, clock_.now());
    }
    co_await setRate(1);
    co_return goesOn();
}

QCoro::Task<> PlaybackSession::watchUntilOver() {
    while (goesOn()) {
        if (hasWishes()) {
            co_await obey();
        } else {
            co_await poll();
            if (!goesOn() || hasWishes()) continue;
            const Completion<bool> pause = nap_.wait(clock_, watch_->pollInterval(clock_.now()));
            co_await pause;
        }
    }
}

QCoro::Task<> PlaybackSession::obey() {
    if (item_.tracks != offeredTracks_) {
        co_await reload();
    } else if (const auto seek = std::exchange(wantedSeek_, std::nullopt)) {
        co_await seekTo(*seek);
    } else if (const auto rate = std::exchange(wantedRate_, std::nullopt)) {
        co_await setRate(*rate);
    }
    if (goesOn()) enter(watch_->phase());
}

// As a new movie on the same connection, which receivers know how to take. Only the session knows that it is
// the old one.
QCoro::Task<> PlaybackSession::reload() {
    offeredTracks_ = item_.tracks;
    auto published = world_.publish(item_.file, control_->peerAddress(), offeredTracks_);
    if (!published) {
        finish(Phase::failed, published.error());
        co_return;
    }
    if (!(*published)->hasChosenTracks()) co_return;
    const State now = state();
    logger().notice(u"television: other tracks, loading again at %1 s"_s.arg(std::round(now.position)));
    if (!wantedRate_ && watch_->phase() == Phase::paused) wantedRate_ = 0;
    wantedSeek_.reset();
    item_.startPosition = now.position;
    item_.duration = now.duration;
    replaced_ = std::exchange(publication_, *std::move(published));
    replacesOurs_ = isReloading_ = true;
    watch_.reset();
    enter(Phase::loading);
    co_await sendPlay();
}

QCoro::Task<> PlaybackSession::poll() {
    const VideoControl::Reported report = co_await control_->playbackInfo();
    if (isOver_) co_return;
    if (!report) {
        noteError(report.error());
        co_return;
    }
    missedPolls_ = 0;
    if (isFetched() && !std::exchange(isFetchNoted_, true)) control_->noteFetched();
    const Advice advice = watch_->report(*report, isFetched(), clock_.now());
    enter(watch_->phase());
    if (watch_->phase() != Phase::loading) {
        isReloading_ = false;
        replaced_.reset();
    }
    if (advice == Advice::failed && !isFetched() && !watch_->fault() && control_->tryAnotherWay()) {
        watch_.reset();
        co_await sendPlay();
    } else if (PlaybackWatch::isVerdict(advice)) {
        conclude(advice);
    } else if (goesOn()) {
        co_await follow(advice);
    }
}

QCoro::Task<> PlaybackSession::follow(Advice advice) {
    if (advice == Advice::correctStart) {
        logger().notice(u"television: start position ignored, seeking"_s);
        co_await seekTo(item_.startPosition);
    } else if (advice == Advice::repeatRate) {
        co_await setRate(1);
    } else if (advice == Advice::nudge) {
        co_await seekTo(watch_->position(clock_.now()));
    } else if (advice == Advice::playAgain) {
        logger().notice(u"television: loaded and never moved, starting again"_s);
        co_await sendPlay();
    }
}

QCoro::Task<> PlaybackSession::seekTo(double seconds) {
    seekUnderWay_ = seconds;
    const VideoControl::Outcome outcome = co_await control_->seek(seconds);
    if (isOver_) co_return;
    seekUnderWay_.reset();
    if (outcome) watch_->sought(seconds, clock_.now());
    if (!outcome) noteError(outcome.error());
}

QCoro::Task<> PlaybackSession::setRate(double rate) {
    const VideoControl::Outcome outcome = co_await control_->setRate(rate);
    if (isOver_) co_return;
    if (outcome) watch_->rateSet(rate, clock_.now());
    if (!outcome) noteError(outcome.error());
}

QCoro::Task<> PlaybackSession::leave() {
    if (control_ && std::exchange(owesStop_, false)) co_await control_->stop();
    if (control_) control_->close();
    // After a drop the television may go on from what it still fetches.
    if (state_.phase != Phase::dropped) publication_.reset();
    replaced_.reset();
}

}  // namespace velmora
