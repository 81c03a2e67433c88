#include "Sender/EventConnection.h"

#include "Diagnostics/Log.h"

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

Response answerTo(const Request& request) {
    Response response;
    response.version = request.version;
    if (request.version == "RTSP/1.0") response.headers.append("Audio-Latency", "0");
    for (const char* echoed : {"CSeq", "Server"}) {
        if (request.headers.contains(echoed)) response.headers.append(echoed, request.headers.value(echoed));
    }
    return response;
}

}  // namespace

EventConnection::EventConnection(std::unique_ptr<Channel> channel, const QByteArray& unread)
    : channel_(std::move(channel)) {
    connect(channel_.get(), &Channel::received, this, &EventConnection::receive);
    connect(channel_.get(), &Channel::closed, this, &EventConnection::ended);
    // Not from here: nobody could be connected to the signal yet.
    if (!unread.isEmpty())
        QMetaObject::invokeMethod(this, [this, unread] { receive(unread); }, Qt::QueuedConnection);
}

void EventConnection::receive(const QByteArray& bytes) {
    reader_.feed(bytes);
    for (;;) {
        const auto request = reader_.next();
        if (!request) {
            logger().error(u"television: unreadable event: "_s + request.error());
            channel_->close();
            Q_EMIT ended({.kind = ConnectionError::Kind::malformed, .detail = request.error()});
            return;
        }
        if (!*request) return;
        channel_->write(answerTo(**request).encoded());
        Q_EMIT requested(**request);
    }
}

}  // namespace velmora
