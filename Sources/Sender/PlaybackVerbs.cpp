#include "Sender/PlaybackVerbs.h"

#include "Sender/Plist.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace velmora::PlaybackVerbs {

namespace {

double fractionOf(const VideoControl::Movie& movie) {
    return movie.duration > 0 ? std::min(1.0, movie.start / movie.duration) : 0;
}

}  // namespace

QByteArray decimal(double number) {
    return QByteArray::number(number, 'f', 6);
}

// Older receivers read the start as a fraction, newer ones in seconds, and only as reals.
QByteArray playBody(const VideoControl::Movie& movie, const QByteArray& session) {
    const QVariantMap body{{u"Content-Location"_s, movie.url.toString(QUrl::FullyEncoded)},
                           {u"Start-Position"_s, fractionOf(movie)},
                           {u"Start-Position-Seconds"_s, movie.start},
                           {u"uuid"_s, movie.uuid},
                           {u"rate"_s, 1.0},
                           {u"mediaType"_s, u"file"_s},
                           {u"streamType"_s, 1},
                           {u"X-Apple-Session-ID"_s, QString::fromLatin1(session)}};
    return Plist::encodeBinary(body);
}

// Lines end in a bare LF: one receiver takes a CR for a part of the address.
QByteArray playText(const VideoControl::Movie& movie) {
    return "Content-Location: " + movie.url.toEncoded() + "\nStart-Position: " + decimal(fractionOf(movie)) +
           "\n";
}

VideoControl::Outcome outcomeOf(const Connection::Answer& answer) {
    if (!answer) return std::unexpected(answer.error());
    if (answer->isSuccess()) return {};
    return std::unexpected(ConnectionError{.kind = ConnectionError::Kind::status,
                                           .status = answer->status,
                                           .detail = QString::fromUtf8(answer->reason)});
}

VideoControl::Reported reportIn(const Connection::Answer& answer) {
    if (!answer) return std::unexpected(answer.error());
    // Nothing to tell: an empty answer, or 500 on an idle Apple TV, or a verb that is not known.
    const bool isEmpty = answer->body.trimmed().isEmpty();
    if (answer->status == 500 || answer->status == 404 || answer->status == 501 ||
        (answer->isSuccess() && isEmpty))
        return PlaybackReport();
    if (const auto outcome = outcomeOf(answer); !outcome) return std::unexpected(outcome.error());
    const auto plist = Plist::decode(answer->body);
    if (plist) return PlaybackReport::fromPlist(*plist);
    return std::unexpected(
        ConnectionError{.kind = ConnectionError::Kind::malformed, .detail = plist.error()});
}

}  // namespace velmora::PlaybackVerbs
