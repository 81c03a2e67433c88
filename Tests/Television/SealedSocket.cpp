#include "Television/SealedSocket.h"

namespace velmora::test {

SealedSocket::SealedSocket(QTcpSocket* socket, QObject* parent) : QObject(parent), socket_(socket) {
    socket->setParent(this);
    socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    connect(socket, &QTcpSocket::readyRead, this, &SealedSocket::receive);
    connect(socket, &QTcpSocket::disconnected, this, &SealedSocket::closed);
    QMetaObject::invokeMethod(this, &SealedSocket::receive, Qt::QueuedConnection);
}

void SealedSocket::seal(const ChannelKeys& keys) {
    sealer_.emplace(keys.decrypt);
    opener_.emplace(keys.encrypt);
}

void SealedSocket::receive() {
    const QByteArray bytes = socket_->readAll();
    const auto text = opener_ ? opener_->open(bytes) : bytes;
    if (!text) return Q_EMIT broken(QStringLiteral("a frame that does not open"));
    if (!text->isEmpty()) Q_EMIT received(*text);
}

}  // namespace velmora::test
