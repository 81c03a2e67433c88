#pragma once

#include "Sender/Receiver.h"

#include <QCoroTask>
#include <QString>

#include <expected>

namespace velmora {

class Discovery;
class KnownReceivers;
class TelevisionNetwork;

/// Which television the user means: by the name or identifier that it announces, by the name that a
/// remembered one had, or by its address. Main thread. All of them must outlive every call.
class TelevisionFinder {
  public:
    using Found = std::expected<Receiver, QString>;

    TelevisionFinder(TelevisionNetwork& network, Discovery& discovery, const KnownReceivers& known)
        : network_(network), discovery_(discovery), known_(known) {}

    /// Fails with whole sentences: nothing of that name, several, or one that takes no movies.
    [[nodiscard]] QCoro::Task<Found> find(QString text);

  private:
    [[nodiscard]] QCoro::Task<Found> search(QString text);

    TelevisionNetwork& network_;
    Discovery& discovery_;
    const KnownReceivers& known_;
};

}  // namespace velmora
