#pragma once

#include "Platform/Linux/LinuxPlayerItem.h"
#include "Platform/Linux/LocalEngine.h"
#include "System/Clock.h"
#include "System/Player.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace velmora {

class NetworkOutputContext;
struct Receiver;
struct TrackChoice;

/// One player with two engines: a local one on this computer, and whatever its context plays on a television.
///
/// Where the context has a television, the file is loaded here for its length and its tracks, and stays
/// silent. What is on the television is judged by `RemotePlayback`; when it drops, the position is kept, and
/// `setOutputContext` or `play` attaches again there. Someone who stops the movie at the television, or takes
/// it over, takes the route back to this computer.
///
/// At the movie's end external playback stays active: the movie is over there, not lost.
///
/// The selected tracks are those that the television begins with. One that plays is sent the movie again, at
/// its place and with the new tracks as its default ones: no receiver is known to change tracks when told to.
/// Meanwhile external playback stays active, and the status is `waiting`.
class LinuxPlayer : public Player {
    Q_OBJECT

  public:
    struct Environment {
        LocalEngine::Maker makeLocal;  ///< never empty
        /// Keeps the display lit until the returned object is dropped; may be empty.
        std::function<std::shared_ptr<void>()> lightDisplay{};
    };

    /// The clock must outlive it.
    LinuxPlayer(Clock& clock, Environment environment);
    ~LinuxPlayer() override;

    [[nodiscard]] std::shared_ptr<PlayerItem> currentItem() const override { return item_; }
    void replaceCurrentItem(std::shared_ptr<PlayerItem> item) override;
    void play() override;
    void pause() override;
    [[nodiscard]] TimeControlStatus timeControlStatus() const override { return status_; }
    [[nodiscard]] std::optional<double> currentTime() const override;
    void seek(double seconds, Tolerance tolerance, Seeked seeked) override;
    [[nodiscard]] Observation observeTime(std::chrono::nanoseconds interval, TimeObserver observer) override;
    [[nodiscard]] bool isExternalPlaybackActive() const override { return isExternal_; }
    [[nodiscard]] std::optional<int> externalPlaybackType() const override { return std::nullopt; }
    void setAllowsExternalPlayback(bool on) override;
    bool setOutputContext(OutputContext* context) override;
    void setPausesAtEnd(bool on) override { local_->setKeepsLastPicture(on); }
    void setPreventsDisplaySleep(bool on) override;

    /// For whoever draws its pictures.
    [[nodiscard]] LocalEngine& local() { return *local_; }

  private:
    struct Observer;

    // This computer.
    void takeReady();
    void takeFailure(const QString& reason);
    void takeEnd();
    void takeSelection(MediaGroup::Kind kind);
    void playLocally();

    // The television.
    [[nodiscard]] std::optional<Receiver> television() const;
    void attach(const Receiver& television);
    void steer();
    void follow();
    void followRate(bool plays);
    void detach();
    void takeRemoteEnd(double position);
    void lose(bool isDropped);
    void chooseThere();
    [[nodiscard]] TrackChoice chosenTracks() const;
    void setExternal(bool active);

    // Both.
    void synchronizeSoon();
    void synchronize();
    void updateStatus();
    [[nodiscard]] TimeControlStatus statusNow() const;
    void updateDisplay();
    void arm(const std::shared_ptr<Observer>& observer);
    void tellTime();

    Clock& clock_;
    Environment environment_;
    const std::unique_ptr<LocalEngine> local_;
    std::shared_ptr<LinuxPlayerItem> item_;
    NetworkOutputContext* context_ = nullptr;
    bool allowsExternal_ = true;

    bool wantsToPlay_ = false;
    bool wantsAttachment_ = false;  ///< to the television, once the item is ready and is to play
    bool isAtEnd_ = false;
    std::optional<double> kept_;  ///< where the television was left, until somebody goes on from there
    bool isAttached_ = false;
    QString attachedTo_;      ///< the television's identifier
    bool isDropped_ = false;  ///< by the television, and not attached again yet
    bool isExternal_ = false;
    bool remotePlays_ = false;       ///< what the television was last told, or did by itself
    bool awaitsRemoteRate_ = false;  ///< it has not followed yet
    Clock::Timer choosing_;          ///< of tracks, by somebody who may not be through with it

    TimeControlStatus status_ = TimeControlStatus::paused;
    bool isSynchronizing_ = false;
    quint64 remoteSeeks_ = 0;
    bool preventsDisplaySleep_ = false;
    std::shared_ptr<void> litDisplay_;
    std::vector<std::weak_ptr<Observer>> observers_;
};

class LinuxPlayerFactory : public PlayerFactory {
  public:
    LinuxPlayerFactory(Clock& clock, LinuxPlayer::Environment environment)
        : clock_(clock), environment_(std::move(environment)) {}

    [[nodiscard]] std::shared_ptr<Player> makePlayer() override;
    [[nodiscard]] std::shared_ptr<PlayerItem> makeItem(const QUrl& file) override;

  private:
    Clock& clock_;
    LinuxPlayer::Environment environment_;
};

}  // namespace velmora
