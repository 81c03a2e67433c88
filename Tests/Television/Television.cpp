#include "Television/Television.h"

#include "Sender/Plist.h"
#include "Support/Seconds.h"
#include "Television/PlayRequest.h"

#include <QTime>
#include <QUrlQuery>

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace velmora::test {

namespace {

using State = SimulatedPlayer::State;

Response response(int status, const char* reason) {
    Response response;
    response.status = status;
    response.reason = reason;
    return response;
}

Response plistResponse(const QVariantMap& body) {
    Response response;
    response.headers.append("Content-Type", "text/x-apple-plist+xml");
    response.body = Plist::encodeXml(body);
    return response;
}

/// A number of the query, as C writes numbers; nothing for anything else.
std::optional<double> numberIn(const Request& request, const QString& name) {
    const QUrlQuery query(QString::fromLatin1(request.target.mid(request.path().size() + 1)));
    bool isNumber = false;
    const double number = query.queryItemValue(name).toDouble(&isNumber);
    return isNumber ? std::optional(number) : std::nullopt;
}

QVariantList range(double start, double end) {
    return {QVariantMap{{u"start"_s, start}, {u"duration"_s, end - start}}};
}

QString clockFace(double seconds) {
    return QTime(0, 0).addMSecs(int(seconds * 1000)).toString(u"h:mm:ss"_s);
}

QString eventName(State state) {
    switch (state) {
        case State::idle:
            return u"stopped"_s;
        case State::loading:
            return u"loading"_s;
        case State::playing:
            return u"playing"_s;
        case State::paused:
            return u"paused"_s;
    }
    return {};
}

}  // namespace

const QList<Television::Route> Television::routes{
    {"GET", "/server-info", &Television::serverInfo},
    {"POST", "/reverse", &Television::reverse},
    {"POST", "/play", &Television::play},
    {"POST", "/rate", &Television::rate},
    {"POST", "/scrub", &Television::scrub},
    {"GET", "/scrub", &Television::showScrub},
    {"GET", "/playback-info", &Television::playbackInfo},
    {"POST", "/stop", &Television::stop},
    {"POST", "/volume", &Television::volume},
};

Television::Television(Clock& clock, Options options, QObject* parent)
    : QObject(parent), clock_(clock), options_(std::move(options)), player_(clock, options_.misbehaviours) {
    connect(&server_, &QTcpServer::newConnection, this, &Television::accept);
    connect(&player_, &SimulatedPlayer::stateChanged, this, &Television::tell);
    connect(&player_, &SimulatedPlayer::failed, this, &Television::refuse);
}

std::expected<void, QString> Television::listen() {
    if (!server_.listen(options_.address, options_.port)) return std::unexpected(server_.errorString());
    return {};
}

Receiver Television::receiver() const {
    Receiver receiver;
    receiver.name = options_.name;
    receiver.address = server_.serverAddress();
    receiver.port = server_.serverPort();
    receiver.identifier = receiver.address.toString() + ':'_L1 + QString::number(receiver.port);
    return receiver;
}

int Television::unansweredEvents() const {
    int count = 0;
    for (const ControlConnection* connection : connections_) count += connection->unansweredEvents();
    return count;
}

void Television::accept() {
    while (QTcpSocket* socket = server_.nextPendingConnection()) {
        auto* connection = new ControlConnection(clock_, socket, this);
        connections_.append(connection);
        connect(connection, &ControlConnection::refused, this, &Television::refuse);
        connect(connection, &ControlConnection::closed, this, [=, this] { closed(connection); });
        connect(connection, &ControlConnection::requested, this,
                [=, this](const Request& request) { dispatch(*connection, request); });
    }
}

void Television::closed(ControlConnection* connection) {
    connections_.removeOne(connection);
    connection->deleteLater();
    if (playing_ != connection) return;
    playing_ = nullptr;
    stopping_.cancel();
    if (!does(Misbehaviour::playsOn)) player_.stop();
}

void Television::dispatch(ControlConnection& connection, const Request& request) {
    requests_.append(request.method + ' ' + request.target);
    if (silent_) return;
    if (const std::optional<Response> response = answerTo(connection, request)) reply(connection, *response);
}

std::optional<Response> Television::answerTo(ControlConnection& connection, const Request& request) {
    for (const Route& route : routes)
        if (request.method == route.method && request.path() == route.path)
            return (this->*route.verb)(connection, request);
    return response(501, "Not Implemented");
}

void Television::reply(ControlConnection& connection, const Response& response) {
    connection.answer(response, does(Misbehaviour::endsLinesBare), does(Misbehaviour::omitsLengths));
}

std::optional<Response> Television::serverInfo(ControlConnection& /*connection*/,
                                               const Request& /*request*/) {
    constexpr int videoPhotoAndLiveStreaming = 0x77;
    return plistResponse({{u"deviceid"_s, u"02:00:00:00:00:01"_s},
                          {u"features"_s, videoPhotoAndLiveStreaming},
                          {u"model"_s, u"Television,1"_s},
                          {u"protovers"_s, u"1.0"_s},
                          {u"srcvers"_s, u"130.14"_s}});
}

std::optional<Response> Television::reverse(ControlConnection& connection, const Request& request) {
    if (request.headers.value("Upgrade") != "PTTH/1.0") return refuse(u"/reverse without an upgrade"_s);
    Response switching = response(101, "Switching Protocols");
    switching.headers.append("Connection", "Upgrade");
    switching.headers.append("Upgrade", "PTTH/1.0");
    reply(connection, switching);
    connection.reverse();
    return std::nullopt;
}

std::optional<Response> Television::play(ControlConnection& connection, const Request& request) {
    const auto movie = readPlayRequest(request);
    if (!movie) return refuse(u"/play: "_s + movie.error());
    if (failures_++ < int(options_.misbehaviours.value(Misbehaviour::failsPlay)))
        return response(500, "Internal Server Error");
    playing_ = &connection;
    misbehaveAfterPlay();
    if (!does(Misbehaviour::ignoresPlay)) player_.load(*movie);
    return Response();
}

void Television::misbehaveAfterPlay() {
    if (does(Misbehaviour::drops))
        dropping_ = clock_.after(seconds(options_.misbehaviours.value(Misbehaviour::drops)), [this] {
            for (ControlConnection* connection : QList(connections_)) connection->abort();
        });
    if (does(Misbehaviour::goesSilent))
        falling_ = clock_.after(seconds(options_.misbehaviours.value(Misbehaviour::goesSilent)),
                                [this] { silent_ = true; });
    if (does(Misbehaviour::liesInEvents)) sendEvent(u"playing"_s, {});
}

std::optional<Response> Television::rate(ControlConnection& /*connection*/, const Request& request) {
    const std::optional<double> value = numberIn(request, u"value"_s);
    if (!value) return refuse(u"/rate without a number"_s);
    player_.setRate(*value);
    return Response();
}

std::optional<Response> Television::scrub(ControlConnection& /*connection*/, const Request& request) {
    const std::optional<double> position = numberIn(request, u"position"_s);
    if (!position || *position < 0) return refuse(u"/scrub without a position"_s);
    player_.seek(*position);
    return Response();
}

std::optional<Response> Television::showScrub(ControlConnection& /*connection*/, const Request& /*request*/) {
    if (!player_.isReady()) return response(405, "Method Not Allowed");
    Response shown;
    shown.headers.append("Content-Type", "text/parameters");
    shown.body = "duration: " + QByteArray::number(player_.duration(), 'f', 6) +
                 "\r\nposition: " + QByteArray::number(player_.reportedPosition(), 'f', 6);
    return shown;
}

std::optional<Response> Television::playbackInfo(ControlConnection& /*connection*/,
                                                 const Request& /*request*/) {
    if (!player_.isReady()) return plistResponse({{u"readyToPlay"_s, false}});
    return plistResponse({{u"readyToPlay"_s, true},
                          {u"uuid"_s, player_.movie().uuid},
                          {u"duration"_s, player_.duration()},
                          {u"position"_s, player_.reportedPosition()},
                          {u"rate"_s, player_.rate()},
                          {u"playbackBufferEmpty"_s, false},
                          {u"playbackBufferFull"_s, false},
                          {u"playbackLikelyToKeepUp"_s, true},
                          {u"loadedTimeRanges"_s, range(player_.position(), player_.duration())},
                          {u"seekableTimeRanges"_s, range(0, player_.duration())}});
}

std::optional<Response> Television::stop(ControlConnection& connection, const Request& /*request*/) {
    player_.stop();
    if (!does(Misbehaviour::stopsSlowly)) return Response();
    playing_ = &connection;
    stopping_ = clock_.after(seconds(options_.misbehaviours.value(Misbehaviour::stopsSlowly)), [this] {
        if (playing_) reply(*playing_, Response());
    });
    return std::nullopt;
}

std::optional<Response> Television::volume(ControlConnection& /*connection*/, const Request& request) {
    if (!numberIn(request, u"volume"_s)) return refuse(u"/volume without a number"_s);
    return Response();
}

void Television::tell(State state, const QString& reason) {
    QString line = eventName(state);
    if (state == State::loading) line += ' '_L1 + player_.movie().url.toString();
    if (state == State::playing || state == State::paused)
        line += u" at %1 of %2"_s.arg(clockFace(player_.position()), clockFace(player_.duration()));
    if (!reason.isEmpty()) line += u" (%1)"_s.arg(reason);
    Q_EMIT said(line);
    sendEvent(does(Misbehaviour::liesInEvents) ? u"playing"_s : eventName(state), reason);
}

void Television::sendEvent(const QString& state, const QString& reason) {
    if (silent_) return;
    QVariantMap body{{u"category"_s, u"video"_s}, {u"sessionID"_s, 1}, {u"state"_s, state}};
    if (!reason.isEmpty()) body.insert(u"reason"_s, reason);
    Request event;
    event.method = "POST";
    event.target = "/event";
    event.body = Plist::encodeXml(body);
    for (ControlConnection* connection : connections_) {
        if (!connection->isReversed()) continue;
        event.headers = {{"Content-Type", "text/x-apple-plist+xml"},
                         {"X-Apple-Session-ID", connection->session()}};
        connection->send(event);
    }
}

Response Television::refuse(const QString& reason) {
    complaints_.append(reason);
    Q_EMIT said(u"refused: "_s + reason);
    return response(400, "Bad Request");
}

}  // namespace velmora::test
