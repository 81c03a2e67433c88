#include "Sender/Discovery/Naming.h"

namespace velmora::Naming {

bool isCalled(const Receiver& receiver, const QString& text) {
    return receiver.name.compare(text, Qt::CaseInsensitive) == 0 ||
           receiver.identifier.compare(text, Qt::CaseInsensitive) == 0;
}

bool isAt(const Receiver& receiver, const QString& text) {
    const auto typed = Receiver::fromText(text);
    if (!typed || typed->port != receiver.port) return false;
    return typed->address.isNull() ? typed->host == receiver.host : typed->address == receiver.address;
}

}  // namespace velmora::Naming
