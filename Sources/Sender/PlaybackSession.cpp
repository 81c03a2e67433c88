#include "Sender/PlaybackSession.h"

#include "Diagnostics/Log.h"
#include "Sender/PlaybackFailure.h"

#include <algorithm>
#include <cmath>

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace velmora {

namespace {

constexpr Clock::Duration stopPatience = 5s;  // one receiver blocks for seconds until its player has stopped
constexpr int missedPollsThatDrop = 2;

QString nameOf(RemotePlayback::Phase phase) {
    static constexpr const char* names[] = {
        "idle",   "connecting", "waking",  "needs a PIN", "needs a password", "loading", "playing",
        "paused", "ended",      "stopped", "taken over",  "dropped",          "failed"};
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

void PlaybackSession::chooseTracks(const TrackChoice& tracks) {
    item_.tracks = tracks;
    nap_.end();
}

void PlaybackSession::stop() {
    if (!goesOn()) return;
    // What waits for the user may wait for ever.
    if (!owesStop_ || control_->hold()) {
        if (std::exchange(owesStop_, false)) control_->abandon();
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
    return withHold(state);
}

PlaybackSession::State PlaybackSession::withHold(State state) const {
    using Kind = VideoControl::Hold::Kind;
    const bool mayWait = state.phase == Phase::connecting || state.phase == Phase::loading;
    const auto hold = control_ && mayWait ? control_->hold() : std::nullopt;
    if (!hold) return state;
    state.phase = hold->kind == Kind::pin        ? Phase::needsPin
                  : hold->kind == Kind::password ? Phase::needsPassword
                                                 : Phase::waking;
    state.reason = hold->message;
    const std::chrono::duration<double> pause = hold->notBefore - clock_.now();
    state.retryIn = std::max(0.0, pause.count());
    return state;
}

void PlaybackSession::supply(const QString& secret) {
    if (goesOn() && control_) control_->supply(secret);
}

std::shared_ptr<PlaybackSession> PlaybackSession::again() const {
    RemotePlayback::Item item = item_;
    item.startPosition = state().position;
    auto session = std::make_shared<PlaybackSession>(clock_, world_, receiver_, item);
    session->isPatient_ = true;
    const bool isPaused = watch_ && watch_->phase() == Phase::paused;
    if (isPaused || (isReloading_ && wantedRate_ == 0.0)) session->wantedRate_ = 0;
    return session;
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

std::shared_ptr<VideoControl> PlaybackSession::giveWay(const Receiver& next) {
    changed_ = {};
    if (!isAt(next) || !goesOn() || !watch_ || !control_->isOpen()) {
        stop();
        return nullptr;
    }
    finish(Phase::stopped);
    owesStop_ = false;
    return std::exchange(control_, nullptr);
}

bool PlaybackSession::isAt(const Receiver& receiver) const {
    return receiver.address == receiver_.address && receiver.host == receiver_.host &&
           receiver.port == receiver_.port;
}

void PlaybackSession::listen() {
    control_->onHold([weak = weak_from_this()] {
        const auto self = weak.lock();
        if (self && self->goesOn()) self->enter(self->state_.phase);
    });
    control_->onEvent([weak = weak_from_this()](const PlaybackEvent& event) {
        const auto self = weak.lock();
        if (!self || !self->watch_ || self->isOver_) return;
        self->watch_->hear(event, self->clock_.now());
        self->nap_.end();
    });
}

bool PlaybackSession::hasWishes() const {
    const bool wantsTracks = item_.tracks != offeredTracks_;
    return watch_->phase() != Phase::loading && (wantsTracks || wantedSeek_ || wantedRate_);
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
            return finish(Phase::takenOver, PlaybackFailure::takenOver());
        case Advice::dropped:
            if (!isLoading || isReloading_) return finish(Phase::dropped, PlaybackFailure::dropped());
            return finish(Phase::failed, PlaybackFailure::refused({}));
        default:
            break;
    }
    const MediaServer::Activity activity = publication_ ? publication_->activity() : MediaServer::Activity();
    finish(Phase::failed,
           PlaybackFailure::noPicture(activity, world_.mediaPort, watch_->fault(), watch_->hasGivenUp()));
}

void PlaybackSession::finish(Phase phase, const QString& reason) {
    if (isOver_) return;
    state_.position = state().position;
    state_.duration = state().duration;
    state_.reason = reason;
    isOver_ = true;
    stopDeadline_.cancel();
    nap_.end();
    enter(phase);
}

void PlaybackSession::enter(Phase phase) {
    state_.phase = phase;
    const State now = state();
    if (now.phase != told_.phase || now.reason != told_.reason) {
        const QString why = now.reason.isEmpty() ? QString() : u": "_s + now.reason;
        logger().notice(u"television %1: %2%3"_s.arg(receiver_.name, nameOf(now.phase), why));
    }
    tellChanges();
}

void PlaybackSession::tellChanges() {
    const State now = state();
    const std::chrono::duration<double> since = clock_.now() - toldAt_;
    const double reached = told_.position + (told_.phase == Phase::playing ? since.count() : 0);
    const double foreseen = told_.duration > 0 ? std::min(reached, told_.duration) : reached;
    const bool isSame = now.phase == told_.phase && now.duration == told_.duration &&
                        now.reason == told_.reason && std::abs(now.position - foreseen) < 1;
    if (isSame) return;
    told_ = now;
    toldAt_ = clock_.now();
    if (changed_) changed_();
}

}  // namespace velmora
