#include "Sender/PlaybackWatch.h"

#include <algorithm>
#include <cmath>

using namespace std::chrono_literals;

namespace velmora {

namespace {

using Seconds = std::chrono::duration<double>;

double secondsBetween(Clock::Instant from, Clock::Instant to) {
    return Seconds(to - from).count();
}

constexpr Clock::Duration fastPoll = 250ms;
constexpr Clock::Duration slowPoll = 1s;

// A real receiver takes up to 2.8 seconds from ready to a moving picture, and shows old and odd positions
// meanwhile.
constexpr Clock::Duration patience = 3s;
constexpr Clock::Duration replacingPatience = 2s;
constexpr Clock::Duration strangerPatience = 6s;  // then it is ours, whatever it calls itself
constexpr double goesBackAtMost = 2.5;            // seconds, at the start and after a seek
constexpr double runsAheadAtMost = 2;             // seconds; it may have gone on before it answered
constexpr double ignoredStartDiffers = 5.0;       // seconds; less is a key frame

constexpr double smallestAdvance = 0.15;               // seconds; the finest step seen is 0.2
constexpr int advancesThatPlay = 2;                    // a single one may be a jump
constexpr Clock::Duration standsAfter = 1200ms;        // some report whole seconds only
constexpr Clock::Duration pauseTakesEffectAfter = 1s;  // until then the position may still move
constexpr Clock::Duration eventKeepsAwake = 2s;        // poll fast after an event
constexpr Clock::Duration eventSettles = 500ms;        // a report may have been under way before it
constexpr Clock::Duration nudgeAfter = 3s;
constexpr Clock::Duration longestInterpolation = 2s;  // a poll may be late, not missing

constexpr Clock::Duration unaskedLimit = 12s;  // a receiver that wants the movie asks within seconds
constexpr Clock::Duration loadingLimit = 30s;
constexpr Clock::Duration playAgainLimit = 20s;        // for the second try
constexpr Clock::Duration stallLimit = 10s;            // loaded, and the picture does not move
constexpr Clock::Duration earlyFailureAfter = 2500ms;  // a stop heard earlier may be the last movie's
constexpr int mostRateRepeats = 5;

}  // namespace

PlaybackWatch::PlaybackWatch(Movie movie, Instant now)
    : movie_(std::move(movie)), startedAt_(now), playedAt_(now) {
    shown_ = {movie_.start, now};
    expected_ = shown_;
    measureFrom_ = now;
}

void PlaybackWatch::startedAgain(const QString& uuid, double start, Instant now) {
    movie_.uuid = uuid;
    movie_.start = start;
    playedAt_ = now;
    hasPlayedAgain_ = true;
    hasStartChecked_ = false;
    readySince_.reset();
    expected_ = shown_ = {start, now};
    measureAfresh(now);
}

void PlaybackWatch::rateSet(double rate, Instant now) {
    rateSetAt_ = now;
    if (phase_ == Phase::loading || (phase_ == Phase::playing && rate != 0)) return;
    isPausedThere_ = false;
    shown_ = {position(now), now};
    isRunning_ = false;
    if (rate == 0) {
        phase_ = Phase::paused;
        resumedAt_.reset();
        measureAfresh(now + pauseTakesEffectAfter);
    } else {
        resumedAt_ = now;
        measureAfresh(now);
    }
}

void PlaybackWatch::sought(double target, Instant now) {
    expected_ = shown_ = {target, now};
    isRunning_ = false;
    measureAfresh(now);
}

PlaybackWatch::Advice PlaybackWatch::report(const PlaybackReport& report, bool isFetched, Instant now) {
    if (!fault_) fault_ = report.fault;
    if (fault_) return Advice::failed;
    if (!report.isReady || report.duration <= 0) return absent(isFetched, now);
    if (isAboutAnother(report, isFetched, now)) return another(isFetched, now);
    absences_ = strangers_ = 0;
    if (now - lastEventAt_ > eventSettles) hasHeardStop_ = hasHeardEnd_ = false;  // about another movie
    if (!isExpected(report, now)) return whileLoading(isFetched, now);
    return accept(report, isFetched, now);
}

PlaybackWatch::Advice PlaybackWatch::accept(const PlaybackReport& report, bool isFetched, Instant now) {
    reportedDuration_ = report.duration;
    reportedUuid_ = report.uuid;
    if (!readySince_) readySince_ = now;
    if (startWasIgnored(report, now)) return Advice::correctStart;
    measure(report.position, now);
    updatePhase(report, isFetched, now);
    shown_ = {report.position, now};
    isRunning_ = phase_ == Phase::playing && !isStanding(now);

    if (phase_ == Phase::loading) {
        const bool isPaused = report.rate == 0.0 && now - rateSetAt_.value_or(playedAt_) >= 1s;
        if (isPaused && rateRepeats_ < mostRateRepeats) return ++rateRepeats_, Advice::repeatRate;
        return whileLoading(isFetched, now);
    }
    // A receiver may hold the last picture instead of stopping.
    if (isPausedThere_ && report.position >= duration() - 0.5) return Advice::ended;
    if (resumedAt_ && now - *resumedAt_ >= nudgeAfter) return resumedAt_.reset(), Advice::nudge;
    return Advice::carryOn;
}

void PlaybackWatch::hear(const PlaybackEvent& event, Instant now) {
    if (!event.uuid.isEmpty() && event.uuid.compare(movie_.uuid, Qt::CaseInsensitive) != 0) return;
    using State = PlaybackEvent::State;
    const bool endsTheLast = event.state == State::stopped && event.uuid.isEmpty() && movie_.replacesOurs &&
                             phase_ == Phase::loading && now - playedAt_ < replacingPatience;
    if (endsTheLast) return;
    if (!fault_) fault_ = event.fault;
    if (event.state == State::other) return;
    lastEvent_ = event.state;
    lastEventAt_ = now;
    // A stop in front of "loading" was of whatever played there before.
    const bool stopCounts = phase_ == Phase::loading && event.state != State::loading;
    hasHeardStop_ = event.state == State::stopped || (hasHeardStop_ && stopCounts);
    hasHeardEnd_ = hasHeardStop_ && event.reason == QLatin1StringView("ended");
}

PlaybackWatch::Advice PlaybackWatch::lost(Instant now) const {
    const bool isEnd = hasHeardEnd_ || (phase_ != Phase::loading && isNearEnd(position(now)));
    if (isEnd) return Advice::ended;
    return hasHeardStop_ ? over(now) : Advice::dropped;
}

double PlaybackWatch::position(Instant now) const {
    const auto since = std::clamp<Clock::Duration>(now - shown_.at, 0s, longestInterpolation);
    const double reached = shown_.position + (isRunning_ ? Seconds(since).count() : 0);
    const double end = duration();
    return std::max(0.0, end > 0 ? std::min(reached, end) : reached);
}

double PlaybackWatch::duration() const {
    return reportedDuration_ > 0 ? reportedDuration_ : movie_.duration;
}

Clock::Duration PlaybackWatch::pollInterval(Instant now) const {
    const bool isUndecided =
        phase_ == Phase::loading || resumedAt_ || expected_ || (phase_ == Phase::paused && advances_ > 0) ||
        (phase_ == Phase::playing && advances_ == 0) || (lastEvent_ && now - lastEventAt_ < eventKeepsAwake);
    return isUndecided ? fastPoll : slowPoll;
}

// By its identifier, or by a length that is neither ours nor the one that was told for ours.
bool PlaybackWatch::isAboutAnother(const PlaybackReport& report, bool isFetched, Instant now) const {
    if (phase_ == Phase::loading && isFetched && now - playedAt_ >= strangerPatience) return false;
    if (!report.uuid.isEmpty())
        return report.uuid.compare(movie_.uuid, Qt::CaseInsensitive) != 0 && report.uuid != reportedUuid_;
    const auto isLike = [&report](double ours) {
        return std::abs(report.duration - ours) <= std::max(3.0, 0.03 * ours);
    };
    const bool isKnown = duration() > 0;
    return isKnown && !isLike(duration()) && !isLike(movie_.duration);
}

bool PlaybackWatch::isExpected(const PlaybackReport& report, Instant now) {
    if (!expected_) return true;
    const Clock::Duration waited = now - expected_->at;
    const bool isBlind = movie_.replacesOurs && phase_ == Phase::loading && waited < replacingPatience;
    if (waited >= patience) {
        expected_.reset();
        return true;
    }
    const double ahead = report.position - expected_->position;
    return !isBlind && ahead >= -goesBackAtMost && ahead <= Seconds(waited).count() + runsAheadAtMost;
}

bool PlaybackWatch::startWasIgnored(const PlaybackReport& report, Instant now) {
    if (phase_ != Phase::loading || std::exchange(hasStartChecked_, true)) return false;
    const double ahead = report.position - movie_.start;
    return ahead < -ignoredStartDiffers || ahead > secondsBetween(playedAt_, now) + ignoredStartDiffers;
}

PlaybackWatch::Advice PlaybackWatch::another(bool isFetched, Instant now) {
    if (phase_ == Phase::loading) return whileLoading(isFetched, now);
    return ++strangers_ >= 2 ? Advice::replaced : Advice::carryOn;
}

PlaybackWatch::Advice PlaybackWatch::absent(bool isFetched, Instant now) {
    if (absences_++ == 0) absentSince_ = now;
    if (phase_ == Phase::loading) {
        const bool gaveUp = hasHeardStop_ && absences_ >= 2 && now - playedAt_ >= earlyFailureAfter;
        return gaveUp ? Advice::failed : whileLoading(isFetched, now);
    }
    if (hasHeardStop_) return over(now);
    const bool isSeeking = expected_ && now - expected_->at < patience;
    const bool isGone = absences_ >= 2 && now - absentSince_ >= 1s;
    return isGone && !isSeeking ? over(now) : Advice::carryOn;
}

PlaybackWatch::Advice PlaybackWatch::whileLoading(bool isFetched, Instant now) {
    if (phase_ != Phase::loading) return Advice::carryOn;
    if (!isFetched && now - startedAt_ >= unaskedLimit) return Advice::failed;
    if (now - playedAt_ >= (hasPlayedAgain_ ? playAgainLimit : loadingLimit)) return Advice::failed;
    const bool isStalled = readySince_ && now - *readySince_ >= stallLimit;
    return isStalled && !hasPlayedAgain_ ? Advice::playAgain : Advice::carryOn;
}

PlaybackWatch::Advice PlaybackWatch::over(Instant now) const {
    return hasHeardEnd_ || isNearEnd(position(now)) ? Advice::ended : Advice::stopped;
}

void PlaybackWatch::measureAfresh(Instant from) {
    measured_.reset();
    measureFrom_ = from;
    advances_ = 0;
}

void PlaybackWatch::measure(double position, Instant now) {
    if (now < measureFrom_) return;
    if (!measured_) {
        measured_ = {position, now};
        return;
    }
    const double advance = position - measured_->position;
    const bool isJump = advance < 0 || advance > secondsBetween(measured_->at, now) + 1;
    if (isJump) {
        measured_ = {position, now};
        advances_ = 0;
    } else if (advance >= smallestAdvance) {
        measured_ = {position, now};
        ++advances_;
    } else if (isStanding(now)) {
        advances_ = 0;
    }
}

void PlaybackWatch::updatePhase(const PlaybackReport& report, bool isFetched, Instant now) {
    if (phase_ == Phase::playing) {
        const bool heardPause = lastEvent_ == PlaybackEvent::State::paused;
        const bool saysPaused = report.rate == 0.0 && !expected_;  // a seek may stall for a moment
        if (isStanding(now) ? !heardPause && !saysPaused : !heardPause || report.rate != 0.0) return;
        phase_ = Phase::paused;
        isPausedThere_ = true;
        measureAfresh(now);
    } else if (advances_ >= advancesThatPlay && (isFetched || phase_ == Phase::paused)) {
        phase_ = Phase::playing;
        isPausedThere_ = false;
        resumedAt_.reset();
    }
}

bool PlaybackWatch::isStanding(Instant now) const {
    return measured_ && now - measured_->at >= standsAfter;
}

bool PlaybackWatch::isNearEnd(double position) const {
    const double end = duration();
    return end > 0 && position >= end - std::clamp(0.05 * end, 1.0, 3.0);
}

}  // namespace velmora
