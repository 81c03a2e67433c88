#pragma once

#include "Playback/PositionMemory.h"
#include "Sender/CredentialStore.h"
#include "Sender/RemotePlayback.h"
#include "System/Clock.h"
#include "Terminal/CommandLine.h"
#include "Terminal/Keys.h"
#include "Terminal/PreparationReport.h"
#include "Terminal/SessionParts.h"
#include "Terminal/TelevisionFinder.h"

#include <QCoroTask>
#include <QObject>
#include <QUrl>

#include <memory>
#include <optional>

namespace velmora {

class Discovery;
class Session;
class Terminal;

/// `velmora-cast MOVIE`: finds the television, has a session prepare the movie and play it there, and leaves
/// everything in order. What the session makes of the movie shows on the terminal; so does what the
/// television says, which a window tells in other ways. Main thread.
class Casting : public QObject {
    Q_OBJECT

  public:
    /// All of them must outlive it.
    struct World {
        Terminal& terminal;
        Clock& clock;
        Preferences& preferences;
        Discovery& discovery;
        ReceiverMemory memoryOfReceivers;
    };

    Casting(const CommandLine& line, const World& world);
    /// Waits for a preparation that was interrupted to clean up behind itself.
    ~Casting() override;

    void start();
    /// Ends whatever goes on, and says `finished` when that is done: within seconds, whatever the television
    /// does.
    void interrupt();
    void redraw();

  Q_SIGNALS:
    void finished(int exitStatus);

  private:
    using Phase = RemotePlayback::Phase;
    using State = RemotePlayback::State;

    QCoro::Task<> find();
    void open();
    void followSession();
    void startPlaying(const QString& note);

    [[nodiscard]] RemoteOutput& output() { return parts_.context().output(); }
    [[nodiscard]] State state();
    void followTelevision();
    void tellStart(const State& state);
    void tellPhase(const State& state);
    [[nodiscard]] bool isComingBack(const State& state);
    void goOnWaiting();
    void ask(const State& state);
    void answer(const QString& secret);
    void leaveUnanswered();

    void tick();
    void press(Key key);
    void skip(double seconds);
    void changeTrack(MediaGroup::Kind kind);
    void stop();
    void conclude(const State& state);
    [[nodiscard]] QString farewell(const State& state) const;
    void fail(const QString& reason);
    void finish(int exitStatus);

    CommandLine line_;
    Terminal& terminal_;
    Clock& clock_;
    PositionMemory memory_;
    Discovery& discovery_;

    QUrl movie_;
    SessionParts parts_;
    TelevisionFinder finder_;
    QString television_;  ///< its name
    std::unique_ptr<Session> session_;
    std::optional<PreparationReport> report_;

    Phase toldPhase_ = Phase::idle;
    bool isStartTold_ = false;
    bool isStopping_ = false;
    bool isInterrupted_ = false;
    bool isOver_ = false;
    bool hasMoved_ = false;     ///< the picture, since the connection was made
    bool wasPaused_ = false;    ///< when it was last seen
    bool isAttaching_ = false;  ///< again, after the connection was lost
    Clock::Timer ticking_;
    Clock::Timer leaving_;
    Clock::Timer askingLater_;
};

}  // namespace velmora
