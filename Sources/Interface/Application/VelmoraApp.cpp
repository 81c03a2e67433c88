#include "Interface/Application/VelmoraApp.h"

#include "Playback/MovieResolver.h"
#include "Playback/World.h"
#include "System/Preferences.h"

#include <QGuiApplication>

#include <algorithm>
#include <utility>

namespace velmora {

using namespace Qt::StringLiterals;

VelmoraApp::VelmoraApp(ApplicationWorld& world, Updater& updater, const QDBusConnection& bus)
    : world_(world),
      updater_(updater),
      frame_(&engine_),
      appearance_(Appearance::instance(), bus),
      picker_(engine_, bus),
      notifications_(bus),
      taskbar_(bus),
      delegate_([this] { bringToFront(); }),
      common_{.world = world,
              .frame = frame_,
              .delegate = delegate_,
              .updater = updater,
              .notifications = notifications_,
              .taskbar = taskbar_,
              .openWindow = [this](const QUrl& movie) { openWindow(movie); },
              .run = [this](Command command, MovieWindow& window) { run(command, &window); }} {
    engine_.addImportPath(u"qrc:/qt/qml"_s);
    frame_.loadUrl(QUrl(u"qrc:/qt/qml/Velmora/Application/MainWindow.qml"_s));
    // Part of the program: it is there, or the build is broken.
    if (!frame_.isReady()) qFatal("%s", qPrintable(frame_.errorString()));
    QGuiApplication::setQuitOnLastWindowClosed(AppDelegate::shouldQuitAfterLastWindowClosed());
    connect(qGuiApp, &QGuiApplication::focusWindowChanged, this, &VelmoraApp::noteFocus);
    connect(&updater_, &Updater::checked, this, &VelmoraApp::showOutcome);
}

VelmoraApp::~VelmoraApp() = default;

void VelmoraApp::take(const LaunchRequest& request) {
    if (isQuitting_ && request.action != LaunchRequest::Action::quit) return;
    activationToken_ = request.activationToken;
    using enum LaunchRequest::Action;
    switch (request.action) {
        case activate:
            if (windows_.empty())
                openWindow(std::nullopt);
            else
                bringToFront();
            break;
        case open:
            delegate_.open(request.movies);
            // They wait for the first window, which takes them.
            if (!hasAppeared_) openWindow(std::nullopt);
            break;
        case newWindow:
            run(Command::newWindow, nullptr);
            break;
        case chooseMovie:
            run(Command::openMovie, nullptr);
            break;
        case quit:
            run(Command::quit, nullptr);
            break;
    }
}

void VelmoraApp::openWindow(const std::optional<QUrl>& movie) {
    if (MovieWindow* shown = movie ? windowShowing(*movie) : nullptr) {
        current_ = shown;
        return shown->bringForward(std::exchange(activationToken_, {}));
    }
    hasAppeared_ = true;
    auto& window = windows_.emplace_back(std::make_unique<MovieWindow>(common_, movie));
    MovieWindow* opened = window.get();  // the list may grow while it appears
    connect(opened, &MovieWindow::closed, this, [this, opened] { remove(opened); });
    current_ = opened;
    opened->appear();
    opened->bringForward(std::exchange(activationToken_, {}));
}

void VelmoraApp::run(Command command, MovieWindow* window) {
    switch (command) {
        case Command::newWindow:
            return openWindow(std::nullopt);
        case Command::openMovie:
            return chooseMovie(window);
        case Command::openFolder:
            return chooseFolder(window);
        case Command::checkForUpdates:
            bringToFront();
            return updater_.checkForUpdates();
        case Command::closeWindow:
            if (window) window->close();
            return;
        case Command::quit:
            // Later: it may be a window's key that calls.
            QMetaObject::invokeMethod(this, &VelmoraApp::quit, Qt::QueuedConnection);
            return;
        default:
            if (window) perform(command, window->session());
    }
}

MovieWindow* VelmoraApp::currentWindow() const {
    if (current_) return current_;
    return windows_.empty() ? nullptr : windows_.back().get();
}

MovieWindow* VelmoraApp::windowShowing(const QUrl& movie) const {
    const auto found = std::ranges::find_if(windows_, [&](const auto& each) { return each->shows(movie); });
    return found == windows_.end() ? nullptr : found->get();
}

void VelmoraApp::remove(MovieWindow* window) {
    const auto found = std::ranges::find(windows_, window, &std::unique_ptr<MovieWindow>::get);
    if (found == windows_.end()) return;
    // Its session may say a last word while it goes; the list is whole by then.
    std::unique_ptr<MovieWindow> last = std::move(*found);
    windows_.erase(found);
    const auto& world = leaving_.emplace_back(last->world());
    last.reset();
    world->finish([self = QPointer(this), leaving = world.get()] {
        if (self) self->noteLeft(leaving);
    });
}

void VelmoraApp::noteLeft(const WindowWorld* world) {
    // Later: it may be what is calling.
    QMetaObject::invokeMethod(
        this,
        [this, world] {
            std::erase_if(leaving_, [world](const auto& each) { return each.get() == world; });
            if (isQuitting_ && leaving_.empty()) QCoreApplication::quit();
        },
        Qt::QueuedConnection);
}

/// The televisions are told first, which takes a few seconds at most; whoever asks again does not want to
/// wait for that.
void VelmoraApp::quit() {
    if (std::exchange(isQuitting_, true)) return QCoreApplication::quit();
    while (!windows_.empty()) remove(windows_.back().get());
    // Whoever ends the desktop may not wait either.
    world_.world().preferences.synchronize();
    if (leaving_.empty()) QCoreApplication::quit();
}

void VelmoraApp::noteFocus(const QWindow* focused) {
    const auto found =
        std::ranges::find_if(windows_, [focused](const auto& each) { return &each->window() == focused; });
    if (found != windows_.end()) current_ = found->get();
}

void VelmoraApp::bringToFront() {
    if (MovieWindow* window = currentWindow()) window->bringForward(std::exchange(activationToken_, {}));
}

/// A window chooses for itself; without one, what is chosen gets a window of its own.
void VelmoraApp::chooseMovie(MovieWindow* window) {
    if (!window) window = currentWindow();
    if (window) {
        perform(Command::openMovie, window->session());
        return;
    }
    Session::pickMovie(world_.world().desktop, [self = QPointer(this)](const std::optional<QUrl>& location) {
        if (self && location) self->openWindow(location);
    });
}

void VelmoraApp::pickMovie(const Desktop::MovieDialog& dialog, Desktop::Picked picked) {
    MovieWindow* window = currentWindow();
    picker_.pick(MoviePicker::What::file, dialog, std::move(picked), window ? &window->window() : nullptr);
}

void VelmoraApp::chooseFolder(MovieWindow* window) {
    const Desktop::MovieDialog dialog{.title = tr("Choose the folder of a movie"),
                                      .message = tr("The largest movie in the folder is opened."),
                                      .extensions = movieExtensions().values()};
    const auto picked = [self = QPointer(this),
                         chooser = QPointer(window)](const std::optional<QUrl>& folder) {
        if (chooser && folder)
            chooser->session().open(*folder, false);
        else if (self && folder)
            self->openWindow(folder);
    };
    picker_.pick(MoviePicker::What::folder, dialog, picked, window ? &window->window() : nullptr);
}

void VelmoraApp::showOutcome(const Updater::Outcome& outcome) {
    if (windows_.empty()) openWindow(std::nullopt);
    currentWindow()->showMessage(outcome);
}

}  // namespace velmora
