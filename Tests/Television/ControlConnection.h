#pragma once

#include "Sender/Message.h"
#include "System/Clock.h"

#include <QObject>
#include <QTcpSocket>

namespace velmora::test {

/// One connection of a sender, with the intolerance of real receivers: what they do not understand is
/// answered 400 and hung up on, and so is silence of 55 seconds.
class ControlConnection : public QObject {
    Q_OBJECT

  public:
    ControlConnection(Clock& clock, QTcpSocket* socket, QObject* parent = nullptr);

    /// To the request at hand.
    void answer(const Response& response, bool bareLineEnd, bool omitEmptyLength);
    void close() { socket_->disconnectFromHost(); }
    void abort() { socket_->abort(); }

    [[nodiscard]] const QByteArray& session() const { return session_; }

    /// After `answer` with 101: the roles are swapped, and the receiver asks.
    void reverse();
    [[nodiscard]] bool isReversed() const { return reversed_; }
    void send(const Request& event);
    [[nodiscard]] int unansweredEvents() const { return unanswered_; }

  Q_SIGNALS:
    void requested(const velmora::Request& request);
    void refused(const QString& reason);
    void closed();

  private:
    void receive();
    void receiveRequest();
    void receiveAnswers();
    [[nodiscard]] QString complaint(const Request& request) const;
    void refuse(const QString& reason);
    void restartIdleTimer();

    Clock& clock_;
    QTcpSocket* socket_;
    MessageReader<Request> requests_;
    MessageReader<Response> answers_;
    QByteArray session_;
    bool busy_ = false;
    bool reversed_ = false;
    int unanswered_ = 0;
    Clock::Timer idle_;
};

}  // namespace velmora::test
