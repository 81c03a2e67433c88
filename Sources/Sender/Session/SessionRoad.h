#pragma once

#include "Sender/Access.h"

#include <functional>
#include <memory>

namespace velmora {

/// What sessions need of the world outside: the ways to one receiver. Main thread only.
struct SessionRoad {
    struct TimeService {
        quint16 port = 0;              ///< 0: none is to be had
        std::shared_ptr<void> open{};  ///< answers while somebody holds it
    };

    Receiver receiver;
    /// A new connection, ready for commands, with the secret for further channels. One call at a time.
    std::function<QCoro::Task<Access::Link>()> link;
    /// A bare connection to another port of the receiver.
    std::function<QCoro::Task<Dialer::Dialed>(quint16 port)> dial;
    /// Answers the receiver's questions for the time.
    std::function<TimeService(const QHostAddress& local, const QHostAddress& receiver)> serveTime;
    /// Ends the waits of `link` and `dial`, for good.
    std::function<void()> close;

    [[nodiscard]] static SessionRoad through(const std::shared_ptr<Access>& access);
};

/// What differs between the makers of receivers.
enum class ReceiverKind {
    unknown,
    appleTv,
    computer,
    television,
};
[[nodiscard]] ReceiverKind receiverKind(const Receiver& receiver);

}  // namespace velmora
