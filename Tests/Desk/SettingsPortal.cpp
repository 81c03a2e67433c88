#include "Desk/SettingsPortal.h"

#include <QDBusMessage>
#include <QDBusVariant>

#include <array>

namespace velmora::test {

using namespace Qt::StringLiterals;

namespace {

const QString path = u"/org/freedesktop/portal/desktop"_s;
const QString settings = u"org.freedesktop.portal.Settings"_s;

struct Setting {
    QString group;
    QString key;
    QVariant value;
};

std::array<Setting, 3> settingsOf(const DesktopLook& look) {
    const QString appearance = u"org.freedesktop.appearance"_s;
    constexpr uint dark = 1;
    constexpr uint light = 2;
    return {{{appearance, u"color-scheme"_s, look.isDark ? dark : light},
             {appearance, u"contrast"_s, look.hasHighContrast ? 1U : 0U},
             {u"org.gnome.desktop.interface"_s, u"enable-animations"_s, look.animates}}};
}

}  // namespace

SettingsPortal::SettingsPortal(QDBusConnection bus, const DesktopLook& look)
    : bus_(std::move(bus)), look_(look) {
    moveToThread(&thread_);
    thread_.start();
    bus_.registerVirtualObject(path, this);
    bus_.registerService(u"org.freedesktop.portal.Desktop"_s);
}

SettingsPortal::~SettingsPortal() {
    bus_.unregisterObject(path);
    thread_.quit();
    thread_.wait();
}

void SettingsPortal::set(const DesktopLook& look) {
    {
        const QMutexLocker lock(&mutex_);
        look_ = look;
    }
    for (const Setting& setting : settingsOf(look)) {
        QDBusMessage changed = QDBusMessage::createSignal(path, settings, u"SettingChanged"_s);
        changed << setting.group << setting.key << QVariant::fromValue(QDBusVariant(setting.value));
        bus_.send(changed);
    }
}

QString SettingsPortal::introspect(const QString& /*path*/) const {
    return {};
}

bool SettingsPortal::handleMessage(const QDBusMessage& message, const QDBusConnection& connection) {
    const QVariantList arguments = message.arguments();
    if (message.interface() != settings || message.member() != u"Read" || arguments.size() != 2) return false;
    const QMutexLocker lock(&mutex_);
    for (const Setting& setting : settingsOf(look_)) {
        if (setting.group != arguments[0].toString() || setting.key != arguments[1].toString()) continue;
        // Wrapped twice, as real ones do.
        const QVariant inner = QVariant::fromValue(QDBusVariant(setting.value));
        return connection.send(message.createReply(QVariant::fromValue(QDBusVariant(inner))));
    }
    return connection.send(
        message.createErrorReply(u"org.freedesktop.portal.Error.NotFound"_s, u"no such setting"_s));
}

}  // namespace velmora::test
