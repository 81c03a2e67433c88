#include "Sender/TcpChannel.h"

#include <QNetworkProxy>

namespace velmora {

namespace {

ConnectionError::Kind kindOf(QAbstractSocket::SocketError error) {
    using Kind = ConnectionError::Kind;
    switch (error) {
        case QAbstractSocket::ConnectionRefusedError:
            return Kind::refused;
        case QAbstractSocket::SocketTimeoutError:
            return Kind::timeout;
        case QAbstractSocket::RemoteHostClosedError:
            return Kind::closed;
        default:
            return Kind::unreachable;
    }
}

}  // namespace

TcpChannel::TcpChannel(Clock& clock) : clock_(clock) {
    socket_.setProxy(QNetworkProxy::NoProxy);
    connect(&socket_, &QTcpSocket::connected, this, &TcpChannel::connected);
    connect(&socket_, &QTcpSocket::errorOccurred, this, &TcpChannel::failed);
    connect(&socket_, &QTcpSocket::readyRead, this, [this] { Q_EMIT received(socket_.readAll()); });
}

TcpChannel::~TcpChannel() {
    close();
}

void TcpChannel::close() {
    deadline_.cancel();
    socket_.disconnect(this);
    socket_.flush();
    socket_.abort();
    opened_.complete(std::unexpected(ConnectionError{}));
}

TcpChannel::Opened TcpChannel::open(const QHostAddress& address, quint16 port, Clock::Duration deadline) {
    deadline_ = clock_.after(deadline, [this] { failed(QAbstractSocket::SocketTimeoutError); });
    socket_.connectToHost(address, port);
    return opened_;
}

void TcpChannel::connected() {
    deadline_.cancel();
    socket_.setSocketOption(QAbstractSocket::LowDelayOption, 1);
    opened_.complete({});
}

void TcpChannel::failed(QAbstractSocket::SocketError error) {
    const bool wasOpen = opened_.isComplete();
    // Once connected, every failure means the same: the connection is gone.
    const ConnectionError reason{.kind = wasOpen ? ConnectionError::Kind::closed : kindOf(error),
                                 .detail = socket_.errorString()};
    opened_.complete(std::unexpected(reason));
    close();
    if (wasOpen) Q_EMIT closed(reason);
}

void TcpChannel::write(const QByteArray& bytes) {
    if (!isOpen()) return;
    socket_.write(bytes);
    socket_.flush();
}

bool TcpChannel::isOpen() const {
    return socket_.state() == QAbstractSocket::ConnectedState;
}

QHostAddress TcpChannel::localAddress() const {
    return socket_.localAddress();
}

QHostAddress TcpChannel::peerAddress() const {
    return socket_.peerAddress();
}

}  // namespace velmora
