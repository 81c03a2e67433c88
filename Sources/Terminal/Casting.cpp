#include "Terminal/Casting.h"

#include "Companions/Durations.h"
#include "Diagnostics/Log.h"
#include "Playback/MovieResolver.h"
#include "Playback/Session.h"
#include "Sender/Discovery/Discovery.h"
#include "Terminal/ExitStatus.h"
#include "Terminal/Terminal.h"
#include "Terminal/TerminalText.h"
#include "Terminal/TrackCycle.h"

#include <QPointer>

#include <cmath>
#include <utility>

namespace velmora {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto tickInterval = 500ms;

// Televisions ask for the movie once more after they were told to stop; a closed port would look like a
// fault.
constexpr auto lastRequests = 1s;

bool isMoving(RemotePlayback::Phase phase) {
    return phase == RemotePlayback::Phase::playing || phase == RemotePlayback::Phase::paused;
}

}  // namespace

Casting::Casting(const CommandLine& line, const World& world)
    : line_(line),
      terminal_(world.terminal),
      clock_(world.clock),
      memory_(world.preferences),
      discovery_(world.discovery),
      parts_(world.clock, world.preferences, world.discovery, world.memoryOfReceivers),
      finder_(parts_.network(), world.discovery, *world.memoryOfReceivers.known) {
    connect(&terminal_, &Terminal::keyPressed, this, &Casting::press);
    connect(&terminal_, &Terminal::lineEntered, this, &Casting::answer);
    connect(&terminal_, &Terminal::inputEnded, this, &Casting::leaveUnanswered);
    // Queued, so that the session has heard it first.
    connect(&output(), &RemoteOutput::stateChanged, this, &Casting::followTelevision, Qt::QueuedConnection);
}

Casting::~Casting() = default;

void Casting::start() {
    const auto movie = resolveMovie(QUrl::fromLocalFile(line_.movies.first()));
    if (!movie) return fail(u"No movie found at %1."_s.arg(line_.movies.first()));
    movie_ = *movie;
    discovery_.start();
    find();
}

// The session finds it again when it is needed; but after a long preparation is no time to learn of a typing
// error.
QCoro::Task<> Casting::find() {
    const QPointer<Casting> alive = this;
    const QString looking = u"Looking for %1…"_s.arg(line_.television);
    terminal_.showLine(TerminalText::fit(looking, terminal_.look().columns));
    const TelevisionFinder::Found found = co_await finder_.find(line_.television);
    if (!alive || isOver_ || isInterrupted_) co_return;
    terminal_.clearLine();
    if (found) {
        television_ = found->name;
        parts_.context().choose(*found);
        open();
    } else {
        fail(found.error());
    }
}

void Casting::open() {
    if (line_.startOver) memory_.forget(movie_);
    report_.emplace(terminal_, movie_);
    session_ = parts_.makeSession();
    // Queued, as what follows may end the session.
    connect(session_.get(), &Session::phaseChanged, this, &Casting::followSession, Qt::QueuedConnection);
    connect(session_.get(), &Session::routeChanged, this, &Casting::followTelevision, Qt::QueuedConnection);
    connect(session_.get(), &Session::playingChanged, this, &Casting::goOnWaiting, Qt::QueuedConnection);
    session_->open(movie_, line_.reEncode);
}

void Casting::followSession() {
    if (!session_ || isOver_) return;
    const SessionPhase phase = session_->phase();
    if (const auto* preparing = phase.preparing()) {
        if (report_) report_->show({preparing->progress, preparing->stage, preparing->eta});
    } else if (const auto* ready = phase.ready()) {
        if (report_) startPlaying(ready->note);
    } else if (const auto* failed = phase.failed()) {
        if (!report_) return fail(failed->message);
        report_->fail(failed->message);
        finish(failedStatus);
    }
}

void Casting::startPlaying(const QString& note) {
    report_->succeed(note);
    report_.reset();
    terminal_.startKeys();
    tick();
}

/// The television's state, as far as the session has come with it: nothing can be steered before.
RemotePlayback::State Casting::state() {
    State state = output().state();
    if (state.phase == Phase::idle) state.phase = Phase::connecting;
    if (isMoving(state.phase) && session_ && !session_->canControlPlayback()) state.phase = Phase::loading;
    return state;
}

void Casting::followTelevision() {
    if (isOver_ || isStopping_ || output().state().phase == Phase::idle) return;
    const State now = state();
    tellStart(now);
    if (isMoving(now.phase)) wasPaused_ = now.phase == Phase::paused;
    if (now.phase == Phase::playing) hasMoved_ = true;
    if (isComingBack(now)) return;
    ask(now);
    if (now.phase != toldPhase_) tellPhase(now);
    if (now.isOver()) return conclude(now);
    redraw();
}

void Casting::tellStart(const State& state) {
    if (std::exchange(isStartTold_, true) || state.position == 0) return;
    terminal_.print(u"Resuming at %1; --start-over plays from the beginning."_s.arg(
        Durations::clockTime(state.position)));
}

void Casting::tellPhase(const State& state) {
    toldPhase_ = state.phase;
    // On a terminal the line itself tells.
    if (terminal_.isInteractive()) return;
    if (state.phase == Phase::playing)
        terminal_.print(u"Playing on %1"_s.arg(television_));
    else if (state.phase == Phase::paused)
        terminal_.print(u"Paused at %1"_s.arg(Durations::clockTime(state.position)));
}

/// Televisions fall off the network and come back, and the session sees to that; no one has to sit there and
/// type. One that falls off again before its picture has moved is left alone.
bool Casting::isComingBack(const State& state) {
    if (state.phase != Phase::dropped) {
        isAttaching_ = false;
    } else if (std::exchange(hasMoved_, false)) {
        isAttaching_ = true;
        terminal_.clearLine();
        terminal_.print(state.reason + u" Trying again…"_s);
    }
    return isAttaching_;
}

/// The session stops waiting for a picture after a while, and a viewer in front of a window would be asked
/// whether to try again. A television may take much longer to wake up, or to be given its PIN.
void Casting::goOnWaiting() {
    if (!session_ || isOver_ || wasPaused_ || session_->isPlaying() || !session_->isStalled()) return;
    if (isAttaching_ || !output().state().isOver()) session_->retryHandover();
}

void Casting::ask(const State& state) {
    const bool wantsPin = state.phase == Phase::needsPin;
    if (!wantsPin && state.phase != Phase::needsPassword) {
        askingLater_.cancel();
        return terminal_.stopAsking();
    }
    if (terminal_.isAsking() || isStopping_) return;
    if (!state.reason.isEmpty() && state.phase != toldPhase_) terminal_.print(state.reason);
    toldPhase_ = state.phase;
    if (state.retryIn > 0) {
        const QString wait = u"%1 takes no PIN for another %2 s."_s.arg(television_)
                                 .arg(static_cast<int>(std::ceil(state.retryIn)));
        terminal_.showLine(TerminalText::fit(wait, terminal_.look().columns));
        askingLater_ = clock_.after(tickInterval, [this] { ask(this->state()); });
        return;
    }
    const QString what = wantsPin ? u"The PIN that %1 shows: "_s : u"The AirPlay password of %1: "_s;
    terminal_.ask(what.arg(television_), !wantsPin);
}

void Casting::answer(const QString& secret) {
    if (isOver_ || !output().playback()) return;
    toldPhase_ = Phase::connecting;  // so that a second question tells why
    output().playback()->supply(secret.trimmed());
}

void Casting::leaveUnanswered() {
    const bool wantsPin = state().phase == Phase::needsPin;
    fail((wantsPin ? u"%1 asks for the PIN on its screen, and nobody is there to type it."_s
                   : u"%1 asks for its AirPlay password, and nobody is there to type it."_s)
             .arg(television_));
}

void Casting::redraw() {
    if (report_) return report_->redraw();
    if (!session_ || isOver_) return;
    const State now = state();
    if (now.retryIn <= 0) terminal_.showLine(ProgressLine::playing(now, television_, terminal_.look()));
}

void Casting::tick() {
    redraw();
    ticking_ = clock_.after(tickInterval, [this] { tick(); });
}

void Casting::press(Key key) {
    if (!session_ || isOver_ || isStopping_) return;
    switch (key) {
        case Key::quit:
            return stop();
        case Key::playPause:
            return session_->togglePlayPause();
        case Key::back:
            return skip(-10);
        case Key::forward:
            return skip(10);
        case Key::backMinute:
            return skip(-60);
        case Key::forwardMinute:
            return skip(60);
        case Key::sound:
            return changeTrack(MediaGroup::Kind::audible);
        case Key::subtitles:
            return changeTrack(MediaGroup::Kind::legible);
    }
}

/// From the target of the seek before, where there is one under way.
void Casting::skip(double seconds) {
    session_->seek(output().state().position + seconds);
}

void Casting::changeTrack(MediaGroup::Kind kind) {
    const QString told = selectNextTrack(*session_, kind);
    if (!told.isEmpty()) terminal_.print(told);
    redraw();
}

void Casting::stop() {
    if (std::exchange(isStopping_, true)) return;
    ticking_.cancel();
    session_.reset();
    output().finish([this] { conclude(state()); });
}

void Casting::conclude(const State& state) {
    isOver_ = true;
    ticking_.cancel();
    terminal_.stopAsking();
    session_.reset();
    terminal_.clearLine();
    terminal_.print(farewell(state));
    const bool isFault = !isStopping_ && (state.phase == Phase::failed || state.phase == Phase::dropped);
    if (isFault) logger().error(u"playback: "_s + state.reason);
    const int status = isInterrupted_ ? interruptedStatus : isFault ? failedStatus : doneStatus;
    leaving_ = clock_.after(lastRequests, [this, status] { finish(status); });
}

QString Casting::farewell(const State& state) const {
    if (state.phase == Phase::ended) return u"The movie is over."_s;
    QString what = !isStopping_ && !state.reason.isEmpty() ? state.reason : u"Stopped."_s;
    const auto saved = memory_.savedPosition(movie_);
    if (!saved) return what;
    return what + u" The next start resumes at %1."_s.arg(Durations::clockTime(*saved));
}

void Casting::interrupt() {
    if (isOver_) return;  // on the way out already
    isInterrupted_ = true;
    if (session_ && session_->phase().ready()) return stop();
    if (isStopping_) return;
    session_.reset();
    finish(interruptedStatus);
}

void Casting::fail(const QString& reason) {
    isOver_ = true;
    ticking_.cancel();
    terminal_.stopAsking();
    session_.reset();
    logger().error(u"cast: "_s + reason);
    terminal_.print(reason);
    finish(failedStatus);
}

void Casting::finish(int exitStatus) {
    terminal_.clearLine();
    Q_EMIT finished(exitStatus);
}

}  // namespace velmora
