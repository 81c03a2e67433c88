#include "Television/ControlConnection.h"

#include <algorithm>

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace velmora::test {

namespace {

constexpr Clock::Duration patience = 55s;
constexpr qsizetype uuidLength = 36;

}  // namespace

ControlConnection::ControlConnection(Clock& clock, QTcpSocket* socket, QObject* parent)
    : QObject(parent), clock_(clock), socket_(socket) {
    socket->setParent(this);
    connect(socket, &QTcpSocket::readyRead, this, &ControlConnection::receive);
    connect(socket, &QTcpSocket::disconnected, this, &ControlConnection::closed);
    restartIdleTimer();
}

void ControlConnection::answer(const Response& response, bool bareLineEnd, bool omitEmptyLength) {
    busy_ = false;
    QByteArray bytes = response.encoded();
    if (omitEmptyLength && response.body.isEmpty()) bytes.replace("Content-Length: 0\r\n", "");
    if (bareLineEnd) bytes.remove(bytes.indexOf('\r'), 1);
    socket_->write(bytes);
    restartIdleTimer();
}

void ControlConnection::reverse() {
    reversed_ = true;
    idle_.cancel();
}

void ControlConnection::send(const Request& event) {
    unanswered_ += 1;
    socket_->write(event.encoded());
}

void ControlConnection::receive() {
    if (reversed_)
        receiveAnswers();
    else
        receiveRequest();
}

void ControlConnection::receiveRequest() {
    requests_.feed(socket_->readAll());
    const auto next = requests_.next();
    if (!next) return refuse(next.error());
    if (!*next) return;
    const Request& request = **next;
    if (busy_) return refuse(u"a second request before the answer to the first"_s);
    if (!requests_.takeRest().isEmpty()) return refuse(u"more behind a request, before its answer"_s);
    const QString wrong = complaint(request);
    if (!wrong.isEmpty())
        return refuse(QString::fromLatin1(request.method + ' ' + request.target + ": ") + wrong);
    session_ = request.headers.value("X-Apple-Session-ID");
    busy_ = true;
    idle_.cancel();
    Q_EMIT requested(request);
}

void ControlConnection::receiveAnswers() {
    answers_.feed(socket_->readAll());
    for (;;) {
        const auto next = answers_.next();
        if (!next) return refuse(next.error());
        if (!*next) return;
        unanswered_ -= 1;
        if (!(*next)->isSuccess() || unanswered_ < 0) return refuse(u"a wrong answer to an event"_s);
    }
}

QString ControlConnection::complaint(const Request& request) const {
    const Headers& headers = request.headers;
    if (std::ranges::any_of(headers, [](const auto& header) { return header.second.isEmpty(); }))
        return u"a header without a value"_s;
    if (headers.contains("Expect")) return u"an expectation"_s;
    if (headers.contains("CSeq") && request.version == "HTTP/1.1") return u"CSeq in HTTP"_s;
    if (request.method != "GET" && !headers.contains("Content-Length")) return u"no Content-Length"_s;
    const QByteArray session = headers.value("X-Apple-Session-ID");
    if (headers.contains("Host") && session.isEmpty()) return u"a Host without a session"_s;
    if (request.target != "/server-info" && session.size() != uuidLength) return u"no session"_s;
    if (!session_.isEmpty() && session != session_) return u"another session on the same connection"_s;
    return {};
}

void ControlConnection::refuse(const QString& reason) {
    Q_EMIT refused(reason);
    Response response;
    response.status = 400;
    response.reason = "Bad Request";
    socket_->write(response.encoded());
    close();
}

void ControlConnection::restartIdleTimer() {
    idle_ = clock_.after(patience, [this] { close(); });
}

}  // namespace velmora::test
