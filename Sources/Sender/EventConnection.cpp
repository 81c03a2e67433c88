#include "Sender/EventConnection.h"

#include "Diagnostics/Log.h"

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

Response answerTo(const Request& request) {
    Response response;
    response.version = request.version;
    if (request.headers.contains("CSeq")) response.headers.append("CSeq", request.headers.value("CSeq"));
    return response;
}

}  // namespace

EventConnection::EventConnection(std::unique_ptr<Channel> channel, const QByteArray& unread)
    : channel_(std::move(channel)) {
    connect(channel_.get(), &Channel::received, this, &EventConnection::receive);
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
            return;
        }
        if (!*request) return;
        channel_->write(answerTo(**request).encoded());
        Q_EMIT requested(**request);
    }
}

}  // namespace velmora
