#pragma once

#include "Sender/ConnectionError.h"
#include "Sender/Receiver.h"
#include "Sender/TcpChannel.h"
#include "System/Clock.h"
#include "System/Completion.h"

#include <QCoroTask>
#include <QHostAddress>
#include <QList>

#include <memory>
#include <optional>

namespace velmora {

/// Finds the address of a receiver that answers, and makes connections to it. Main thread only.
class Dialer : public std::enable_shared_from_this<Dialer> {
  public:
    /// No `std::expected`: one that can be made from a null pointer does not get through QCoro 0.8.
    struct Dialed {
        std::unique_ptr<Channel> channel;  ///< null: see `error`
        ConnectionError error;
    };

    [[nodiscard]] static std::shared_ptr<Dialer> make(Clock& clock, Receiver receiver);

    /// The first of the receiver's addresses that answers; the later calls take the same one. One call at a
    /// time. Fails with what the last address tried answered. `port`: another one than the receiver's own.
    [[nodiscard]] QCoro::Task<Dialed> dial(std::optional<quint16> port = {});

    /// Ends a wait with `closed`; nothing is dialed any more.
    void close();

    [[nodiscard]] QByteArray hostHeader() const;

  private:
    Dialer(Clock& clock, Receiver receiver) : clock_(clock), receiver_(std::move(receiver)) {}

    [[nodiscard]] QCoro::Task<QList<QHostAddress>> addresses();
    [[nodiscard]] Clock::Duration deadline() const;

    Clock& clock_;
    Receiver receiver_;
    QHostAddress chosen_;
    std::unique_ptr<TcpChannel> dialing_;
    std::optional<Completion<QList<QHostAddress>>> lookup_;
    bool closed_ = false;
};

}  // namespace velmora
