#include "Television/PlayRequest.h"

#include "Sender/Plist.h"

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

}  // namespace

Movie readPlayRequest(const Request& request) {
    const QByteArray type = request.headers.value("Content-Type");
    Movie movie = std::unexpected(u"a body of another type"_s);
    if (type == "application/x-apple-binary-plist") movie = fromPlist(request.body);
    if (type == "text/parameters") movie = fromText(request.body);
    if (movie && !(movie->url.isValid() && !movie->url.isRelative()))
        return std::unexpected(u"no address of a movie"_s);
    return movie;
}

}  // namespace velmora::test
