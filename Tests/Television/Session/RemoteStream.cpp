#include "Television/Session/RemoteStream.h"

#include "Sender/Pairing/Crypto.h"
#include "Sender/Plist.h"
#include "Sender/Session/SessionMessages.h"

#include <QDateTime>

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace velmora::test {

namespace {

using namespace MediaRemote;
using State = SimulatedPlayer::State;

constexpr Clock::Duration dialDeadline = 15s;  // longer than real ones bear it: tests run in fast time
constexpr Clock::Duration replyDeadline = 15s;
constexpr Clock::Duration heartbeatDeadline = 35s;
constexpr Clock::Duration timeToWake = 1s;
constexpr double from1970To2001 = 978307200;
constexpr double clockError = 3;  // of the television's, in seconds

// What the sender has no name for.
constexpr int plainAnswer = 0;
constexpr int playing = 1;
constexpr int paused = 2;
constexpr int stopped = 3;
constexpr int notSupported = 10;

const char* const bundle = "com.apple.TVAirPlay";

remote::Envelope message(int type, const std::string& identifier = {}) {
    remote::Envelope message;
    message.set_type(type);
    if (!identifier.empty()) message.set_identifier(identifier);
    return message;
}

void setPath(remote::PlayerPath& path) {
    path.mutable_origin()->set_type(1);
    path.mutable_client()->set_bundle(bundle);
    path.mutable_player()->set_identifier("MediaRemote-DefaultPlayer");
}

double televisionTime() {
    return double(QDateTime::currentMSecsSinceEpoch()) / 1000 - from1970To2001 - clockError;
}

}  // namespace

RemoteStream::RemoteStream(Context& context, Secret shared, quint64 seed)
    : context_(context),
      shared_(std::move(shared)),
      seed_(seed),
      sequence_((quint64{1} << 32U) + uchar(Crypto::random(1).data()[0])) {
    if (!server_.listen(context.options.address)) context.say(server_.errorString());
    connect(&server_, &QTcpServer::newConnection, this, &RemoteStream::accept);
    connect(&context.player, &SimulatedPlayer::stateChanged, this, &RemoteStream::tell);
    dialling_ = context.clock.after(dialDeadline, [this] { fail(u"nobody dials the data port"_s); });
}

void RemoteStream::close() {
    if (!socket_) return;
    socket_->disconnect(this);
    socket_->close();
}

void RemoteStream::accept() {
    socket_ = std::make_unique<SealedSocket>(server_.nextPendingConnection());
    server_.close();
    dialling_.cancel();
    socket_->seal(SecureChannel::data(shared_, seed_));
    connect(socket_.get(), &SealedSocket::received, this, &RemoteStream::receive);
    connect(socket_.get(), &SealedSocket::broken, this, &RemoteStream::fail);
    connect(socket_.get(), &SealedSocket::closed, this, &RemoteStream::ended);
    expectHeartbeat();
}

void RemoteStream::receive(const QByteArray& bytes) {
    frames_.feed(bytes);
    for (;;) {
        const auto frame = frames_.next();
        if (!frame) return fail(frame.error());
        if (!*frame) return;
        const bool isReply = (*frame)->kind == DataFrame::Kind::reply;
        const QString wrong = isReply ? takeReply(**frame) : take(**frame);
        if (!wrong.isEmpty()) return fail(wrong);
    }
}

QString RemoteStream::takeReply(const DataFrame& frame) {
    if (!frame.body.isEmpty()) return u"a reply with a body"_s;
    return waiting_.remove(frame.sequence) == 1 ? QString() : u"a reply to no frame"_s;
}

QString RemoteStream::take(const DataFrame& frame) {
    if (silent_) return {};
    // Every sender counts in 33 bits whose highest is set.
    if (frame.sequence >> 32U != 1) return u"a frame with a sequence number out of the usual"_s;
    const QVariantMap body = Plist::decode(frame.body).value_or(QVariant()).toMap();
    const auto messages = unpacked(SessionMessages::unwrapped(body).value_or("?"));
    if (!messages) return u"a message that cannot be read"_s;
    socket_->write(DataFrame{DataFrame::Kind::reply, frame.sequence, {}}.encoded());
    for (const Message& message : *messages) {
        const QString wrong = take(message);
        if (!wrong.isEmpty()) return wrong;
    }
    return {};
}

QString RemoteStream::take(const Message& received) {
    if (!introduced_) return takeDeviceInfo(received);
    const std::string& identifier = received.identifier();
    switch (received.type()) {
        case connectionState:
            connected_ = received.connection_state().state() == 2;
            return connected_ ? QString() : u"a connection state other than 2"_s;
        case wantedUpdates:
            if (!connected_) return u"a wish for updates before the connection state"_s;
            send(message(plainAnswer, identifier));
            sendOddities();
            tell(context_.player.state(), {});
            return {};
        case generic:
            expectHeartbeat();
            send(message(generic, identifier));
            return {};
        case wakeDevice:
            wake();
            return {};
        case sendCommand:
            return takeCommand(received);
        default:
            return u"a message of type %1"_s.arg(received.type());
    }
}

QString RemoteStream::takeDeviceInfo(const Message& message) {
    const remote::DeviceInfo& info = message.device_info();
    if (message.type() != deviceInfo || message.identifier().empty())
        return u"another first message than who it is"_s;
    if (info.name().empty() || info.unique_identifier().empty())
        return u"a remote control without name and identifier"_s;
    introduced_ = true;
    introduce(deviceInfo, message.identifier());
    return {};
}

QString RemoteStream::takeCommand(const Message& received) {
    const remote::SendCommand& command = received.send_command();
    if (received.identifier().empty()) return u"a command without an identifier"_s;
    if (command.has_player_path() && command.player_path().client().bundle() != bundle)
        return u"a command to another player"_s;
    Message result = message(commandResult, received.identifier());
    const bool done = !refusesCommands() && steer(command.command(), command);
    result.mutable_command_result()->set_send_error(done ? 0 : notSupported);
    result.mutable_command_result()->set_handler_status(0);
    send(result);
    if (done && command.command() == int(Command::seek))
        tellPlayer(context_.player.state() == State::paused ? paused : playing,
                   command.options().playback_position());
    return {};
}

bool RemoteStream::refusesCommands() const {
    return context_.numberOf(Misbehaviour::mutesRemote) > 0;
}

bool RemoteStream::steer(int command, const remote::SendCommand& options) {
    if (command == int(Command::play) || command == int(Command::pause)) {
        context_.player.setRate(command == int(Command::play) ? 1 : 0);
    } else if (command == int(Command::seek) && options.options().has_playback_position()) {
        context_.player.seek(options.options().playback_position());
    } else {
        return false;
    }
    return true;
}

void RemoteStream::wake() {
    waking_ = context_.clock.after(timeToWake, [this] {
        if (!context_.awake) context_.woken = context_.clock.now();
        context_.awake = true;
        introduce(deviceInfoUpdate, {});
    });
}

void RemoteStream::introduce(int type, const std::string& identifier) {
    Message ours = message(type, identifier);
    remote::DeviceInfo& info = *ours.mutable_device_info();
    info.set_unique_identifier("5F5C1B26-3D0A-4A83-A0F4-08B2B0B7C0A1");
    info.set_name(context_.options.name.toStdString());
    info.set_logical_device_count(context_.awake ? 1 : 0);
    send(ours);
}

/// A message without its length, two in one frame, one that nobody knows, a long record: all are real.
void RemoteStream::sendOddities() {
    constexpr int configureConnection = 120;
    constexpr int unheardOf = 321;
    send(QByteArray::fromStdString(message(configureConnection).SerializeAsString()));
    send(packed(message(unheardOf, std::string(3000, 'x'))) + packed(message(configureConnection)));
}

void RemoteStream::tell(State state, const QString& reason) {
    const SimulatedPlayer& player = context_.player;
    if (!connected_) return;
    if (state == State::playing || state == State::paused)
        tellPlayer(state == State::playing ? playing : paused, player.reportedPosition());
    else if (state == State::idle)
        tellPlayer(reason == "ended"_L1 ? paused : stopped, context_.lastDuration);
}

/// In parts, as receivers do: first the item with its times, then how the player does.
void RemoteStream::tellPlayer(int playbackState, double position) {
    context_.lastDuration = qMax(context_.lastDuration, context_.player.duration());
    Message update = message(updateContentItem);
    remote::ContentItem& item = *update.mutable_update_content_item()->add_items();
    setPath(*update.mutable_update_content_item()->mutable_player_path());
    item.set_identifier("item");
    item.mutable_metadata()->set_duration(context_.lastDuration);
    item.mutable_metadata()->set_elapsed(position);
    item.mutable_metadata()->set_rate(playbackState == playing ? 1 : 0);
    item.mutable_metadata()->set_elapsed_timestamp(televisionTime());
    Message state = message(setState);
    state.mutable_set_state()->set_playback_state(playbackState);
    setPath(*state.mutable_set_state()->mutable_player_path());
    send(packed(update) + packed(state));
}

/// In two writes, which may well be two records.
void RemoteStream::send(const QByteArray& messages) {
    const bool isMute = context_.does(Misbehaviour::mutesRemote) && !refusesCommands();
    if (!socket_ || silent_ || isMute) return;
    const QByteArray body = Plist::encodeBinary(SessionMessages::wrapped(messages));
    const quint64 sequence = sequence_++;
    QByteArray bytes = DataFrame{DataFrame::Kind::message, sequence, body}.encoded();
    bytes.replace(16, 4, "cmnd");  // receivers' own name of the command
    waiting_[sequence] =
        context_.clock.after(replyDeadline, [this] { fail(u"a frame that nobody replies to"_s); });
    constexpr qsizetype half = 40;
    socket_->write(bytes.first(half));
    socket_->write(bytes.mid(half));
}

void RemoteStream::expectHeartbeat() {
    beating_ = context_.clock.after(heartbeatDeadline,
                                    [this] { fail(u"no heartbeat of the remote control for 35 seconds"_s); });
}

void RemoteStream::fail(const QString& reason) {
    context_.complain(u"data stream: "_s + reason);
    for (Clock::Timer* timer : {&dialling_, &beating_, &waking_}) timer->cancel();
    waiting_.clear();
    if (socket_) {
        socket_->disconnect(this);
        socket_->abort();
    }
    Q_EMIT ended();
}

}  // namespace velmora::test
