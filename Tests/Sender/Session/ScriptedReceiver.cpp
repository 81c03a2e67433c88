#include "Sender/Session/ScriptedReceiver.h"

#include "Sender/Plist.h"
#include "Sender/Session/SessionMessages.h"

namespace velmora::test {

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace {

constexpr quint16 firstEventPort = 5000;
constexpr quint16 dataPort = 6000;

Secret sharedSecret() {
    return Secret(QByteArrayView(QByteArray(32, 's')));
}

QVariantMap decoded(const QByteArray& bytes) {
    return Plist::decode(bytes).value_or(QVariant()).toMap();
}

QString nameOf(const Request& request) {
    const QVariantMap body = decoded(request.body);
    const QString plain = QString::fromLatin1(request.method + " " + request.target);
    if (const auto inner = SessionMessages::unwrapped(body)) {
        const QVariantMap content = decoded(*inner);
        const QVariant detail = content.value(u"property"_s, content.value(u"rate"_s));
        return (content.value(u"type"_s).toString() + u' ' + detail.toString()).trimmed();
    }
    if (request.method != "SETUP")
        return plain.startsWith(u"POST"_s) || plain.startsWith(u"PUT"_s) || plain.startsWith(u"GET"_s)
                   ? plain
                   : QString::fromLatin1(request.method);
    const QVariantMap stream = SessionMessages::firstStream(body);
    if (stream.isEmpty()) return u"SETUP "_s + body.value(u"timingProtocol"_s).toString();
    return stream.value(u"controlType"_s) == 1 ? u"SETUP queue"_s : u"SETUP remote"_s;
}

}  // namespace

SessionRoad ScriptedReceiver::road(const QString& model) {
    receiver.model = model;
    return {.receiver = receiver,
            .link = [this] { return link(); },
            .dial = [this](quint16 port) { return dial(port); },
            .serveTime = [](const QHostAddress&, const QHostAddress&) -> SessionRoad::TimeService {
                return {.port = 4321, .open = std::make_shared<int>()};
            },
            .close = [] {}};
}

QCoro::Task<Access::Link> ScriptedReceiver::link() {
    auto conversation = std::make_unique<Conversation>();
    auto channel = std::make_unique<MemoryChannel>();
    conversation->number = int(conversations_.size()) + 1;
    conversation->channel = channel.get();
    channel->written = [this, &to = *conversation](const QByteArray& bytes) { take(to, bytes); };
    conversations_.push_back(std::move(conversation));
    co_return Access::Link{std::make_unique<Connection>(clock_, std::move(channel)), sharedSecret(), {}};
}

QCoro::Task<Dialer::Dialed> ScriptedReceiver::dial(quint16 port) {
    if (port != dataPort && eventRefusals-- > 0)
        co_return Dialer::Dialed{nullptr, {.kind = ConnectionError::Kind::refused}};
    auto channel = std::make_unique<MemoryChannel>();
    if (port == dataPort) {
        log.append(u"data"_s);
        data_ = std::make_unique<SealedEnd>(*channel, SecureChannel::data(sharedSecret(), seed_));
        channel->written = [this](const QByteArray& bytes) { takeFrames(bytes); };
    } else {
        const int number = port - firstEventPort;
        log.append(QString::number(number) + u" events"_s);
        events_[number] = std::make_unique<SealedEnd>(*channel, SecureChannel::events(sharedSecret()));
        channel->written = [this, &end = *events_[number]](const QByteArray& bytes) {
            end.answers.feed(end.opener.open(bytes).value_or("unreadable"));
            for (auto next = end.answers.next(); next && *next; next = end.answers.next())
                acknowledged.append(**next);
        };
    }
    co_return Dialer::Dialed{std::move(channel), {}};
}

void ScriptedReceiver::take(Conversation& conversation, const QByteArray& bytes) {
    conversation.reader.feed(bytes);
    for (auto next = conversation.reader.next(); next && *next; next = conversation.reader.next())
        respond(conversation, **next);
}

void ScriptedReceiver::respond(Conversation& conversation, const Request& request) {
    const QString verb = nameOf(request);
    const QString number = QString::number(conversation.number);
    const bool isBeat = request.target == "/feedback";
    const bool isFarewell = verb == "TEARDOWN"_L1 || verb.startsWith(u"stop"_s) || verb.endsWith(u"/stop"_s);
    if (conversation.isBusy && !isFarewell) ++overlaps;
    const std::chrono::duration<double> now = clock_.elapsed();
    if (isBeat) {
        beats.append(u"%1 %2"_s.arg(number).arg(now.count(), 0, 'f', 2));
    } else {
        log.append(number + u' ' + verb);
    }
    requests.push_back(request);
    const QVariantMap stream = SessionMessages::firstStream(decoded(request.body));
    if (stream.contains(u"seed"_s)) seed_ = stream.value(u"seed"_s).toULongLong();

    int status = 200;
    if (auto& left = statuses[verb]; !left.empty()) {
        status = left.front();
        left.pop_front();
    }
    conversation.isBusy = true;
    if (status == silence) return;
    Response response;
    response.status = status;
    response.version = request.version;
    response.body = status == 200 ? bodyFor(conversation, verb) : QByteArray();
    const Clock::Duration latency = latencies.contains(verb) ? latencies[verb] : 10ms;
    timers_.push_back(clock_.after(latency, [this, &conversation, response, status] {
        conversation.isBusy = false;
        if (!conversation.channel) return;
        if (status == closing) return conversation.channel->end();
        conversation.channel->feed(response.encoded());
    }));
}

QByteArray ScriptedReceiver::bodyFor(const Conversation& conversation, const QString& verb) const {
    if (bodies.contains(verb)) return bodies.at(verb);
    if (verb == "SETUP queue"_L1) return Plist::encodeBinary(SessionMessages::streams({{u"streamID"_s, 7}}));
    if (verb == "SETUP remote"_L1)
        return Plist::encodeBinary(SessionMessages::streams({{u"dataPort"_s, int(dataPort)}}));
    if (!verb.startsWith(u"SETUP"_s)) return {};
    return Plist::encodeBinary(QVariantMap{{u"eventPort"_s, firstEventPort + conversation.number}});
}

void ScriptedReceiver::report(int connection, const QVariantMap& message, bool isWrapped) {
    const QByteArray inner = Plist::encodeBinary(message);
    reportBytes(connection, isWrapped ? Plist::encodeBinary(SessionMessages::wrapped(inner)) : inner);
}

void ScriptedReceiver::reportBytes(int connection, const QByteArray& body) {
    Request request;
    request.method = "POST";
    request.target = "/command";
    request.version = "RTSP/1.0";
    request.headers = {{"CSeq", "3"}, {"Server", "AirTunes/960.13.1"}};
    request.body = body;
    events_.at(connection)->send(request.encoded());
}

void ScriptedReceiver::closeEvents(int connection) {
    if (events_.at(connection)->channel) events_.at(connection)->channel->end();
}

void ScriptedReceiver::tell(remote::Envelope message) {
    const QByteArray body = Plist::encodeBinary(SessionMessages::wrapped(MediaRemote::packed(message)));
    data_->send(DataFrame{DataFrame::Kind::message, ++frames_, body}.encoded());
}

void ScriptedReceiver::takeFrames(const QByteArray& bytes) {
    data_->frames.feed(data_->opener.open(bytes).value_or("unreadable"));
    for (auto next = data_->frames.next(); next && *next; next = data_->frames.next()) {
        if ((*next)->kind == DataFrame::Kind::reply) {
            acknowledgedFrames += (*next)->sequence == frames_ ? 1 : 0;
            continue;
        }
        const auto content = SessionMessages::unwrapped(decoded((*next)->body));
        const auto messages = MediaRemote::unpacked(content.value_or(""));
        for (const auto& message : messages.value())
            timers_.push_back(clock_.after(10ms, [this, message] { takeRemote(message); }));
    }
}

void ScriptedReceiver::takeRemote(const remote::Envelope& message) {
    remote::Envelope answer;
    answer.set_identifier(message.identifier());
    if (message.type() == MediaRemote::deviceInfo) {
        if (devices < 0) return;
        answer.set_type(MediaRemote::deviceInfo);
        answer.mutable_device_info()->set_logical_device_count(quint32(devices));
        tell(answer);
    } else if (message.type() == MediaRemote::wakeDevice) {
        answer.set_type(MediaRemote::deviceInfoUpdate);
        answer.mutable_device_info()->set_logical_device_count(1);
        timers_.push_back(clock_.after(1s, [this, answer] { tell(answer); }));
    } else if (message.type() == MediaRemote::sendCommand) {
        const auto& order = message.send_command();
        const QString position =
            order.has_options() ? u" %1"_s.arg(order.options().playback_position()) : QString();
        log.append(u"remote %1%2"_s.arg(order.command()).arg(position));
        answer.set_type(MediaRemote::commandResult);
        answer.mutable_command_result()->set_handler_status(remoteStatus);
        tell(answer);
    }
}

}  // namespace velmora::test
