#include "Interface/Application/MovieWindow.h"

#include "Interface/Application/AppDelegate.h"
#include "Interface/Application/Freedesktop/Notifications.h"
#include "Interface/Application/Freedesktop/TaskbarProgress.h"
#include "Playback/World.h"

#include <QDir>
#include <QEvent>
#include <QPointer>
#include <QQmlComponent>

namespace velmora {

using namespace Qt::StringLiterals;

namespace {

SessionMpris::Window mprisWindow(MovieWindow& window, const std::function<void(const QUrl&)>& open) {
    return {.raise = [&window] { window.bringForward({}); },
            .close = [&window] { window.close(); },
            .open = open};
}

}  // namespace

MovieWindow::MovieWindow(Common& common, std::optional<QUrl> movie)
    : common_(common),
      movie_(std::move(movie)),
      world_(common.world.makeWindowWorld()),
      session_(common.world.world(), world_->outputContext()),
      routes_(common.world.world().clock, world_->televisions(), world_->outputContext()),
      screen_(session_, common.world.world().desktop, screenModel_, routes_),
      commands_(
          [this] {
              return CommandContext{CommandContext::of(session_), common_.updater.canCheckForUpdates()};
          },
          [this](Command command) { common_.run(command, *this); }),
      mpris_(session_, mprisWindow(*this, [this](const QUrl& location) { open(location); })),
      window_(qobject_cast<QQuickWindow*>(
          common.frame.createWithInitialProperties({{u"controller"_s, QVariant::fromValue(this)}}))) {
    if (!window_) qFatal("%s", qPrintable(common.frame.errorString()));
    window_->installEventFilter(this);

    for (const auto signal : {&Session::phaseChanged, &Session::lastMovieChanged, &Session::routeChanged,
                              &Session::playingChanged})
        connect(&session_, signal, this, &MovieWindow::follow);
    connect(&session_.airPlay(), &AirPlay::deviceNameChanged, this, &MovieWindow::follow);
    connect(&common_.updater, &Updater::canCheckForUpdatesChanged, this, &MovieWindow::follow);
    connect(&session_, &Session::phaseChanged, this, &MovieWindow::notePhase);
    connect(&commands_, &CommandModel::refreshed, this, [this] { menu_.show(commands_.menu()); });
    connect(&menu_, &MenuRows::chosen, this, [this](const QString& row) { commands_.trigger(row.toInt()); });
    menu_.show(commands_.menu());
    follow();
}

MovieWindow::~MovieWindow() {
    common_.taskbar.show(this, std::nullopt);
    // What the session tells while it stops finds no window any more.
    session_.disconnect(this);
    session_.airPlay().disconnect(this);
}

void MovieWindow::appear() {
    window_->show();
    common_.delegate.setOpenWindow(common_.openWindow);
    if (!movie_) movie_ = common_.delegate.takePendingUrl();
    if (movie_) open(*movie_);
}

void MovieWindow::bringForward(const QString& activationToken) {
    // Wayland lets a window forward only with a token; this is where Qt looks for it.
    if (!activationToken.isEmpty()) qputenv("XDG_ACTIVATION_TOKEN", activationToken.toUtf8());
    window_->setWindowStates(window_->windowStates() & ~Qt::WindowMinimized);
    window_->show();
    window_->raise();
    window_->requestActivate();
}

bool MovieWindow::shows(const QUrl& location) const {
    const auto source = session_.currentSource();
    if (!source) return false;
    const QUrl wanted = standardized(location);
    return standardized(*source) == wanted || (source == openedSource_ && standardized(*movie_) == wanted);
}

std::unique_ptr<QQuickItem> MovieWindow::makeLivePicture() {
    return session_.player() ? common_.world.makeLivePicture(*session_.player()) : nullptr;
}

void MovieWindow::showMessage(const Updater::Outcome& message) {
    message_ = message;
    Q_EMIT messageChanged();
    bringForward({});
}

void MovieWindow::open(const QUrl& location) {
    session_.open(location, false);
    movie_ = location;
    openedSource_ = session_.currentSource();
}

bool MovieWindow::eventFilter(QObject* object, QEvent* event) {
    // Later, since closing is still under way.
    if (object == window_.get() && event->type() == QEvent::Close)
        QMetaObject::invokeMethod(this, &MovieWindow::closed, Qt::QueuedConnection);
    return QObject::eventFilter(object, event);
}

void MovieWindow::follow() {
    window_->setTitle(session_.title());
    commands_.refresh();
}

void MovieWindow::notePhase() {
    const auto* preparation = session_.phase().preparing();
    common_.taskbar.show(this, preparation ? preparation->progress : std::nullopt);
    const auto message =
        watch_.note(session_.phase(), common_.world.world().clock.now(), window_->isActive());
    if (!message) return;
    common_.notifications.show(message->summary, message->body,
                               [self = QPointer(this)](const QString& token) {
                                   if (self) self->bringForward(token);
                               });
}

QUrl MovieWindow::standardized(const QUrl& location) {
    if (!location.isLocalFile()) return location;
    return QUrl::fromLocalFile(QDir::cleanPath(location.toLocalFile()));
}

}  // namespace velmora
