#pragma once

// moc stumbles over <coroutine>, which the clock includes, where no other library header comes before.
// clang-format off
#include <QObject>
#include "System/Clock.h"
// clang-format on
#include "Television/MediaFetcher.h"
#include "Television/Misbehaviour.h"

#include <QUrl>

#include <memory>

namespace velmora::test {

/// A television's player without a picture: it fetches the movie and lets a clock run.
class SimulatedPlayer : public QObject {
    Q_OBJECT

  public:
    enum class State { idle, loading, playing, paused };
    Q_ENUM(State)
    /// As senders are told of it.
    [[nodiscard]] static QString eventName(State state);

    struct Movie {
        QUrl url;
        QString uuid;
        double startSeconds = 0;
        double startFraction = 0;  ///< where it counts, `startSeconds` is below zero
        bool paused = false;       ///< until it is told a rate
    };

    SimulatedPlayer(Clock& clock, const Misbehaviours& misbehaviours, QObject* parent = nullptr);

    void load(const Movie& movie);
    void setRate(double rate);
    void seek(double seconds);
    /// `reason`: "ended", "interrupted" by another sender, "left" by the viewer, "failed", or nothing.
    void stop(const QString& reason = {});

    [[nodiscard]] State state() const { return state_; }
    [[nodiscard]] const Movie& movie() const { return movie_; }
    [[nodiscard]] bool isReady() const { return ready_; }
    [[nodiscard]] double duration() const;
    [[nodiscard]] double position() const;  ///< what is shown
    [[nodiscard]] double reportedPosition() const;
    [[nodiscard]] double rate() const { return running_ ? 1 : 0; }

  Q_SIGNALS:
    void stateChanged(velmora::test::SimulatedPlayer::State state, const QString& reason);
    void failed(const QString& reason);

  private:
    void open(double duration);
    void buffered(double fraction);
    void run();
    void misbehave();
    void playForeign();
    void hold();
    void schedule();
    void setState(State state, const QString& reason = {});
    [[nodiscard]] bool does(Misbehaviour misbehaviour) const { return misbehaviours_.contains(misbehaviour); }
    [[nodiscard]] Clock::Duration numberOf(Misbehaviour misbehaviour) const;

    Clock& clock_;
    Misbehaviours misbehaviours_;
    State state_ = State::idle;
    Movie movie_;
    std::unique_ptr<MediaFetcher> fetcher_;
    bool ready_ = false;
    bool running_ = false;
    bool hasMoved_ = false;
    double wantedRate_ = 1;
    double duration_ = 0;
    double base_ = 0;  // position at `since_`
    Clock::Instant since_{};
    Clock::Instant firstMoved_{};
    double bufferedUntil_ = 0;
    Clock::Timer starting_;
    Clock::Timer ending_;
    Clock::Timer refilling_;
    Clock::Timer misbehaving_;
};

}  // namespace velmora::test
