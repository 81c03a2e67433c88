#include "Platform/Linux/RemoteOutput.h"

#include "Diagnostics/Log.h"

#include <QPointer>

#include <cmath>
#include <utility>

namespace velmora {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Phase = RemotePlayback::Phase;
using State = RemotePlayback::State;

namespace {

// Between one attempt to hand a movie over and the next lie two seconds, and the time that the next player
// takes to load the file.
constexpr Clock::Duration lingerTime = 10s;

// Past what RemotePlayback itself allows a television for its answer.
constexpr Clock::Duration stopPatience = 8s;

// Who joins a movie that has begun meanwhile is not taken back to its start.
constexpr double joinTolerance = 15;  // seconds

bool isShown(Phase phase) {
    return phase == Phase::playing || phase == Phase::paused;
}

}  // namespace

RemoteOutput::RemoteOutput(Clock& clock, World world, QObject* parent)
    : QObject(parent), clock_(clock), world_(std::move(world)) {}

State RemoteOutput::state() const {
    if (own_) return *own_;
    return playback_ ? playback_->state() : State();
}

bool RemoteOutput::awaitsViewer() const {
    const Phase phase = state().phase;
    return begun_ && (phase == Phase::waking || phase == Phase::needsPin || phase == Phase::needsPassword);
}

bool RemoteOutput::isBegun(const Begun& wanted) const {
    return begun_ && begun_->receiver.identifier == wanted.receiver.identifier &&
           begun_->item.file == wanted.item.file;
}

void RemoteOutput::attach(const QObject* user, const Receiver& receiver, const RemotePlayback::Item& item) {
    user_ = user;
    lingering_.cancel();
    const Begun wanted{receiver, item};
    const State now = state();
    if (isBegun(wanted) && (!now.isOver() || now.phase == Phase::dropped)) {
        if (now.phase == Phase::dropped) playback_->reattach();
        const double ahead = now.position - item.startPosition;
        if (ahead < -1 || ahead > joinTolerance) seek(item.startPosition);
        chooseTracks(item.tracks);
        return resume();
    }
    begun_ = wanted;
    isPaused_ = false;
    own_ = State{.phase = Phase::connecting, .position = item.startPosition, .duration = item.duration};
    tellLater();
    begin(++starts_, wanted);
}

QCoro::Task<> RemoteOutput::begin(quint64 start, Begun begun) {
    const QPointer<RemoteOutput> self(this);
    const Resolved receiver = co_await world_.resolve(begun.receiver);
    if (!self || start != starts_) co_return;
    if (!receiver) {
        fail(receiver.error());
        co_return;
    }
    begun.receiver = *receiver;
    play(begun);
}

void RemoteOutput::play(const Begun& begun) {
    if (!playback_) {
        auto made = world_.makePlayback();
        if (!made) return fail(made.error());
        playback_ = *std::move(made);
        connect(playback_.get(), &RemotePlayback::stateChanged, this, &RemoteOutput::takeState);
    }
    RemotePlayback::Item item = begun.item;
    item.startPosition = state().position;
    if (begun_) item.tracks = begun_->item.tracks;
    own_.reset();
    playback_->play(begun.receiver, item);
    if (isPaused_) playback_->pause();
}

void RemoteOutput::fail(const QString& reason) {
    logger().error(u"television: "_s + reason);
    State failed = state();
    failed.phase = Phase::failed;
    failed.reason = reason;
    own_ = failed;
    tellLater();
}

void RemoteOutput::release(const QObject* user, Release release) {
    if (user_ != user) return;
    user_ = nullptr;
    const Phase phase = state().phase;
    if (isShown(phase) || release == Release::forGood) return leave();
    if (!state().isOver()) lingering_ = clock_.after(lingerTime, [this] { leave(); });
}

void RemoteOutput::end() {
    user_ = nullptr;
    leave();
}

/// Ends what was begun, wherever it is.
void RemoteOutput::leave() {
    lingering_.cancel();
    ++starts_;
    begun_.reset();
    if (own_ && !own_->isOver()) {
        own_->phase = Phase::stopped;
        tellLater();
    }
    if (playback_) playback_->stop();
}

void RemoteOutput::pause() {
    isPaused_ = true;
    if (!own_) playback_->pause();
}

void RemoteOutput::resume() {
    isPaused_ = false;
    if (!own_) playback_->resume();
}

void RemoteOutput::seek(double seconds) {
    if (own_)
        own_->position = seconds;
    else
        playback_->seek(seconds);
}

void RemoteOutput::chooseTracks(const TrackChoice& tracks) {
    if (!begun_) return;
    begun_->item.tracks = tracks;
    if (!own_) playback_->chooseTracks(tracks);
}

void RemoteOutput::finish(std::function<void()> done) {
    finished_ = std::move(done);
    finishing_ = clock_.after(stopPatience, [this] {
        if (const auto tell = std::exchange(finished_, {})) tell();
    });
    end();
    tellLater();
}

void RemoteOutput::tellLater() {
    QMetaObject::invokeMethod(this, &RemoteOutput::takeState, Qt::QueuedConnection);
}

void RemoteOutput::takeState() {
    const State now = state();
    Q_EMIT stateChanged();
    const bool isOver = now.isOver() || now.phase == Phase::idle;
    if (!finished_ || !isOver) return;
    finishing_.cancel();
    std::exchange(finished_, {})();
}

}  // namespace velmora
