#pragma once

#include "Sender/PlaybackReport.h"
#include "Sender/RemotePlayback.h"
#include "System/Clock.h"

#include <optional>

namespace velmora {

/// Judges from a receiver's reports and events what its picture really does. Knows neither connections nor
/// waiting: what happened comes in with its time, and what to do comes out.
///
/// Only a position that advances, of a movie that was fetched from us, counts as playing. Positions jump back
/// and below zero at the start, and the movie that played before shows first.
class PlaybackWatch {
  public:
    using Instant = Clock::Instant;
    using Phase = RemotePlayback::Phase;

    struct Movie {
        double duration = 0;  ///< seconds; 0 when unknown
        double start = 0;     ///< seconds
        QString uuid;
        bool replacesOurs = false;  ///< another movie of ours was playing on the same connection
    };

    /// What a report calls for.
    enum class Advice {
        carryOn,
        correctStart,  ///< the start position was ignored: seek there
        repeatRate,    ///< loaded but paused: ask to play again
        nudge,         ///< asked to go on and did not: seek to where it stands
        playAgain,     ///< loaded and never moved: start over
        ended,
        stopped,   ///< at the television
        replaced,  ///< another device plays something there
        dropped,
        failed,
    };
    [[nodiscard]] static bool isVerdict(Advice advice) { return advice >= Advice::ended; }

    /// `/play` was answered now.
    PlaybackWatch(Movie movie, Instant now);
    /// `/play` was sent a second time, with a new identifier.
    void startedAgain(const QString& uuid, double start, Instant now);
    void rateSet(double rate, Instant now);
    void sought(double target, Instant now);

    /// `isFetched`: the receiver has asked our server for the movie itself.
    [[nodiscard]] Advice report(const PlaybackReport& report, bool isFetched, Instant now);
    void hear(const PlaybackEvent& event, Instant now);
    /// The verdict when the connection is gone.
    [[nodiscard]] Advice lost(Instant now) const;

    [[nodiscard]] std::optional<PlaybackFault> fault() const { return fault_; }
    [[nodiscard]] bool hasGivenUp() const { return hasHeardStop_; }  ///< said that it stopped
    [[nodiscard]] Phase phase() const { return phase_; }             ///< loading, playing or paused
    [[nodiscard]] double position(Instant now) const;
    [[nodiscard]] double duration() const;
    [[nodiscard]] Clock::Duration pollInterval(Instant now) const;

  private:
    struct Sample {
        double position = 0;
        Instant at{};
    };

    [[nodiscard]] bool isAboutAnother(const PlaybackReport& report, bool isFetched, Instant now) const;
    [[nodiscard]] bool isExpected(const PlaybackReport& report, Instant now);
    [[nodiscard]] bool startWasIgnored(const PlaybackReport& report, Instant now);
    [[nodiscard]] Advice accept(const PlaybackReport& report, bool isFetched, Instant now);
    [[nodiscard]] Advice another(bool isFetched, Instant now);
    [[nodiscard]] Advice absent(bool isFetched, Instant now);
    [[nodiscard]] Advice whileLoading(bool isFetched, Instant now);
    [[nodiscard]] Advice over(Instant now) const;
    void measure(double position, Instant now);
    void measureAfresh(Instant from);
    void updatePhase(const PlaybackReport& report, bool isFetched, Instant now);
    [[nodiscard]] bool isStanding(Instant now) const;
    [[nodiscard]] bool isNearEnd(double position) const;

    Movie movie_;
    Phase phase_ = Phase::loading;
    double reportedDuration_ = 0;
    QString reportedUuid_;
    Instant startedAt_;
    Instant playedAt_;  // the last /play
    bool hasPlayedAgain_ = false;
    std::optional<Instant> readySince_;

    Sample shown_;            // what `position` goes out from
    bool isRunning_ = false;  // it advances until the next report

    std::optional<Sample> expected_;  // after /play and seeks, for a while
    bool hasStartChecked_ = false;

    std::optional<Sample> measured_;  // the last advance, or where the position stands since
    Instant measureFrom_{};
    int advances_ = 0;

    std::optional<Instant> rateSetAt_;
    int rateRepeats_ = 0;
    std::optional<Instant> resumedAt_;
    bool isPausedThere_ = false;  // not by us

    std::optional<PlaybackEvent::State> lastEvent_;
    Instant lastEventAt_{};
    bool hasHeardStop_ = false;
    bool hasHeardEnd_ = false;
    std::optional<PlaybackFault> fault_;

    int absences_ = 0;
    Instant absentSince_{};
    int strangers_ = 0;
};

}  // namespace velmora
