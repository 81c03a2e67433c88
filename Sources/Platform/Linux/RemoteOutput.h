#pragma once

#include "Sender/RemotePlayback.h"

#include <QCoroTask>
#include <QObject>
#include <QString>

#include <expected>
#include <functional>
#include <memory>
#include <optional>

namespace velmora {

/// What one window plays on televisions, whichever of its players asks. Main thread only.
///
/// Players come and go while a television is being reached: the next one that wants the same movie there goes
/// on with what the one before began, so that a television which is slow to wake, or shows a PIN, is not
/// started over.
class RemoteOutput : public QObject {
    Q_OBJECT

  public:
    using Resolved = std::expected<Receiver, QString>;
    using Made = std::expected<std::unique_ptr<RemotePlayback>, QString>;

    struct World {
        std::function<QCoro::Task<Resolved>(Receiver receiver)> resolve;  ///< to where it is reached now
        std::function<Made()> makePlayback;  ///< called once, when something is to be played first
    };

    RemoteOutput(Clock& clock, World world, QObject* parent = nullptr);

    /// Plays the item there from its start position, or goes on with what was begun or lost there. The one
    /// who asks is the user from now on; the user before is not told.
    void attach(const QObject* user, const Receiver& receiver, const RemotePlayback::Item& item);
    enum class Release {
        forNow,   ///< the next player may want it: what has not begun to play yet goes on for some seconds
        forGood,  ///< the window's output goes elsewhere
    };
    /// The user has no more use for it: what plays is stopped.
    void release(const QObject* user, Release release);
    [[nodiscard]] bool isUsedBy(const QObject* user) const { return user_ == user; }

    /// What was begun waits for the viewer's code or password, or for the television to wake.
    [[nodiscard]] bool awaitsViewer() const;
    /// Ends what was begun, whoever uses it: nobody will go on with it.
    void end();

    void pause();
    void resume();
    /// Seconds.
    void seek(double seconds);
    /// Takes part in the first start where that is still to come, else as of `RemotePlayback`. Without effect
    /// when nothing was begun.
    void chooseTracks(const TrackChoice& tracks);

    [[nodiscard]] RemotePlayback::State state() const;

    /// Stops what plays, and calls `done` from the event loop once the television has answered, or has had
    /// its few seconds for that. For closing a window and for quitting.
    void finish(std::function<void()> done);

    /// The playback for what else it has to tell and to ask; null before the first movie.
    [[nodiscard]] RemotePlayback* playback() const { return playback_.get(); }

  Q_SIGNALS:
    /// As of `RemotePlayback`.
    void stateChanged();

  private:
    struct Begun {
        Receiver receiver;
        RemotePlayback::Item item;
    };

    [[nodiscard]] bool isBegun(const Begun& wanted) const;
    QCoro::Task<> begin(quint64 start, Begun begun);
    void play(const Begun& begun);
    void fail(const QString& reason);
    void leave();
    void tellLater();
    void takeState();

    Clock& clock_;
    World world_;
    std::unique_ptr<RemotePlayback> playback_;
    const QObject* user_ = nullptr;
    std::optional<Begun> begun_;
    std::optional<RemotePlayback::State> own_;  ///< while the receiver is looked for, and when that fails
    bool isPaused_ = false;                     ///< asked for before there was a playback to ask
    quint64 starts_ = 0;
    Clock::Timer lingering_;
    std::function<void()> finished_;
    Clock::Timer finishing_;
};

}  // namespace velmora
