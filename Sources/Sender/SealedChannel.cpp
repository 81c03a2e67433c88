#include "Sender/SealedChannel.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace velmora {

SealedChannel::SealedChannel(std::unique_ptr<Channel> inner, ChannelKeys keys, const QByteArray& unread)
    : inner_(std::move(inner)), sealer_(std::move(keys.encrypt)), opener_(std::move(keys.decrypt)) {
    connect(inner_.get(), &Channel::received, this, &SealedChannel::receive);
    connect(inner_.get(), &Channel::closed, this, &SealedChannel::closed);
    if (!unread.isEmpty()) receive(unread);
}

void SealedChannel::write(const QByteArray& bytes) {
    if (isOpen()) inner_->write(sealer_.seal(bytes));
}

void SealedChannel::close() {
    inner_->disconnect(this);
    inner_->close();
}

bool SealedChannel::isOpen() const {
    return inner_->isOpen();
}

QHostAddress SealedChannel::localAddress() const {
    return inner_->localAddress();
}

QHostAddress SealedChannel::peerAddress() const {
    return inner_->peerAddress();
}

void SealedChannel::receive(const QByteArray& bytes) {
    const auto plain = opener_.open(bytes);
    if (!plain) {
        close();
        Q_EMIT closed({.kind = ConnectionError::Kind::malformed, .detail = u"a frame that was altered"_s});
    } else if (!plain->isEmpty()) {
        Q_EMIT received(*plain);
    }
}

}  // namespace velmora
