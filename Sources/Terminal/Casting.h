#pragma once

#include "Sender/CredentialStore.h"
#include "Sender/RemotePlayback.h"
#include "System/Clock.h"
#include "Terminal/CommandLine.h"
#include "Terminal/Keys.h"
#include "Terminal/PreparationJob.h"
#include "Terminal/PreparationReport.h"
#include "Terminal/TelevisionFinder.h"

#include <QCoroTask>
#include <QObject>
#include <QUrl>

#include <memory>
#include <optional>

namespace velmora {

class Discovery;
class MediaServer;
class PositionMemory;
class Terminal;

/// `velmora-cast MOVIE`: finds the television, prepares the movie, plays it, and leaves everything in order.
/// Main thread.
class Casting : public QObject {
    Q_OBJECT

  public:
    /// All of them must outlive it.
    struct World {
        Terminal& terminal;
        Clock& clock;
        PositionMemory& memory;
        Discovery& discovery;
        ReceiverMemory memoryOfReceivers;
    };

    Casting(const CommandLine& line, const World& world);
    ~Casting() override;

    void start();
    /// Ends whatever goes on, and says `finished` when that is done: within seconds, whatever the television
    /// does.
    void interrupt();
    void redraw();

  Q_SIGNALS:
    void finished(int exitStatus);

  private:
    QCoro::Task<> find();
    void prepare();
    void takePrepared();
    QCoro::Task<> reach(PreparedMovie prepared);
    void play(const PreparedMovie& prepared);
    [[nodiscard]] double startPosition(double duration);
    void takeState();
    void tellPhase(const RemotePlayback::State& state);
    void ask(const RemotePlayback::State& state);
    void answer(const QString& secret);
    void leaveUnanswered();
    [[nodiscard]] bool comesBack(const RemotePlayback::State& state);
    void tick();
    void press(Key key);
    void skip(double seconds);
    void stop();
    void rememberPosition();
    void conclude(const RemotePlayback::State& state);
    [[nodiscard]] QString farewell(const RemotePlayback::State& state) const;
    void fail(const QString& reason);
    void finish(int exitStatus);

    CommandLine line_;
    Terminal& terminal_;
    Clock& clock_;
    PositionMemory& memory_;
    Discovery& discovery_;
    ReceiverMemory memoryOfReceivers_;

    QUrl movie_;
    TelevisionFinder finder_;
    Receiver television_;
    PreparationJob job_;
    std::optional<PreparationReport> report_;
    std::unique_ptr<MediaServer> server_;
    std::unique_ptr<RemotePlayback> playback_;

    RemotePlayback::State moving_;  ///< the last state in which the movie played or stood paused
    RemotePlayback::Phase toldPhase_ = RemotePlayback::Phase::idle;
    std::optional<double> seekTarget_;  ///< seconds; while the user is still pressing arrows
    int ticks_ = 0;
    bool isStopping_ = false;
    bool isInterrupted_ = false;
    bool isOver_ = false;
    bool mayComeBack_ = false;  ///< the picture moved since the connection was made
    Clock::Timer ticking_;
    Clock::Timer seekSettling_;
    Clock::Timer leaving_;
    Clock::Timer askingLater_;
};

}  // namespace velmora
