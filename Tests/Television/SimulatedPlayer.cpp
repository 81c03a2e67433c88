#include "Television/SimulatedPlayer.h"

#include "Support/Seconds.h"

#include <functional>

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace velmora::test {

namespace {

constexpr Clock::Duration timeToMove = 300ms;  // from the first bytes of the media to a moving picture
constexpr double refillSeconds = 5;            // before what was read ahead is used up
constexpr double jumpSeconds = 2.5;
constexpr double jumpLasts = 2;

double secondsOf(Clock::Duration duration) {
    return std::chrono::duration<double>(duration).count();
}

}  // namespace

QString SimulatedPlayer::eventName(State state) {
    switch (state) {
        case State::idle:
            return u"stopped"_s;
        case State::loading:
            return u"loading"_s;
        case State::playing:
            return u"playing"_s;
        case State::paused:
            return u"paused"_s;
    }
    return {};
}

SimulatedPlayer::SimulatedPlayer(Clock& clock, const Misbehaviours& misbehaviours, QObject* parent)
    : QObject(parent), clock_(clock), misbehaviours_(misbehaviours) {}

void SimulatedPlayer::load(const Movie& movie) {
    stop();
    movie_ = movie;
    wantedRate_ = movie.paused ? 0 : 1;
    setState(State::loading);
    if (does(Misbehaviour::neverFetches)) return;
    fetcher_ = std::make_unique<MediaFetcher>(movie.url);
    connect(fetcher_.get(), &MediaFetcher::opened, this, &SimulatedPlayer::open);
    connect(fetcher_.get(), &MediaFetcher::buffered, this, &SimulatedPlayer::buffered);
    connect(fetcher_.get(), &MediaFetcher::failed, this, [this](const QString& reason) {
        stop(u"failed"_s);
        Q_EMIT failed(reason);
    });
    QMetaObject::invokeMethod(fetcher_.get(), &MediaFetcher::start, Qt::QueuedConnection);
}

void SimulatedPlayer::open(double duration) {
    ready_ = true;
    duration_ = duration;
    const double start = movie_.startSeconds >= 0 ? movie_.startSeconds : movie_.startFraction * duration;
    base_ = does(Misbehaviour::startsAtZero) ? 0 : qBound(0.0, start, duration);
    fetcher_->readFrom(base_ / duration_);
}

void SimulatedPlayer::buffered(double fraction) {
    bufferedUntil_ = fraction * duration_;
    if (running_)
        schedule();
    else
        starting_ = clock_.after(timeToMove, [this] { run(); });
}

void SimulatedPlayer::run() {
    if (running_ || !ready_ || duration() == 0) return;
    if (wantedRate_ == 0) return setState(State::paused);
    if (!hasMoved_) misbehave();
    hasMoved_ = true;
    running_ = true;
    since_ = clock_.now();
    schedule();
    setState(State::playing);
}

/// When the picture moves first.
void SimulatedPlayer::misbehave() {
    firstMoved_ = clock_.now();
    const auto later = [this](Misbehaviour misbehaviour, const std::function<void()>& act) {
        if (does(misbehaviour)) misbehaving_ = clock_.after(numberOf(misbehaviour), act);
    };
    later(Misbehaviour::pausesItself, [this] { setRate(0); });
    later(Misbehaviour::isStoppedThere, [this] { stop(u"left"_s); });
    later(Misbehaviour::isTakenOver, [this] { playForeign(); });
}

/// What another sender brought; nobody here has a say in it.
void SimulatedPlayer::playForeign() {
    constexpr double foreignDuration = 3600;
    stop(u"interrupted"_s);
    movie_ = {.url = {}, .uuid = u"7E3E1F6C-93B4-4E35-8B5D-3B0F2A0F4C11"_s};
    ready_ = running_ = true;
    duration_ = foreignDuration;
    since_ = clock_.now();
}

/// The picture stands, where it is.
void SimulatedPlayer::hold() {
    base_ = position();
    running_ = false;
    ending_.cancel();
    refilling_.cancel();
}

void SimulatedPlayer::schedule() {
    ending_ = clock_.after(seconds(duration_ - position()), [this] { stop(u"ended"_s); });
    if (bufferedUntil_ < duration_)
        refilling_ = clock_.after(seconds(bufferedUntil_ - refillSeconds - position()),
                                  [this] { fetcher_->readFrom(bufferedUntil_ / duration_); });
}

void SimulatedPlayer::setRate(double rate) {
    wantedRate_ = rate;
    if (state_ == State::playing && rate == 0) {
        hold();
        setState(State::paused);
    } else if (state_ == State::paused && rate != 0) {
        run();
    }
}

void SimulatedPlayer::seek(double target) {
    if (!ready_ || duration() == 0) return;
    hold();
    base_ = qBound(0.0, target, duration_);
    starting_.cancel();
    fetcher_->readFrom(base_ / duration_);
}

void SimulatedPlayer::stop(const QString& reason) {
    for (Clock::Timer* timer : {&starting_, &ending_, &refilling_, &misbehaving_}) timer->cancel();
    if (fetcher_) {
        fetcher_->disconnect(this);
        fetcher_.release()->deleteLater();
    }
    ready_ = running_ = hasMoved_ = false;
    base_ = duration_ = bufferedUntil_ = 0;
    setState(State::idle, reason);
}

double SimulatedPlayer::duration() const {
    return does(Misbehaviour::hidesDuration) ? 0 : duration_;
}

double SimulatedPlayer::position() const {
    if (!running_) return base_;
    return qMin(duration_, base_ + secondsOf(clock_.now() - since_));
}

double SimulatedPlayer::reportedPosition() const {
    if (!hasMoved_ || !does(Misbehaviour::jumpsBack)) return position();
    const double moving = secondsOf(clock_.now() - firstMoved_);
    return position() - jumpSeconds * qMax(0.0, 1 - moving / jumpLasts);
}

void SimulatedPlayer::setState(State state, const QString& reason) {
    if (state == state_) return;
    state_ = state;
    Q_EMIT stateChanged(state, reason);
}

Clock::Duration SimulatedPlayer::numberOf(Misbehaviour misbehaviour) const {
    return seconds(misbehaviours_.value(misbehaviour));
}

}  // namespace velmora::test
