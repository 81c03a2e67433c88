#include "Terminal/Casting.h"

#include "Companions/Durations.h"
#include "Diagnostics/Log.h"
#include "Playback/MovieResolver.h"
#include "Playback/PositionMemory.h"
#include "Sender/Discovery/Discovery.h"
#include "Sender/MediaServer.h"
#include "Terminal/ExitStatus.h"
#include "Terminal/Terminal.h"
#include "Terminal/TerminalText.h"

#include <QFileInfo>
#include <QPointer>

#include <algorithm>
#include <cmath>
#include <utility>

namespace velmora {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

using Phase = RemotePlayback::Phase;

constexpr auto tickInterval = 500ms;
constexpr int ticksPerMemory = 10;  // the position is noted every five seconds

// Arrows pressed within this time of each other add up, before the television has followed the first one.
constexpr auto seekPatience = 1500ms;

// Televisions ask for the movie once more after they were told to stop; a closed port would look like a
// fault.
constexpr auto lastRequests = 1s;

// Past what RemotePlayback itself allows a television for its answer.
constexpr auto stopPatience = 8s;

bool isMoving(Phase phase) {
    return phase == Phase::playing || phase == Phase::paused;
}

}  // namespace

Casting::Casting(const CommandLine& line, const World& world)
    : line_(line),
      terminal_(world.terminal),
      clock_(world.clock),
      memory_(world.memory),
      discovery_(world.discovery),
      memoryOfReceivers_(world.memoryOfReceivers),
      finder_(world.clock, world.discovery, *world.memoryOfReceivers.known) {
    connect(&job_, &PreparationJob::updated, this, [this](const auto& update) {
        if (report_) report_->show(update);
    });
    connect(&job_, &PreparationJob::finished, this, &Casting::takePrepared);
    connect(&terminal_, &Terminal::keyPressed, this, &Casting::press);
    connect(&terminal_, &Terminal::lineEntered, this, &Casting::answer);
    connect(&terminal_, &Terminal::inputEnded, this, &Casting::leaveUnanswered);
}

Casting::~Casting() = default;

void Casting::start() {
    const auto movie = resolveMovie(QUrl::fromLocalFile(line_.movies.first()));
    if (!movie) return fail(u"No movie found at %1."_s.arg(line_.movies.first()));
    movie_ = *movie;
    discovery_.start();
    find();
}

// It is found again when it is needed; but after a long preparation is no time to learn of a typing error.
QCoro::Task<> Casting::find() {
    const QPointer<Casting> alive = this;
    const QString looking = u"Looking for %1…"_s.arg(line_.television);
    terminal_.showLine(TerminalText::fit(looking, terminal_.look().columns));
    const TelevisionFinder::Found found = co_await finder_.find(line_.television);
    if (!alive || isOver_ || isInterrupted_) co_return;
    terminal_.clearLine();
    if (found) {
        television_ = *found;
        prepare();
    } else {
        fail(found.error());
    }
}

void Casting::prepare() {
    logger().notice(
        u"open %1 forceTranscode=%2"_s.arg(movie_.toLocalFile(), line_.reEncode ? u"true"_s : u"false"_s));
    report_.emplace(terminal_, movie_);
    job_.start(movie_, line_.reEncode);
}

void Casting::takePrepared() {
    const PreparationJob::Outcome& outcome = job_.outcome();
    report_->finish(outcome);
    report_.reset();
    if (isInterrupted_) return finish(interruptedStatus);
    if (!outcome) return finish(failedStatus);
    reach(*outcome);
}

QCoro::Task<> Casting::reach(PreparedMovie prepared) {
    const QPointer<Casting> alive = this;
    const TelevisionFinder::Found found = co_await finder_.resolve(television_);
    if (!alive || isOver_ || isInterrupted_) co_return;
    if (found) {
        television_ = *found;
        play(prepared);
    } else {
        fail(found.error());
    }
}

void Casting::play(const PreparedMovie& prepared) {
    auto server = MediaServer::start();
    if (!server) return fail(server.error());
    server_ = std::move(*server);
    playback_ = std::make_unique<RemotePlayback>(clock_, *server_, memoryOfReceivers_);
    connect(playback_.get(), &RemotePlayback::stateChanged, this, &Casting::takeState);

    const double position = startPosition(prepared.duration);
    const QString file = prepared.result.file.toLocalFile();
    logger().notice(u"playing %1 on %2 from %3s"_s.arg(QFileInfo(file).fileName(), television_.name)
                        .arg(static_cast<qint64>(position)));
    playback_->play(television_, {file, prepared.duration, position});
    terminal_.startKeys();
    tick();
}

double Casting::startPosition(double duration) {
    if (line_.startOver) memory_.forget(movie_);
    const double saved = memory_.savedPosition(movie_).value_or(0);
    // The file may have been replaced by a shorter one.
    if (saved == 0 || (duration > 0 && saved >= duration)) return 0;
    terminal_.print(
        u"Resuming at %1; --start-over plays from the beginning."_s.arg(Durations::clockTime(saved)));
    return saved;
}

void Casting::takeState() {
    if (isOver_) return;
    const RemotePlayback::State state = playback_->state();
    if (isMoving(state.phase)) moving_ = state;
    if (state.phase == Phase::playing) mayComeBack_ = true;
    if (state.phase == Phase::paused && toldPhase_ != Phase::paused) rememberPosition();
    if (comesBack(state)) return;
    ask(state);
    if (state.phase != toldPhase_) tellPhase(state);
    if (state.isOver()) return conclude(state);
    redraw();
}

void Casting::tellPhase(const RemotePlayback::State& state) {
    toldPhase_ = state.phase;
    // On a terminal the line itself tells.
    if (terminal_.isInteractive()) return;
    if (state.phase == Phase::playing)
        terminal_.print(u"Playing on %1"_s.arg(television_.name));
    else if (state.phase == Phase::paused)
        terminal_.print(u"Paused at %1"_s.arg(Durations::clockTime(state.position)));
}

// Televisions fall off the network and come back; no one has to sit there and type.
bool Casting::comesBack(const RemotePlayback::State& state) {
    if (state.phase != Phase::dropped || !mayComeBack_ || isStopping_) return false;
    mayComeBack_ = false;
    rememberPosition();
    logger().notice(u"playback: dropped, trying again"_s);
    terminal_.clearLine();
    terminal_.print(state.reason + u" Trying again…"_s);
    playback_->reattach();
    return true;
}

void Casting::ask(const RemotePlayback::State& state) {
    const bool wantsPin = state.phase == Phase::needsPin;
    if (!wantsPin && state.phase != Phase::needsPassword) {
        askingLater_.cancel();
        return terminal_.stopAsking();
    }
    if (terminal_.isAsking() || isStopping_) return;
    if (!state.reason.isEmpty() && state.phase != toldPhase_) terminal_.print(state.reason);
    toldPhase_ = state.phase;
    if (state.retryIn > 0) {
        const QString wait = u"%1 takes no PIN for another %2 s."_s.arg(television_.name)
                                 .arg(static_cast<int>(std::ceil(state.retryIn)));
        terminal_.showLine(TerminalText::fit(wait, terminal_.look().columns));
        askingLater_ = clock_.after(tickInterval, [this] { ask(playback_->state()); });
        return;
    }
    const QString what = wantsPin ? u"The PIN that %1 shows: "_s : u"The AirPlay password of %1: "_s;
    terminal_.ask(what.arg(television_.name), !wantsPin);
}

void Casting::answer(const QString& secret) {
    if (!playback_ || isOver_) return;
    toldPhase_ = Phase::connecting;  // so that a second question tells why
    playback_->supply(secret.trimmed());
}

void Casting::leaveUnanswered() {
    const bool wantsPin = playback_->state().phase == Phase::needsPin;
    isStopping_ = true;
    playback_->stop();
    fail((wantsPin ? u"%1 asks for the PIN on its screen, and nobody is there to type it."_s
                   : u"%1 asks for its AirPlay password, and nobody is there to type it."_s)
             .arg(television_.name));
}

void Casting::redraw() {
    if (report_) report_->redraw();
    if (!playback_ || isOver_ || playback_->state().retryIn > 0) return;
    terminal_.showLine(ProgressLine::playing(playback_->state(), television_.name, terminal_.look()));
}

void Casting::tick() {
    const RemotePlayback::State state = playback_->state();
    if (isMoving(state.phase)) moving_ = state;
    if (state.phase == Phase::playing && ++ticks_ % ticksPerMemory == 0) rememberPosition();
    redraw();
    ticking_ = clock_.after(tickInterval, [this] { tick(); });
}

void Casting::press(Key key) {
    if (!playback_ || isOver_ || isStopping_) return;
    const Phase phase = playback_->state().phase;
    if (key == Key::quit) return stop();
    if (!isMoving(phase)) return;
    switch (key) {
        case Key::playPause:
            return phase == Phase::playing ? playback_->pause() : playback_->resume();
        case Key::back:
            return skip(-10);
        case Key::forward:
            return skip(10);
        case Key::backMinute:
            return skip(-60);
        default:
            return skip(60);
    }
}

void Casting::skip(double seconds) {
    seekTarget_ = std::max(0.0, seekTarget_.value_or(playback_->state().position) + seconds);
    if (moving_.duration > 0) seekTarget_ = std::min(*seekTarget_, moving_.duration);
    seekSettling_ = clock_.after(seekPatience, [this] { seekTarget_.reset(); });
    playback_->seek(*seekTarget_);
}

void Casting::stop() {
    if (isStopping_) return;
    isStopping_ = true;
    rememberPosition();
    playback_->stop();
    if (isOver_) return;
    leaving_ = clock_.after(stopPatience, [this] { conclude(playback_->state()); });
}

void Casting::rememberPosition() {
    if (isMoving(moving_.phase)) memory_.remember(movie_, moving_.position, moving_.duration);
}

void Casting::conclude(const RemotePlayback::State& state) {
    isOver_ = true;
    ticking_.cancel();
    terminal_.stopAsking();
    if (state.phase == Phase::ended) moving_.position = moving_.duration;
    rememberPosition();
    terminal_.clearLine();
    terminal_.print(farewell(state));
    const bool isFault = !isStopping_ && (state.phase == Phase::failed || state.phase == Phase::dropped);
    if (isFault) logger().error(u"playback: "_s + state.reason);
    const int status = isInterrupted_ ? interruptedStatus : isFault ? failedStatus : doneStatus;
    leaving_ = clock_.after(lastRequests, [this, status] { finish(status); });
}

QString Casting::farewell(const RemotePlayback::State& state) const {
    if (state.phase == Phase::ended) return u"The movie is over."_s;
    const QString what = !isStopping_ && !state.reason.isEmpty() ? state.reason : u"Stopped."_s;
    const auto saved = memory_.savedPosition(movie_);
    if (!saved) return what;
    return what + u" The next start resumes at %1."_s.arg(Durations::clockTime(*saved));
}

void Casting::interrupt() {
    if (isOver_) return;  // on the way out already
    isInterrupted_ = true;
    if (playback_) return stop();
    if (report_) return job_.cancel();
    finish(interruptedStatus);
}

void Casting::fail(const QString& reason) {
    isOver_ = true;
    ticking_.cancel();
    terminal_.stopAsking();
    logger().error(u"cast: "_s + reason);
    terminal_.print(reason);
    finish(failedStatus);
}

void Casting::finish(int exitStatus) {
    terminal_.clearLine();
    Q_EMIT finished(exitStatus);
}

}  // namespace velmora
