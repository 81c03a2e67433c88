#include "Sender/Session/QueueControl.h"

#include "Diagnostics/Log.h"
#include "Sender/PlaybackVerbs.h"
#include "Sender/Plist.h"
#include "Sender/Session/QueueCommands.h"

#include <utility>

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace velmora {

using Kind = ConnectionError::Kind;
using PlaybackVerbs::outcomeOf;

namespace {

constexpr Clock::Duration questionInterval = 1s;

ConnectionError in(Answers::Step step, ConnectionError error) {
    error.step = step;
    return error;
}

ConnectionError unfinished(const ConnectionError& error) {
    if (error.kind != Kind::status) return in(Answers::Step::handover, error);
    return {.kind = Kind::closed,
            .detail = u"took the item and does not play it: %1"_s.arg(error.status),
            .step = Answers::Step::handover};
}

}  // namespace

std::shared_ptr<QueueControl> QueueControl::make(Clock& clock, const SessionRoad& road) {
    return std::shared_ptr<QueueControl>(new QueueControl(clock, road));
}

QueueControl::QueueControl(Clock& clock, const SessionRoad& road)
    : SessionControl(clock, road, {{}, "AirPlay/870.14.1", u"870.14.1"_s}),
      kind_(receiverKind(road.receiver)) {}

QueueControl::~QueueControl() {
    QueueControl::abandon();
}

QCoro::Task<VideoControl::Outcome> QueueControl::open() {
    const auto self = shared_from_this();
    const bool wantsRemote = kind_ == ReceiverKind::appleTv || kind_ == ReceiverKind::unknown;
    if (wantsRemote) {
        const Outcome outcome = co_await openRemote();
        if (isClosed()) co_return std::unexpected(ConnectionError{});
        if (!outcome) co_return outcome;
    }
    const Outcome outcome = co_await openQueue();
    if (!outcome && remote_) remote_->close();
    co_return outcome;
}

// Only a receiver that cannot be reached at all ends the attempt here: one that takes no remote control may
// well take movies.
QCoro::Task<VideoControl::Outcome> QueueControl::openRemote() {
    const auto self = shared_from_this();
    remote_ = RemoteControl::make(clock(), road());
    const auto remote = remote_;
    const Outcome outcome = co_await remote->open();
    if (isClosed()) co_return std::unexpected(ConnectionError{});
    if (!outcome) {
        remote_.reset();
        if (!remote->wasReached()) co_return outcome;
        logger().notice(u"television: takes no remote control"_s);
        co_return Outcome();
    }
    remote->onSample([this](const RemotePlayer::Sample& sample) {
        player_.take(sample, clock().now());
        deliver({});
    });
    remote->onEnded([this](const ConnectionError& error) {
        // Without it an Apple TV does not keep the picture for long.
        if (kind_ != ReceiverKind::appleTv || lost_) return;
        lost_ = error;
        deliver({});
    });
    if (remote->isAsleep()) co_await remote->wake();
    co_return Outcome();
}

// Timed by NTP, an Apple TV without a remote control plays everything and shows nothing.
QList<Timing> QueueControl::timings() const {
    if (kind_ == ReceiverKind::appleTv && !remote_) return {Timing::precise};
    if (kind_ == ReceiverKind::appleTv || kind_ == ReceiverKind::unknown)
        return {Timing::precise, Timing::network};
    return {Timing::network, Timing::precise};
}

QCoro::Task<VideoControl::Outcome> QueueControl::openQueue() {
    const auto self = shared_from_this();
    setTimings(timings());
    renewSession();
    lost_.reset();
    const auto session = sharedSession();
    Outcome outcome = co_await session->open();
    if (!outcome || isClosed()) co_return outcome;
    outcome = co_await session->record();
    if (isClosed()) co_return std::unexpected(ConnectionError{});
    if (outcome) {
        const auto& announced = road().receiver.announced;
        const QString known = announced ? announced->sessionIdentifier : QString();
        const QString channel = known.isEmpty() ? SenderIdentity::ofThisComputer().address : known;
        const QVariantMap wanted = SessionMessages::queueStream(channel);
        const EncryptedSession::Stream stream = co_await session->setUp(wanted);
        if (isClosed()) co_return std::unexpected(ConnectionError{});
        bool isNumber = false;
        const qulonglong number = stream.description.value(u"streamID"_s).toULongLong(&isNumber);
        streamId_ = QByteArray::number(number);
        if (!isNumber) outcome = std::unexpected(stream.error);
    }
    if (!outcome) co_await session->tearDown();
    co_return outcome;
}

QCoro::Task<VideoControl::Outcome> QueueControl::play(Movie movie) {
    const auto self = shared_from_this();
    if (std::exchange(hasInserted_, false)) {
        // An item that was taken once is never offered again to the same session.
        const Outcome stopped = co_await stopAndTearDown();
        if (isClosed()) co_return stopped;
        const Outcome reopened = co_await openQueue();
        if (!reopened) co_return reopened;
    }
    Outcome outcome = co_await insert(movie);
    if (outcome) outcome = co_await start(movie);
    if (!outcome && !isClosed()) co_await session().tearDown();
    co_return outcome;
}

QCoro::Task<VideoControl::Outcome> QueueControl::insert(Movie movie) {
    const auto self = shared_from_this();
    uuid_ = movie.uuid;
    const bool heedsStart = kind_ == ReceiverKind::television;
    player_.begin(movie.uuid, heedsStart ? movie.start : 0, movie.duration);
    if (remote_) remote_->expect(movie.duration);
    rateIsSet_ = false;
    const QVariantMap item = QueueCommands::insert(movie, heedsStart);
    const Outcome outcome = co_await command(item);
    if (!outcome) co_return std::unexpected(in(Answers::Step::handover, outcome.error()));
    hasInserted_ = true;
    co_return outcome;
}

// From here on the item is in the queue: no failure may have it offered again in another way.
QCoro::Task<VideoControl::Outcome> QueueControl::start(Movie movie) {
    const auto self = shared_from_this();
    const QList<QVariantMap> contents{QueueCommands::interestInDates(movie.uuid), QueueCommands::pauseAtEnd(),
                                      QueueCommands::setRate(1)};
    Outcome outcome;
    for (const QVariantMap& content : contents) {
        outcome = co_await command(content);
        if (!outcome && outcome.error().kind != Kind::status) break;
    }
    // Of the last one: the others may be unknown to it. A refusal here is none of the item.
    if (!outcome) co_return std::unexpected(unfinished(outcome.error()));
    rateIsSet_ = true;
    session().startHeartbeat();
    co_return outcome;
}

QCoro::Task<VideoControl::Outcome> QueueControl::setRate(double rate) {
    const auto self = shared_from_this();
    // `play` has asked for it already, and whoever called it asks again.
    if (std::exchange(rateIsSet_, false) && rate == 1) co_return Outcome();
    const auto order = rate == 0 ? MediaRemote::Command::pause : MediaRemote::Command::play;
    const bool isDone = co_await commandRemote(order, std::nullopt);
    if (isDone) co_return Outcome();
    const QVariantMap content = QueueCommands::setRate(rate);
    co_return co_await command(content);
}

QCoro::Task<VideoControl::Outcome> QueueControl::seek(double seconds) {
    const auto self = shared_from_this();
    const bool isDone = co_await commandRemote(MediaRemote::Command::seek, seconds);
    if (isDone) co_return Outcome();
    const QVariantMap content = QueueCommands::seek(seconds, uuid_, ++questions_);
    co_return co_await command(content);
}

QCoro::Task<bool> QueueControl::commandRemote(MediaRemote::Command command, std::optional<double> position) {
    const auto self = shared_from_this();
    const auto remote = remote_;
    if (!remote || !remote->canCommand()) co_return false;
    const Outcome outcome = co_await remote->command(command, position);
    if (!outcome) logger().notice(u"television: remote control: %1"_s.arg(outcome.error().detail));
    co_return outcome.has_value();
}

QCoro::Task<VideoControl::Reported> QueueControl::playbackInfo() {
    const auto self = shared_from_this();
    if (!lost_ && isAsking()) {
        const Outcome outcome = co_await ask();
        if (!outcome) co_return std::unexpected(outcome.error());
    }
    if (lost_) co_return std::unexpected(*lost_);
    if (!isOpen()) co_return std::unexpected(ConnectionError{});
    co_return player_.report(clock().now());
}

// Not where the remote control tells it all. An Apple TV is not known to answer: it is asked late.
bool QueueControl::isAsking() const {
    if (!answersQuestions_ || player_.isOver() || (remote_ && remote_->sample())) return false;
    if (kind_ == ReceiverKind::appleTv && !player_.isUnderWay()) return false;
    return !askedAt_ || clock().now() - *askedAt_ >= questionInterval;
}

QCoro::Task<VideoControl::Outcome> QueueControl::ask() {
    const auto self = shared_from_this();
    askedAt_ = clock().now();
    const QVariantMap content = QueueCommands::playbackInfo(++questions_);
    const Outcome outcome = co_await command(content);
    if (outcome || outcome.error().kind != Kind::status) co_return outcome;
    answersQuestions_ = false;
    co_return Outcome();
}

QCoro::Task<VideoControl::Outcome> QueueControl::stop() {
    const auto self = shared_from_this();
    const Outcome outcome = co_await stopAndTearDown();
    if (remote_ && !isClosed()) co_await remote_->tearDown();
    co_return outcome;
}

void QueueControl::close() {
    SessionControl::close();
    if (remote_) remote_->close();
}

void QueueControl::abandon() {
    SessionControl::abandon();
    if (remote_) remote_->abandon();
}

QCoro::Task<VideoControl::Outcome> QueueControl::command(QVariantMap content) {
    const auto self = shared_from_this();
    if (!isOpen()) co_return std::unexpected(lost_.value_or(ConnectionError{}));
    const Request request = commandRequest(content);
    const Connection::Answer answer = co_await session().send(request);
    // One source has the answers to questions here, the others among the events.
    if (answer && answer->isSuccess() && !answer->body.isEmpty() && !isClosed()) {
        const QVariantMap body = Plist::decode(answer->body).value_or(QVariant()).toMap();
        const auto inner = SessionMessages::unwrapped(body);
        hear(inner ? Plist::decode(*inner).value_or(QVariant()).toMap() : body);
    }
    co_return outcomeOf(answer);
}

Request QueueControl::commandRequest(const QVariantMap& content) {
    const QVariantMap envelope = SessionMessages::wrapped(Plist::encodeBinary(content));
    Request request = SessionRequests::with(session().requests().http("POST", "/command"), envelope);
    request.headers.append("X-Apple-ProtocolVersion", "1");
    request.headers.append("X-Apple-Session-ID", session().identifier());
    request.headers.append("X-Apple-StreamID", streamId_);
    return request;
}

Request QueueControl::stopRequest() {
    return commandRequest(QueueCommands::stop());
}

void QueueControl::hear(const QVariantMap& message) {
    const auto told = SessionEvent::fromPlist(message);
    if (!told) return;
    const QString& item = told->event.uuid;
    if (!item.isEmpty() && item.compare(uuid_, Qt::CaseInsensitive) != 0) return;
    // Behind the end come a pause, a stop: they must not make it less of an end.
    if (player_.isOver()) return;
    player_.take(*told, clock().now());
    if (!told->isAnswer) deliver(told->event);
}

// The viewer who leaves the player, or another sender: nothing is said, the receiver just closes. A receiver
// that went silent is another matter.
void QueueControl::sessionEnded(const ConnectionError& error) {
    if (!lost_) lost_ = error;
    const bool wasLeft = error.kind == Kind::closed && player_.isUnderWay();
    deliver({.state = wasLeft ? PlaybackEvent::State::stopped : PlaybackEvent::State::other});
}

}  // namespace velmora
