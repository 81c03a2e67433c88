#include "Sender/Discovery/AvahiBrowser.h"

#include "Sender/Discovery/AvahiObject.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QNetworkInterface>

#include <algorithm>
#include <ranges>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace velmora {

namespace {

constexpr int anyInterface = -1;
constexpr int anyProtocol = -1;
constexpr uint noFlags = 0;
constexpr uint localFlag = 8;  // AVAHI_LOOKUP_RESULT_LOCAL
constexpr ushort internetClass = 1;
constexpr ushort addressType4 = 1;   // A
constexpr ushort addressType6 = 28;  // AAAA

const QString airPlayService = u"_airplay._tcp"_s;
const QString localDomain = u"local"_s;

/// The daemon allows a client 1024 objects, and a service takes three. A home has a handful.
constexpr std::size_t serviceLimit = 256;
constexpr qsizetype addressLimit = 16;

/// There is no signal for a bus that appears.
constexpr auto busRetryDelay = 10s;
constexpr auto daemonRetryDelay = 5s;

QString noBusReason() {
    return QCoreApplication::translate(
        "Televisions",
        "Televisions are not found by themselves, because this computer's message bus (D-Bus) cannot be "
        "reached. A television's address can be typed instead.");
}

QString noDaemonReason() {
    return QCoreApplication::translate(
        "Televisions",
        "Televisions are not found by themselves, because the service Avahi (the package avahi-daemon) is "
        "not running. A television's address can be typed instead.");
}

bool hasSignature(const QDBusMessage& message, QLatin1StringView signature) {
    return message.signature() == signature;
}

/// The arguments that every signal of a browser begins with, and a resolver's as well.
auto keyOf(const QDBusMessage& message) {
    const QVariantList arguments = message.arguments();
    return std::tuple(arguments[0].toInt(), arguments[1].toInt(), arguments[2].toString());
}

QHostAddress addressFrom(const QDBusMessage& message) {
    const QByteArray data = message.arguments()[5].toByteArray();
    const auto* const bytes = reinterpret_cast<const quint8*>(data.constData());
    if (data.size() == 4)
        return QHostAddress(quint32{bytes[0]} << 24 | quint32{bytes[1]} << 16 | quint32{bytes[2]} << 8 |
                            bytes[3]);
    if (data.size() != 16) return {};
    QHostAddress address(bytes);
    if (address.isLinkLocal()) {
        const int interface = message.arguments()[0].toInt();
        const QString name = QNetworkInterface::interfaceNameFromIndex(interface);
        address.setScopeId(name.isEmpty() ? QString::number(interface) : name);
    }
    return address;
}

/// Avahi hands a record's strings over last first.
QList<QByteArray> txtFrom(const QVariant& argument) {
    QList<QByteArray> strings = qdbus_cast<QList<QByteArray>>(argument);
    std::ranges::reverse(strings);
    return strings;
}

/// No daemon and no way to start one; its coming will be told.
bool isAbsence(const QDBusError& error) {
    return error.type() == QDBusError::ServiceUnknown ||
           error.name() == "org.freedesktop.DBus.Error.NameHasNoOwner"_L1 ||
           error.name().startsWith("org.freedesktop.DBus.Error.Spawn."_L1) ||
           error.name().startsWith("org.freedesktop.systemd1."_L1);
}

}  // namespace

AvahiBrowser::AvahiBrowser(Clock& clock, QString busAddress, QObject* parent)
    : QObject(parent), clock_(clock), busAddress_(std::move(busAddress)), bus_(QString()) {
    static int made = 0;
    busName_ = u"velmora-avahi-%1"_s.arg(++made);
}

AvahiBrowser::~AvahiBrowser() {
    closeBus();
}

void AvahiBrowser::start() {
    openBus();
}

void AvahiBrowser::openBus() {
    bus_ = busAddress_.isEmpty() ? QDBusConnection::connectToBus(QDBusConnection::SystemBus, busName_)
                                 : QDBusConnection::connectToBus(busAddress_, busName_);
    if (!bus_.isConnected() || !subscribe()) return busGone();
    watchDaemon();
    browse();
}

void AvahiBrowser::closeBus() {
    services_.clear();
    hosts_.clear();
    browser_.reset();
    daemonWatcher_.reset();
    bus_ = QDBusConnection(QString());
    QDBusConnection::disconnectFromBus(busName_);
}

void AvahiBrowser::busGone() {
    closeBus();
    forgetAll(noBusReason());
    retry_ = clock_.after(busRetryDelay, [this] { openBus(); });
}

/// Before anything is asked for, and for objects at any path: signals that come early would be lost.
bool AvahiBrowser::subscribe() {
    const auto listen = [this](const QString& type, const char* member, const char* slot) {
        return bus_.connect(Avahi::service, QString(), Avahi::interfaceOf(type), QString::fromLatin1(member),
                            this, slot);
    };
    return listen(u"ServiceBrowser"_s, "ItemNew", SLOT(itemNew(QDBusMessage))) &&
           listen(u"ServiceBrowser"_s, "ItemRemove", SLOT(itemRemove(QDBusMessage))) &&
           listen(u"ServiceBrowser"_s, "Failure", SLOT(browserFailure(QDBusMessage))) &&
           listen(u"ServiceResolver"_s, "Found", SLOT(found(QDBusMessage))) &&
           listen(u"RecordBrowser"_s, "ItemNew", SLOT(recordNew(QDBusMessage))) &&
           listen(u"RecordBrowser"_s, "ItemRemove", SLOT(recordRemove(QDBusMessage))) &&
           bus_.connect(QString(), u"/org/freedesktop/DBus/Local"_s, u"org.freedesktop.DBus.Local"_s,
                        u"Disconnected"_s, this, SLOT(busGone()));
}

void AvahiBrowser::watchDaemon() {
    daemonWatcher_ = std::make_unique<QDBusServiceWatcher>(Avahi::service, bus_);
    connect(daemonWatcher_.get(), &QDBusServiceWatcher::serviceRegistered, this, &AvahiBrowser::browse);
    connect(daemonWatcher_.get(), &QDBusServiceWatcher::serviceUnregistered, this,
            [this] { forgetAll(noDaemonReason()); });
}

void AvahiBrowser::browse() {
    forgetAll(QString());
    browser_ = std::make_unique<AvahiObject>(
        bus_, u"ServiceBrowser"_s,
        QVariantList{anyInterface, anyProtocol, airPlayService, localDomain, noFlags},
        [this](const QDBusError& error) { refused(error); });
}

void AvahiBrowser::refused(const QDBusError& error) {
    if (isAbsence(error)) return forgetAll(noDaemonReason());
    forgetAll(QCoreApplication::translate(
                  "Televisions",
                  "Televisions are not found by themselves, because the service Avahi refuses to look "
                  "for them (%1). A television's address can be typed instead.")
                  .arg(shownText(error.message())));
    retry_ = clock_.after(daemonRetryDelay, [this] { browse(); });
}

void AvahiBrowser::browserFailure(const QDBusMessage& message) {
    refused(QDBusError(QDBusError::Failed, message.arguments().value(0).toString()));
}

void AvahiBrowser::forgetAll(const QString& reason) {
    retry_.cancel();
    services_.clear();
    hosts_.clear();
    browser_.reset();
    reason_ = reason;
    Q_EMIT changed();
}

QList<Sighting> AvahiBrowser::sightings() const {
    QList<Sighting> sightings;
    for (const auto& [key, service] : services_) {
        if (!service.resolved) continue;
        Sighting sighting = *service.resolved;
        const auto host = hosts_.find({std::get<0>(key), std::get<1>(key), sighting.hostName});
        if (host != hosts_.end()) sighting.addresses = host->second.addresses;
        sightings.append(sighting);
    }
    return sightings;
}

std::unique_ptr<AvahiObject> AvahiBrowser::resolve(const Key& service) const {
    const auto& [interface, protocol, name] = service;
    return std::make_unique<AvahiObject>(
        bus_, u"ServiceResolver"_s,
        QVariantList{interface, protocol, name, airPlayService, localDomain, anyProtocol, noFlags});
}

/// All addresses: a resolver would tell one, which may be the useless one.
void AvahiBrowser::browseAddresses(const Key& key, Host& host) const {
    const auto browse = [&](ushort type) {
        const auto& [interface, protocol, name] = key;
        const QVariantList arguments{
            interface, protocol, name, QVariant::fromValue(internetClass), QVariant::fromValue(type),
            noFlags};
        return std::make_unique<AvahiObject>(bus_, u"RecordBrowser"_s, arguments);
    };
    host.addresses4 = browse(addressType4);
    host.addresses6 = browse(addressType6);
}

void AvahiBrowser::dropUnusedHosts() {
    const auto isUsed = [this](const Key& host) {
        return std::ranges::any_of(services_, [&](const auto& entry) {
            const auto& [key, service] = entry;
            return service.resolved &&
                   host == Key(std::get<0>(key), std::get<1>(key), service.resolved->hostName);
        });
    };
    std::erase_if(hosts_, [&](const auto& entry) { return !isUsed(entry.first); });
}

void AvahiBrowser::itemNew(const QDBusMessage& message) {
    if (!hasSignature(message, "iisssu"_L1) || services_.size() >= serviceLimit) return;
    const Key key = keyOf(message);
    Service& service = services_[key];
    service.local = (message.arguments()[5].toUInt() & localFlag) != 0;
    if (!service.resolver) service.resolver = resolve(key);
}

void AvahiBrowser::itemRemove(const QDBusMessage& message) {
    if (!hasSignature(message, "iisssu"_L1) || services_.erase(keyOf(message)) == 0) return;
    dropUnusedHosts();
    Q_EMIT changed();
}

void AvahiBrowser::found(const QDBusMessage& message) {
    if (!hasSignature(message, "iissssisqaayu"_L1)) return;
    const auto place = services_.find(keyOf(message));
    if (place == services_.end()) return;
    const QVariantList arguments = message.arguments();
    const auto& [interface, protocol, name] = place->first;
    place->second.resolved = Sighting{.service = name,
                                      .hostName = arguments[5].toString(),
                                      .port = static_cast<quint16>(arguments[8].toUInt()),
                                      .record = TxtRecord::parse(txtFrom(arguments[9])),
                                      .local = place->second.local};
    const auto [host, isNew] = hosts_.try_emplace(Key(interface, protocol, arguments[5].toString()));
    if (isNew) browseAddresses(host->first, host->second);
    dropUnusedHosts();
    Q_EMIT changed();
}

void AvahiBrowser::recordNew(const QDBusMessage& message) {
    if (!hasSignature(message, "iisqqayu"_L1)) return;
    const auto host = hosts_.find(keyOf(message));
    const QHostAddress address = addressFrom(message);
    if (host == hosts_.end() || address.isNull()) return;
    QList<QHostAddress>& addresses = host->second.addresses;
    if (addresses.contains(address) || addresses.size() >= addressLimit) return;
    addresses.append(address);
    Q_EMIT changed();
}

void AvahiBrowser::recordRemove(const QDBusMessage& message) {
    if (!hasSignature(message, "iisqqayu"_L1)) return;
    const auto host = hosts_.find(keyOf(message));
    if (host != hosts_.end() && host->second.addresses.removeAll(addressFrom(message)) > 0) Q_EMIT changed();
}

}  // namespace velmora
