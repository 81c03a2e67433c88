#pragma once

#include "Playback/PositionMemory.h"
#include "Playback/SessionPhase.h"
#include "Playback/Tracks.h"
#include "Playback/Waits.h"
#include "Playback/World.h"
#include "System/AirPlay.h"
#include "System/Desktop.h"
#include "System/Player.h"
#include "System/SleepGuard.h"

#include <QCoroTask>
#include <QImage>
#include <QMap>
#include <QObject>
#include <QPointer>

#include <memory>
#include <optional>

namespace velmora {

/// One window's movie: opened, prepared, played here or handed over to a television, steered and remembered.
/// Main thread only. No operation fails to its caller; what goes wrong shows in `phase`.
///
/// Whatever waits asks a `Ticket` afterwards whether it is still wanted, which takes the place of locks and
/// of taking things back.
class Session : public QObject {
    Q_OBJECT

  public:
    using Phase = SessionPhase;
    using LastMovie = PositionMemory::LastMovie;

    struct Timeline {
        double position = 0;  ///< seconds
        double duration = 0;  ///< seconds

        friend bool operator==(const Timeline&, const Timeline&) = default;
    };

    /// The world and the context, which may be null, must outlive it.
    Session(World& world, OutputContext* context, QObject* parent = nullptr);
    /// Remembers where the movie is and stops it, here and on the television.
    ~Session() override;

    [[nodiscard]] const Phase& phase() const { return phase_; }
    [[nodiscard]] QString title() const { return phase_.title(); }
    [[nodiscard]] std::optional<QUrl> currentSource() const { return phase_.source(); }
    /// What the empty window offers to go on with.
    [[nodiscard]] const std::optional<LastMovie>& lastMovie() const { return lastMovie_; }
    [[nodiscard]] static bool toolsMissing();

    /// Never null; another one after a handover.
    [[nodiscard]] const std::shared_ptr<Player>& player() const { return player_; }
    [[nodiscard]] AirPlay& airPlay() { return airPlay_; }
    [[nodiscard]] bool isOnAppleTV() const { return isOnAppleTV_; }
    [[nodiscard]] bool isPlaying() const { return isPlaying_; }
    /// The device that a handover to is under way.
    [[nodiscard]] const std::optional<QString>& handingOverTo() const { return handingOverTo_; }
    /// The chosen device did not take the video, or lost it.
    [[nodiscard]] bool isStalled() const;
    /// The player's own picture belongs into the window.
    [[nodiscard]] bool showsLiveFrame() const;

    /// Seconds; the duration is 0 when unknown.
    [[nodiscard]] double currentTime() const { return currentTime_; }
    [[nodiscard]] double duration() const { return duration_; }
    [[nodiscard]] bool isSeeking() const { return isSeeking_; }
    /// Of what is playing, or of what is offered to go on with.
    [[nodiscard]] std::optional<Timeline> savedTimeline() const;

    /// Absent when there is nothing to choose from: no subtitles, or a single audio track.
    [[nodiscard]] const std::optional<MediaGroup>& subtitleGroup() const { return subtitleGroup_; }
    [[nodiscard]] const std::optional<MediaGroup>& audioGroup() const { return audioGroup_; }
    [[nodiscard]] const std::optional<MediaOption>& selectedSubtitle() const { return selectedSubtitle_; }
    [[nodiscard]] const std::optional<MediaOption>& selectedAudio() const { return selectedAudio_; }
    [[nodiscard]] const Tracks::Names& trackNames() const { return trackNames_; }

    /// Null when there is none.
    [[nodiscard]] const QImage& poster() const { return poster_; }
    [[nodiscard]] const std::shared_ptr<Thumbnails>& thumbnails() const { return thumbnails_; }
    [[nodiscard]] const QImage& scrubPreview() const { return scrubPreview_; }
    /// Set by whoever scrubs; taken away when a seek is over.
    void setScrubPreview(const QImage& preview);

    /// Opens a movie, the movie in a folder, or a subtitle file: one for the current or last movie is brought
    /// next to it, and that movie is opened again.
    void open(const QUrl& location, bool forceTranscode);
    void chooseFile();
    static void pickMovie(Desktop& desktop, Desktop::Picked picked);
    /// Closes the movie, whatever it is doing.
    void cancel();
    void revealInFinder();
    void startLastMovieOver();

    /// The main play button: whatever comes next on the way to the television.
    void playAction();
    [[nodiscard]] bool canPlayAction() const;
    /// Opens the picker when a movie is there and no device is chosen.
    void askForAppleTV();
    /// Hands over again to a device that did not take the video.
    void retryHandover();

    /// Only while the movie is on the television; without effect otherwise.
    [[nodiscard]] bool canControlPlayback() const;
    void seek(double seconds);
    void togglePlayPause();

    /// The current movie, or the one offered, from its beginning.
    void startOver();
    [[nodiscard]] bool canStartOver() const;

    /// Absent turns the subtitles off. Kept for as long as the movie is open, wherever it plays.
    void select(const std::optional<MediaOption>& option, MediaGroup::Kind kind);

  Q_SIGNALS:
    void phaseChanged();
    void lastMovieChanged();
    void playerChanged();
    void routeChanged();     ///< `isOnAppleTV`, `handingOverTo`
    void playingChanged();   ///< `isPlaying`
    void timelineChanged();  ///< `currentTime`, `duration`, `isSeeking`
    void tracksChanged();
    void artworkChanged();  ///< `poster`, `thumbnails`, `scrubPreview`

  private:
    /// What a start of playback is given. `time` is absent for the beginning.
    struct Start {
        QUrl file;
        QUrl source;
        std::optional<double> time;
        bool play = false;
    };
    /// How far a player that is adopted has come.
    enum class Progress { empty, loadedAndSought };

    /// Taken before a wait and asked after it.
    class Ticket {
      public:
        explicit Ticket(Session* session)
            : session_(session), player_(session->player_), generation_(session->swapGeneration_) {}
        [[nodiscard]] bool isForThisStart() const {
            return session_ && session_->swapGeneration_ == generation_;
        }
        /// Of this start, too.
        [[nodiscard]] bool isForThisPlayer() const {
            return isForThisStart() && session_->player_ == player_.lock();
        }

      private:
        QPointer<Session> session_;
        std::weak_ptr<Player> player_;
        int generation_;
    };

    // SessionOpening.cpp
    void openWithSubtitle(const QUrl& subtitle, const QUrl& movie, bool forceTranscode);
    void openMovie(const QUrl& movie, bool forceTranscode);
    void prepare(const QUrl& movie, bool forceTranscode);
    void prepared(const QUrl& movie, const MoviePreparer::Outcome& outcome, bool forceTranscode);
    void fail(const QString& message);
    void loadLastMovie();
    void rememberPosition(std::optional<double> time);
    Q_INVOKABLE void prepareToQuit();

    // SessionPlayback.cpp
    [[nodiscard]] std::shared_ptr<Player> makePlayer();
    void startPlayback(const Start& start);
    void adopt(std::shared_ptr<Player> player, const Start& start, Progress progress);
    void takeItem(const std::shared_ptr<PlayerItem>& item, const QUrl& source);
    void noteLength(const PlayerItem& item);
    void itemStatusChanged(const PlayerItem& item, const QUrl& source);
    void playbackFailed(const QString& error, const QUrl& source);
    void stopPlayback();
    [[nodiscard]] std::optional<double> placeToGoOn() const;
    void followRoute(const std::optional<QString>& deviceName);

    // SessionObservers.cpp
    void observePlayer();
    void detachObservers();
    void noteExternalPlayback();
    void noteTimeControlStatus();
    void updateIsPlaying();
    void tick(std::optional<double> time);

    // SessionHandover.cpp
    QCoro::Task<> handOver(Start start);
    [[nodiscard]] QCoro::Task<> attempt(Start start, int number);
    [[nodiscard]] QCoro::Task<> seekBeforePlaying(double target, int number);
    [[nodiscard]] QCoro::Task<> waitForExternalPlayback();
    void abandonHandover();

    // SessionRecovery.cpp
    QCoro::Task<> verifyResume(double target);
    QCoro::Task<> nudgeIfStillPaused();
    QCoro::Task<> recoverExternalPlayback();
    QCoro::Task<> pauseIfStalled();
    QCoro::Task<> noteLastingDrop();

    // SessionTracks.cpp
    QCoro::Task<> loadTracks(std::weak_ptr<PlayerItem> item);
    [[nodiscard]] bool isPlayed(const std::weak_ptr<PlayerItem>& item) const;
    [[nodiscard]] QCoro::Task<std::optional<MediaGroup>> loadGroup(MediaGroup::Kind kind);
    enum class Place { here, television };
    void preselectTracks(const std::shared_ptr<PlayerItem>& item, Place place);
    void preselect(PlayerItem& item, const MediaGroup& group);
    [[nodiscard]] std::optional<MediaOption> switchOnSubtitles(PlayerItem& item, const MediaGroup& subtitles,
                                                               const Tracks::Names& names);
    void showTracks(const std::optional<MediaGroup>& subtitles, const std::optional<MediaGroup>& audio);
    void clearTracks();

    // SessionControls.cpp
    QCoro::Task<> watchSeek(int number);
    void finishSeek();

    // SessionArtwork.cpp
    void capturePoster(std::optional<double> time);
    void captureEarlyPoster(const QUrl& movie);
    void loadThumbnails(const QUrl& movie);
    void showPoster(const std::optional<QUrl>& movie);
    void setPoster(const QImage& poster);
    void showThumbnails(const std::shared_ptr<Thumbnails>& strip);

    void enter(Phase phase);
    void setOnAppleTV(bool on);
    void setHandingOverTo(const std::optional<QString>& deviceName);
    void setTimeline(double time, double duration);
    void setSeeking(bool on);

    World& world_;
    PositionMemory memory_;
    AirPlay airPlay_;
    SleepGuard sleepGuard_;

    Phase phase_;
    std::optional<LastMovie> lastMovie_;
    bool lastWasTranscode_ = false;
    Job preparation_;

    std::shared_ptr<Player> player_;
    QList<QMetaObject::Connection> playerObservers_;
    QList<QMetaObject::Connection> itemObservers_;
    Player::Observation timeObserver_;
    int ticks_ = 0;
    bool isOnAppleTV_ = false;
    bool isPlaying_ = false;

    int swapGeneration_ = 0;  ///< of the latest start
    std::optional<QString> handingOverTo_;
    std::shared_ptr<Player> incomingPlayer_;  ///< not adopted yet
    std::optional<Clock::Instant> lastExternalDrop_;

    double currentTime_ = 0;
    double duration_ = 0;
    bool isSeeking_ = false;
    int seekGeneration_ = 0;
    int toggles_ = 0;  ///< of playing and pausing, by the viewer

    std::optional<MediaGroup> subtitleGroup_;
    std::optional<MediaGroup> audioGroup_;
    std::optional<MediaOption> selectedSubtitle_;
    std::optional<MediaOption> selectedAudio_;
    Tracks::Names trackNames_;
    QMap<MediaGroup::Kind, std::optional<MediaOption>> chosenTracks_;  ///< by the viewer, for this movie

    QImage poster_;
    QImage scrubPreview_;
    std::shared_ptr<Thumbnails> thumbnails_;
    Job posterJob_;
    Job earlyPosterJob_;
    Job thumbnailJob_;

    Waits waits_;
    Waits handoverWaits_;
};

}  // namespace velmora
