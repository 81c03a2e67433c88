#pragma once

#include "Sender/Receiver.h"
#include "System/Clock.h"

#include <QCoroTask>
#include <QString>

#include <expected>

namespace velmora {

class Discovery;
class KnownReceivers;

/// Which television the user means: by the name or identifier that it announces, by the name that a
/// remembered one had, or by its address. Main thread. All of them must outlive every call.
class TelevisionFinder {
  public:
    using Found = std::expected<Receiver, QString>;

    TelevisionFinder(Clock& clock, Discovery& discovery, const KnownReceivers& known)
        : clock_(clock), discovery_(discovery), known_(known) {}

    /// Fails with whole sentences: nothing of that name, several, or one that takes no movies.
    [[nodiscard]] QCoro::Task<Found> find(QString text);

    /// The receiver as it is reached now, for right before a connection.
    [[nodiscard]] QCoro::Task<Found> resolve(Receiver receiver);

  private:
    [[nodiscard]] QCoro::Task<Found> search(QString text);
    [[nodiscard]] Receiver asAnnounced(const Receiver& typed) const;

    Clock& clock_;
    Discovery& discovery_;
    const KnownReceivers& known_;
};

}  // namespace velmora
