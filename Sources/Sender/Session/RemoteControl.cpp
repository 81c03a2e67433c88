#include "Sender/Session/RemoteControl.h"

#include "Diagnostics/Log.h"
#include "Sender/SealedChannel.h"

#include <QDateTime>
#include <QRandomGenerator>

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace velmora {

namespace {

constexpr Clock::Duration heartbeatInterval = 30s;
constexpr Clock::Duration staysAwakeFor = 2500ms;  // started earlier, it shows one picture and goes home
constexpr Clock::Duration wakePatience = 10s;
constexpr Clock::Duration wakeStep = 250ms;

double secondsSince2001() {
    constexpr qint64 from1970To2001 = 978307200;
    return double(QDateTime::currentMSecsSinceEpoch()) / 1000 - from1970To2001;
}

ConnectionError refusal(const QString& detail) {
    return {.kind = ConnectionError::Kind::malformed, .detail = detail};
}

}  // namespace

std::shared_ptr<RemoteControl> RemoteControl::make(Clock& clock, SessionRoad road) {
    return std::shared_ptr<RemoteControl>(new RemoteControl(clock, std::move(road)));
}

RemoteControl::RemoteControl(Clock& clock, SessionRoad road)
    : clock_(clock),
      road_(std::move(road)),
      session_(EncryptedSession::make(clock, road_, {{Timing::none}, "AirPlay/550.10", u"550.10"_s})) {}

RemoteControl::~RemoteControl() {
    abandon();
}

QCoro::Task<VideoControl::Outcome> RemoteControl::open() {
    const auto self = shared_from_this();
    const Outcome outcome = co_await session_->open();
    if (!outcome || closed_) co_return outcome;
    const bool isStreaming = co_await openStream();
    const bool isReady = isStreaming && co_await shakeHands();
    if (!isReady && !closed_) {
        stream_.reset();
        logger().notice(u"television: takes no commands of a remote control"_s);
    }
    co_return outcome;
}

QCoro::Task<bool> RemoteControl::openStream() {
    const auto self = shared_from_this();
    const Outcome recording = co_await session_->record();
    if (!recording || closed_) co_return false;
    const quint64 seed = QRandomGenerator::system()->generate64() >> 1;
    const QVariantMap wanted = SessionMessages::remoteStream(seed);
    const EncryptedSession::Stream stream = co_await session_->setUp(wanted);
    const qlonglong port = stream.description.value(u"dataPort"_s).toLongLong();
    if (closed_ || port < 1 || port > 65535) co_return false;
    isDialing_ = true;
    Dialer::Dialed dialed = co_await road_.dial(static_cast<quint16>(port));
    isDialing_ = false;
    if (!dialed.channel || closed_ || !isPresent()) co_return false;
    auto sealed = std::make_unique<SealedChannel>(std::move(dialed.channel),
                                                  SecureChannel::data(session_->shared(), seed));
    stream_ = std::make_shared<DataStream>(clock_, std::move(sealed));
    stream_->onMessage([this](const remote::Envelope& message) { take(message); });
    session_->startHeartbeat();
    co_return true;
}

QCoro::Task<bool> RemoteControl::shakeHands() {
    const auto self = shared_from_this();
    const auto stream = stream_;
    const SenderIdentity sender = SenderIdentity::ofThisComputer();
    const MediaRemote::Identity identity{sender.identifier, sender.name};
    const remote::Envelope introduction = MediaRemote::introduction(identity, newIdentifier());
    const std::optional<remote::Envelope> theirs = co_await stream->ask(introduction);
    if (!theirs || closed_ || theirs->type() != MediaRemote::deviceInfo) co_return false;
    if (theirs->device_info().has_logical_device_count())
        devices_ = theirs->device_info().logical_device_count();
    stream->send(MediaRemote::connected());
    stream->send(MediaRemote::updatesWish(newIdentifier()));
    scheduleHeartbeat();
    co_return true;
}

QCoro::Task<> RemoteControl::wake() {
    const auto self = shared_from_this();
    if (!isAsleep()) co_return;
    logger().notice(u"television: waking it"_s);
    stream_->send(MediaRemote::wake());
    const Clock::Instant start = clock_.now();
    std::optional<Clock::Instant> awakeSince;
    while (canCommand() && clock_.now() - start < wakePatience) {
        const Completion<bool> pause = nap_.wait(clock_, wakeStep);
        co_await pause;
        if (closed_) co_return;
        if (devices_ == 0) awakeSince.reset();
        if (devices_ != 0 && !awakeSince) awakeSince = clock_.now();
        if (awakeSince && clock_.now() - *awakeSince >= staysAwakeFor) co_return;
    }
}

QCoro::Task<VideoControl::Outcome> RemoteControl::command(MediaRemote::Command command,
                                                          std::optional<double> position) {
    const auto self = shared_from_this();
    if (!canCommand()) co_return std::unexpected(ConnectionError{});
    const auto stream = stream_;
    const remote::Envelope order = MediaRemote::command(command, position, player_.path(), newIdentifier());
    const std::optional<remote::Envelope> answer = co_await stream->ask(order);
    if (!answer) co_return std::unexpected(ConnectionError{.kind = ConnectionError::Kind::timeout});
    if (const auto failure = MediaRemote::failureIn(*answer)) co_return std::unexpected(refusal(*failure));
    co_return Outcome();
}

void RemoteControl::take(const remote::Envelope& message) {
    if (closed_) return;
    const bool tellsDevice =
        message.type() == MediaRemote::deviceInfo || message.type() == MediaRemote::deviceInfoUpdate;
    if (tellsDevice && message.device_info().has_logical_device_count())
        devices_ = message.device_info().logical_device_count();
    const bool isNews = player_.take(message, secondsSince2001());
    const auto handler = sampleHandler_;
    if (isNews && handler) handler(*player_.sample());
}

void RemoteControl::scheduleHeartbeat() {
    heartbeat_ = clock_.after(heartbeatInterval, [weak = weak_from_this()] {
        const auto self = weak.lock();
        if (!self || !self->canCommand()) return;
        self->stream_->send(MediaRemote::heartbeat(newIdentifier()));
        self->scheduleHeartbeat();
    });
}

QCoro::Task<> RemoteControl::tearDown() {
    const auto self = shared_from_this();
    heartbeat_.cancel();
    stream_.reset();
    co_await session_->tearDown();
}

void RemoteControl::close() {
    if (std::exchange(closed_, true)) return;
    sampleHandler_ = {};
    nap_.end();
    heartbeat_.cancel();
    if (isDialing_ && road_.close) road_.close();
    stream_.reset();
    session_->close();
}

void RemoteControl::abandon() {
    session_->abandon();
    close();
}

}  // namespace velmora
