#pragma once

#include "Interface/Application/Freedesktop/MprisPlayer.h"

#include <QDBusAbstractAdaptor>
#include <QDBusObjectPath>
#include <QStringList>
#include <QVariantMap>

namespace velmora {

// What the bus sees of a player. Names, types and rules are those of MPRIS 2.2.
// NOLINTBEGIN(readability-identifier-naming)

class MprisRootAdaptor : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.mpris.MediaPlayer2")
    Q_PROPERTY(bool CanQuit READ yes CONSTANT)
    Q_PROPERTY(bool CanRaise READ yes CONSTANT)
    Q_PROPERTY(bool HasTrackList READ no CONSTANT)
    Q_PROPERTY(QString Identity READ identity CONSTANT)
    Q_PROPERTY(QString DesktopEntry READ desktopEntry CONSTANT)
    Q_PROPERTY(QStringList SupportedUriSchemes READ schemes CONSTANT)
    Q_PROPERTY(QStringList SupportedMimeTypes READ mimeTypes CONSTANT)

  public:
    explicit MprisRootAdaptor(MprisPlayer& player) : QDBusAbstractAdaptor(&player), player_(player) {}

    [[nodiscard]] bool yes() const { return true; }
    [[nodiscard]] bool no() const { return false; }
    [[nodiscard]] QString identity() const { return QStringLiteral("Velmora"); }
    [[nodiscard]] QString desktopEntry() const { return QStringLiteral("com.quillet.velmora"); }
    [[nodiscard]] QStringList schemes() const { return {QStringLiteral("file")}; }
    [[nodiscard]] QStringList mimeTypes() const;

  public Q_SLOTS:
    void Raise() { player_.controls().raise(); }
    /// Ends this player, which is one window.
    void Quit() { player_.controls().close(); }

  private:
    MprisPlayer& player_;
};

class MprisPlayerAdaptor : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.mpris.MediaPlayer2.Player")
    Q_PROPERTY(QString PlaybackStatus READ playbackStatus)
    Q_PROPERTY(double Rate READ rate WRITE ignore)
    Q_PROPERTY(QVariantMap Metadata READ metadata)
    Q_PROPERTY(double Volume READ rate WRITE ignore)
    Q_PROPERTY(qlonglong Position READ position)
    Q_PROPERTY(double MinimumRate READ rate CONSTANT)
    Q_PROPERTY(double MaximumRate READ rate CONSTANT)
    Q_PROPERTY(bool CanGoNext READ no CONSTANT)
    Q_PROPERTY(bool CanGoPrevious READ no CONSTANT)
    Q_PROPERTY(bool CanPlay READ canPlay)
    Q_PROPERTY(bool CanPause READ canPause)
    Q_PROPERTY(bool CanSeek READ canSeek)
    Q_PROPERTY(bool CanControl READ yes CONSTANT)

  public:
    explicit MprisPlayerAdaptor(MprisPlayer& player);

    [[nodiscard]] static QDBusObjectPath trackPath(int number);
    [[nodiscard]] static qlonglong microseconds(double seconds);

    [[nodiscard]] QString playbackStatus() const;
    [[nodiscard]] QVariantMap metadata() const;
    [[nodiscard]] qlonglong position() const { return microseconds(player_.position()); }
    [[nodiscard]] bool canPlay() const { return player_.state().canPlay; }
    [[nodiscard]] bool canPause() const { return player_.state().canPause; }
    [[nodiscard]] bool canSeek() const { return player_.state().canSeek; }
    /// Speed and loudness are the television's own; here they are always whole.
    [[nodiscard]] double rate() const { return 1.0; }
    void ignore(double /*value*/) {}
    [[nodiscard]] bool yes() const { return true; }
    [[nodiscard]] bool no() const { return false; }

  public Q_SLOTS:
    void Next() {}
    void Previous() {}
    void Pause();
    void PlayPause();
    void Stop() { player_.controls().stop(); }
    void Play();
    void Seek(qlonglong offset);
    void SetPosition(const QDBusObjectPath& track, qlonglong position);
    void OpenUri(const QString& uri);

  Q_SIGNALS:
    void Seeked(qlonglong position);

  private:
    MprisPlayer& player_;
};

// NOLINTEND(readability-identifier-naming)

}  // namespace velmora
