#include "Sender/Session/QueueCommands.h"

#include "Sender/MediaTime.h"

using namespace Qt::StringLiterals;

namespace velmora::QueueCommands {

namespace {

QVariantMap itemNamed(const QString& uuid) {
    return {{u"uuid"_s, uuid}};
}

QVariantMap question(const QString& type, int number) {
    return {{u"type"_s, type}, {u"kind"_s, u"request"_s}, {u"messageID"_s, number}};
}

}  // namespace

QVariantMap insert(const VideoControl::Movie& movie, bool asFraction) {
    QVariantMap item = itemNamed(movie.uuid);
    item.insert(u"mediaType"_s, u"file"_s);
    item.insert(u"Content-Location"_s, movie.url.toString(QUrl::FullyEncoded));
    item.insert(u"Start-Position-Seconds"_s, movie.start);
    if (asFraction) item.insert(u"Start-Position"_s, MediaTime::toFraction(movie.start));
    return {{u"type"_s, u"insertPlayQueueItem"_s}, {u"item"_s, item}};
}

QVariantMap interestInDates(const QString& uuid) {
    return {{u"type"_s, u"setProperty"_s},
            {u"property"_s, u"isInterestedInDateRange"_s},
            {u"value"_s, true},
            {u"item"_s, itemNamed(uuid)}};
}

QVariantMap pauseAtEnd() {
    return {{u"type"_s, u"setProperty"_s}, {u"property"_s, u"actionAtItemEnd"_s}, {u"value"_s, 1}};
}

QVariantMap setRate(double rate) {
    return {{u"type"_s, u"setRate"_s}, {u"rate"_s, rate}};
}

QVariantMap seek(double seconds, const QString& uuid, int number) {
    QVariantMap command = question(u"seek"_s, number);
    command.insert(u"item"_s, itemNamed(uuid));
    command.insert(u"time"_s, MediaTime::toFraction(seconds));
    command.insert(u"toleranceBefore"_s, MediaTime::toFraction(0));
    command.insert(u"toleranceAfter"_s, MediaTime::toFraction(0));
    return command;
}

QVariantMap playbackInfo(int number) {
    return question(u"playbackInfo"_s, number);
}

QVariantMap stop() {
    return {{u"type"_s, u"stop"_s}};
}

}  // namespace velmora::QueueCommands
