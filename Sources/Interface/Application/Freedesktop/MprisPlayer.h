#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>
#include <QUrl>
#include <QVariantMap>

#include <functional>
#include <optional>

namespace velmora {

/// What media keys and panels see of one window. A value.
struct MprisState {
    enum class Status { stopped, paused, playing };

    struct Track {
        int number = 0;  ///< another one for each movie that is opened
        QString title;
        QUrl movie;
        std::optional<double> duration;  ///< seconds
        QUrl art;                        ///< an image file; empty when there is none

        friend bool operator==(const Track&, const Track&) = default;
    };

    Status status = Status::stopped;
    std::optional<Track> track{};
    bool canPlay = false;
    bool canPause = false;
    bool canSeek = false;

    friend bool operator==(const MprisState&, const MprisState&) = default;
};

/// One window as a media player on the session bus (`org.mpris.MediaPlayer2`). Main thread only; without a
/// bus it does nothing.
///
/// Every player has a connection of its own, since all of them live at the same path.
class MprisPlayer : public QObject {
    Q_OBJECT

  public:
    /// What the other side asks for; each does nothing when it is not possible now. Seconds.
    struct Controls {
        std::function<void()> raise;
        std::function<void()> close;
        std::function<void()> play;
        std::function<void()> pause;
        std::function<void()> playPause;
        std::function<void()> stop;
        std::function<void(double position)> seek;
        std::function<void(const QUrl& movie)> open;
    };

    explicit MprisPlayer(Controls controls, QObject* parent = nullptr);
    ~MprisPlayer() override;

    /// Tells the bus what is different from before.
    void show(const MprisState& state);
    /// Seconds. Told to the bus only where it is not what the time since the last call leads to.
    void showPosition(double position);

    [[nodiscard]] const Controls& controls() const { return controls_; }
    [[nodiscard]] const MprisState& state() const { return state_; }
    [[nodiscard]] double position() const { return position_; }

    /// By the names of the player's interface; the position is not among them.
    [[nodiscard]] static QVariantMap properties(const MprisState& state);

  Q_SIGNALS:
    void jumped(qint64 microseconds);

  private:
    [[nodiscard]] bool takeName();

    Controls controls_;
    MprisState state_;
    double position_ = 0;
    QString connectionName_;
    QDBusConnection bus_;
    QString name_;
};

}  // namespace velmora
