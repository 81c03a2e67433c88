#include "Sender/Session/DataStream.h"

#include "Diagnostics/Log.h"
#include "Sender/Plist.h"
#include "Sender/Session/SessionMessages.h"

#include <QRandomGenerator>

#include <utility>

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace velmora {

DataStream::DataStream(Clock& clock, std::unique_ptr<Channel> channel)
    : clock_(clock), channel_(std::move(channel)), sequence_(QRandomGenerator::system()->generate()) {
    connect(channel_.get(), &Channel::received, this, &DataStream::receive);
    connect(channel_.get(), &Channel::closed, this, [this](const ConnectionError& error) {
        close();
        Q_EMIT ended(error);
    });
}

DataStream::~DataStream() {
    close();
}

void DataStream::send(Message message) {
    message.set_unique_identifier(newIdentifier().toStdString());
    const QVariantMap envelope = SessionMessages::wrapped(MediaRemote::packed(message));
    constexpr quint64 firstSequence = quint64(1) << 32;  // all senders count from there
    const DataFrame frame{.kind = DataFrame::Kind::message,
                          .sequence = firstSequence | sequence_++,
                          .body = Plist::encodeBinary(envelope)};
    channel_->write(frame.encoded());
}

QCoro::Task<std::optional<DataStream::Message>> DataStream::ask(Message question) {
    if (!isOpen()) co_return std::nullopt;
    const std::string identifier = question.identifier();
    const Reply reply;
    questions_.insert_or_assign(identifier, reply);
    const Clock::Timer deadline = clock_.after(5s, [reply] { reply.complete(std::nullopt); });
    send(std::move(question));
    // From here on the stream may be gone.
    co_return co_await reply;
}

void DataStream::receive(const QByteArray& bytes) {
    reader_.feed(bytes);
    for (;;) {
        const auto frame = reader_.next();
        if (!frame) {
            logger().error(u"television: unreadable remote control stream: "_s + frame.error());
            close();
            Q_EMIT ended({.kind = ConnectionError::Kind::malformed, .detail = frame.error()});
            return;
        }
        if (!*frame) return;
        take(**frame);
    }
}

void DataStream::take(const DataFrame& frame) {
    if (frame.kind == DataFrame::Kind::reply) return;  // only says that a message of ours arrived
    const DataFrame arrived{.kind = DataFrame::Kind::reply, .sequence = frame.sequence, .body = {}};
    channel_->write(arrived.encoded());
    const QVariant body = Plist::decode(frame.body).value_or(QVariant());
    const auto content = SessionMessages::unwrapped(body.toMap());
    const auto messages = content ? MediaRemote::unpacked(*content) : std::nullopt;
    if (!messages) return;
    for (const Message& message : *messages) deliver(message);
}

void DataStream::deliver(const Message& message) {
    const auto question = questions_.find(message.identifier());
    if (question != questions_.end()) {
        const Reply reply = question->second;
        questions_.erase(question);
        reply.complete(message);
    }
    QMetaObject::invokeMethod(
        this,
        [this, message] {
            const auto handler = handler_;
            if (handler) handler(message);
        },
        Qt::QueuedConnection);
}

void DataStream::close() {
    channel_->disconnect(this);
    channel_->close();
    for (const auto& [identifier, reply] : std::exchange(questions_, {})) reply.complete(std::nullopt);
}

}  // namespace velmora
