#include "Television/Session/EventPort.h"

#include "Sender/Plist.h"
#include "Support/Seconds.h"

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace velmora::test {

namespace {

constexpr Clock::Duration dialDeadline = 15s;  // longer than real ones bear it: tests run in fast time
constexpr Clock::Duration answerDeadline = 30s;
const QByteArray server = "AirTunes/870.14.1";

}  // namespace

EventPort::EventPort(Context& context, Secret shared, QObject* parent)
    : QObject(parent), context_(context), shared_(std::move(shared)) {
    connect(&server_, &QTcpServer::newConnection, this, &EventPort::accept);
    open();
    const Clock::Duration late = seconds(context.numberOf(Misbehaviour::opensEventsLate));
    if (late > 0s) {
        server_.close();
        opening_ = context.clock.after(late, [this] { open(); });
    }
    dialling_ = context.clock.after(dialDeadline + late, [this] { fail(u"nobody dials the event port"_s); });
}

void EventPort::open() {
    if (!server_.listen(context_.options.address, port_)) context_.say(server_.errorString());
    port_ = server_.serverPort();
}

bool EventPort::isConnected() {
    if (!socket_ && server_.isListening()) server_.waitForNewConnection(0);
    return socket_ != nullptr;
}

void EventPort::accept() {
    QTcpSocket* socket = server_.nextPendingConnection();
    server_.close();
    dialling_.cancel();
    socket_ = std::make_unique<SealedSocket>(socket);
    socket_->seal(SecureChannel::events(shared_));
    connect(socket_.get(), &SealedSocket::received, this, &EventPort::receive);
    connect(socket_.get(), &SealedSocket::broken, this, &EventPort::fail);
    connect(socket_.get(), &SealedSocket::closed, this, &EventPort::ended);
    Q_EMIT connected();
}

void EventPort::close() {
    if (!socket_) return;
    socket_->disconnect(this);
    socket_->close();
}

void EventPort::sendBare(const QVariantMap& body) {
    sendTogether({event(Plist::encodeBinary(body))});
}

void EventPort::sendOddities() {
    Request unnumbered = command({{u"type"_s, u"notification"_s}, {u"name"_s, u"timeJumped"_s}});
    unnumbered.headers.remove("CSeq");
    const Request unreadable = event("bplist00 or not");
    const Request unknown = command({{u"type"_s, u"weather"_s}, {u"value"_s, 21.5}});
    const Request foreign =
        command({{u"type"_s, u"playbackState"_s},
                 {u"name"_s, u"stopped"_s},
                 {u"reason"_s, u"ended"_s},
                 {u"item"_s, QVariantMap{{u"uuid"_s, u"00000000-0000-4000-8000-000000000000"_s}}}});
    sendTogether({unnumbered});
    sendTogether({unreadable, unknown});
    sendTogether({foreign});
}

Request EventPort::event(const QByteArray& body) {
    Request event;
    event.method = "POST";
    event.target = "/command";
    event.version = "RTSP/1.0";
    event.headers = {{"CSeq", QByteArray::number(number_++)},
                     {"Content-Type", "application/x-apple-binary-plist"},
                     {"Server", server}};
    event.body = body;
    return event;
}

Request EventPort::command(const QVariantMap& inner) {
    const QVariantMap params{{u"data"_s, Plist::encodeBinary(inner)}};
    return event(Plist::encodeBinary(QVariantMap{{u"params"_s, params}}));
}

void EventPort::sendTogether(const QList<Request>& events) {
    if (!socket_ || silent_) return;
    QByteArray bytes;
    for (const Request& event : events) {
        bytes += event.encoded();
        waiting_.append({event.headers.value("CSeq"), context_.clock.after(answerDeadline, [this] {
                             fail(u"an event that nobody answers"_s);
                         })});
    }
    socket_->write(bytes);
}

void EventPort::receive(const QByteArray& bytes) {
    answers_.feed(bytes);
    for (;;) {
        const auto next = answers_.next();
        if (!next) return fail(u"an answer to an event: "_s + next.error());
        if (!*next) return;
        const QString wrong = complaint(**next);
        if (!wrong.isEmpty()) return fail(wrong);
    }
}

QString EventPort::complaint(const Response& answer) {
    if (waiting_.isEmpty()) return u"an answer without an event"_s;
    const Waiting event = waiting_.dequeue();
    if (!answer.isSuccess() || answer.version != "RTSP/1.0") return u"another answer to an event than 200"_s;
    if (answer.headers.value("CSeq") != event.number) return u"an answer with another event's CSeq"_s;
    if (answer.headers.value("Content-Length") != "0") return u"an answer without Content-Length: 0"_s;
    if (answer.headers.value("Server") != server || !answer.headers.contains("Audio-Latency"))
        return u"an answer to an event without Server and Audio-Latency"_s;
    return {};
}

void EventPort::fail(const QString& reason) {
    context_.complain(reason);
    waiting_.clear();
    dialling_.cancel();
    if (socket_) {
        socket_->disconnect(this);
        socket_->abort();
    }
    Q_EMIT ended();
}

}  // namespace velmora::test
