#pragma once

#include "Sender/Pairing/SecureFrames.h"

#include <QObject>
#include <QTcpSocket>

#include <optional>

namespace velmora::test {

/// A sender's socket, sealed from the moment that there are keys for it.
class SealedSocket : public QObject {
    Q_OBJECT

  public:
    /// Takes the socket over.
    explicit SealedSocket(QTcpSocket* socket, QObject* parent = nullptr);

    /// Every byte from here on is sealed; `keys` are the sender's.
    void seal(const ChannelKeys& keys);
    [[nodiscard]] bool isSealed() const { return opener_.has_value(); }

    void write(const QByteArray& bytes) { socket_->write(isSealed() ? sealer_->seal(bytes) : bytes); }
    void close() { socket_->disconnectFromHost(); }
    void abort() { socket_->abort(); }
    [[nodiscard]] QHostAddress sender() const { return socket_->peerAddress(); }

  Q_SIGNALS:
    void received(const QByteArray& bytes);
    /// The connection can only be ended now.
    void broken(const QString& reason);
    void closed();

  private:
    void receive();

    QTcpSocket* socket_;
    std::optional<FrameSealer> sealer_;
    std::optional<FrameOpener> opener_;
};

}  // namespace velmora::test
