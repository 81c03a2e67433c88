#include "Television/Publication.h"

#include "Sender/Discovery/AvahiObject.h"

#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusReply>

using namespace Qt::StringLiterals;

namespace velmora::test {

namespace {

constexpr int anyInterface = -1;
constexpr int anyProtocol = -1;
constexpr int protocol4 = 0;
constexpr uint noFlags = 0;
constexpr int established = 2;  // state of a group, as the next two
constexpr int collision = 3;
constexpr int failed = 4;

QDBusConnection busAt(const QString& address, const QString& name) {
    return address.isEmpty() ? QDBusConnection::connectToBus(QDBusConnection::SystemBus, name)
                             : QDBusConnection::connectToBus(address, name);
}

}  // namespace

Publication::Publication(const TelevisionOptions& options, quint16 port, QObject* parent)
    : QObject(parent),
      busName_(u"television-%1"_s.arg(port)),
      bus_(busAt(options.busAddress, busName_)),
      failure_(publish(options, port)) {}

Publication::~Publication() {
    if (!group_.isEmpty()) bus_.send(call(group_, u"EntryGroup"_s, u"Free"_s));
    bus_ = QDBusConnection(QString());
    QDBusConnection::disconnectFromBus(busName_);
}

QString Publication::publish(const TelevisionOptions& options, quint16 port) {
    if (!bus_.isConnected()) return bus_.lastError().message();
    const QDBusReply<QDBusObjectPath> made = bus_.call(call(u"/"_s, u"Server"_s, u"EntryGroupNew"_s));
    if (!made.isValid()) return made.error().message();
    group_ = made.value().path();
    bus_.connect(Avahi::service, group_, Avahi::interfaceOf(u"EntryGroup"_s), u"StateChanged"_s, this,
                 SLOT(stateChanged(int, QString)));
    qDBusRegisterMetaType<QList<QByteArray>>();
    const bool speaksOnly4 = options.address.protocol() == QAbstractSocket::IPv4Protocol;
    const QVariantList service{anyInterface,
                               speaksOnly4 ? protocol4 : anyProtocol,
                               noFlags,
                               options.name,
                               u"_airplay._tcp"_s,
                               QString(),
                               QString(),
                               QVariant::fromValue(port),
                               QVariant::fromValue(announcement(options))};
    const QDBusMessage added = bus_.call(call(group_, u"EntryGroup"_s, u"AddService"_s, service));
    if (added.type() == QDBusMessage::ErrorMessage) return added.errorMessage();
    const QDBusMessage committed = bus_.call(call(group_, u"EntryGroup"_s, u"Commit"_s));
    return committed.type() == QDBusMessage::ErrorMessage ? committed.errorMessage() : QString();
}

QDBusMessage Publication::call(const QString& path, const QString& type, const QString& method,
                               const QVariantList& arguments) const {
    QDBusMessage message =
        QDBusMessage::createMethodCall(Avahi::service, path, Avahi::interfaceOf(type), method);
    message.setArguments(arguments);
    return message;
}

void Publication::stateChanged(int state, const QString& error) {
    if (state == established) Q_EMIT said(u"published"_s);
    if (state == collision) Q_EMIT said(u"not published: another television has this name"_s);
    if (state == failed) Q_EMIT said(u"not published: "_s + error);
}

}  // namespace velmora::test
