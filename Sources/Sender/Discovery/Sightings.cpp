#include "Sender/Discovery/Sightings.h"

#include <QMap>

#include <algorithm>
#include <tuple>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

/// Device, or the service's name where no device is told; then the port.
using Key = std::tuple<QString, quint16>;

Key keyOf(const Sighting& sighting) {
    const bool anonymous = sighting.record.deviceId.isEmpty();
    return {anonymous ? u"name="_s + shownText(sighting.service) : sighting.record.deviceId, sighting.port};
}

Receiver receiverFrom(QList<Sighting> sightings) {
    // The first by name speaks for all, so that the order of arrival shows nowhere.
    std::ranges::sort(sightings, {},
                      [](const Sighting& s) { return std::tuple(s.service.size(), s.service); });
    const Sighting& first = sightings.first();
    Receiver receiver{.name = shownText(first.service), .port = first.port};
    receiver.model = first.record.model;
    receiver.announced = first.record;
    bool local = false;
    for (const Sighting& sighting : sightings) {
        receiver.addresses += sighting.addresses;
        local = local || sighting.local;
    }
    receiver.addresses = Addresses::inOrder(receiver.addresses, local);
    if (!receiver.addresses.isEmpty()) receiver.address = receiver.addresses.first();
    if (receiver.name.isEmpty()) receiver.name = receiver.address.toString();
    return receiver;
}

}  // namespace

QList<Receiver> receiversFrom(const QList<Sighting>& sightings) {
    QMap<Key, QList<Sighting>> groups;
    for (const Sighting& sighting : sightings) groups[keyOf(sighting)].append(sighting);

    QList<Receiver> receivers;
    QString previous;
    for (const auto& [key, group] : groups.asKeyValueRange()) {
        const auto& [device, port] = key;
        Receiver receiver = receiverFrom(group);
        receiver.identifier = device == previous ? u"%1 %2"_s.arg(device).arg(port) : device;
        previous = device;
        if (!receiver.addresses.isEmpty()) receivers.append(receiver);
    }
    std::ranges::sort(receivers, {},
                      [](const Receiver& r) { return std::tuple(r.name.toCaseFolded(), r.identifier); });
    return receivers;
}

}  // namespace velmora
