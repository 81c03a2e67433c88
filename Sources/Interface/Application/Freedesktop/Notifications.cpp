#include "Interface/Application/Freedesktop/Notifications.h"

#include "Diagnostics/Log.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QStringList>
#include <QVariantMap>

namespace velmora {

using namespace Qt::StringLiterals;

namespace {

const QString serviceName = u"org.freedesktop.Notifications"_s;
const QString objectPath = u"/org/freedesktop/Notifications"_s;
const QString pressAction = u"default"_s;
constexpr uint replacesNone = 0;
constexpr int desktopsOwnTimeout = -1;

/// Bodies are marked up.
QString plain(const QString& text) {
    return text.toHtmlEscaped();
}

}  // namespace

Notifications::Notifications(QDBusConnection bus, QObject* parent) : QObject(parent), bus_(std::move(bus)) {
    const auto listen = [this](const QString& signal, const char* slot) {
        bus_.connect(serviceName, objectPath, serviceName, signal, this, slot);
    };
    if (!bus_.isConnected()) return;
    listen(u"ActionInvoked"_s, SLOT(invoked(uint, QString)));
    listen(u"ActivationToken"_s, SLOT(tokenGiven(uint, QString)));
    listen(u"NotificationClosed"_s, SLOT(closed(uint, uint)));
}

void Notifications::show(const QString& summary, const QString& body, Pressed pressed) {
    if (!bus_.isConnected()) return;
    QDBusMessage message = QDBusMessage::createMethodCall(serviceName, objectPath, serviceName, u"Notify"_s);
    const QStringList actions{pressAction, QCoreApplication::translate("Notifications", "Show")};
    const QVariantMap hints{{u"desktop-entry"_s, u"com.quillet.velmora"_s},
                            {u"category"_s, u"transfer.complete"_s}};
    message << u"Velmora"_s << replacesNone << u"com.quillet.velmora"_s << summary << plain(body) << actions
            << hints << desktopsOwnTimeout;
    auto* watcher = new QDBusPendingCallWatcher(bus_.asyncCall(message), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, pressed = std::move(pressed)] {
        const QDBusPendingReply<uint> reply(*watcher);
        watcher->deleteLater();
        if (reply.isError())
            logger().notice(u"notification: "_s + reply.error().message());
        else
            shown_.insert(reply.value(), {pressed});
    });
}

void Notifications::invoked(uint id, const QString& action) {
    const auto shown = shown_.constFind(id);
    if (shown == shown_.cend() || action != pressAction) return;
    // Pressing may show another one.
    const Shown message = *shown;  // NOLINT(performance-unnecessary-copy-initialization)
    message.pressed(message.token);
}

void Notifications::tokenGiven(uint id, const QString& token) {
    if (const auto shown = shown_.find(id); shown != shown_.end()) shown->token = token;
}

void Notifications::closed(uint id, uint /*reason*/) {
    shown_.remove(id);
}

}  // namespace velmora
