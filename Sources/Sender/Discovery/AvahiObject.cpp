#include "Sender/Discovery/AvahiObject.h"

#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

using namespace Qt::StringLiterals;

namespace velmora {

struct AvahiObject::State {
    QDBusConnection bus;
    QString type;
    QString path;
    bool dropped = false;
    std::function<void(const QDBusError&)> failed;

    void free() const {
        if (path.isEmpty()) return;
        bus.send(QDBusMessage::createMethodCall(Avahi::service, path, Avahi::interfaceOf(type), u"Free"_s));
    }
};

AvahiObject::AvahiObject(const QDBusConnection& bus, const QString& type, const QVariantList& arguments,
                         std::function<void(const QDBusError&)> failed)
    : state_(std::make_shared<State>(bus, type, QString(), false, std::move(failed))) {
    auto call = QDBusMessage::createMethodCall(Avahi::service, u"/"_s, Avahi::interfaceOf(u"Server"_s),
                                               type + u"New"_s);
    call.setArguments(arguments);
    auto* const watcher = new QDBusPendingCallWatcher(bus.asyncCall(call));
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher, [state = state_, watcher] {
        watcher->deleteLater();
        const QDBusPendingReply<QDBusObjectPath> reply = *watcher;
        if (!reply.isError()) {
            state->path = reply.value().path();
            if (state->dropped) state->free();
        } else if (!state->dropped && state->failed) {
            state->failed(reply.error());
        }
    });
}

AvahiObject::~AvahiObject() {
    state_->dropped = true;
    state_->free();
}

QString Avahi::interfaceOf(const QString& type) {
    return u"org.freedesktop.Avahi."_s + type;
}

}  // namespace velmora
