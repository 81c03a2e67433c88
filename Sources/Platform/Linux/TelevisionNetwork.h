#pragma once

#include "Platform/Linux/NetworkOutputContext.h"
#include "Sender/CredentialStore.h"
#include "Sender/MediaServer.h"
#include "System/Clock.h"

#include <QList>

#include <memory>

namespace velmora {

class Discovery;

/// What all windows of a process share of the network: who is there, what is kept about them, and the server
/// that movies are fetched from, which starts with the first movie that needs it. Main thread only; outlives
/// its contexts.
class TelevisionNetwork {
  public:
    /// All of these must outlive it. `memory` knows receivers.
    TelevisionNetwork(Clock& clock, Discovery& discovery, const ReceiverMemory& memory);

    [[nodiscard]] std::unique_ptr<NetworkOutputContext> makeContext();

    /// Those on the network, by name, then those that were used before and do not show, the latest first.
    [[nodiscard]] QList<Receiver> receivers() const;

    /// The receiver as it is reached now, and as it announces itself even if it was named by its address:
    /// that tells how to speak to it.
    [[nodiscard]] QCoro::Task<RemoteOutput::Resolved> resolve(Receiver receiver);

  private:
    [[nodiscard]] Receiver asAnnounced(const Receiver& typed) const;
    [[nodiscard]] RemoteOutput::Made makePlayback();

    Clock& clock_;
    Discovery& discovery_;
    ReceiverMemory memory_;
    std::unique_ptr<MediaServer> server_;
};

}  // namespace velmora
