#include "Platform/Linux/TelevisionNetwork.h"

#include "Sender/Discovery/Discovery.h"
#include "Sender/Discovery/KnownReceivers.h"

#include <algorithm>

namespace velmora {

using namespace std::chrono_literals;

namespace {

// As long as a look-up of a name, or the answer of a receiver that wakes behind a proxy, may take.
constexpr Clock::Duration lookupPatience = 8s;

}  // namespace

TelevisionNetwork::TelevisionNetwork(Clock& clock, Discovery& discovery, const ReceiverMemory& memory)
    : clock_(clock), discovery_(discovery), memory_(memory) {}

QList<Receiver> TelevisionNetwork::receivers() const {
    QList<Receiver> all = discovery_.receivers();
    const QList<Receiver> used = memory_.known ? memory_.known->receivers() : QList<Receiver>();
    for (const Receiver& receiver : used) {
        const bool isSeen = std::ranges::count(all, receiver.identifier, &Receiver::identifier) > 0;
        if (!isSeen) all.append(receiver);
    }
    return all;
}

std::unique_ptr<NetworkOutputContext> TelevisionNetwork::makeContext() {
    const NetworkOutputContext::World world{
        .receivers = [this] { return receivers(); },
        .output = {.resolve = [this](const Receiver& receiver) { return resolve(receiver); },
                   .makePlayback = [this] { return makePlayback(); }}};
    return std::make_unique<NetworkOutputContext>(clock_, world);
}

QCoro::Task<RemoteOutput::Resolved> TelevisionNetwork::resolve(Receiver receiver) {
    const RemoteOutput::Resolved found = co_await discovery_.resolve(receiver, lookupPatience);
    if (!found) co_return found;
    co_return asAnnounced(*found);
}

Receiver TelevisionNetwork::asAnnounced(const Receiver& typed) const {
    if (typed.announced) return typed;
    for (const Receiver& seen : discovery_.receivers()) {
        const bool isSame =
            seen.port == typed.port && std::ranges::any_of(typed.addresses, [&](const auto& address) {
                return seen.addresses.contains(address);
            });
        if (isSame) return seen;
    }
    return typed;
}

RemoteOutput::Made TelevisionNetwork::makePlayback() {
    if (!server_) {
        auto started = MediaServer::start();
        if (!started) return std::unexpected(started.error());
        server_ = *std::move(started);
    }
    return std::make_unique<RemotePlayback>(clock_, *server_, memory_);
}

}  // namespace velmora
