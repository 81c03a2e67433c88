#include "Television/Session/QueueRequest.h"

#include "Sender/Plist.h"
#include "Television/RequestRules.h"

#include <QUrl>

#include <cmath>

using namespace Qt::StringLiterals;

namespace velmora::test {

namespace {

constexpr int timescale = 1000;
constexpr int valid = 1;

auto wrong(const QString& reason) {
    return std::unexpected(reason);
}

}  // namespace

std::expected<QVariantMap, QString> readCommand(const Request& request) {
    if (request.headers.value("X-Apple-StreamID").toInt() != queueStream)
        return wrong(u"/command for another stream"_s);
    if (request.headers.value("X-Apple-ProtocolVersion") != "1")
        return wrong(u"/command of another protocol version"_s);
    const QVariantMap body = Plist::decode(request.body).value_or(QVariant()).toMap();
    const QVariantMap params = body.value(u"params"_s).toMap();
    const QVariant data = params.value(u"data"_s);
    if (body.size() != 1 || params.size() != 1 || data.typeId() != QMetaType::QByteArray)
        return wrong(u"/command without its envelope"_s);
    if (!data.toByteArray().startsWith("bplist00")) return wrong(u"/command around no property list"_s);
    const auto inner = Plist::decode(data.toByteArray());
    if (!inner || inner->toMap().value(u"type"_s).toString().isEmpty())
        return wrong(u"/command without a type"_s);
    return inner->toMap();
}

std::expected<SimulatedPlayer::Movie, QString> readItem(const QVariantMap& item, const QHostAddress& sender) {
    SimulatedPlayer::Movie movie;
    movie.uuid = item.value(u"uuid"_s).toString();
    movie.url = QUrl(item.value(u"Content-Location"_s).toString(), QUrl::StrictMode);
    if (!isUpperUuid(movie.uuid)) return wrong(u"an item without a uuid in upper case"_s);
    const QString type = item.value(u"mediaType"_s).toString();
    if (type != "file"_L1 && type != "streaming"_L1) return wrong(u"an item of another media type"_s);
    if (movie.url.scheme() != "http"_L1 || QHostAddress(movie.url.host()) != sender)
        return wrong(u"an item that is not at the sender's own address"_s);
    const QVariant seconds = item.value(u"Start-Position-Seconds"_s, 0.0);
    if (seconds.typeId() != QMetaType::Double) return wrong(u"Start-Position-Seconds that is not real"_s);
    movie.startSeconds = seconds.toDouble();
    if (!item.contains(u"Start-Position"_s)) return movie;
    const auto start = readTime(item.value(u"Start-Position"_s));
    if (!start) return wrong(u"Start-Position that is no time"_s);
    movie.startSeconds = *start;
    return movie;
}

QVariantMap timeFrom(double seconds) {
    return {{u"value"_s, qlonglong(std::llround(seconds * timescale))},
            {u"timescale"_s, timescale},
            {u"flags"_s, valid},
            {u"epoch"_s, 0}};
}

std::optional<double> readTime(const QVariant& time) {
    const QVariantMap map = time.toMap();
    for (const QString& key : {u"value"_s, u"timescale"_s, u"flags"_s, u"epoch"_s})
        if (map.value(key).typeId() != QMetaType::LongLong) return std::nullopt;
    const double scale = map.value(u"timescale"_s).toDouble();
    if (scale <= 0 || map.value(u"flags"_s).toInt() != valid || map.value(u"epoch"_s).toInt() != 0)
        return std::nullopt;
    return map.value(u"value"_s).toDouble() / scale;
}

}  // namespace velmora::test
