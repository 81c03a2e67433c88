#include "Television/Guest.h"

#include "Television/Responses.h"

#include <QPointer>

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace velmora::test {

namespace {

constexpr Clock::Duration patience = 55s;
constexpr Clock::Duration patienceWithTyping = 180s;

}  // namespace

Guest::Guest(Context& context, Pairings& pairings, PlayVerbs& verbs, QTcpSocket* socket, QObject* parent)
    : QObject(parent),
      context_(context),
      verbs_(verbs),
      socket_(socket),
      rules_(socket->peerAddress()),
      pairing_(context, pairings),
      password_(context) {
    connect(&socket_, &SealedSocket::received, this, &Guest::receive);
    connect(&socket_, &SealedSocket::closed, this, &Guest::left);
    connect(&socket_, &SealedSocket::broken, this, [this](const QString& reason) {
        context_.complain(reason);
        abort();
    });
    restartIdleTimer();
}

void Guest::fallSilent() {
    silent_ = true;
    if (session_) session_->fallSilent();
}

int Guest::unansweredEvents() const {
    return unanswered_ + (session_ ? session_->unansweredEvents() : 0);
}

void Guest::receive(const QByteArray& bytes) {
    if (reversed_) {
        answers_.feed(bytes);
        return receiveAnswers();
    }
    requests_.feed(bytes);
    const auto next = requests_.next();
    if (!next) return refuse(next.error());
    if (!*next) return;
    const bool isFarewell = (*next)->method == "TEARDOWN";
    if (busy_ && !isFarewell) return refuse(u"a second request before the answer to the first"_s);
    if (!requests_.takeRest().isEmpty()) return refuse(u"more behind a request, before its answer"_s);
    request_ = **next;
    const QString wrong = rules_.complaint(request_);
    if (!wrong.isEmpty())
        return refuse(QString::fromLatin1(request_.method + ' ' + request_.target + ": ") + wrong);
    busy_ = true;
    idle_.cancel();
    take(request_);
}

void Guest::receiveAnswers() {
    for (;;) {
        const auto next = answers_.next();
        if (!next) return refuse(next.error());
        if (!*next) return;
        unanswered_ -= 1;
        if (!(*next)->isSuccess() || unanswered_ < 0) return refuse(u"a wrong answer to an event"_s);
    }
}

void Guest::take(const Request& request) {
    Q_EMIT requested(request);
    if (silent_) return;
    const auto status = context_.interfere ? context_.interfere(request) : std::nullopt;
    if (!status) return answer(request);
    if (*status == hangUp) return socket_.close();
    if (*status != silence) reply(response(*status));
}

void Guest::answer(const Request& request) {
    if (session_) {
        if (const auto challenge = password_.challenge(request, true)) return reply(*challenge);
        return session_->answer(request, [guest = QPointer(this)](const Response& response) {
            if (guest) guest->reply(response);
        });
    }
    if (!PairingVerbs::takes(request)) return answerPlain(request);
    const Response answer = pairing_.answer(request);
    if (const auto shared = pairing_.takeShared()) {
        keys_ = SecureChannel::control(*shared);
        session_ = std::make_unique<SessionVerbs>(context_, verbs_, socket_, *shared);
    }
    reply(answer);
}

void Guest::answerPlain(const Request& request) {
    if (context_.options.isEncrypted()) return reply(response(403));
    if (context_.options.isLegacy() && !pairing_.isVerified() && request.path() != "/feedback")
        return reply(response(403));
    if (const auto challenge = password_.challenge(request, false)) return reply(*challenge);
    if (request.method == "POST" && request.path() == "/reverse") return reverse(request);
    reply(verbs_.answer(this, request));
}

void Guest::reverse(const Request& request) {
    if (request.headers.value("Upgrade") != "PTTH/1.0") return refuse(u"/reverse without an upgrade"_s);
    Response switching = response(101);
    switching.headers = {{"Connection", "Upgrade"}, {"Upgrade", "PTTH/1.0"}};
    reply(switching);
    reversed_ = true;
    idle_.cancel();
}

void Guest::sendEvent(const QByteArray& body) {
    if (!reversed_) return;
    Request event;
    event.method = "POST";
    event.target = "/event";
    event.headers = {{"Content-Type", "text/x-apple-plist+xml"}, {"X-Apple-Session-ID", rules_.session()}};
    event.body = body;
    unanswered_ += 1;
    socket_.write(event.encoded());
}

void Guest::reply(Response response) {
    if (silent_) return;
    busy_ = false;
    response.version = request_.version;
    if (request_.headers.contains("CSeq")) response.headers.append("CSeq", request_.headers.value("CSeq"));
    if (socket_.isSealed()) response.headers.append("Server", "AirTunes/870.14.1");
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

void Guest::refuse(const QString& reason) {
    context_.complain(reason);
    socket_.write(response(400).encoded());
    socket_.close();
}

void Guest::restartIdleTimer() {
    if (reversed_) return;
    const bool someoneTypes = request_.target.startsWith("/pair-");
    idle_ = context_.clock.after(someoneTypes ? patienceWithTyping : patience, [this] { socket_.close(); });
}

}  // namespace velmora::test
