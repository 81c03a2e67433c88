#pragma once

#include "Sender/Channel.h"
#include "Sender/Message.h"

#include <QObject>

#include <memory>

namespace velmora {

/// A connection on which the receiver asks and we answer: each request at once with an empty 200, since
/// receivers end a session whose events nobody answers. Main thread only.
class EventConnection : public QObject {
    Q_OBJECT

  public:
    /// `unread`: what was received on the channel before.
    EventConnection(std::unique_ptr<Channel> channel, const QByteArray& unread);

  Q_SIGNALS:
    void requested(const velmora::Request& request);
    /// Once, when it ends by itself.
    void ended(const velmora::ConnectionError& error);

  private:
    void receive(const QByteArray& bytes);

    std::unique_ptr<Channel> channel_;
    MessageReader<Request> reader_;
};

}  // namespace velmora
