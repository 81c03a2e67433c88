#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QProcess>
#include <QString>

namespace velmora::test {

/// A real television for as long as the object lives: Kodi without a screen, run by the script beside.
class KodiReceiver {
  public:
    /// Absent rights or packages; empty when nothing is missing.
    [[nodiscard]] static QString whatIsMissing();

    /// Announced on a cable that has an Avahi daemon at each end, under a name that wants care. Waits until
    /// it is ready; `address` is empty when it never was.
    explicit KodiReceiver(const QString& password = {});
    ~KodiReceiver();
    KodiReceiver(const KodiReceiver&) = delete;
    KodiReceiver& operator=(const KodiReceiver&) = delete;

    static constexpr QStringView shownName = u"Wohnzimmer ☂ & <Co>";
    /// HOST:PORT.
    [[nodiscard]] const QString& address() const { return address_; }
    /// The message bus on this side of the cable, with the Avahi daemon that sees it.
    [[nodiscard]] QString bus() const { return QStringLiteral("unix:path=%1/viewer.bus").arg(directory_); }

    /// The process is killed; a new one starts at the same address.
    void die() { tell("kill"); }
    void comeBack() { tell("revive"); }

    [[nodiscard]] bool isPlaying() const;
    /// Its player as it tells itself: time, speed, sound, subtitles.
    [[nodiscard]] QJsonObject player() const;
    /// Seconds.
    [[nodiscard]] double position() const;
    /// The languages of the sound and the subtitles, as in "eng ger"; "eng -" without subtitles.
    [[nodiscard]] QString languages() const;
    void showSubtitles(bool on) const;
    /// With its own remote control.
    void stop() const;

    /// Saves what it shows. The share of nearly white pixels in the lower third, where subtitles stand.
    [[nodiscard]] double whiteBelow(const QString& screenshot) const;

  private:
    void tell(const QByteArray& command);
    [[nodiscard]] QJsonValue ask(const QString& method, const QByteArray& parameters) const;

    QProcess script_;
    QString address_;
    QString directory_;
};

}  // namespace velmora::test
