#include "Sender/Session/EncryptedSession.h"

#include "Diagnostics/Log.h"
#include "Sender/PlaybackVerbs.h"
#include "Sender/Plist.h"
#include "Sender/SealedChannel.h"

#include <QCoreApplication>

#include <array>

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace velmora {

namespace {

using Kind = ConnectionError::Kind;

// A computer asks its user for leave meanwhile; a receiver whose questions for the time get lost answers only
// after half a minute.
constexpr Clock::Duration setUpDeadline = 35s;
constexpr Clock::Duration plainSetUpDeadline = 10s;  // without media nobody is asked
constexpr Clock::Duration farewellDeadline = 2s;
constexpr Clock::Duration beatInterval = 2s;
// A slow television may be late once; with the second, silence is noticed within ten seconds.
constexpr Clock::Duration secondBeatDeadline = 3s;
constexpr int missedBeatsThatEnd = 2;
// Some receivers listen on the event port only a moment after they have named it.
constexpr std::array<Clock::Duration, 5> eventPauses{0ms, 200ms, 400ms, 800ms, 1s};

ConnectionError inSession(ConnectionError error) {
    if (!error.step) error.step = Answers::Step::session;
    return error;
}

std::unexpected<ConnectionError> closedHere() {
    return std::unexpected(ConnectionError{});
}

// Not when the receiver refuses the sender instead of the timing. Silence is what a lost question for the
// time looks like.
bool mayTakeAnotherTiming(const ConnectionError& error, Timing tried) {
    if (error.kind == Kind::timeout) return tried == Timing::network;
    for (const int status : {401, 403, 409, 453, 470, 503})
        if (error.hasStatus(status)) return false;
    return error.kind == Kind::status || error.kind == Kind::closed || error.kind == Kind::unreachable;
}

// Keeps the connection until the receiver has heard of the end; where nothing is answered any more, it is
// said all the same.
QCoro::Task<> sayFarewell(std::unique_ptr<Connection> connection, Request farewell) {
    const Connection::Answer answer = co_await connection->send(farewell, farewellDeadline);
    if (!answer && answer.error().kind == Kind::timeout) connection->sendLast(farewell);
}

std::optional<quint16> portIn(const QVariantMap& map, const QString& key) {
    bool isNumber = false;
    const qlonglong port = map.value(key).toLongLong(&isNumber);
    if (!isNumber || port < 1 || port > 65535) return std::nullopt;
    return static_cast<quint16>(port);
}

}  // namespace

std::shared_ptr<EncryptedSession> EncryptedSession::make(Clock& clock, SessionRoad road, Manner manner) {
    return std::shared_ptr<EncryptedSession>(new EncryptedSession(clock, std::move(road), std::move(manner)));
}

EncryptedSession::EncryptedSession(Clock& clock, SessionRoad road, Manner manner)
    : clock_(clock),
      road_(std::move(road)),
      manner_(std::move(manner)),
      identifier_(newIdentifier().toLatin1()) {}

EncryptedSession::~EncryptedSession() {
    abandon();
}

QCoro::Task<VideoControl::Outcome> EncryptedSession::open() {
    const auto self = shared_from_this();
    Outcome outcome = co_await negotiate();
    if (outcome) outcome = co_await connectEvents();
    isSetUp_ = outcome.has_value();
    if (!outcome) leave(Haste::atOnce);
    co_return outcome;
}

QCoro::Task<VideoControl::Outcome> EncryptedSession::negotiate() {
    const auto self = shared_from_this();
    const QList<Timing> timings = manner_.timings;
    Outcome outcome = closedHere();
    for (const Timing timing : timings) {
        if (!isOpen()) {
            const Outcome linked = co_await link();
            if (!linked) co_return linked;
        }
        outcome = co_await setUp(timing);
        if (outcome || closed_) break;
        outcome = std::unexpected(inSession(outcome.error()));
        if (!mayTakeAnotherTiming(outcome.error(), timing)) break;
        if (outcome.error().kind == Kind::timeout)
            leave(Haste::atOnce);  // its late answer would be taken for the next one
    }
    co_return outcome;
}

QCoro::Task<VideoControl::Outcome> EncryptedSession::link() {
    const auto self = shared_from_this();
    isReaching_ = true;
    Access::Link link = co_await road_.link();
    isReaching_ = false;
    if (closed_) co_return closedHere();
    if (!link.connection) co_return std::unexpected(link.error);
    connection_ = std::move(link.connection);
    shared_ = link.shared;
    wasLinked_ = true;
    ended_ = false;
    requests_.emplace(connection_->localAddress(), manner_.userAgent);
    QObject::connect(connection_.get(), &Connection::ended,
                     [this](const ConnectionError& error) { endSoon(error); });
    co_return Outcome();
}

QCoro::Task<VideoControl::Outcome> EncryptedSession::setUp(Timing timing) {
    const auto self = shared_from_this();
    time_ = {};
    if (timing == Timing::network) time_ = road_.serveTime(localAddress(), peerAddress());
    if (timing == Timing::network && time_.port == 0)
        co_return std::unexpected(
            ConnectionError{.kind = Kind::unreachable, .detail = u"no port to tell the time on"_s});
    const SessionMessages::Setup setup{.timing = timing,
                                       .sender = SenderIdentity::ofThisComputer(),
                                       .session = QString::fromLatin1(identifier_),
                                       .peer = newIdentifier(),
                                       .local = localAddress(),
                                       .timingPort = time_.port,
                                       .sourceVersion = manner_.sourceVersion};
    const QVariantMap body = SessionMessages::setup(setup);
    owesTearDown_ = true;
    const Clock::Duration deadline = timing == Timing::none ? plainSetUpDeadline : setUpDeadline;
    const Request request = SessionRequests::with(requests_->about("SETUP"), body);
    const Connection::Answer answer = co_await send(request, deadline);
    if (closed_) co_return closedHere();
    const Outcome outcome = PlaybackVerbs::outcomeOf(answer);
    if (!outcome) {
        if (outcome.error().kind == Kind::status) owesTearDown_ = false;
        logger().notice(u"television: session refused: %1"_s.arg(outcome.error().status));
        co_return outcome;
    }
    const QVariantMap reply = Plist::decode(answer->body).value_or(QVariant()).toMap();
    const auto port = portIn(reply, u"eventPort"_s);
    eventPort_ = port.value_or(0);
    if (!port)
        co_return std::unexpected(ConnectionError{.kind = Kind::malformed, .detail = u"no event port"_s});
    co_return Outcome();
}

QCoro::Task<VideoControl::Outcome> EncryptedSession::connectEvents() {
    const auto self = shared_from_this();
    ConnectionError error;
    for (const Clock::Duration pause : eventPauses) {
        const Completion<bool> waiting = nap_.wait(clock_, pause);
        co_await waiting;
        if (closed_ || !isOpen()) co_return std::unexpected(inSession({}));
        isReaching_ = true;
        Dialer::Dialed dialed = co_await road_.dial(eventPort_);
        isReaching_ = false;
        if (closed_ || !isOpen()) co_return std::unexpected(inSession({}));
        if (dialed.channel) {
            listen(std::move(dialed.channel));
            co_return Outcome();
        }
        error = dialed.error;
    }
    co_return std::unexpected(inSession(error));
}

void EncryptedSession::listen(std::unique_ptr<Channel> channel) {
    auto sealed = std::make_unique<SealedChannel>(std::move(channel), SecureChannel::events(shared_));
    events_ = std::make_unique<EventConnection>(std::move(sealed), QByteArray());
    QObject::connect(events_.get(), &EventConnection::requested, [this](const Request& request) {
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [weak = weak_from_this(), body = request.body] {
                if (const auto self = weak.lock()) self->hear(body);
            },
            Qt::QueuedConnection);
    });
    QObject::connect(events_.get(), &EventConnection::ended,
                     [this](const ConnectionError& error) { endSoon(error); });
}

// Most come in an envelope, the first one does not.
void EncryptedSession::hear(const QByteArray& body) {
    if (closed_ || !eventHandler_) return;
    const auto outer = Plist::decode(body);
    if (!outer) return;
    const auto content = SessionMessages::unwrapped(outer->toMap());
    const auto message = content ? Plist::decode(*content) : outer;
    const auto handler = eventHandler_;
    if (message) handler(message->toMap());
}

QCoro::Task<VideoControl::Outcome> EncryptedSession::record() {
    const auto self = shared_from_this();
    if (!requests_) co_return std::unexpected(inSession({}));
    const Connection::Answer answer = co_await send(requests_->about("RECORD"));
    const Outcome outcome = PlaybackVerbs::outcomeOf(answer);
    if (!outcome) co_return std::unexpected(inSession(outcome.error()));
    co_return outcome;
}

QCoro::Task<EncryptedSession::Stream> EncryptedSession::setUp(QVariantMap stream) {
    const auto self = shared_from_this();
    if (!requests_) co_return Stream{.description = {}, .error = inSession({})};
    const QVariantMap body = SessionMessages::streams(stream);
    const Request request = SessionRequests::with(requests_->about("SETUP"), body);
    const Connection::Answer answer = co_await send(request);
    const Outcome outcome = PlaybackVerbs::outcomeOf(answer);
    if (!outcome) co_return Stream{.description = {}, .error = inSession(outcome.error())};
    const QVariant reply = Plist::decode(answer->body).value_or(QVariant());
    const QVariantMap description = SessionMessages::firstStream(reply);
    co_return Stream{.description = description,
                     .error = inSession({.kind = Kind::malformed, .detail = u"no stream in the answer"_s})};
}

QCoro::Task<Connection::Answer> EncryptedSession::send(Request request, Clock::Duration deadline) {
    if (!connection_) co_return std::unexpected(ConnectionError{});
    co_return co_await connection_->send(std::move(request), deadline);
}

void EncryptedSession::startHeartbeat() {
    if (!std::exchange(beats_, true)) beat();
}

void EncryptedSession::stopHeartbeat() {
    beats_ = false;
    nextBeat_.cancel();
}

QCoro::Task<> EncryptedSession::beat() {
    const auto weak = weak_from_this();
    if (!isOpen()) co_return;
    const Clock::Duration deadline = missedBeats_ == 0 ? Connection::usualDeadline : secondBeatDeadline;
    const Request request = requests_->rtsp("POST", "/feedback");
    const Connection::Answer answer = co_await connection_->send(request, deadline);
    const auto self = weak.lock();
    if (!self || !self->isOpen() || !self->beats_) co_return;
    // Any answer shows that it is there; what it says of a sign of life does not matter.
    const bool isMissed = !answer && answer.error().kind == Kind::timeout;
    if (!answer && !isMissed) co_return;
    self->missedBeats_ = isMissed ? self->missedBeats_ + 1 : 0;
    if (self->missedBeats_ >= missedBeatsThatEnd) {
        self->end(answer.error());
        co_return;
    }
    self->nextBeat_ = self->clock_.after(isMissed ? 0s : beatInterval, [weak] {
        if (const auto alive = weak.lock()) alive->beat();
    });
}

QCoro::Task<> EncryptedSession::tearDown() {
    const auto self = shared_from_this();
    stopHeartbeat();
    if (isOpen() && std::exchange(owesTearDown_, false)) {
        const Request request = requests_->about("TEARDOWN");
        const Connection::Answer answer = co_await send(request, farewellDeadline);
        // It may be stuck behind a request that is never answered; then it is said without waiting.
        owesTearDown_ = !answer && answer.error().kind == Kind::timeout;
    }
    leave(Haste::atOnce);
}

void EncryptedSession::close() {
    close(Haste::polite);
}

void EncryptedSession::abandon() {
    close(Haste::atOnce);
}

void EncryptedSession::close(Haste haste) {
    if (std::exchange(closed_, true)) return;
    eventHandler_ = {};
    endHandler_ = {};
    nap_.end();
    if (isReaching_ && road_.close) road_.close();
    leave(haste);
}

// In the order in which receivers expect it.
void EncryptedSession::leave(Haste haste) {
    stopHeartbeat();
    isSetUp_ = false;
    ended_ = true;
    if (std::exchange(owesTearDown_, false) && connection_ && connection_->isOpen()) {
        connection_->disconnect();
        const Request farewell = requests_->about("TEARDOWN");
        const bool waits = haste == Haste::polite && !connection_->isIdle();
        if (waits) {
            connection_->giveUp();
            sayFarewell(std::move(connection_), farewell);
        } else {
            connection_->sendLast(farewell);
        }
    }
    events_.reset();
    connection_.reset();
    time_ = {};
}

QHostAddress EncryptedSession::localAddress() const {
    return connection_ ? connection_->localAddress() : QHostAddress();
}

QHostAddress EncryptedSession::peerAddress() const {
    return connection_ ? connection_->peerAddress() : QHostAddress();
}

// Not from inside the channel's own signal: whoever is told may let go of the channel.
void EncryptedSession::endSoon(const ConnectionError& error) {
    QMetaObject::invokeMethod(
        QCoreApplication::instance(),
        [weak = weak_from_this(), of = connection_.get(), error] {
            const auto self = weak.lock();
            if (self && self->connection_.get() == of) self->end(error);
        },
        Qt::QueuedConnection);
}

void EncryptedSession::end(const ConnectionError& error) {
    if (std::exchange(ended_, true) || closed_) return;
    stopHeartbeat();
    logger().notice(u"television: the session ended: %1"_s.arg(error.detail));
    const auto handler = endHandler_;
    if (handler && isSetUp_) handler(error);
}

}  // namespace velmora
