#pragma once

#include "Interface/Application/ApplicationWorld.h"
#include "Interface/Application/CommandModel.h"
#include "Interface/Application/PreparationWatch.h"
#include "Interface/Application/SessionMpris.h"
#include "Interface/Updater/Updater.h"
#include "Interface/Views/MovieScreenModel.h"
#include "Interface/Views/RoutePickerModel.h"
#include "Interface/Views/SessionScreen.h"
#include "Playback/Session.h"

#include <QObject>
#include <QQuickItem>
#include <QQuickWindow>
#include <QUrl>
#include <QtQml/qqmlregistration.h>

#include <functional>
#include <memory>
#include <optional>

class QQmlComponent;

namespace velmora {

class AppDelegate;
class Notifications;
class TaskbarProgress;

/// One window and its movie. Main thread only.
class MovieWindow : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the program")
    Q_PROPERTY(velmora::CommandModel* commands READ commands CONSTANT FINAL)
    Q_PROPERTY(velmora::MenuRows* menu READ menu CONSTANT FINAL)
    Q_PROPERTY(velmora::MovieScreenModel* movie READ movie CONSTANT FINAL)
    Q_PROPERTY(velmora::RoutePickerModel* routes READ routes CONSTANT FINAL)
    Q_PROPERTY(QString messageTitle READ messageTitle NOTIFY messageChanged FINAL)
    Q_PROPERTY(QString messageText READ messageText NOTIFY messageChanged FINAL)
    Q_PROPERTY(QUrl messagePage READ messagePage NOTIFY messageChanged FINAL)

  public:
    /// What all windows of the application have in common; outlives them.
    struct Common {
        ApplicationWorld& world;
        QQmlComponent& frame;  ///< loaded
        AppDelegate& delegate;
        Updater& updater;
        Notifications& notifications;
        TaskbarProgress& taskbar;
        std::function<void(const QUrl& movie)> openWindow;
        std::function<void(Command, MovieWindow&)> run;
    };

    /// Without a movie it takes the first that waits, or stays empty.
    MovieWindow(Common& common, std::optional<QUrl> movie);
    ~MovieWindow() override;

    /// To be called once.
    void appear();
    /// In front of all others, with the focus where the desktop allows it; the token may be empty.
    void bringForward(const QString& activationToken);
    void close() { window_->close(); }

    /// Whether this location, which may be a folder, is what this window was opened for and still shows.
    [[nodiscard]] bool shows(const QUrl& location) const;

    [[nodiscard]] Session& session() { return session_; }
    /// Outlives the window where somebody keeps it.
    [[nodiscard]] const std::shared_ptr<WindowWorld>& world() const { return world_; }
    /// Of the session's player; see `ApplicationWorld::makeLivePicture`.
    [[nodiscard]] std::unique_ptr<QQuickItem> makeLivePicture();
    [[nodiscard]] QQuickWindow& window() { return *window_; }
    [[nodiscard]] CommandModel* commands() { return &commands_; }
    [[nodiscard]] MenuRows* menu() { return &menu_; }
    [[nodiscard]] MovieScreenModel* movie() { return &screenModel_; }
    [[nodiscard]] RoutePickerModel* routes() { return &routes_; }

    /// In a dialog.
    void showMessage(const Updater::Outcome& message);
    [[nodiscard]] QString messageTitle() const { return message_.title; }
    [[nodiscard]] QString messageText() const { return message_.text; }
    [[nodiscard]] QUrl messagePage() const { return message_.page; }

    bool eventFilter(QObject* object, QEvent* event) override;

  Q_SIGNALS:
    void messageChanged();
    /// The user closed it; it is to be deleted.
    void closed();

  private:
    void open(const QUrl& location);
    void follow();
    void notePhase();
    [[nodiscard]] static QUrl standardized(const QUrl& location);

    Common& common_;
    std::optional<QUrl> movie_;         ///< what it was opened for
    std::optional<QUrl> openedSource_;  ///< what that came to
    std::shared_ptr<WindowWorld> world_;
    Session session_;
    MovieScreenModel screenModel_;
    RoutePickerModel routes_;
    SessionScreen screen_;
    PreparationWatch watch_;
    CommandModel commands_;
    MenuRows menu_;
    Updater::Outcome message_;
    SessionMpris mpris_;
    std::unique_ptr<QQuickWindow> window_;  ///< last, so that nothing of it outlives what it shows
};

}  // namespace velmora
