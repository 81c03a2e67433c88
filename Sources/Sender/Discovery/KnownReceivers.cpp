#include "Sender/Discovery/KnownReceivers.h"

#include "System/Preferences.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace velmora {

struct KnownReceivers::Entry {
    Receiver receiver;
    std::optional<Capability> capability{};
};

namespace {

const QString preferenceKey = u"KnownReceivers"_s;
/// Far more than the receivers' limit needs.
constexpr qsizetype storedLengthLimit = qsizetype{64} * 1024;
constexpr qsizetype identifierLengthLimit = 300;

template <typename Value, typename Names>
std::optional<Value> named(const Names& names, const QString& name) {
    for (std::size_t i = 0; i < names.size(); ++i)
        if (names[i] == name) return static_cast<Value>(i);
    return std::nullopt;
}

template <typename Names, typename Value>
QString nameOf(const Names& names, Value value) {
    return names[static_cast<std::size_t>(value)];
}

std::optional<Capability> capabilityFrom(const QJsonObject& object) {
    const auto flavour = named<Flavour>(flavourNames, object["flavour"_L1].toString());
    const auto handover = named<Handover>(handoverNames, object["handover"_L1].toString());
    if (!flavour || !handover) return std::nullopt;
    return Capability{shownText(object["version"_L1].toString()), {*flavour, *handover}};
}

QJsonObject toJson(const Capability& capability) {
    return {{"version"_L1, capability.version},
            {"flavour"_L1, nameOf(flavourNames, capability.approach.flavour)},
            {"handover"_L1, nameOf(handoverNames, capability.approach.handover)}};
}

std::optional<Receiver> receiverFrom(const QJsonObject& object) {
    const QString host = object["host"_L1].toString();
    const QString addressText = object["address"_L1].toString();
    const int port = object["port"_L1].toInt();
    if (port < 1 || port > 65535) return std::nullopt;

    Receiver receiver{.name = shownText(object["name"_L1].toString()),
                      .identifier = object["identifier"_L1].toString(),
                      .address = QHostAddress(addressText),
                      .port = static_cast<quint16>(port)};
    receiver.model = shownText(object["model"_L1].toString());
    if (const auto typed = Receiver::fromText(host); !host.isEmpty() && typed) receiver.host = typed->host;
    if (!receiver.address.isNull()) receiver.addresses = {receiver.address};
    const bool sane = !receiver.name.isEmpty() && !receiver.identifier.isEmpty() &&
                      receiver.identifier.size() <= identifierLengthLimit &&
                      (!receiver.address.isNull() || !receiver.host.isEmpty());
    return sane ? std::optional(receiver) : std::nullopt;
}

QJsonObject toJson(const Receiver& receiver) {
    return {{"name"_L1, receiver.name},
            {"identifier"_L1, receiver.identifier},
            {"address"_L1, receiver.address.toString()},
            {"host"_L1, receiver.host},
            {"port"_L1, receiver.port},
            {"model"_L1, receiver.model}};
}

}  // namespace

QList<KnownReceivers::Entry> KnownReceivers::load() const {
    const QByteArray text = preferences_.value(preferenceKey).value_or(QVariant()).toString().toUtf8();
    if (text.size() > storedLengthLimit) return {};
    QList<Entry> entries;
    const QJsonArray stored = QJsonDocument::fromJson(text).array();
    for (const auto& value : stored) {
        const auto receiver = receiverFrom(value.toObject());
        if (!receiver || entries.size() == limit) continue;
        entries.append({*receiver, capabilityFrom(value["worked"_L1].toObject())});
    }
    return entries;
}

void KnownReceivers::store(const QList<Entry>& entries) {
    QJsonArray stored;
    for (const Entry& entry : entries.first(std::min(entries.size(), limit))) {
        QJsonObject object = toJson(entry.receiver);
        if (entry.capability) object["worked"_L1] = toJson(*entry.capability);
        stored.append(object);
    }
    preferences_.set(preferenceKey, QString::fromUtf8(QJsonDocument(stored).toJson(QJsonDocument::Compact)));
}

QList<Receiver> KnownReceivers::receivers() const {
    QList<Receiver> receivers;
    for (const Entry& entry : load()) receivers.append(entry.receiver);
    return receivers;
}

std::optional<Capability> KnownReceivers::capability(const QString& identifier) const {
    for (const Entry& entry : load())
        if (entry.receiver.identifier == identifier) return entry.capability;
    return std::nullopt;
}

void KnownReceivers::remember(const Receiver& receiver, const std::optional<Capability>& capability) {
    QList<Entry> entries = load();
    Entry latest{receiver, capability};
    entries.removeIf([&](const Entry& entry) {
        if (entry.receiver.identifier != receiver.identifier) return false;
        if (!latest.capability) latest.capability = entry.capability;
        return true;
    });
    entries.prepend(latest);
    store(entries);
}

void KnownReceivers::forget(const QString& identifier) {
    QList<Entry> entries = load();
    entries.removeIf([&](const Entry& entry) { return entry.receiver.identifier == identifier; });
    store(entries);
}

}  // namespace velmora
