#pragma once

#include "Sender/Channel.h"
#include "Sender/Message.h"
#include "Sender/Pairing/Digest.h"
#include "System/Clock.h"
#include "System/Completion.h"

#include <QCoroTask>
#include <QObject>

#include <chrono>
#include <deque>
#include <expected>
#include <memory>
#include <optional>

namespace velmora {

/// Requests and their answers over a channel, one at a time: receivers lose a request that comes before they
/// have answered the last one. Main thread only.
class Connection : public QObject {
    Q_OBJECT

  public:
    using Answer = std::expected<Response, ConnectionError>;

    static constexpr Clock::Duration usualDeadline = std::chrono::seconds(5);

    Connection(Clock& clock, std::unique_ptr<Channel> channel);
    /// Everyone who waits gets `closed`.
    ~Connection() override;

    /// Sends now, or as soon as the requests before it are answered. Any answer that is a message is a
    /// success here, whatever its status. The deadline counts from this call. A request that ran into it
    /// still holds up those behind it until its late answer is there, or they run into theirs.
    [[nodiscard]] QCoro::Task<Answer> send(Request request, Clock::Duration deadline = usualDeadline);

    /// Sends at once, even behind a request that is not answered yet, and takes no interest in the answer.
    /// For farewells that nobody can wait for.
    void sendLast(const Request& request);

    /// What a 401 is answered with: the request is sent once more, with the whole deadline again, and all
    /// later ones show the password unasked. A second 401 is the answer. Empty: none.
    void setPassword(const QString& password) { password_ = password; }

    /// Everyone who waits gets `closed`; the connection stays as it is. What is sent from now on goes behind
    /// the request that is not answered yet.
    void giveUp();

    [[nodiscard]] bool isOpen() const { return channel_ && channel_->isOpen(); }
    [[nodiscard]] bool isIdle() const { return !inFlight_; }  ///< nothing is unanswered
    [[nodiscard]] QHostAddress localAddress() const;
    [[nodiscard]] QHostAddress peerAddress() const;

    struct Released {
        std::unique_ptr<Channel> channel;
        QByteArray unread;  ///< received behind the last answer
    };
    /// Gives the channel away: its bytes no longer are answers to requests. Null when it is closed.
    [[nodiscard]] Released release();

  Q_SIGNALS:
    /// Once, when the channel ends by itself, or by an answer that is none.
    void ended(const velmora::ConnectionError& error);

  private:
    struct Exchange {
        QByteArray request;
        Completion<Answer> answer;
        Clock::Timer deadline;
    };

    [[nodiscard]] QCoro::Task<Answer> exchange(Request request, Clock::Duration deadline);
    [[nodiscard]] bool takeChallenge(const Answer& answer);
    void authorise(Request& request);
    void number(Request& request);
    void sendNext();
    void receive(const QByteArray& bytes);
    void end(const ConnectionError& error);
    void close(const ConnectionError& error);

    Clock& clock_;
    std::unique_ptr<Channel> channel_;
    MessageReader<Response> reader_;
    std::shared_ptr<Exchange> inFlight_;
    std::deque<std::shared_ptr<Exchange>> waiting_;
    int sequence_ = 0;  // the last CSeq
    QString password_;
    std::optional<DigestAnswer> authorisation_;  // to the connection's last challenge
};

}  // namespace velmora
