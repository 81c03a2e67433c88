#pragma once

#include "Sender/Receiver.h"

#include <QHostAddress>
#include <QList>
#include <QString>

namespace velmora {

/// One service as seen over one interface by one protocol. A receiver is usually seen several times.
struct Sighting {
    QString service{};  ///< the service's name, which is the receiver's
    QString hostName{};
    quint16 port = 0;
    QList<QHostAddress> addresses{};
    TxtRecord record{};
    bool local = false;  ///< announced by this computer itself

    bool operator==(const Sighting&) const = default;
};

/// The receivers behind the sightings, in the order of their names. Sightings of the same device and port are
/// one receiver, whatever its names: a box on cable and radio at once announces itself as "TV" and "TV (2)".
/// Two programs on one computer share its device but have ports of their own. One without an address is not
/// there: its announcement outlives it by more than an hour, its address by two minutes.
[[nodiscard]] QList<Receiver> receiversFrom(const QList<Sighting>& sightings);

}  // namespace velmora
