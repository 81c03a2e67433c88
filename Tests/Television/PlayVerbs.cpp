#include "Television/PlayVerbs.h"

#include "Sender/Plist.h"
#include "Television/Responses.h"

#include <QUrlQuery>

using namespace Qt::StringLiterals;

namespace velmora::test {

namespace {

using Movie = std::expected<SimulatedPlayer::Movie, QString>;

constexpr qsizetype uuidLength = 36;

/// Receivers read integers as zero.
bool isRealOrAbsent(const QVariantMap& body, const QString& key) {
    return !body.contains(key) || body.value(key).typeId() == QMetaType::Double;
}

Movie fromPlist(const QByteArray& bytes) {
    if (!bytes.startsWith("bplist00")) return std::unexpected(u"not a binary property list"_s);
    const auto plist = Plist::decode(bytes);
    if (!plist) return std::unexpected(plist.error());
    const QVariantMap body = plist->toMap();
    SimulatedPlayer::Movie movie;
    movie.url = QUrl(body.value(u"Content-Location"_s).toString(), QUrl::StrictMode);
    movie.uuid = body.value(u"uuid"_s).toString();
    if (movie.uuid.size() != uuidLength) return std::unexpected(u"no uuid of 36 characters"_s);
    for (const QString& key : {u"Start-Position"_s, u"Start-Position-Seconds"_s})
        if (!isRealOrAbsent(body, key)) return std::unexpected(key + u" is not a real number"_s);
    movie.startFraction = body.value(u"Start-Position"_s, 0.0).toDouble();
    movie.startSeconds = body.value(u"Start-Position-Seconds"_s, -1.0).toDouble();
    if (movie.startFraction < 0 || movie.startFraction > 1)
        return std::unexpected(u"Start-Position is not a share of the movie"_s);
    return movie;
}

Movie fromText(const QByteArray& body) {
    SimulatedPlayer::Movie movie;
    movie.startSeconds = -1;
    for (const QByteArray& line : body.split('\n')) {
        if (line.endsWith('\r')) return std::unexpected(u"lines that end in CR LF"_s);
        const QByteArray value = line.mid(line.indexOf(": ") + 2);
        if (line.startsWith("Content-Location: "))
            movie.url = QUrl(QString::fromLatin1(value), QUrl::StrictMode);
        if (line.startsWith("Start-Position: ")) movie.startFraction = value.toDouble();
    }
    return movie;
}

/// The movie that `/play` names, or what is wrong with the request: as strict as the strictest receiver.
Movie readPlayRequest(const Request& request) {
    const QByteArray type = request.headers.value("Content-Type");
    Movie movie = std::unexpected(u"a body of another type"_s);
    if (type == "application/x-apple-binary-plist") movie = fromPlist(request.body);
    if (type == "text/parameters") movie = fromText(request.body);
    if (movie && !(movie->url.isValid() && !movie->url.isRelative()))
        return std::unexpected(u"no address of a movie"_s);
    return movie;
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

}  // namespace

const QList<PlayVerbs::Route> PlayVerbs::routes{
    {"GET", "/server-info", &PlayVerbs::serverInfo},
    {"POST", "/play", &PlayVerbs::play},
    {"POST", "/rate", &PlayVerbs::rate},
    {"POST", "/scrub", &PlayVerbs::scrub},
    {"GET", "/playback-info", &PlayVerbs::playbackInfo},
    {"POST", "/stop", &PlayVerbs::stop},
    {"PUT", "/setProperty", &PlayVerbs::setProperty},
    {"POST", "/feedback", &PlayVerbs::feedback},
};

Response PlayVerbs::answer(const QObject* asker, const Request& request) {
    for (const Route& route : routes)
        if (request.method == route.method && request.path() == route.path)
            return (this->*route.verb)(asker, request);
    return response(501);
}

void PlayVerbs::leave(const QObject* asker) {
    if (playing_ != asker) return;
    playing_ = nullptr;
    context_.player.stop();
}

Response PlayVerbs::serverInfo(const QObject* /*asker*/, const Request& /*request*/) {
    return xmlResponse({{u"deviceid"_s, deviceIdentifier(context_.options)},
                        {u"features"_s, qlonglong(features(context_.options))},
                        {u"model"_s, context_.options.model},
                        {u"protovers"_s, u"1.0"_s},
                        {u"srcvers"_s, sourceVersion(context_.options)}});
}

Response PlayVerbs::play(const QObject* asker, const Request& request) {
    auto movie = readPlayRequest(request);
    if (!movie) return refuse(u"/play: "_s + movie.error());
    if (context_.does(Misbehaviour::isBusy)) return response(453);
    if (failures_++ < int(context_.numberOf(Misbehaviour::failsPlay))) return response(500);
    playing_ = asker;
    Q_EMIT taken();
    movie->paused = context_.options.isEncrypted();  // until it is told a rate
    if (!context_.does(Misbehaviour::ignoresPlay)) context_.player.load(*movie);
    return {};
}

Response PlayVerbs::rate(const QObject* /*asker*/, const Request& request) {
    const std::optional<double> value = numberIn(request, u"value"_s);
    if (!value) return refuse(u"/rate without a number"_s);
    context_.player.setRate(*value);
    return {};
}

Response PlayVerbs::scrub(const QObject* /*asker*/, const Request& request) {
    const std::optional<double> position = numberIn(request, u"position"_s);
    if (!position || *position < 0) return refuse(u"/scrub without a position"_s);
    context_.player.seek(*position);
    return {};
}

Response PlayVerbs::playbackInfo(const QObject* /*asker*/, const Request& /*request*/) {
    const SimulatedPlayer& player = context_.player;
    if (!player.isReady()) return xmlResponse({{u"readyToPlay"_s, false}});
    const QVariantMap info{{u"readyToPlay"_s, true},
                           {u"uuid"_s, player.movie().uuid},
                           {u"duration"_s, player.duration()},
                           {u"position"_s, player.reportedPosition()},
                           {u"rate"_s, player.rate()},
                           {u"playbackBufferEmpty"_s, false},
                           {u"playbackBufferFull"_s, false},
                           {u"playbackLikelyToKeepUp"_s, true},
                           {u"loadedTimeRanges"_s, range(player.position(), player.duration())},
                           {u"seekableTimeRanges"_s, range(0, player.duration())}};
    return context_.options.isEncrypted() ? binaryResponse(info) : xmlResponse(info);
}

Response PlayVerbs::setProperty(const QObject* /*asker*/, const Request& request) {
    if (!context_.options.isEncrypted()) return response(404);
    const auto body = Plist::decode(request.body);
    if (!body || !body->toMap().contains(u"value"_s)) return refuse(u"/setProperty without a value"_s);
    return binaryResponse({{u"errorCode"_s, 0}});
}

Response PlayVerbs::stop(const QObject* asker, const Request& /*request*/) {
    if (playing_ && playing_ != asker && !context_.options.isEncrypted())
        context_.complain(u"/stop from another connection than the one with /play"_s);
    context_.player.stop();
    return {};
}

/// A heartbeat, on receivers between the plain and the encrypted ones.
Response PlayVerbs::feedback(const QObject* /*asker*/, const Request& /*request*/) {
    return response(context_.options.isLegacy() ? 200 : 501);
}

Response PlayVerbs::refuse(const QString& reason) {
    context_.complain(reason);
    return response(400);
}

}  // namespace velmora::test
