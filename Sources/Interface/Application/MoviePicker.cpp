#include "Interface/Application/MoviePicker.h"

#include "Diagnostics/Log.h"

#include <QFileInfo>
#include <QGuiApplication>
#include <QStandardPaths>

#include <utility>

namespace velmora {

using namespace Qt::StringLiterals;

namespace {

/// So that the desktop keeps its dialog before this window. Wayland has no such name for a window.
QString portalName(const QWindow* window) {
    if (!window || QGuiApplication::platformName() != u"xcb"_s) return {};
    return u"x11:%1"_s.arg(window->winId(), 0, 16);
}

}  // namespace

MoviePicker::MoviePicker(QQmlEngine& engine, const QDBusConnection& bus, QObject* parent)
    : QObject(parent),
      component_(&engine),
      portal_(bus),
      folder_(QStandardPaths::writableLocation(QStandardPaths::MoviesLocation)) {}

MoviePicker::~MoviePicker() = default;

void MoviePicker::pick(What what, const Desktop::MovieDialog& dialog, Desktop::Picked picked,
                       QWindow* parent) {
    finish(std::nullopt);
    dialog_ = dialog;
    picked_ = std::move(picked);
    parent_ = parent;
    const FileChooserPortal::Question question{.title = dialog.title,
                                               .wantsFolder = what == What::folder,
                                               .extensions = dialog.extensions,
                                               .extensionsName = tr("Movies"),
                                               .anythingName = tr("All files"),
                                               .parentWindow = portalName(parent)};
    portal_.ask(question, [this](const FileChooserPortal::Answer& answer) {
        if (answer)
            finish(*answer);
        else
            showOwn();
    });
}

void MoviePicker::showOwn() {
    browser_ = std::make_unique<MovieBrowser>(dialog_.extensions);
    browser_->show(folder_);
    connect(browser_.get(), &MovieBrowser::movieChosen, this, &MoviePicker::choose);
    if (component_.isNull())
        component_.loadUrl(QUrl(u"qrc:/qt/qml/Velmora/Application/MoviePickerWindow.qml"_s));
    if (component_.isReady()) {
        window_.reset(qobject_cast<QQuickWindow*>(
            component_.createWithInitialProperties({{u"picker"_s, QVariant::fromValue(this)}})));
    }
    if (!window_) {
        logger().error(u"choosing a movie: "_s + component_.errorString());
        return finish(std::nullopt);
    }
    window_->setTransientParent(parent_);
    window_->show();
    window_->requestActivate();
}

void MoviePicker::finish(const std::optional<QUrl>& location) {
    portal_.cancel();
    // It is the window that calls.
    if (window_) {
        window_->hide();
        window_.release()->deleteLater();
        browser_.release()->deleteLater();
    }
    if (location) {
        const QFileInfo chosen(location->toLocalFile());
        folder_ = chosen.isDir() ? chosen.filePath() : chosen.path();
    }
    if (!picked_) return;
    QMetaObject::invokeMethod(
        this, [picked = std::exchange(picked_, {}), location] { picked(location); }, Qt::QueuedConnection);
}

}  // namespace velmora
