#pragma once

#include "Sender/Connection.h"
#include "Sender/Pairing/PairingHttp.h"

#include <memory>

namespace velmora {

struct Receiver;

/// Carries the messages of one pairing, or of the proof of one, over one connection. Main thread only.
class PairingMessenger : public std::enable_shared_from_this<PairingMessenger> {
  public:
    /// `identifier`: what this sender is called in the messages themselves; empty for none.
    [[nodiscard]] static std::shared_ptr<PairingMessenger> make(Clock& clock,
                                                                std::unique_ptr<Channel> channel,
                                                                const Receiver& receiver,
                                                                QByteArray identifier = {});

    /// The answer, if it is a success; else an error of kind `pairing`, or of the connection, with its step.
    [[nodiscard]] QCoro::Task<Connection::Answer> ask(PairingRequest what, QByteArray body,
                                                      PairingStage stage);

    [[nodiscard]] bool isOpen() const { return connection_ && connection_->isOpen(); }
    /// For what follows on the same connection.
    [[nodiscard]] std::unique_ptr<Connection> take() { return std::move(connection_); }
    /// Ends a wait with `closed`.
    void close() { connection_.reset(); }

  private:
    PairingMessenger(std::unique_ptr<Connection> connection, bool speaksRtsp, QByteArray identifier);

    [[nodiscard]] QCoro::Task<Connection::Answer> send(PairingRequest what, QByteArray body,
                                                       PairingStage stage);

    std::unique_ptr<Connection> connection_;
    bool speaksRtsp_;
    QByteArray identifier_;
};

/// An error of kind `pairing`, at the step of pairing.
[[nodiscard]] ConnectionError pairingFailure(const PairingError& error);

}  // namespace velmora
