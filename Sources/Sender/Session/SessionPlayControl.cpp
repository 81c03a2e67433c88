#include "Sender/Session/SessionPlayControl.h"

#include "Sender/PlaybackVerbs.h"

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace velmora {

using namespace PlaybackVerbs;

namespace {

ConnectionError inHandover(ConnectionError error) {
    error.step = Answers::Step::handover;
    return error;
}

}  // namespace

std::shared_ptr<SessionPlayControl> SessionPlayControl::make(Clock& clock, SessionRoad road) {
    return std::shared_ptr<SessionPlayControl>(new SessionPlayControl(clock, std::move(road)));
}

// The boxes that still play this way are known to take NTP.
SessionPlayControl::SessionPlayControl(Clock& clock, SessionRoad road)
    : SessionControl(clock, std::move(road),
                     {{Timing::network, Timing::precise}, "AirPlay/550.10", u"690.7.1"_s}) {}

SessionPlayControl::~SessionPlayControl() {
    abandon();
}

QCoro::Task<VideoControl::Outcome> SessionPlayControl::open() {
    const auto self = shared_from_this();
    renewSession();
    const auto session = sharedSession();
    Outcome outcome = co_await session->open();
    if (!outcome || isClosed()) co_return outcome;
    session->startHeartbeat();
    outcome = co_await session->record();
    if (!outcome) co_await session->tearDown();
    co_return outcome;
}

QCoro::Task<VideoControl::Outcome> SessionPlayControl::play(Movie movie) {
    const auto self = shared_from_this();
    if (std::exchange(hasPlayed_, true)) {
        const Outcome stopped = co_await post("/stop");
        if (!stopped && !isOpen()) co_return stopped;
    }
    uuid_ = movie.uuid;
    player_.begin(movie.uuid, movie.start, movie.duration);
    const Outcome outcome = co_await sendPlay(movie);
    if (!outcome) {
        const ConnectionError error = inHandover(outcome.error());
        if (!isClosed()) co_await session().tearDown();
        co_return std::unexpected(error);
    }
    // None of these is required; without the rate, though, an Apple TV waits at the beginning.
    const QVariant interested = true;
    const QVariant advance = 0;
    const QVariant none = QVariantMap{{u"value"_s, 0}, {u"timescale"_s, 0}, {u"epoch"_s, 0}, {u"flags"_s, 0}};
    co_await setProperty("isInterestedInDateRange", interested);
    co_await setProperty("actionAtItemEnd", advance);
    const QByteArray rate = "/rate?value=" + decimal(1);
    const Outcome started = co_await post(rate);
    rateIsSet_ = started.has_value();
    co_await setProperty("forwardEndTime", none);
    co_await setProperty("reverseEndTime", none);
    if (!isOpen()) co_return std::unexpected(inHandover({}));
    co_return Outcome();
}

QCoro::Task<VideoControl::Outcome> SessionPlayControl::sendPlay(Movie movie) {
    const auto self = shared_from_this();
    const auto session = sharedSession();
    for (int attempt = 1;; ++attempt) {
        if (!isOpen()) co_return std::unexpected(ConnectionError{});
        Request request = verb("POST", "/play");
        request.version = "HTTP/1.1";
        request.headers.append("Content-Type", "application/x-apple-binary-plist");
        request.body = playBody(movie, session->identifier());
        const Connection::Answer answer = co_await session->send(request, playDeadline);
        const Outcome outcome = outcomeOf(answer);
        if (outcome || !outcome.error().hasStatus(500) || attempt == playAttempts || isClosed())
            co_return outcome;
        const Completion<bool> pause = nap_.wait(clock(), 1s);
        co_await pause;
    }
}

// `play` has asked for it already, and whoever called it asks again.
QCoro::Task<VideoControl::Outcome> SessionPlayControl::setRate(double rate) {
    const auto self = shared_from_this();
    if (std::exchange(rateIsSet_, false) && rate == 1) co_return Outcome();
    const QByteArray target = "/rate?value=" + decimal(rate);
    co_return co_await post(target);
}

QCoro::Task<VideoControl::Outcome> SessionPlayControl::seek(double seconds) {
    return post("/scrub?position=" + decimal(seconds));
}

QCoro::Task<VideoControl::Outcome> SessionPlayControl::stop() {
    return stopAndTearDown();
}

QCoro::Task<VideoControl::Reported> SessionPlayControl::playbackInfo() {
    const auto self = shared_from_this();
    if (!isOpen()) co_return std::unexpected(ConnectionError{});
    const auto session = sharedSession();
    Request request = verb("GET", "/playback-info");
    request.version = "HTTP/1.1";
    const Connection::Answer answer = co_await session->send(request);
    const Reported reported = reportIn(answer);
    // Some versions answer 500 for as long as they play, and tell by events alone.
    const bool mayBeWithheld = reported && answer->status == 500 && player_.isUnderWay();
    if (mayBeWithheld) co_return player_.report(clock().now());
    co_return reported;
}

QCoro::Task<VideoControl::Outcome> SessionPlayControl::setProperty(QByteArray name, QVariant value) {
    const auto self = shared_from_this();
    if (!isOpen()) co_return std::unexpected(ConnectionError{});
    const QVariantMap body{{u"value"_s, value}};
    const Request request = SessionRequests::with(verb("PUT", "/setProperty?" + name), body);
    const Connection::Answer answer = co_await session().send(request);
    co_return outcomeOf(answer);
}

QCoro::Task<VideoControl::Outcome> SessionPlayControl::post(QByteArray target) {
    const auto self = shared_from_this();
    if (!isOpen()) co_return std::unexpected(ConnectionError{});
    const Request request = verb("POST", target);
    const Connection::Answer answer = co_await session().send(request);
    co_return outcomeOf(answer);
}

Request SessionPlayControl::verb(const QByteArray& method, const QByteArray& target) {
    Request request = session().requests().rtsp(method, target);
    request.headers.append("X-Apple-ProtocolVersion", "1");
    request.headers.append("X-Apple-Session-ID", session().identifier());
    request.headers.append("X-Apple-Stream-ID", "1");
    return request;
}

Request SessionPlayControl::stopRequest() {
    return verb("POST", "/stop");
}

void SessionPlayControl::hear(const QVariantMap& message) {
    const auto told = SessionEvent::fromPlist(message);
    if (!told) return;
    const QString& item = told->event.uuid;
    if (item.isEmpty() || item.compare(uuid_, Qt::CaseInsensitive) == 0) player_.take(*told, clock().now());
    if (!told->isAnswer) deliver(told->event);
}

void SessionPlayControl::sessionEnded(const ConnectionError& /*error*/) {
    // Whoever polls gets to know; this only makes them poll now.
    deliver({});
}

}  // namespace velmora
