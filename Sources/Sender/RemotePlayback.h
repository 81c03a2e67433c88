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
struct ReceiverMemory;

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
        TrackChoice tracks{};
    };

    enum class Phase {
        idle,           ///< nothing asked for yet
        connecting,     ///< reaching the receiver
        waking,         ///< the receiver takes its time: it gets up, or asks its viewer for consent
        needsPin,       ///< the receiver shows a PIN, to be given to `supply`; `reason` tells why again
        needsPassword,  ///< to be given to `supply`; `reason` tells why again
        loading,        ///< the receiver has the movie's address and shows no moving picture yet
        playing,        ///< the position advances
        paused,
        ended,      ///< played to the end
        stopped,    ///< stopped by `stop`, or at the television
        takenOver,  ///< another device plays there now
        dropped,    ///< the receiver is gone; the last position is kept
        failed,     ///< `reason` tells
    };
    struct State {
        Phase phase = Phase::idle;
        double position = 0;  ///< seconds, interpolated between the receiver's reports
        double duration = 0;  ///< seconds; 0 when unknown
        QString reason{};     ///< plain words for the phases that say so, and a stop at the television
        /// Seconds for which the receiver takes no PIN yet; it tells no change while it runs down.
        double retryIn = 0;

        [[nodiscard]] bool isOver() const { return phase >= Phase::ended; }
    };

    /// What it needs of the rest of the program.
    struct World {
        using Published = std::expected<std::unique_ptr<MediaServer::Publication>, QString>;

        std::function<std::shared_ptr<VideoControl>(const Receiver& receiver)> control;
        std::function<Published(const QString& path, const QHostAddress& receiver, const TrackChoice& tracks)>
            publish;
        quint16 mediaPort = 0;  ///< for the words about firewalls
    };

    /// Clock, server and what is kept about receivers must outlive it.
    RemotePlayback(Clock& clock, MediaServer& server, const ReceiverMemory& memory,
                   QObject* parent = nullptr);
    /// Forgets pairings and passwords when it goes.
    RemotePlayback(Clock& clock, MediaServer& server, QObject* parent = nullptr);
    RemotePlayback(Clock& clock, World world, QObject* parent = nullptr);
    /// A movie that still plays is sent a stop, and nobody waits for the answer. To know that it stopped,
    /// call `stop` and wait for the state.
    ~RemotePlayback() override;

    /// Starts, or replaces what plays. The outcome shows in `state`.
    void play(const Receiver& receiver, const Item& item);

    /// Connects again and goes on where the last movie was when its connection was lost, or could not be
    /// made; for up to a minute it is tried again and again. Paused if it was. Without effect in other
    /// phases.
    void reattach();

    /// The PIN or the password that the phase asks for. Without effect when it asks for nothing.
    void supply(const QString& secret);

    /// While the movie loads, these wait for the picture.
    void pause();
    void resume();
    /// Receivers begin with the tracks that the file has enabled, and are told of no others later: one that
    /// shows the movie loads it again, at its position, paused if it was. While the movie loads, this waits
    /// for the picture. Without effect on what plays where the file's tracks cannot be chosen.
    void chooseTracks(const TrackChoice& tracks);
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
    void start(std::shared_ptr<PlaybackSession> next);
    void scheduleChange();

    Clock& clock_;
    World world_;
    std::shared_ptr<PlaybackSession> session_;
    bool isChangeScheduled_ = false;
};

}  // namespace velmora
