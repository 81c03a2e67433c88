#pragma once

#include "Platform/Linux/LocalEngine.h"

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QSize>
#include <QString>

#include <array>
#include <functional>
#include <future>
#include <memory>
#include <optional>

// NOLINTBEGIN(readability-identifier-naming): mpv's
struct mpv_event;
struct mpv_event_end_file;
struct mpv_event_property;
struct mpv_handle;
// NOLINTEND(readability-identifier-naming)

namespace velmora {

/// Plays one file at a time on this computer, with libmpv, which is loaded for the first file. Main thread
/// only; never waits for mpv.
///
/// mpv shows broken pictures when a track change and a seek overlap, so each waits for the one before, and
/// the first seek after a track change is made twice.
class MpvPlayer : public LocalEngine {
    Q_OBJECT

  public:
    struct Options {
        bool isMute = false;  ///< no sound device is opened; time runs all the same
        /// As mpv's `hwdec`; tried where there is a graphics processor.
        QString hardwareDecoding = QStringLiteral("auto-safe");
    };

    [[nodiscard]] static Maker maker(const Options& options) {
        return [options] { return std::make_unique<MpvPlayer>(options); };
    }

    /// Numbers must be written with a full stop in this process (`LC_NUMERIC`), or mpv refuses to work: the
    /// first player sees to that.
    explicit MpvPlayer(const Options& options, QObject* parent = nullptr);
    ~MpvPlayer() override;

    void load(const QString& file) override;
    void unload() override;
    void setPaused(bool paused) override;
    [[nodiscard]] bool isPaused() const override { return isPaused_; }
    void seek(double seconds, Seek how, Sought done) override;
    void selectTrack(MediaGroup::Kind kind, std::optional<int> number) override;
    /// Played to the end, and not moved since.
    [[nodiscard]] bool hasEnded() const { return hasEnded_; }
    [[nodiscard]] bool isReady() const override { return stage_ == Stage::ready; }
    [[nodiscard]] std::optional<double> position() const override;
    [[nodiscard]] std::optional<double> duration() const override { return duration_; }
    [[nodiscard]] QList<Track> tracks() const override { return tracks_; }
    void setKeepsLastPicture(bool on) override;

    /// As it is to be seen, upright and with square pixels. Absent until ready, and without a picture.
    [[nodiscard]] std::optional<QSize> pictureSize() const { return pictureSize_; }

    /// For whoever draws, see `MpvPicture`; until then pictures are decoded and not drawn. Null until
    /// `started`. Whoever keeps it keeps mpv, which falls silent all the same once the player is gone.
    [[nodiscard]] const std::shared_ptr<mpv_handle>& handle() const { return mpv_; }

  Q_SIGNALS:
    /// There is a `handle` now, and no file in it yet.
    void started();

  private:
    enum class Stage { empty, loading, ready };
    struct WantedSeek {
        double seconds = 0;
        Seek how = Seek::exact;
        Sought done;
    };

    /// What an answer of mpv's is about.
    enum class Reply { none, loading, seekSent, trackChanged, tracks, picture, duration, position };
    static constexpr int replyBits = 4;

    void start();
    void takeStarted();
    void loadNow();

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

    const Options options_;
    struct Start;
    std::shared_ptr<Start> start_;       ///< since when there is one under way
    std::future<mpv_handle*> starting_;  ///< valid until its outcome is taken
    std::shared_ptr<mpv_handle> mpv_;
    QString file_;
    bool keepsLastPicture_ = true;
    Stage stage_ = Stage::empty;
    bool isPaused_ = true;
    bool hasEnded_ = false;
    quint64 generation_ = 0;   ///< of the file; answers to questions about an older one are dropped
    qint64 awaitedEntry_ = 0;  ///< the file's number in mpv's list; 0 until mpv has taken it
    qint64 playingEntry_ = 0;  ///< what mpv is at
    bool isAsking_ = false;    ///< for what there is to know of a loaded file
    std::optional<double> position_;
    std::optional<double> duration_;
    std::optional<QSize> pictureSize_;
    QList<Track> tracks_;

    std::optional<WantedSeek> nextSeek_;
    std::optional<WantedSeek> seeking_;
    bool isSettling_ = false;  ///< a seek has arrived, and its position is being asked for
    std::array<std::optional<int>, 2> nextTrack_;  ///< by kind; 0 turns it off
    bool isChangingTrack_ = false;
    bool haveTracksChanged_ = false;  ///< since the last seek
};

}  // namespace velmora
