#include "Television/Guest.h"

#include "Television/Responses.h"

#include <QPointer>

using namespace Qt::StringLiterals;

namespace velmora::test {

Guest::Guest(Context& context, Pairings& pairings, PlayVerbs& verbs, QTcpSocket* socket, QObject* parent)
    : QObject(parent),
      context_(context),
      verbs_(verbs),
      connection_(context, socket),
      pairing_(context, pairings),
      password_(context) {
    connect(&connection_, &ControlConnection::requested, this, &Guest::take);
    connect(&connection_, &ControlConnection::closed, this, &Guest::left);
}

void Guest::fallSilent() {
    silent_ = true;
    if (session_) session_->fallSilent();
}

int Guest::unansweredEvents() const {
    return connection_.unansweredEvents() + (session_ ? session_->unansweredEvents() : 0);
}

void Guest::take(const Request& request) {
    Q_EMIT requested(request);
    if (silent_) return;
    answer(request, [guest = QPointer(this)](const Response& response) {
        if (guest && !guest->silent_) guest->connection_.answer(response);
    });
}

void Guest::answer(const Request& request, const Reply& reply) {
    if (session_) {
        if (const auto challenge = password_.challenge(request, true)) return reply(*challenge);
        return session_->answer(request, reply);
    }
    if (!PairingVerbs::takes(request)) return answerPlain(request, reply);
    const Response answer = pairing_.answer(request);
    if (const auto shared = pairing_.takeShared()) {
        connection_.sealNext(SecureChannel::control(*shared));
        session_ = std::make_unique<SessionVerbs>(context_, verbs_, connection_, *shared);
    }
    reply(answer);
}

void Guest::answerPlain(const Request& request, const Reply& reply) {
    if (context_.options.isEncrypted()) return reply(response(403));
    if (context_.options.isLegacy() && !pairing_.isVerified() && request.path() != "/feedback")
        return reply(response(403));
    if (const auto challenge = password_.challenge(request, false)) return reply(*challenge);
    if (request.method != "POST" || request.path() != "/reverse")
        return verbs_.answer(&connection_, request, reply);
    const Response answer = reverse(request);
    reply(answer);
    if (answer.status == 101) connection_.reverse();
}

Response Guest::reverse(const Request& request) {
    if (request.headers.value("Upgrade") != "PTTH/1.0") {
        context_.complain(u"/reverse without an upgrade"_s);
        return response(400);
    }
    Response switching = response(101);
    switching.headers.append("Connection", "Upgrade");
    switching.headers.append("Upgrade", "PTTH/1.0");
    return switching;
}

}  // namespace velmora::test
