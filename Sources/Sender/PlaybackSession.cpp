#include "Sender/PlaybackSession.h"

#include "Diagnostics/Log.h"
#include "Sender/PlaybackFailure.h"

#include <QUuid>

#include <algorithm>
#include <cmath>

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace velmora {

namespace {

constexpr Clock::Duration stopPatience = 5s;  // one receiver blocks for seconds until its player has stopped
constexpr int missedPollsThatDrop = 2;

// One receiver ends itself over an identifier that has not exactly 36 characters.
QString newIdentifier() {
    return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
}

QString nameOf(RemotePlayback::Phase phase) {
    static constexpr const char* names[] = {"idle",  "connecting", "loading", "playing", "paused",
                                            "ended", "stopped",    "dropped", "failed"};
    return QString::fromLatin1(names[static_cast<int>(phase)]);
}

}  // namespace

PlaybackSession::PlaybackSession(Clock& clock, const RemotePlayback::World& world, Receiver receiver,
                                 RemotePlayback::Item item)
    : clock_(clock), world_(world), receiver_(std::move(receiver)), item_(std::move(item)) {
    item_.startPosition = within(item_.startPosition);
}

void PlaybackSession::start(const std::shared_ptr<PlaybackSession>& previous, std::function<void()> changed) {
    changed_ = std::move(changed);
    run(previous);
}

void PlaybackSession::pause() {
    wantedRate_ = 0;
    nap_.end();
}

void PlaybackSession::resume() {
    wantedRate_ = 1;
    nap_.end();
}

void PlaybackSession::seek(double seconds) {
    if (isOver_) return;
    wantedSeek_ = within(seconds);
    nap_.end();
    tellChanges();
}

void PlaybackSession::stop() {
    if (!goesOn()) return;
    if (!owesStop_) {
        if (control_) control_->close();
        return finish(Phase::stopped);
    }
    wantsStop_ = true;
    stopDeadline_ = clock_.after(stopPatience, [weak = weak_from_this()] {
        const auto self = weak.lock();
        if (!self || self->isOver_) return;
        self->control_->abandon();
        self->finish(Phase::stopped);
    });
    nap_.end();
}

RemotePlayback::State PlaybackSession::state() const {
    if (isOver_) return state_;
    State state = state_;
    state.duration = watch_ ? watch_->duration() : item_.duration;
    const double reached = watch_ ? watch_->position(clock_.now()) : item_.startPosition;
    state.position = wantedSeek_ ? *wantedSeek_ : seekUnderWay_.value_or(reached);
    return state;
}

void PlaybackSession::abandon() {
    changed_ = {};
    isOver_ = true;
    stopDeadline_.cancel();
    nap_.end();
    publication_.reset();
    if (control_ && owesStop_) control_->abandon();
    if (control_) control_->close();
    owesStop_ = false;
    left_.complete(true);
    if (const auto previous = previous_.lock()) previous->abandon();
}

QCoro::Task<> PlaybackSession::run(std::shared_ptr<PlaybackSession> previous) {
    const auto self = shared_from_this();
    const bool isReached = co_await reach(std::move(previous));
    const bool hasBegun = isReached && co_await begin();
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
        if (previous->receiver_.address == receiver_.address) co_await left;
        previous.reset();
        if (!goesOn()) co_return false;
    }
    if (!control_ || !control_->isOpen()) {
        control_ = world_.control(receiver_);
        const VideoControl::Outcome outcome = co_await control_->open();
        if (isOver_) co_return false;
        if (!outcome) finish(Phase::failed, PlaybackFailure::unreachable(receiver_, outcome.error()));
    }
    listen();
    co_return goesOn();
}

QCoro::Task<bool> PlaybackSession::begin() {
    if (!Addresses::carriesMedia(control_->localAddress())) {
        finish(Phase::failed, PlaybackFailure::unusableAddress());
        co_return false;
    }
    auto published = world_.publish(item_.file, control_->peerAddress());
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
        finish(Phase::failed, PlaybackFailure::refused(outcome.error()));
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
    if (const auto seek = std::exchange(wantedSeek_, std::nullopt)) {
        co_await seekTo(*seek);
    } else if (const auto rate = std::exchange(wantedRate_, std::nullopt)) {
        co_await setRate(*rate);
    }
    if (!isOver_) enter(watch_->phase());
}

QCoro::Task<> PlaybackSession::poll() {
    const VideoControl::Reported report = co_await control_->playbackInfo();
    if (isOver_) co_return;
    if (!report) {
        noteError(report.error());
        co_return;
    }
    missedPolls_ = 0;
    const Advice advice = watch_->report(*report, isFetched(), clock_.now());
    enter(watch_->phase());
    if (PlaybackWatch::isVerdict(advice)) {
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
}

std::shared_ptr<VideoControl> PlaybackSession::giveWay(const Receiver& next) {
    changed_ = {};
    const bool isSame = next.address == receiver_.address && next.port == receiver_.port;
    if (!isSame || !goesOn() || !watch_ || !control_->isOpen()) {
        stop();
        return nullptr;
    }
    finish(Phase::stopped);
    owesStop_ = false;
    return std::exchange(control_, nullptr);
}

void PlaybackSession::listen() {
    control_->onEvent([weak = weak_from_this()](const PlaybackEvent& event) {
        const auto self = weak.lock();
        if (!self || !self->watch_ || self->isOver_) return;
        self->watch_->hear(event, self->clock_.now());
        self->nap_.end();
    });
}

bool PlaybackSession::hasWishes() const {
    return watch_->phase() != Phase::loading && (wantedSeek_ || wantedRate_);
}

bool PlaybackSession::isFetched() const {
    return publication_ && publication_->activity().mediaRequests > 0;
}

// Not to the very end: that would be the end.
double PlaybackSession::within(double seconds) const {
    const double duration = watch_ ? watch_->duration() : item_.duration;
    const double wanted = std::isfinite(seconds) ? std::max(0.0, seconds) : 0.0;
    return duration > 0 ? std::min(wanted, std::max(0.0, duration - 1)) : wanted;
}

void PlaybackSession::noteError(const ConnectionError& error) {
    using Kind = ConnectionError::Kind;
    if (error.hasStatus(401) || error.hasStatus(403) || error.hasStatus(470))
        return finish(Phase::failed, PlaybackFailure::refused(error));
    if (error.kind == Kind::status) return;  // a verb that it does not know, or not now
    const bool mayRecover = error.kind == Kind::timeout || error.kind == Kind::malformed;
    if (mayRecover && ++missedPolls_ < missedPollsThatDrop && control_->isOpen()) return;
    conclude(watch_->lost(clock_.now()));
}

void PlaybackSession::conclude(Advice verdict) {
    const bool isLoading = watch_->phase() == Phase::loading;
    // Whatever plays there now is not ours to stop.
    if (verdict == Advice::stopped || verdict == Advice::replaced || verdict == Advice::dropped)
        owesStop_ = false;
    switch (verdict) {
        case Advice::ended:
            return finish(Phase::ended);
        case Advice::stopped:
            return finish(Phase::stopped, PlaybackFailure::stoppedThere());
        case Advice::replaced:
            return finish(Phase::stopped, PlaybackFailure::replacedThere());
        case Advice::dropped:
            if (!isLoading) return finish(Phase::dropped, PlaybackFailure::dropped());
            return finish(Phase::failed, PlaybackFailure::refused({}));
        default:
            break;
    }
    const MediaServer::Activity activity = publication_ ? publication_->activity() : MediaServer::Activity();
    finish(Phase::failed, PlaybackFailure::noPicture(activity, world_.mediaPort, watch_->fault()));
}

void PlaybackSession::finish(Phase phase, const QString& reason) {
    if (isOver_) return;
    state_ = state();
    state_.reason = reason;
    isOver_ = true;
    stopDeadline_.cancel();
    nap_.end();
    enter(phase);
}

void PlaybackSession::enter(Phase phase) {
    if (std::exchange(state_.phase, phase) != phase) {
        const QString why = state_.reason.isEmpty() ? QString() : u": "_s + state_.reason;
        logger().notice(u"television %1: %2%3"_s.arg(receiver_.name, nameOf(phase), why));
    }
    tellChanges();
}

void PlaybackSession::tellChanges() {
    const State now = state();
    const std::chrono::duration<double> since = clock_.now() - toldAt_;
    const double foreseen = told_.position + (told_.phase == Phase::playing ? since.count() : 0);
    const bool isSame = now.phase == told_.phase && now.duration == told_.duration &&
                        now.reason == told_.reason && std::abs(now.position - foreseen) < 1;
    if (isSame) return;
    told_ = now;
    toldAt_ = clock_.now();
    if (changed_) changed_();
}

}  // namespace velmora
