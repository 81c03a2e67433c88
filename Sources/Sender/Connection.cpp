#include "Sender/Connection.h"

#include <QPointer>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

// Interim answers announce the real one; 101 is itself real: it turns the connection around.
bool isInterim(const Response& response) {
    constexpr int switchingProtocols = 101;
    return response.status < 200 && response.status != switchingProtocols;
}

}  // namespace

Connection::Connection(Clock& clock, std::unique_ptr<Channel> channel)
    : clock_(clock), channel_(std::move(channel)) {
    connect(channel_.get(), &Channel::received, this, &Connection::receive);
    connect(channel_.get(), &Channel::closed, this, &Connection::end);
}

Connection::~Connection() {
    close({});
}

QCoro::Task<Connection::Answer> Connection::send(Request request, Clock::Duration deadline) {
    const QPointer<Connection> self(this);
    authorise(request);
    Answer answer = co_await exchange(request, deadline);
    if (!self || !takeChallenge(answer)) co_return answer;
    authorise(request);
    co_return co_await exchange(request, deadline);
}

bool Connection::takeChallenge(const Answer& answer) {
    constexpr int unauthorised = 401;
    if (!answer || answer->status != unauthorised || password_.isEmpty()) return false;
    auto challenge = DigestChallenge::parse(answer->headers.value("WWW-Authenticate"));
    if (!challenge) return false;
    authorisation_.emplace(*std::move(challenge), password_);
    return true;
}

void Connection::authorise(Request& request) {
    if (!authorisation_) return;
    request.headers.set("Authorization", authorisation_->authorization(request.method, request.target));
}

// A request that is sent again, or by somebody else than the one before, must not repeat its number.
void Connection::number(Request& request) {
    constexpr const char* header = "CSeq";
    if (!request.headers.contains(header)) return;
    sequence_ = std::max(sequence_ + 1, request.headers.value(header).toInt());
    request.headers.set(header, QByteArray::number(sequence_));
}

QCoro::Task<Connection::Answer> Connection::exchange(Request request, Clock::Duration deadline) {
    const auto exchange = std::make_shared<Exchange>();
    number(request);
    exchange->request = request.encoded();
    if (isOpen()) {
        exchange->deadline = clock_.after(deadline, [answer = exchange->answer] {
            answer.complete(std::unexpected(ConnectionError{.kind = ConnectionError::Kind::timeout}));
        });
        waiting_.push_back(exchange);
        sendNext();
    } else {
        exchange->answer.complete(std::unexpected(ConnectionError{}));
    }
    // From here on the connection may be gone; only the exchange is touched.
    const Completion<Answer> answer = exchange->answer;
    co_return co_await answer;
}

void Connection::sendLast(const Request& request) {
    if (!isOpen()) return;
    Request authorised = request;
    authorise(authorised);
    number(authorised);
    channel_->write(authorised.encoded());
}

void Connection::giveUp() {
    if (inFlight_) inFlight_->answer.complete(std::unexpected(ConnectionError{}));
    for (const auto& exchange : std::exchange(waiting_, {}))
        exchange->answer.complete(std::unexpected(ConnectionError{}));
}

QHostAddress Connection::localAddress() const {
    return channel_ ? channel_->localAddress() : QHostAddress();
}

QHostAddress Connection::peerAddress() const {
    return channel_ ? channel_->peerAddress() : QHostAddress();
}

Connection::Released Connection::release() {
    if (channel_) channel_->disconnect(this);
    Released released{std::move(channel_), reader_.takeRest()};
    close({});
    return released;
}

void Connection::sendNext() {
    while (!inFlight_ && !waiting_.empty()) {
        const auto next = std::move(waiting_.front());
        waiting_.pop_front();
        if (next->answer.isComplete()) continue;  // ran into its deadline while it waited
        inFlight_ = next;
        reader_.takeRest();  // what came before the question is no answer to it
        channel_->write(next->request);
    }
}

void Connection::receive(const QByteArray& bytes) {
    reader_.feed(bytes);
    // Without a question the bytes are left alone: behind a 101 they are somebody else's.
    while (inFlight_) {
        auto response = reader_.next();
        if (!response) return end({.kind = ConnectionError::Kind::malformed, .detail = response.error()});
        if (!*response) return;
        if (isInterim(**response)) continue;
        std::exchange(inFlight_, nullptr)->answer.complete(**std::move(response));
        if (!waiting_.empty()) sendNext();
    }
}

void Connection::end(const ConnectionError& error) {
    close(error);
    Q_EMIT ended(error);
}

void Connection::close(const ConnectionError& error) {
    if (channel_) {
        channel_->disconnect(this);
        channel_->close();
    }
    if (inFlight_) std::exchange(inFlight_, nullptr)->answer.complete(std::unexpected(error));
    for (const auto& exchange : std::exchange(waiting_, {}))
        exchange->answer.complete(std::unexpected(error));
}

}  // namespace velmora
