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

    /// Waits until it is ready; `address` is empty when it never was.
    KodiReceiver();
    ~KodiReceiver();
    KodiReceiver(const KodiReceiver&) = delete;
    KodiReceiver& operator=(const KodiReceiver&) = delete;

    /// HOST:PORT.
    [[nodiscard]] const QString& address() const { return address_; }

    [[nodiscard]] bool isPlaying() const;
    /// Its player as it tells itself: time, speed, subtitles.
    [[nodiscard]] QJsonObject player() const;
    /// Seconds.
    [[nodiscard]] double position() const;
    void showSubtitles(bool on) const;

    /// Saves what it shows. The share of nearly white pixels in the lower third, where subtitles stand.
    [[nodiscard]] double whiteBelow(const QString& screenshot) const;

  private:
    [[nodiscard]] QJsonValue ask(const QString& method, const QByteArray& parameters) const;

    QProcess script_;
    QString address_;
    QString directory_;
};

}  // namespace velmora::test
