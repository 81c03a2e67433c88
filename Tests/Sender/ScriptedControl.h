#pragma once

#include "Sender/VideoControl.h"
#include "Support/VirtualClock.h"
#include "System/Completion.h"

#include <QStringList>

#include <functional>
#include <vector>

namespace velmora::test {

/// A receiver without sockets: notes every verb, answers it `latency` later, and plays like a well-behaved
/// television unless `report` says otherwise.
class ScriptedControl : public VideoControl, public std::enable_shared_from_this<ScriptedControl> {
  public:
    explicit ScriptedControl(VirtualClock& clock) : clock_(clock) {}

    QStringList verbs;          ///< "open", "play 18", "rate 0", "seek 20", "stop", "abandon"
    std::vector<Movie> movies;  ///< what was played
    std::function<Outcome(const QString& verb)> outcome;  ///< of every verb but `playbackInfo`
    /// What is reported, `seconds` after the last `/play`.
    std::function<Reported(double seconds)> report = [this](double seconds) { return usual(seconds); };
    std::function<Clock::Duration(const QString& verb)> latency;

    int otherWays = 0;  ///< to hand a movie over
    bool isFetchNoted = false;
    double movesAfter = 0.7;  ///< seconds from `/play`
    double rate = 1;

    PlaybackReport usual(double seconds) {
        setPosition(currentPosition());
        return {.isReady = seconds > 0.1, .position = position_, .duration = 120, .rate = rate};
    }
    /// As with the television's own remote.
    void turn(double wantedRate) {
        setPosition(currentPosition());
        rate = wantedRate;
    }
    void say(PlaybackEvent::State state, const QString& reason = {}) {
        deliver({.state = state, .reason = reason});
    }

    void setHold(const std::optional<Hold>& hold) {
        hold_ = hold;
        holdChanged();
    }
    std::optional<Hold> hold() const override { return hold_; }
    void supply(const QString& secret) override { verbs.append(QStringLiteral("supply ") + secret); }
    bool tryAnotherWay() override { return otherWays-- > 0; }
    void noteFetched() override { isFetchNoted = true; }

    QCoro::Task<Outcome> open() override { return verb(QStringLiteral("open")); }
    bool isOpen() const override { return isOpen_; }
    QHostAddress localAddress() const override { return QHostAddress(QStringLiteral("192.0.2.1")); }
    QHostAddress peerAddress() const override { return QHostAddress(QStringLiteral("192.0.2.2")); }
    QCoro::Task<Outcome> play(Movie movie) override {
        movies.push_back(movie);
        setPosition(movie.start);
        playedAt_ = clock_.now();
        return verb(QStringLiteral("play %1").arg(movie.start));
    }
    QCoro::Task<Outcome> setRate(double wanted) override {
        turn(wanted);
        return verb(QStringLiteral("rate %1").arg(wanted));
    }
    QCoro::Task<Outcome> seek(double seconds) override {
        setPosition(seconds);
        return verb(QStringLiteral("seek %1").arg(seconds));
    }
    QCoro::Task<Outcome> stop() override { return verb(QStringLiteral("stop")); }
    QCoro::Task<Reported> playbackInfo() override {
        const auto self = shared_from_this();
        const bool isInTime = co_await wait(QStringLiteral("info"));
        if (!isInTime || !isOpen_) co_return std::unexpected(ConnectionError{});
        co_return report(std::chrono::duration<double>(clock_.now() - playedAt_).count());
    }
    void close() override {
        isOpen_ = false;
        nap_.end();
    }
    void abandon() override {
        verbs.append(QStringLiteral("abandon"));
        close();
    }

  private:
    void setPosition(double position) {
        position_ = position;
        positionAt_ = clock_.now();
    }
    [[nodiscard]] double currentPosition() const {
        const auto movesFrom =
            std::max(positionAt_, playedAt_ + std::chrono::milliseconds(int(movesAfter * 1000)));
        const std::chrono::duration<double> moved = clock_.now() - movesFrom;
        return position_ + rate * std::max(0.0, moved.count());
    }

    QCoro::Task<Outcome> verb(QString name) {
        const auto self = shared_from_this();
        verbs.append(name);
        const bool isInTime = co_await wait(name);
        if (!isInTime || !isOpen_) co_return std::unexpected(ConnectionError{});
        co_return outcome ? outcome(name) : Outcome();
    }
    Completion<bool> wait(const QString& name) {
        return nap_.wait(clock_, latency ? latency(name) : std::chrono::milliseconds(10));
    }

    VirtualClock& clock_;
    std::optional<Hold> hold_;
    Nap nap_;
    Clock::Instant playedAt_{};
    Clock::Instant positionAt_{};
    double position_ = 0;
    bool isOpen_ = true;
};

}  // namespace velmora::test
