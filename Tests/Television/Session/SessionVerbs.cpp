#include "Television/Session/SessionVerbs.h"

#include "Sender/Plist.h"
#include "Support/Seconds.h"
#include "Television/Responses.h"

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace velmora::test {

namespace {

using Timing = SessionSetup::Timing;

constexpr Clock::Duration timingDeadline = 30s;
constexpr Clock::Duration feedbackDeadline = 10s;  // it comes every two seconds
constexpr Clock::Duration remoteFeedbackDeadline = 8s;
constexpr Clock::Duration lifeWithoutClock = 25s;
constexpr int streamType = 130;

}  // namespace

const QList<SessionVerbs::Route> SessionVerbs::routes{
    {"GET", "/info", &SessionVerbs::info},          {"SETUP", nullptr, &SessionVerbs::setUp},
    {"RECORD", nullptr, &SessionVerbs::record},     {"TEARDOWN", nullptr, &SessionVerbs::tearDown},
    {"POST", "/feedback", &SessionVerbs::feedback}, {"POST", "/command", &SessionVerbs::command},
    {"POST", "/play", &SessionVerbs::play},         {"POST", "/rate", &SessionVerbs::play},
    {"POST", "/scrub", &SessionVerbs::play},        {"POST", "/stop", &SessionVerbs::play},
    {"PUT", "/setProperty", &SessionVerbs::play},   {"GET", "/playback-info", &SessionVerbs::play},
};

SessionVerbs::SessionVerbs(Context& context, PlayVerbs& verbs, SealedSocket& socket, Secret shared)
    : context_(context), verbs_(verbs), socket_(socket), shared_(std::move(shared)) {}

SessionVerbs::~SessionVerbs() {
    verbs_.leave(this);
    if (counted_) context_.remotes -= 1;
}

void SessionVerbs::answer(const Request& request, const Reply& reply) {
    for (const Route& route : routes)
        if (request.method == route.method && (!route.path || request.path() == route.path))
            return (this->*route.verb)(request, reply);
    reply(response(501));
}

void SessionVerbs::fallSilent() {
    if (events_) events_->fallSilent();
    if (remote_) remote_->fallSilent();
}

void SessionVerbs::info(const Request& /*request*/, const Reply& reply) {
    if (context_.does(Misbehaviour::hidesInfo)) return reply(response(403));
    const TelevisionOptions& options = context_.options;
    reply(binaryResponse({{u"psi"_s, u"7C2D2B29-0B25-4F7C-9E5D-6C1B9C6C3E11"_s},
                          {u"features"_s, qlonglong(features(options))},
                          {u"statusFlags"_s, qlonglong(statusFlags(options))},
                          {u"sourceVersion"_s, sourceVersion(options)},
                          {u"deviceID"_s, deviceIdentifier(options)},
                          {u"model"_s, options.model},
                          {u"name"_s, options.name},
                          {u"vv"_s, 2}}));
}

void SessionVerbs::setUp(const Request& request, const Reply& reply) {
    const auto body = Plist::decode(request.body);
    if (!body || body->typeId() != QMetaType::QVariantMap)
        return blame(reply, 400, u"SETUP without a property list"_s);
    if (body->toMap().contains(u"streams"_s)) return setUpStream(body->toMap(), reply);
    setUpSession(body->toMap(), reply);
}

void SessionVerbs::setUpSession(const QVariantMap& body, const Reply& reply) {
    const auto setup = readSessionSetup(body, socket_.sender());
    if (!setup) return blame(reply, 400, setup.error());
    if (events_) return blame(reply, 455, u"a second session on the same connection"_s);
    if (const int status = refusal(*setup)) return reply(response(status));
    setup_ = *setup;
    if (!context_.does(Misbehaviour::asksConsent)) return begin(reply);
    holding_ = context_.clock.after(seconds(context_.numberOf(Misbehaviour::asksConsent)),
                                    [=, this] { begin(reply); });
}

/// The status to refuse with what is no sender's fault; 0: none.
int SessionVerbs::refusal(const SessionSetup& setup) const {
    const TelevisionOptions& options = context_.options;
    if (context_.does(Misbehaviour::isBusy)) return 453;
    if (setup.remoteOnly) return options.isComputer() ? 500 : 0;
    if (setup.timing == Timing::ptp && context_.does(Misbehaviour::refusesPtp)) return 400;
    if (setup.timing == Timing::ntp && context_.does(Misbehaviour::refusesNtp)) return 400;
    if (setup.timing == Timing::none && options.isComputer()) return 500;
    return setup.timing == Timing::none && options.isApples() ? 400 : 0;
}

void SessionVerbs::begin(const Reply& reply) {
    events_ = std::make_unique<EventPort>(context_, shared_);
    connect(events_.get(), &EventPort::ended, this, &SessionVerbs::end);
    connect(events_.get(), &EventPort::connected, this, [this] {
        if (!setup_.remoteOnly || std::exchange(counted_, true)) return;
        context_.remotes += 1;
    });
    if (setup_.timing != Timing::ntp) return confirm(reply);
    timing_ = std::make_unique<TimingQueries>(context_, socket_.sender(), setup_.timingPort);
    connect(timing_.get(), &TimingQueries::answered, this, [=, this] {
        holding_.cancel();
        confirm(reply);
    });
    connect(timing_.get(), &TimingQueries::missed, this, [this] {
        if (!recording_) return;
        context_.complain(u"questions for the time that nobody answers"_s);
        fallSilent();
        dying_ = context_.clock.after(lifeWithoutClock, [this] { end(); });
    });
    holding_ = context_.clock.after(timingDeadline, [=, this] {
        events_.reset();
        timing_.reset();
        blame(reply, 400, u"a session whose timing port does not answer"_s);
    });
}

void SessionVerbs::confirm(const Reply& reply) {
    QVariantMap body{{u"eventPort"_s, events_->port()}};
    if (timing_) body.insert(u"timingPort"_s, timing_->port());
    reply(binaryResponse(body));
}

void SessionVerbs::setUpStream(const QVariantMap& body, const Reply& reply) {
    const auto stream = readStreamSetup(body);
    if (!stream) return blame(reply, 400, stream.error());
    if (!recording_) return blame(reply, 500, u"a stream before RECORD"_s);
    if (stream->remote != setup_.remoteOnly) return blame(reply, 400, u"a stream of the other session"_s);
    if (queue_ || remote_) return blame(reply, 400, u"a second stream"_s);
    if (!stream->remote && !context_.options.hasQueue()) return reply(response(400));
    const QVariantMap answer = stream->remote ? openRemote(stream->seed) : openQueue();
    reply(binaryResponse({{u"streams"_s, QVariantList{answer}}}));
}

QVariantMap SessionVerbs::openRemote(quint64 seed) {
    remote_ = std::make_unique<RemoteStream>(context_, shared_, seed);
    if (!context_.does(Misbehaviour::mutesRemote))
        connect(remote_.get(), &RemoteStream::ended, this, &SessionVerbs::end);
    expectFeedback();
    return {{u"type"_s, streamType}, {u"streamID"_s, 1}, {u"dataPort"_s, remote_->port()}};
}

QVariantMap SessionVerbs::openQueue() {
    queue_ = std::make_unique<QueueVerbs>(context_, *events_, socket_.sender());
    connect(queue_.get(), &QueueVerbs::started, this, [this] {
        context_.headless =
            setup_.timing == Timing::ntp && context_.options.isApples() && context_.remotes == 0;
        expectFeedback();
        Q_EMIT verbs_.taken();
    });
    connect(queue_.get(), &QueueVerbs::left, this, &SessionVerbs::end, Qt::QueuedConnection);
    return {{u"type"_s, streamType}, {u"streamID"_s, queueStream}};
}

void SessionVerbs::record(const Request& request, const Reply& reply) {
    if (!isOpen()) return blame(reply, 500, u"RECORD before the event port is dialled"_s);
    if (!request.body.isEmpty()) return blame(reply, 400, u"RECORD with a body"_s);
    recording_ = true;
    reply(response(200));
    events_->sendBare(
        {{u"type"_s, u"updateInfo"_s}, {u"value"_s, QVariantMap{{u"name"_s, context_.options.name}}}});
}

void SessionVerbs::feedback(const Request& /*request*/, const Reply& reply) {
    if (queue_ && !queue_->isStarted() && setup_.timing == Timing::ptp)
        context_.complain(u"/feedback before the movie plays"_s);
    expectFeedback();
    reply(response(events_ ? 200 : 500));
}

void SessionVerbs::expectFeedback() {
    if (over_) return;
    expecting_ = context_.clock.after(remote_ ? remoteFeedbackDeadline : feedbackDeadline, [this] {
        context_.complain(u"no /feedback for too long"_s);
        end();
    });
}

void SessionVerbs::command(const Request& request, const Reply& reply) {
    if (!context_.options.hasQueue()) return reply(response(501));
    if (!queue_) return blame(reply, 500, u"/command before its stream"_s);
    const int status = queue_->answer(request);
    if (status == 0) return end();
    reply(response(status));
}

void SessionVerbs::tearDown(const Request& /*request*/, const Reply& reply) {
    queue_.reset();
    verbs_.leave(this);
    expecting_.cancel();
    reply(response(200));
}

void SessionVerbs::play(const Request& request, const Reply& reply) {
    const QByteArray path = request.path();
    if (context_.options.hasQueue()) return playOldWay(request, reply);
    if (setup_.remoteOnly || !recording_)
        return blame(reply, 500, QString::fromLatin1(path) + u" before RECORD"_s);
    if (path == "/play") {
        const Headers& headers = request.headers;
        if (headers.value("X-Apple-ProtocolVersion") != "1" || headers.value("X-Apple-Stream-ID") != "1" ||
            headers.value("X-Apple-Session-ID").isEmpty())
            return blame(reply, 400, u"/play without protocol version, stream or session"_s);
        expectFeedback();
        connect(&context_.player, &SimulatedPlayer::stateChanged, this, &SessionVerbs::tell,
                Qt::UniqueConnection);
    }
    reply(verbs_.answer(this, request));
}

/// Of a movie that has no queue.
void SessionVerbs::tell(SimulatedPlayer::State state, const QString& reason) {
    QVariantMap event{{u"type"_s, u"playbackState"_s},
                      {u"name"_s, SimulatedPlayer::eventName(state)},
                      {u"position"_s, context_.player.position()}};
    if (reason == "ended"_L1) event.insert(u"reason"_s, reason);
    const bool isTold = state != SimulatedPlayer::State::idle || reason == "ended"_L1;
    if (isTold && !over_) events_->send(event);
}

/// Where there is a queue, these have become empty words.
void SessionVerbs::playOldWay(const Request& request, const Reply& reply) {
    if (queue_) context_.complain(QString::fromLatin1(request.path()) + u" beside the queue"_s);
    const bool knows = context_.options.isApples() || context_.options.isComputer();
    if (!knows) return reply(response(404));
    reply(response(request.path() == "/playback-info" ? 500 : 200));
}

/// Orderly, and of all of it: a session is over with its events.
void SessionVerbs::end() {
    over_ = true;
    for (Clock::Timer* timer : {&holding_, &expecting_, &dying_}) timer->cancel();
    if (remote_) remote_->close();
    if (events_) events_->close();
    socket_.close();
}

void SessionVerbs::blame(const Reply& reply, int status, const QString& reason) {
    context_.complain(reason);
    reply(response(status));
}

}  // namespace velmora::test
