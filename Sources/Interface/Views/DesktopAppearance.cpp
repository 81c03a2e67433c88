#include "Interface/Views/DesktopAppearance.h"

#include "Platform/Linux/Portal.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QEvent>
#include <QFontInfo>
#include <QGuiApplication>
#include <QPalette>

#include <algorithm>

namespace velmora {

using namespace Qt::StringLiterals;

namespace {

const QString interface = u"org.freedesktop.portal.Settings"_s;
const QString appearanceGroup = u"org.freedesktop.appearance"_s;
const QString interfaceGroup = u"org.gnome.desktop.interface"_s;

enum Scheme : uint { noPreference = 0, preferDark = 1, preferLight = 2 };

constexpr double designedTextSize = 14;  // px
constexpr double smallestScale = 0.9;
constexpr double largestScale = 1.5;

// The portal wraps its values once more than its signal does.
QVariant unwrapped(QVariant value) {
    while (value.canConvert<QDBusVariant>()) value = value.value<QDBusVariant>().variant();
    return value;
}

}  // namespace

DesktopAppearance::DesktopAppearance(Appearance& appearance, const QDBusConnection& bus, QObject* parent)
    : QObject(parent), appearance_(appearance), bus_(bus) {
    readApplication();
    qApp->installEventFilter(this);
    if (!bus_.isConnected()) return;
    bus_.connect(Portal::service, Portal::path, interface, u"SettingChanged"_s, this,
                 SLOT(noteChange(QDBusMessage)));
    ask(appearanceGroup, u"color-scheme"_s);
    ask(appearanceGroup, u"contrast"_s);
    ask(interfaceGroup, u"enable-animations"_s);
}

bool DesktopAppearance::eventFilter(QObject* object, QEvent* event) {
    const auto type = event->type();
    if (object == qApp && (type == QEvent::ApplicationPaletteChange || type == QEvent::ApplicationFontChange))
        readApplication();
    return QObject::eventFilter(object, event);
}

void DesktopAppearance::ask(const QString& group, const QString& key) {
    QDBusMessage question =
        QDBusMessage::createMethodCall(Portal::service, Portal::path, interface, u"Read"_s);
    question << group << key;
    auto* const watcher = new QDBusPendingCallWatcher(bus_.asyncCall(question), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, group, key] {
        watcher->deleteLater();
        const QDBusPendingReply<QDBusVariant> reply = *watcher;
        if (reply.isValid()) noteSetting(group, key, reply.value());
    });
}

void DesktopAppearance::noteChange(const QDBusMessage& message) {
    const QVariantList arguments = message.arguments();
    if (message.signature() == u"ssv")
        noteSetting(arguments[0].toString(), arguments[1].toString(), arguments[2].value<QDBusVariant>());
}

void DesktopAppearance::noteSetting(const QString& group, const QString& key, const QDBusVariant& value) {
    Appearance::Look look = appearance_.look();
    const QVariant setting = unwrapped(value.variant());
    if (group == appearanceGroup && key == u"color-scheme") {
        isToldScheme_ = setting.toUInt() == preferDark || setting.toUInt() == preferLight;
        if (isToldScheme_) look.isDark = setting.toUInt() == preferDark;
    } else if (group == appearanceGroup && key == u"contrast") {
        look.hasHighContrast = setting.toUInt() == 1;
    } else if (group == interfaceGroup && key == u"enable-animations") {
        look.animates = setting.toBool();
    } else {
        return;
    }
    appearance_.setLook(look);
    if (!isToldScheme_) readApplication();
}

void DesktopAppearance::readApplication() {
    Appearance::Look look = appearance_.look();
    if (!isToldScheme_) look.isDark = QGuiApplication::palette().color(QPalette::Window).lightness() < 128;
    const double size = QFontInfo(QGuiApplication::font()).pixelSize();
    look.textScale = std::clamp(size / designedTextSize, smallestScale, largestScale);
    appearance_.setLook(look);
}

}  // namespace velmora
