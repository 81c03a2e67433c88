#include "Television/ControlConnection.h"

#include "Television/Responses.h"

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace velmora::test {

namespace {

constexpr Clock::Duration patience = 55s;
constexpr Clock::Duration patienceWithTyping = 180s;

}  // namespace

ControlConnection::ControlConnection(Context& context, QTcpSocket* socket, QObject* parent)
    : QObject(parent), context_(context), socket_(socket), rules_(socket->peerAddress()) {
    connect(&socket_, &SealedSocket::received, this, &ControlConnection::receive);
    connect(&socket_, &SealedSocket::closed, this, &ControlConnection::closed);
    connect(&socket_, &SealedSocket::broken, this, [this](const QString& reason) {
        context_.complain(reason);
        abort();
    });
    restartIdleTimer();
}

void ControlConnection::answer(Response response) {
    busy_ = false;
    response.version = request_.version;
    if (request_.headers.contains("CSeq")) response.headers.append("CSeq", request_.headers.value("CSeq"));
    if (isSealed()) response.headers.append("Server", "AirTunes/870.14.1");
    QByteArray bytes = response.encoded();
    if (context_.does(Misbehaviour::omitsLengths) && response.body.isEmpty())
        bytes.replace("Content-Length: 0\r\n", "");
    if (context_.does(Misbehaviour::endsLinesBare)) bytes.remove(bytes.indexOf('\r'), 1);
    socket_.write(bytes);
    if (const auto keys = std::exchange(keys_, std::nullopt)) {
        socket_.seal(*keys);
        rules_.seal();
    }
    restartIdleTimer();
}

void ControlConnection::reverse() {
    reversed_ = true;
    idle_.cancel();
}

void ControlConnection::send(const Request& event) {
    unanswered_ += 1;
    socket_.write(event.encoded());
}

void ControlConnection::receive(const QByteArray& bytes) {
    if (reversed_) {
        answers_.feed(bytes);
        return receiveAnswers();
    }
    requests_.feed(bytes);
    const auto next = requests_.next();
    if (!next) return refuse(next.error());
    if (!*next) return;
    if (busy_) return refuse(u"a second request before the answer to the first"_s);
    if (!requests_.takeRest().isEmpty()) return refuse(u"more behind a request, before its answer"_s);
    request_ = **next;
    const QString wrong = rules_.complaint(request_);
    if (!wrong.isEmpty())
        return refuse(QString::fromLatin1(request_.method + ' ' + request_.target + ": ") + wrong);
    busy_ = true;
    idle_.cancel();
    Q_EMIT requested(request_);
}

void ControlConnection::receiveAnswers() {
    for (;;) {
        const auto next = answers_.next();
        if (!next) return refuse(next.error());
        if (!*next) return;
        unanswered_ -= 1;
        if (!(*next)->isSuccess() || unanswered_ < 0) return refuse(u"a wrong answer to an event"_s);
    }
}

void ControlConnection::refuse(const QString& reason) {
    context_.complain(reason);
    socket_.write(response(400).encoded());
    close();
}

void ControlConnection::restartIdleTimer() {
    if (reversed_) return;
    const bool someoneTypes = request_.target.startsWith("/pair-");
    idle_ = context_.clock.after(someoneTypes ? patienceWithTyping : patience, [this] { close(); });
}

}  // namespace velmora::test
