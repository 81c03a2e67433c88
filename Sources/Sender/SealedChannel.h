#pragma once

#include "Sender/Channel.h"
#include "Sender/Pairing/SecureFrames.h"

#include <memory>

namespace velmora {

/// A channel whose bytes travel sealed over another one. A frame that was forged or altered ends it with
/// `malformed`. Main thread only.
class SealedChannel : public Channel {
    Q_OBJECT

  public:
    /// From now on every byte of `inner` is sealed. `unread`: what was received on it before, behind the last
    /// byte in the open.
    SealedChannel(std::unique_ptr<Channel> inner, ChannelKeys keys, const QByteArray& unread = {});

    void write(const QByteArray& bytes) override;
    void close() override;
    [[nodiscard]] bool isOpen() const override;
    [[nodiscard]] QHostAddress localAddress() const override;
    [[nodiscard]] QHostAddress peerAddress() const override;

  private:
    void receive(const QByteArray& bytes);

    std::unique_ptr<Channel> inner_;
    FrameSealer sealer_;
    FrameOpener opener_;
};

}  // namespace velmora
