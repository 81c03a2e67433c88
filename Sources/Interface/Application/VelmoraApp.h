#pragma once

#include "Interface/Application/AppDelegate.h"
#include "Interface/Application/Freedesktop/LaunchRequest.h"
#include "Interface/Application/Freedesktop/Notifications.h"
#include "Interface/Application/Freedesktop/TaskbarProgress.h"
#include "Interface/Application/MoviePicker.h"
#include "Interface/Application/MovieWindow.h"
#include "Interface/Updater/Updater.h"
#include "Interface/Views/DesktopAppearance.h"

#include <QDBusConnection>
#include <QObject>
#include <QPointer>
#include <QQmlComponent>
#include <QQmlEngine>

#include <memory>
#include <optional>
#include <vector>

namespace velmora {

/// The application: its windows, one for each movie, and what they have in common. Goes on without windows.
/// Main thread only.
class VelmoraApp : public QObject {
    Q_OBJECT

  public:
    /// The world must outlive it. The bus may be one that is not connected.
    VelmoraApp(ApplicationWorld& world, Updater& updater, const QDBusConnection& bus);
    ~VelmoraApp() override;

    /// What a start of the program asks for: this one or a later one.
    void take(const LaunchRequest& request);

    /// A window for the movie, or the one that shows it already; absent: an empty one.
    void openWindow(const std::optional<QUrl>& movie);

    /// A command of a window, or, with null, one that came from outside.
    void run(Command command, MovieWindow* window);

    [[nodiscard]] const std::vector<std::unique_ptr<MovieWindow>>& windows() const { return windows_; }
    /// The one that has the focus, or had it last; null when there is none.
    [[nodiscard]] MovieWindow* currentWindow() const;

    /// Lets the user choose, in a dialog of the application's own; see `Desktop::pickMovie`.
    void pickMovie(const Desktop::MovieDialog& dialog, Desktop::Picked picked);

  private:
    [[nodiscard]] MovieWindow* windowShowing(const QUrl& movie) const;
    void remove(MovieWindow* window);
    void noteLeft(const WindowWorld* world);
    void quit();
    void noteFocus(const QWindow* focused);
    void bringToFront();
    void chooseMovie(MovieWindow* window);
    void chooseFolder(MovieWindow* window);
    void showOutcome(const Updater::Outcome& outcome);

    ApplicationWorld& world_;
    Updater& updater_;
    QQmlEngine engine_;
    QQmlComponent frame_;
    DesktopAppearance appearance_;
    MoviePicker picker_;
    Notifications notifications_;
    TaskbarProgress taskbar_;
    AppDelegate delegate_;
    MovieWindow::Common common_;
    bool hasAppeared_ = false;
    QString activationToken_;  ///< for the next window that comes forward
    QPointer<MovieWindow> current_;
    std::vector<std::unique_ptr<MovieWindow>> windows_;
    std::vector<std::shared_ptr<WindowWorld>> leaving_;  ///< of windows that are gone
    bool isQuitting_ = false;
};

}  // namespace velmora
