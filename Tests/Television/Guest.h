#pragma once

#include "Television/PairingVerbs.h"
#include "Television/PasswordGuard.h"
#include "Television/PlayVerbs.h"
#include "Television/RequestRules.h"
#include "Television/SealedSocket.h"
#include "Television/Session/SessionVerbs.h"

#include <memory>

namespace velmora::test {

/// One connection of a sender, and what the sender may do there: first be trusted as the flavour asks, then
/// play. With the intolerance of real receivers: what they do not understand is answered 400 and hung up on,
/// and so is silence of 55 seconds.
class Guest : public QObject {
    Q_OBJECT

  public:
    Guest(Context& context, Pairings& pairings, PlayVerbs& verbs, QTcpSocket* socket,
          QObject* parent = nullptr);

    void abort() { socket_.abort(); }
    /// Answers nothing any more.
    void fallSilent();
    /// Null before the connection is sealed.
    [[nodiscard]] const SessionVerbs* session() const { return session_.get(); }

    /// On a reversed connection, where the receiver asks.
    void sendEvent(const QByteArray& body);
    [[nodiscard]] int unansweredEvents() const;

  Q_SIGNALS:
    void requested(const velmora::Request& request);
    void left();

  private:
    void receive(const QByteArray& bytes);
    void receiveAnswers();
    void take(const Request& request);
    void answer(const Request& request);
    void answerPlain(const Request& request);
    void reverse(const Request& request);
    void reply(Response response);
    void refuse(const QString& reason);
    void restartIdleTimer();

    Context& context_;
    PlayVerbs& verbs_;
    SealedSocket socket_;
    RequestRules rules_;
    PairingVerbs pairing_;
    PasswordGuard password_;
    std::unique_ptr<SessionVerbs> session_;
    std::optional<ChannelKeys> keys_;  // everything behind the next answer is sealed
    MessageReader<Request> requests_;
    MessageReader<Response> answers_;
    Request request_;  // that waits for its answer
    bool busy_ = false;
    bool reversed_ = false;
    bool silent_ = false;
    int unanswered_ = 0;
    Clock::Timer idle_;
};

}  // namespace velmora::test
