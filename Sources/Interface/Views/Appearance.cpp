#include "Interface/Views/Appearance.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QQmlEngine>

namespace velmora {

Appearance& Appearance::instance() {
    static Appearance appearance;
    return appearance;
}

Appearance* Appearance::create(QQmlEngine*, QJSEngine*) {
    QQmlEngine::setObjectOwnership(&instance(), QQmlEngine::CppOwnership);
    return &instance();
}

void Appearance::setLook(const Look& look) {
    if (look == look_) return;
    look_ = look;
    Q_EMIT changed();
}

void Appearance::copy(const QString& text) const {
    QGuiApplication::clipboard()->setText(text);
}

}  // namespace velmora
