#pragma once

#include "Sender/MediaServer.h"
#include "Sender/Receiver.h"
#include "System/Clock.h"

#include <QObject>
#include <QString>

#include <expected>
#include <functional>
#include <memory>

namespace velmora {

class PlaybackSession;
class VideoControl;

/// One movie on one receiver: started, watched, steered and stopped. Main thread only.
///
/// The receiver's words are not believed: `/play` is answered 200 whatever happens next, and "playing" events
/// come for movies that never start. Only a position that advances counts as playing.
class RemotePlayback : public QObject {
    Q_OBJECT

  public:
    struct Item {
        QString file;              ///< path of the prepared movie
        double duration = 0;       ///< seconds; 0 when unknown
        double startPosition = 0;  ///< seconds
    };

    enum class Phase {
        idle,        ///< nothing asked for yet
        connecting,  ///< reaching the receiver
        loading,     ///< the receiver has the movie's address and shows no moving picture yet
        playing,     ///< the position advances
        paused,
        ended,    ///< played to the end
        stopped,  ///< stopped by `stop`, or at the television
        dropped,  ///< the receiver is gone; the last position is kept
        failed,   ///< `reason` tells
    };
    struct State {
        Phase phase = Phase::idle;
        double position = 0;  ///< seconds, interpolated between the receiver's reports
        double duration = 0;  ///< seconds; 0 when unknown
        QString reason{};     ///< plain words for `failed`, `dropped` and a stop at the television

        [[nodiscard]] bool isOver() const { return phase >= Phase::ended; }
    };

    /// What it needs of the rest of the program.
    struct World {
        using Published = std::expected<std::unique_ptr<MediaServer::Publication>, QString>;

        std::function<std::shared_ptr<VideoControl>(const Receiver& receiver)> control;
        std::function<Published(const QString& path, const QHostAddress& receiver)> publish;
        quint16 mediaPort = 0;  ///< for the words about firewalls
    };

    /// Clock and server must outlive it.
    RemotePlayback(Clock& clock, MediaServer& server, QObject* parent = nullptr);
    RemotePlayback(Clock& clock, World world, QObject* parent = nullptr);
    /// A movie that still plays is sent a stop, and nobody waits for the answer. To know that it stopped,
    /// call `stop` and wait for the state.
    ~RemotePlayback() override;

    /// Starts, or replaces what plays. The outcome shows in `state`.
    void play(const Receiver& receiver, const Item& item);

    /// While the movie loads, these wait for the picture.
    void pause();
    void resume();
    /// Seconds, clamped into the movie. Quick successive seeks collapse into the last one.
    void seek(double seconds);

    /// Asks the receiver to stop, and waits for its answer no longer than a few seconds; `state` then is
    /// `stopped`. Without effect when nothing plays.
    void stop();

    [[nodiscard]] State state() const;

  Q_SIGNALS:
    /// The phase, the duration or the reason changed, or the position jumped. From the event loop, never from
    /// inside a call.
    void stateChanged();

  private:
    void scheduleChange();

    Clock& clock_;
    World world_;
    std::shared_ptr<PlaybackSession> session_;
    bool isChangeScheduled_ = false;
};

}  // namespace velmora
