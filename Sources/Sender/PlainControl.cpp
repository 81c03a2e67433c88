#include "Sender/PlainControl.h"

#include "Diagnostics/Log.h"
#include "Sender/PlaybackVerbs.h"
#include "Sender/Plist.h"

#include <QUuid>

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace velmora {

using namespace PlaybackVerbs;

std::shared_ptr<PlainControl> PlainControl::make(Clock& clock, std::shared_ptr<Access> access,
                                                 Handover handover) {
    return std::shared_ptr<PlainControl>(new PlainControl(clock, std::move(access), handover));
}

PlainControl::PlainControl(Clock& clock, std::shared_ptr<Access> access, Handover handover)
    : clock_(clock),
      session_(QUuid::createUuid().toByteArray(QUuid::WithoutBraces)),
      access_(std::move(access)),
      handover_(handover) {}

PlainControl::~PlainControl() {
    PlainControl::close();
}

QCoro::Task<VideoControl::Outcome> PlainControl::open() {
    const auto self = shared_from_this();
    Access::Link link = co_await access_->link();
    if (closed_) co_return std::unexpected(ConnectionError{});
    if (!link.connection) co_return std::unexpected(link.error);
    verbs_ = std::move(link.connection);

    const Connection::Answer info = co_await get("/server-info");
    if (!info) co_return std::unexpected(info.error());
    // A receiver that wants to be paired with says so here. All else is told only by the answer to /play.
    if (info->status == 403 || info->status == 470) co_return outcomeOf(info);
    co_await openEvents();
    co_await keepAlive(*info);
    if (!isOpen()) co_return std::unexpected(ConnectionError{});
    co_return Outcome();
}

QCoro::Task<> PlainControl::openEvents() {
    const auto self = shared_from_this();
    Access::Link link = co_await access_->link();
    if (!link.connection || closed_) co_return;
    reversing_ = std::move(link.connection);
    Request reverse = request("POST", "/reverse");
    reverse.headers.append("Upgrade", "PTTH/1.0");
    reverse.headers.append("Connection", "Upgrade");
    reverse.headers.append("X-Apple-Purpose", "event");
    const Connection::Answer answer = co_await reversing_->send(reverse);
    if (closed_) co_return;
    auto [released, unread] = reversing_->release();
    reversing_.reset();
    constexpr int switchingProtocols = 101;
    if (!answer || answer->status != switchingProtocols || !released) {
        logger().notice(u"television: no events"_s);
        co_return;
    }
    events_ = std::make_unique<EventConnection>(std::move(released), unread);
    QObject::connect(events_.get(), &EventConnection::requested, [this](const Request& event) {
        const auto plist = Plist::decode(event.body);
        if (const auto known = plist ? PlaybackEvent::fromPlist(*plist) : std::nullopt) deliver(*known);
    });
}

QCoro::Task<> PlainControl::keepAlive(Response serverInfo) {
    const auto self = shared_from_this();
    const QVariantMap info = Plist::decode(serverInfo.body).value_or(QVariant()).toMap();
    const auto& record = access_->receiver().announced;
    const bool announcesSystem = record && !record->systemVersion.isEmpty();
    const bool endsSilentSessions =
        info.value(u"srcvers"_s) == u"220.68"_s && !info.contains(u"osvers"_s) && !announcesSystem;
    if (!endsSilentSessions || closed_) co_return;
    Access::Link link = co_await access_->link();
    if (!link.connection || closed_) co_return;
    heartbeat_ = std::make_shared<Heartbeat>(clock_, std::move(link.connection));
    heartbeat_->start();
}

QHostAddress PlainControl::localAddress() const {
    return verbs_ ? verbs_->localAddress() : QHostAddress();
}

QHostAddress PlainControl::peerAddress() const {
    return verbs_ ? verbs_->peerAddress() : QHostAddress();
}

QCoro::Task<VideoControl::Outcome> PlainControl::play(Movie movie) {
    const auto self = shared_from_this();
    const bool isText = handover_ == Handover::playText;
    Request play = request("POST", "/play");
    play.headers.append("Content-Type", isText ? "text/parameters" : "application/x-apple-binary-plist");
    play.body = isText ? playText(movie) : playBody(movie, session_);
    // One receiver now and then shows the subtitles that were on before also where the next movie has them
    // off.
    if (hasMovie_) co_await stop();
    hasMovie_ = true;
    for (int attempt = 1;; ++attempt) {
        const Connection::Answer answer = co_await send(play, playDeadline);
        const Outcome outcome = outcomeOf(answer);
        if (outcome || !outcome.error().hasStatus(500) || attempt == playAttempts || closed_)
            co_return outcome;
        const Completion<bool> pause = nap_.wait(clock_, 1s);
        co_await pause;
    }
}

QCoro::Task<VideoControl::Outcome> PlainControl::setRate(double rate) {
    return post("/rate?value=" + decimal(rate));
}

QCoro::Task<VideoControl::Outcome> PlainControl::seek(double seconds) {
    return post("/scrub?position=" + decimal(seconds));
}

QCoro::Task<VideoControl::Outcome> PlainControl::stop() {
    hasMovie_ = false;
    return post("/stop");
}

QCoro::Task<VideoControl::Reported> PlainControl::playbackInfo() {
    const auto self = shared_from_this();
    const Connection::Answer answer = co_await get("/playback-info");
    co_return reportIn(answer);
}

void PlainControl::close() {
    closed_ = true;
    onEvent({});
    onHold({});
    access_->close();
    nap_.end();
    heartbeat_.reset();
    reversing_.reset();
    events_.reset();
    verbs_.reset();
}

void PlainControl::abandon() {
    if (isOpen()) verbs_->sendLast(request("POST", "/stop"));
    close();
}

QCoro::Task<Connection::Answer> PlainControl::send(Request request, Clock::Duration deadline) {
    if (!verbs_) co_return std::unexpected(ConnectionError{});
    co_return co_await verbs_->send(std::move(request), deadline);
}

QCoro::Task<Connection::Answer> PlainControl::get(const QByteArray& target) {
    return send(request("GET", target), Connection::usualDeadline);
}

QCoro::Task<VideoControl::Outcome> PlainControl::post(QByteArray target) {
    const auto self = shared_from_this();
    const Connection::Answer answer = co_await send(request("POST", target), Connection::usualDeadline);
    co_return outcomeOf(answer);
}

Request PlainControl::request(const QByteArray& method, const QByteArray& target) const {
    Request request;
    request.method = method;
    request.target = target;
    // Host never goes without the session: one receiver would take the request for one of its own.
    request.headers = {{"Host", access_->hostHeader()},
                       {"User-Agent", "AirPlay/550.10"},
                       {"X-Apple-Session-ID", session_},
                       {"X-Apple-Client-Name", "Velmora"}};
    return request;
}

}  // namespace velmora
