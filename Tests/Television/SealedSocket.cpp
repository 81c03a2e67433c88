#include "Television/SealedSocket.h"

#include "Sender/Pairing/Crypto.h"

#include <QtEndian>

using namespace Qt::StringLiterals;

namespace velmora::test {

namespace {

constexpr qsizetype longestFrame = 1024;  // from the sender
constexpr qsizetype ownFrame = 2363;      // the longest that was seen
constexpr qsizetype lengthSize = 2;

}  // namespace

SealedSocket::SealedSocket(QTcpSocket* socket, QObject* parent) : QObject(parent), socket_(socket) {
    socket->setParent(this);
    socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    connect(socket, &QTcpSocket::readyRead, this, &SealedSocket::receive);
    connect(socket, &QTcpSocket::disconnected, this, &SealedSocket::closed);
    QMetaObject::invokeMethod(this, &SealedSocket::receive, Qt::QueuedConnection);
}

void SealedSocket::seal(const ChannelKeys& keys) {
    sealing_ = keys.decrypt;
    opener_.emplace(keys.encrypt);
}

void SealedSocket::write(const QByteArray& bytes) {
    if (!isSealed()) {
        socket_->write(bytes);
        return;
    }
    for (qsizetype at = 0; at < bytes.size(); at += ownFrame) {
        const QByteArray block = bytes.mid(at, ownFrame);
        QByteArray length(lengthSize, '\0');
        qToLittleEndian(static_cast<quint16>(block.size()), length.data());
        QByteArray nonce(12, '\0');
        qToLittleEndian(sealed_++, nonce.data() + 4);
        socket_->write(length + Crypto::seal(sealing_, nonce, block, length));
    }
}

void SealedSocket::receive() {
    QByteArray text = socket_->readAll();
    if (isSealed()) {
        const QString wrong = takeFrames(text);
        if (!wrong.isEmpty()) {
            Q_EMIT broken(wrong);
            return;
        }
    }
    if (!text.isEmpty()) Q_EMIT received(text);
}

/// Frame by frame, for their lengths. What is wrong with them, if anything.
QString SealedSocket::takeFrames(QByteArray& text) {
    pending_ += std::exchange(text, {});
    while (pending_.size() >= lengthSize) {
        const qsizetype length = qFromLittleEndian<quint16>(pending_.constData());
        if (length > longestFrame) return u"a frame of more than 1024 bytes, or plain text"_s;
        const qsizetype size = lengthSize + length + Crypto::tagSize;
        if (pending_.size() < size) break;
        const auto plain = opener_->open(pending_.first(size));
        if (!plain) return u"a frame that does not open"_s;
        text += *plain;
        pending_.remove(0, size);
    }
    return {};
}

}  // namespace velmora::test
