#pragma once

#include "Television/Context.h"
#include "Television/RequestRules.h"
#include "Television/SealedSocket.h"

#include <QObject>

namespace velmora::test {

/// One connection of a sender, with the intolerance of real receivers: what they do not understand is
/// answered 400 and hung up on, and so is silence of 55 seconds.
class ControlConnection : public QObject {
    Q_OBJECT

  public:
    ControlConnection(Context& context, QTcpSocket* socket, QObject* parent = nullptr);

    /// To the request at hand.
    void answer(Response response);
    void close() { socket_.close(); }
    void abort() { socket_.abort(); }

    /// Everything behind the next answer is sealed.
    void sealNext(const ChannelKeys& keys) { keys_ = keys; }
    [[nodiscard]] bool isSealed() const { return socket_.isSealed(); }

    [[nodiscard]] QByteArray session() const { return rules_.session(); }
    [[nodiscard]] QHostAddress sender() const { return socket_.sender(); }

    /// After `answer` with 101: the roles are swapped, and the receiver asks.
    void reverse();
    [[nodiscard]] bool isReversed() const { return reversed_; }
    void send(const Request& event);
    [[nodiscard]] int unansweredEvents() const { return unanswered_; }

  Q_SIGNALS:
    void requested(const velmora::Request& request);
    void closed();

  private:
    void receive(const QByteArray& bytes);
    void receiveAnswers();
    void refuse(const QString& reason);
    void restartIdleTimer();

    Context& context_;
    SealedSocket socket_;
    RequestRules rules_;
    std::optional<ChannelKeys> keys_;
    MessageReader<Request> requests_;
    MessageReader<Response> answers_;
    Request request_;  // that waits for its answer
    bool busy_ = false;
    bool reversed_ = false;
    int unanswered_ = 0;
    Clock::Timer idle_;
};

}  // namespace velmora::test
