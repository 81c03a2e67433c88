#include "Interface/Application/MoviePicker.h"

#include "Diagnostics/Log.h"

#include <utility>

namespace velmora {

using namespace Qt::StringLiterals;

MoviePicker::MoviePicker(QQmlEngine& engine, QObject* parent) : QObject(parent), component_(&engine) {}

MoviePicker::~MoviePicker() = default;

void MoviePicker::pick(const Desktop::MovieDialog& dialog, Desktop::Picked picked, QWindow* parent) {
    finish(std::nullopt);
    dialog_ = dialog;
    picked_ = std::move(picked);
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
    window_->setTransientParent(parent);
    window_->show();
    window_->requestActivate();
}

QStringList MoviePicker::nameFilters() const {
    QStringList patterns;
    for (const QString& extension : dialog_.extensions) patterns << u"*."_s + extension;
    return {tr("Movies (%1)").arg(patterns.join(u' ')), tr("All files (*)")};
}

void MoviePicker::finish(const std::optional<QUrl>& location) {
    // It is the window that calls.
    if (window_) {
        window_->hide();
        window_.release()->deleteLater();
    }
    if (!picked_) return;
    QMetaObject::invokeMethod(
        this, [picked = std::exchange(picked_, {}), location] { picked(location); }, Qt::QueuedConnection);
}

}  // namespace velmora
