#pragma once

#include "Sender/Receiver.h"
#include "System/Clock.h"

#include <QCoroTask>
#include <QList>
#include <QObject>
#include <QString>

#include <expected>
#include <memory>

namespace velmora {

/// The receivers on the network, live: they appear, change and vanish. Main thread only; never waits for
/// anything.
class Discovery : public QObject {
    Q_OBJECT

  public:
    /// `busAddress` is for tests; empty means the system bus.
    explicit Discovery(Clock& clock, QString busAddress = {}, QObject* parent = nullptr);
    ~Discovery() override;

    /// Begins to look. Before, nothing is seen and nothing is missing.
    void start();

    /// All that announce themselves, by name. Those that do not take video stay in, to be named with the
    /// reason that `Receiver::takesVideo` gives.
    [[nodiscard]] QList<Receiver> receivers() const { return receivers_; }

    /// Why receivers cannot be seen, as whole sentences for the user; empty while they can.
    [[nodiscard]] QString unavailableReason() const { return reason_; }

    /// The receiver as it is reached now: addresses and ports change with updates and sleep, so this comes
    /// before each connection. One that announces itself is as the network says, waited for until the
    /// deadline; one that does not is returned with the address it had, where it may answer still. A typed
    /// host name is looked up. Fails with the reason in plain words when there is no address.
    [[nodiscard]] QCoro::Task<std::expected<Receiver, QString>> resolve(Receiver receiver,
                                                                        Clock::Duration deadline);

    /// The receiver of this name (in any case) or identifier, waited for until the deadline. Fails in plain
    /// words when none shows or when several have the name.
    [[nodiscard]] QCoro::Task<std::expected<Receiver, QString>> find(QString nameOrIdentifier,
                                                                     Clock::Duration deadline);

  Q_SIGNALS:
    void receiversChanged();
    void unavailableReasonChanged();

  private:
    class Private;
    void publish();
    void publishSoon();

    Clock& clock_;
    std::unique_ptr<Private> d_;
    QList<Receiver> receivers_;
    QString reason_;
};

}  // namespace velmora
