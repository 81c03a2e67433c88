#pragma once

#include "Sender/MediaServer.h"
#include "Sender/PlaybackWatch.h"
#include "Sender/RemotePlayback.h"
#include "Sender/VideoControl.h"
#include "System/Completion.h"

#include <QCoroTask>

#include <expected>
#include <functional>
#include <memory>
#include <optional>

namespace velmora {

/// One movie on one receiver, from the first connection to the last word. Main thread only.
///
/// It runs as one coroutine that does one thing at a time and keeps the session alive until it is through;
/// after each wait it looks whether the session is still wanted.
class PlaybackSession : public std::enable_shared_from_this<PlaybackSession> {
  public:
    using Phase = RemotePlayback::Phase;
    using State = RemotePlayback::State;

    PlaybackSession(Clock& clock, const RemotePlayback::World& world, Receiver receiver,
                    RemotePlayback::Item item);

    /// Called once. `previous`, if any, is told to leave; its connection is taken over if it goes to the same
    /// receiver and is still open. `changed` is called after every change, also from inside other calls.
    void start(const std::shared_ptr<PlaybackSession>& previous, std::function<void()> changed);

    void pause();
    void resume();
    void seek(double seconds);
    void chooseTracks(const TrackChoice& tracks);
    void stop();
    void supply(const QString& secret);
    [[nodiscard]] State state() const;

    /// The same movie on the same receiver, from where this one is; paused if it was.
    [[nodiscard]] std::shared_ptr<PlaybackSession> again() const;

    /// Ends without waiting: the receiver is sent a stop, the movie is no longer served.
    void abandon();

  private:
    using Advice = PlaybackWatch::Advice;

    QCoro::Task<> run(std::shared_ptr<PlaybackSession> previous);
    [[nodiscard]] QCoro::Task<bool> reach(std::shared_ptr<PlaybackSession> previous);
    [[nodiscard]] QCoro::Task<VideoControl::Outcome> connect();
    [[nodiscard]] QCoro::Task<bool> begin();
    [[nodiscard]] QCoro::Task<bool> sendPlay();
    [[nodiscard]] QCoro::Task<> watchUntilOver();
    [[nodiscard]] QCoro::Task<> obey();
    [[nodiscard]] QCoro::Task<> poll();
    [[nodiscard]] QCoro::Task<> follow(Advice advice);
    [[nodiscard]] QCoro::Task<> reload();
    [[nodiscard]] QCoro::Task<> seekTo(double seconds);
    [[nodiscard]] QCoro::Task<> setRate(double rate);
    [[nodiscard]] QCoro::Task<> leave();

    [[nodiscard]] bool isAt(const Receiver& receiver) const;
    /// For the session that follows: the open connection, or nothing; this one then leaves.
    [[nodiscard]] std::shared_ptr<VideoControl> giveWay(const Receiver& next);
    void listen();
    [[nodiscard]] State withHold(State state) const;
    [[nodiscard]] bool goesOn() const { return !isOver_ && !wantsStop_; }
    [[nodiscard]] bool hasWishes() const;
    [[nodiscard]] bool isFetched() const;
    [[nodiscard]] double within(double seconds) const;
    void noteError(const ConnectionError& error);
    void conclude(Advice verdict);
    void finish(Phase phase, const QString& reason = {});
    void enter(Phase phase);
    void tellChanges();

    Clock& clock_;
    RemotePlayback::World world_;
    Receiver receiver_;
    RemotePlayback::Item item_;
    std::function<void()> changed_;

    State state_{.phase = Phase::connecting};  // position and duration: of the end, once it is over
    State told_;
    Clock::Instant toldAt_{};
    std::shared_ptr<VideoControl> control_;
    std::unique_ptr<MediaServer::Publication> publication_;
    TrackChoice offeredTracks_;                           // by the publication, as far as it can
    std::unique_ptr<MediaServer::Publication> replaced_;  // until the receiver has let go of it
    std::optional<PlaybackWatch> watch_;
    std::weak_ptr<PlaybackSession> previous_;
    bool replacesOurs_ = false;
    bool isReloading_ = false;
    bool owesStop_ = false;  // the receiver was told to play
    bool isOver_ = false;    // nothing more is wanted but a farewell
    bool isFetchNoted_ = false;
    bool isPatient_ = false;  // tries for a while to reach the receiver
    int missedPolls_ = 0;

    // What the user wants next; the last wish of a kind counts.
    std::optional<double> wantedRate_;
    std::optional<double> wantedSeek_;
    bool wantsStop_ = false;
    std::optional<double> seekUnderWay_;

    Nap nap_;
    Clock::Timer stopDeadline_;
    Completion<bool> left_;
};

}  // namespace velmora
