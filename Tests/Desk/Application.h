#pragma once

#include "Desk/Desk.h"

#include <QMap>

namespace velmora::test {

/// One media player on the session bus; the program has one for each window.
class BusPlayer {
  public:
    BusPlayer(const QDBusConnection& bus, QString service) : bus_(bus), service_(std::move(service)) {}

    [[nodiscard]] const QString& service() const { return service_; }
    /// Of org.mpris.MediaPlayer2.Player; invalid when it is gone.
    [[nodiscard]] QVariant property(const QString& name) const;
    /// "xesam:title" and its like.
    [[nodiscard]] QVariantMap metadata() const;
    /// False when it fails.
    bool call(const QString& method, const QVariantList& arguments = {}) const;

  private:
    QDBusConnection bus_;
    QString service_;
};

struct LaunchSettings {
    double scale = 1;                      ///< of everything shown; 1.25, 2…
    QMap<QString, QString> environment{};  ///< over the desk's
};

/// `velmora` as it runs on a desk. It is killed with the object unless it has ended before; several starts on
/// one desk become one process, as for a user. The waits last twenty seconds at most. Main thread.
class Application {
  public:
    explicit Application(Desk& desk, const QStringList& arguments = {}, const LaunchSettings& settings = {});

    [[nodiscard]] bool isRunning() const { return process_.state() == QProcess::Running; }
    [[nodiscard]] qint64 pid() const { return process_.processId(); }
    /// Everything it wrote so far.
    [[nodiscard]] QByteArray output();
    [[nodiscard]] QByteArray errors();
    /// What it logged.
    [[nodiscard]] QString log() const;

    /// Another start beside it; its exit status, negative for a crash or when it does not end.
    [[nodiscard]] int startAgain(const QStringList& arguments) const;
    /// The exit status; negative for a crash or when it does not end.
    [[nodiscard]] int waitForExit();
    /// Tells it as the desktop's launcher would; the exit status as above.
    [[nodiscard]] int quit();

    [[nodiscard]] QList<DesktopWindow> windows() const;
    /// Waits until there are exactly so many.
    [[nodiscard]] bool hasWindows(qsizetype count) const;
    /// Waits for one whose title is or, with a trailing "*", begins so.
    [[nodiscard]] std::optional<DesktopWindow> window(const QString& title) const;
    /// Puts the window in front and waits until it has the focus.
    bool bringForward(const DesktopWindow& window) const;
    [[nodiscard]] QImage picture(const DesktopWindow& window) const;

    /// What a screen reader is told now; the children are the windows. Absent before it shows one.
    [[nodiscard]] std::optional<Accessible> tree() const;
    /// Waits until something shows with this role and this name (empty: any) and meets the condition.
    [[nodiscard]] std::optional<Accessible> find(
        const QString& role, const QString& name,
        const std::function<bool(const Accessible&)>& condition = {}) const;
    /// Waits until nothing shows with this role and name.
    [[nodiscard]] bool isGone(const QString& role, const QString& name) const;
    /// Waits until it shows and is enabled, then presses it without keyboard or pointer.
    bool press(const QString& role, const QString& name) const;
    /// The same by a click in its middle, on the window in front.
    bool click(const QString& role, const QString& name) const;

    /// On the bus, in order of their names.
    [[nodiscard]] QList<BusPlayer> players() const;

    /// Through the picker of the window that shows the AirPlay button: one that is listed there.
    bool chooseTelevision(const QString& name) const;
    /// Through the picker and its dialog, typed by keyboard.
    bool addTelevision(const QString& address) const;

    [[nodiscard]] Desk& desk() const { return desk_; }

  private:
    [[nodiscard]] bool openPicker() const;

    Desk& desk_;
    double scale_;
    QProcessEnvironment environment_;
    ChildProcess process_;
    QByteArray output_;
    QByteArray errors_;
};

}  // namespace velmora::test
