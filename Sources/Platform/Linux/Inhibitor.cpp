#include "Platform/Linux/Inhibitor.h"

#include "Diagnostics/Log.h"
#include "Platform/Linux/Portal.h"

#include <QDBusObjectPath>
#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <QDBusUnixFileDescriptor>
#include <QVariantMap>

namespace velmora {

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1StringView program("Velmora");

QDBusMessage call(const QString& service, const QString& path, const QString& interface,
                  const QString& method, const QVariantList& arguments) {
    QDBusMessage message = QDBusMessage::createMethodCall(service, path, interface, method);
    message.setArguments(arguments);
    return message;
}

/// Sends a message when it is dropped, and waits for no answer.
class Farewell {
  public:
    Farewell(QDBusConnection bus, const QDBusMessage& message) : bus_(std::move(bus)), message_(message) {}
    ~Farewell() { bus_.send(message_); }
    Farewell(const Farewell&) = delete;
    Farewell& operator=(const Farewell&) = delete;

  private:
    QDBusConnection bus_;
    QDBusMessage message_;
};

}  // namespace

Inhibitor::Offer Inhibitor::idleSleep(const QDBusConnection& systemBus, const QString& reason) {
    const auto hold = [](const QDBusMessage& answer) -> std::shared_ptr<void> {
        const auto lock = answer.arguments().value(0).value<QDBusUnixFileDescriptor>();
        // Closed with its last copy.
        return lock.isValid() ? std::make_shared<QDBusUnixFileDescriptor>(lock) : nullptr;
    };
    return {
        systemBus,
        call(u"org.freedesktop.login1"_s, u"/org/freedesktop/login1"_s, u"org.freedesktop.login1.Manager"_s,
             u"Inhibit"_s, {u"idle"_s, QString(program), reason, u"block"_s}),
        hold};
}

Inhibitor::Offer Inhibitor::screenSaver(const QDBusConnection& sessionBus, const QString& reason) {
    const QString service = u"org.freedesktop.ScreenSaver"_s;
    const QString path = u"/org/freedesktop/ScreenSaver"_s;
    const auto hold = [=](const QDBusMessage& answer) -> std::shared_ptr<void> {
        const QVariant cookie = answer.arguments().value(0);
        if (cookie.typeId() != QMetaType::UInt) return nullptr;
        return std::make_shared<Farewell>(sessionBus, call(service, path, service, u"UnInhibit"_s, {cookie}));
    };
    return {sessionBus, call(service, path, service, u"Inhibit"_s, {QString(program), reason}), hold};
}

Inhibitor::Offer Inhibitor::portal(const QDBusConnection& sessionBus, const QString& reason) {
    constexpr quint32 idle = 8;
    const auto hold = [=](const QDBusMessage& answer) -> std::shared_ptr<void> {
        const QString handle = answer.arguments().value(0).value<QDBusObjectPath>().path();
        if (handle.isEmpty()) return nullptr;
        return std::make_shared<Farewell>(
            sessionBus, call(Portal::service, handle, u"org.freedesktop.portal.Request"_s, u"Close"_s, {}));
    };
    return {sessionBus,
            call(Portal::service, Portal::path, u"org.freedesktop.portal.Inhibit"_s, u"Inhibit"_s,
                 {QString(), idle, QVariantMap{{u"reason"_s, reason}}}),
            hold};
}

Inhibitor::Inhibitor(QList<Offer> offers) : state_(std::make_shared<State>(std::move(offers), nullptr)) {
    askNext(state_);
}

void Inhibitor::askNext(const std::shared_ptr<State>& state) {
    while (!state->offers.isEmpty() && !state->offers.first().bus.isConnected()) state->offers.removeFirst();
    if (state->offers.isEmpty()) {
        logger().notice(u"power: no service here keeps the computer awake"_s);
        return;
    }
    const Offer offer = state->offers.takeFirst();
    auto* watcher = new QDBusPendingCallWatcher(offer.bus.asyncCall(offer.request));
    const std::weak_ptr<State> asking = state;
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher, [=] {
        watcher->deleteLater();
        take(asking, offer, watcher->reply());
    });
}

void Inhibitor::take(const std::weak_ptr<State>& asking, const Offer& offer, const QDBusMessage& answer) {
    const bool isGranted = answer.type() == QDBusMessage::ReplyMessage;
    // Made even when nobody wants it any more: dropping it gives it back.
    const std::shared_ptr<void> held = isGranted ? offer.hold(answer) : nullptr;
    const auto state = asking.lock();
    if (!state) return;
    state->held = held;
    if (!held) askNext(state);
}

}  // namespace velmora
