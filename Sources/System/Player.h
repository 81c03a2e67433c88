#pragma once

#include <QList>
#include <QObject>
#include <QString>
#include <QUrl>

#include <chrono>
#include <functional>
#include <limits>
#include <memory>
#include <optional>

namespace velmora {

class OutputContext;

/// One choice in a `MediaGroup`. Equal values are the same option of the same item.
struct MediaOption {
    QString identifier;               ///< unique in its item, over both groups
    QString displayName;              ///< the player's own name for it; may be generic ("English")
    std::optional<QString> language;  ///< the tag as the file has it
    bool isTrack = true;              ///< stands for a track of the file
    bool hasOnlyForcedSubtitles = false;
    bool describesSound = false;  ///< for the deaf and hard of hearing

    friend bool operator==(const MediaOption&, const MediaOption&) = default;
};

/// The audio tracks or the subtitles of an item, in the file's order.
struct MediaGroup {
    enum class Kind { audible, legible };

    Kind kind = Kind::audible;
    QList<MediaOption> options;

    friend bool operator==(const MediaGroup&, const MediaGroup&) = default;
};

/// One file to play. Main thread only. It is read once it is a player's current item; a failure shows in
/// `status`.
class PlayerItem : public QObject {
    Q_OBJECT

  public:
    /// The numbers are written to the log.
    enum class Status { unknown = 0, readyToPlay = 1, failed = 2 };

    using GroupLoaded = std::function<void(const std::optional<MediaGroup>& group)>;

    using QObject::QObject;

    [[nodiscard]] virtual QUrl file() const = 0;

    /// From `unknown` to one of the others, and from `readyToPlay` to `failed`. Never back.
    [[nodiscard]] virtual Status status() const = 0;

    /// Why it failed, for the user; empty otherwise.
    [[nodiscard]] virtual QString error() const = 0;

    /// Seconds; absent until known.
    [[nodiscard]] virtual std::optional<double> duration() const = 0;

    /// Calls `loaded` once from the event loop; absent when the file has nothing of that kind, or when the
    /// item has failed. An item that is destroyed first does not call.
    virtual void loadGroup(MediaGroup::Kind kind, GroupLoaded loaded) = 0;

    /// What is on; absent when nothing is, or the groups are not known yet.
    [[nodiscard]] virtual std::optional<MediaOption> selected(MediaGroup::Kind kind) const = 0;

    /// Absent turns the group off. `selected` answers accordingly at once.
    virtual void select(const std::optional<MediaOption>& option, MediaGroup::Kind kind) = 0;

  Q_SIGNALS:
    void statusChanged();

    /// It began to play and broke off before its end. `error` may be empty.
    void failedToPlayToEnd(const QString& error);
};

/// Plays one item at a time, here or on the device of its output context. Main thread only.
///
/// *Play* with a context whose device takes video means the device: nothing is heard or seen on this
/// computer. External playback becomes active once the device really shows the movie, and inactive when the
/// device is lost; time and status follow the device while it is active. `setOutputContext` with the same
/// context after a loss attaches again where the movie stopped.
///
/// Signals may come from inside a call. Destroying the player ends playback here and on the device.
class Player : public QObject {
    Q_OBJECT

  public:
    enum class TimeControlStatus { paused, waiting, playing };

    /// How far from its target a seek may land, in seconds.
    struct Tolerance {
        static constexpr double anywhere = std::numeric_limits<double>::infinity();
        double before = anywhere;
        double after = anywhere;
    };

    /// Ends an observation when it is destroyed; that may be inside the observer's own call, and may be after
    /// the player is gone.
    class Observation {
      public:
        Observation() = default;
        explicit Observation(std::shared_ptr<void> keepAlive) : keepAlive_(std::move(keepAlive)) {}

      private:
        std::shared_ptr<void> keepAlive_;
    };

    using Seeked = std::function<void(bool finished)>;
    using TimeObserver = std::function<void(std::optional<double> seconds)>;

    using QObject::QObject;

    [[nodiscard]] virtual std::shared_ptr<PlayerItem> currentItem() const = 0;
    /// Null removes the item. A new item begins paused or playing as the player is at that moment.
    virtual void replaceCurrentItem(std::shared_ptr<PlayerItem> item) = 0;

    /// Both take effect in `timeControlStatus`, its signal included, before they return. Without an item, and
    /// while an item loads or a device is being reached, a player that is told to play is `waiting`.
    virtual void play() = 0;
    virtual void pause() = 0;
    /// `paused` also when someone paused at the device, and at the item's end (see `setPausesAtEnd`).
    [[nodiscard]] virtual TimeControlStatus timeControlStatus() const = 0;

    /// Seconds; absent without an item and whenever there is no meaningful number.
    [[nodiscard]] virtual std::optional<double> currentTime() const = 0;

    /// Calls `seeked` once from the event loop; `finished` is false when another seek or another item came
    /// between. A player that is destroyed first does not call. Before the item is ready the seek waits.
    virtual void seek(double seconds, Tolerance tolerance, Seeked seeked) = 0;

    /// Calls `observer` about every `interval` while time runs, and when it jumps.
    [[nodiscard]] virtual Observation observeTime(std::chrono::nanoseconds interval,
                                                  TimeObserver observer) = 0;

    [[nodiscard]] virtual bool isExternalPlaybackActive() const = 0;
    /// The platform's own number for how the device is fed, for the log; absent when it has none.
    [[nodiscard]] virtual std::optional<int> externalPlaybackType() const = 0;
    virtual void setAllowsExternalPlayback(bool on) = 0;

    /// Which device *play* means. The context must outlive the player; setting it again re-attaches. False
    /// when this player cannot have one: it then plays on this computer.
    virtual bool setOutputContext(OutputContext* context) = 0;

    /// Whether it pauses on the last picture rather than going on to nothing.
    virtual void setPausesAtEnd(bool on) = 0;
    /// Whether the display stays lit while a picture moves on it.
    virtual void setPreventsDisplaySleep(bool on) = 0;

  Q_SIGNALS:
    void externalPlaybackActiveChanged();
    void timeControlStatusChanged();
};

class PlayerFactory {
  public:
    PlayerFactory() = default;
    PlayerFactory(const PlayerFactory&) = delete;
    PlayerFactory& operator=(const PlayerFactory&) = delete;
    virtual ~PlayerFactory() = default;

    /// Never null. Several players may exist at once; all but one are on their way in or out.
    [[nodiscard]] virtual std::shared_ptr<Player> makePlayer() = 0;
    [[nodiscard]] virtual std::shared_ptr<PlayerItem> makeItem(const QUrl& file) = 0;
};

}  // namespace velmora
