#pragma once

#include "System/Player.h"

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QString>

#include <array>
#include <functional>
#include <memory>
#include <optional>

struct mpv_event;
struct mpv_event_end_file;
struct mpv_event_property;
struct mpv_handle;

namespace velmora {

/// Plays one file at a time on this computer, with libmpv. Main thread only; never waits for mpv, but for a
/// moment on construction and destruction.
///
/// mpv shows broken pictures when a track change and a seek overlap, so each waits for the one before, and
/// the first seek after a track change is made twice.
class MpvPlayer : public QObject {
    Q_OBJECT

  public:
    struct Options {
        bool isMute = false;  ///< no sound device is opened; time runs all the same
        QString hardwareDecoding = QStringLiteral("auto-safe");
    };

    struct Track {
        MediaGroup::Kind kind = MediaGroup::Kind::audible;
        int number = 0;  ///< from 1 in its kind, as in the file
        QString title{};
        QString language{};  ///< the tag as the file has it
        int channels = 0;    ///< 0 when unknown
        bool isForced = false;
        bool describesSound = false;
        bool isSelected = false;  ///< when the file was loaded

        friend bool operator==(const Track&, const Track&) = default;
    };

    enum class Seek {
        exact,
        keyFrame,  ///< to the key frame before; quicker
    };

    /// Numbers must be written with a full stop in this process (`LC_NUMERIC`), or mpv refuses to work: the
    /// first player sees to that.
    explicit MpvPlayer(const Options& options, QObject* parent = nullptr);
    ~MpvPlayer() override;

    /// Starts over with this file, paused unless told otherwise. The outcome is `ready` or `failed`.
    void load(const QString& file);
    void unload();

    void setPaused(bool paused);
    [[nodiscard]] bool isPaused() const { return isPaused_; }

    /// Waits for the file to be ready, for the seek under way and for a track change. `done` is called once,
    /// from the event loop: with false when another seek or another file came between.
    void seek(double seconds, Seek how, std::function<void(bool finished)> done);
    /// A number out of `tracks`; absent turns the kind off.
    void selectTrack(MediaGroup::Kind kind, std::optional<int> number);

    /// Played to the end, and not moved since.
    [[nodiscard]] bool hasEnded() const { return hasEnded_; }
    [[nodiscard]] bool isReady() const { return stage_ == Stage::ready; }
    /// Seconds; during a seek its target. Absent without a file.
    [[nodiscard]] std::optional<double> position() const;
    /// Seconds; absent until ready, and where the file does not tell.
    [[nodiscard]] std::optional<double> duration() const { return duration_; }
    /// Empty until ready.
    [[nodiscard]] const QList<Track>& tracks() const { return tracks_; }

    /// Whether the last picture stays at the end.
    void setKeepsLastPicture(bool on);

    /// For whoever draws, see `MpvPicture`; until then pictures are decoded and not drawn. Null when libmpv
    /// does not start. Whoever keeps it keeps mpv, which falls silent all the same once the player is gone.
    [[nodiscard]] const std::shared_ptr<mpv_handle>& handle() const { return mpv_; }

  Q_SIGNALS:
    void ready();
    /// The file cannot be played, or breaks off: in plain words.
    void failed(const QString& reason);
    /// Played to the end, and paused there.
    void ended();

  private:
    enum class Stage { empty, loading, ready };
    struct WantedSeek {
        double seconds = 0;
        Seek how = Seek::exact;
        std::function<void(bool)> done;
    };

    /// What an answer of mpv's is about.
    enum class Reply { none, loading, seekSent, trackChanged, tracks, duration, position };
    static constexpr int replyBits = 4;

    void takeEvents();
    void take(const mpv_event& event);
    void takeReply(const mpv_event& event);
    void takeProperty(const mpv_event_property& property);
    void takeRestart();
    void takeEnd(const mpv_event_end_file& end);

    void goOn();
    void sendSeek();
    void endSeek(bool finished);
    void answer(std::optional<WantedSeek>& seek, bool finished);
    void reset();
    [[nodiscard]] quint64 tagged(Reply reply) const;
    void send(const QList<QByteArray>& words, Reply reply);
    void set(const char* property, const QByteArray& value, Reply reply);

    std::shared_ptr<mpv_handle> mpv_;
    Stage stage_ = Stage::empty;
    bool isPaused_ = true;
    bool hasEnded_ = false;
    quint64 generation_ = 0;   ///< of the file; answers to questions about an older one are dropped
    qint64 awaitedEntry_ = 0;  ///< the file's number in mpv's list; 0 until mpv has taken it
    qint64 playingEntry_ = 0;  ///< what mpv is at
    bool isAsking_ = false;    ///< for what there is to know of a loaded file
    std::optional<double> position_;
    std::optional<double> duration_;
    QList<Track> tracks_;

    std::optional<WantedSeek> nextSeek_;
    std::optional<WantedSeek> seeking_;
    bool isSettling_ = false;  ///< a seek has arrived, and its position is being asked for
    std::array<std::optional<int>, 2> nextTrack_;  ///< by kind; 0 turns it off
    bool isChangingTrack_ = false;
    bool haveTracksChanged_ = false;  ///< since the last seek
};

}  // namespace velmora
