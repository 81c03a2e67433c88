#pragma once

#include "Sender/Channel.h"
#include "System/Clock.h"
#include "System/Completion.h"

#include <QTcpSocket>

#include <expected>

namespace velmora {

/// A plain TCP connection.
class TcpChannel : public Channel {
    Q_OBJECT

  public:
    using Opened = Completion<std::expected<void, ConnectionError>>;

    explicit TcpChannel(Clock& clock);
    /// A wait for `open` ends with `closed`.
    ~TcpChannel() override;

    /// Once. Fails with `refused`, `unreachable`, or `timeout` after the deadline.
    [[nodiscard]] Opened open(const QHostAddress& address, quint16 port, Clock::Duration deadline);

    void write(const QByteArray& bytes) override;
    void close() override;
    [[nodiscard]] bool isOpen() const override;
    [[nodiscard]] QHostAddress localAddress() const override;
    [[nodiscard]] QHostAddress peerAddress() const override;

  private:
    void connected();
    void failed(QAbstractSocket::SocketError error);

    Clock& clock_;
    QTcpSocket socket_;
    Clock::Timer deadline_;
    Opened opened_;
};

}  // namespace velmora
