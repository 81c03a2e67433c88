#include "Sender/Session/SessionEvent.h"

#include "Sender/MediaTime.h"

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

using State = PlaybackEvent::State;

// Receivers put some things at the top, some of them one level deeper.
QVariant found(const QList<QVariantMap>& places, const QString& key) {
    for (const QVariantMap& place : places)
        if (place.contains(key)) return place.value(key);
    return {};
}

State stateNamed(const QString& name) {
    const auto event = PlaybackEvent::fromPlist(QVariantMap{{u"state"_s, name}});
    return event ? event->state : State::other;
}

QString stateIn(const QList<QVariantMap>& places) {
    for (const QString& key : {u"name"_s, u"playbackState"_s, u"state"_s}) {
        const QString name = found(places, key).toString();
        if (!name.isEmpty()) return name;
    }
    return {};
}

void readState(SessionEvent& result, const QString& type, const QList<QVariantMap>& places) {
    const QString name = found(places, u"name"_s).toString();
    const QString value = found(places, u"value"_s).toString();
    if (type == "notification"_L1) {
        const bool isEnd = name == "itemPlayedToEnd"_L1;
        result.event.state = isEnd ? State::stopped : State::other;
        if (isEnd) result.event.reason = u"ended"_s;
    } else if (type == "sendMediaRemoteCommand"_L1) {
        // The Back key of a television whose player leaves only when the sender stops.
        const bool isBack = value == "pbal"_L1;
        result.event.state = isBack ? State::stopped : State::other;
        if (isBack) result.event.reason = u"interrupted"_s;
    } else {
        result.event.state = stateNamed(stateIn(places));
    }
}

}  // namespace

std::optional<SessionEvent> SessionEvent::fromPlist(const QVariantMap& message) {
    const QString type = message.value(u"type"_s).toString();
    static const QStringList known{u"playbackState"_s, u"notification"_s, u"playbackInfo"_s,
                                   u"seek"_s,          u"error"_s,        u"sendMediaRemoteCommand"_s};
    const bool isPlain = type.isEmpty() && message.contains(u"state"_s);  // as on older receivers
    if (!isPlain && !known.contains(type)) return std::nullopt;
    const auto event = PlaybackEvent::fromPlist(message);
    if (!event) return std::nullopt;

    const QList<QVariantMap> places{message, message.value(u"params"_s).toMap(),
                                    message.value(u"info"_s).toMap()};
    SessionEvent result{.event = *event,
                        .isAnswer = message.value(u"kind"_s) == u"response"_s,
                        .position = MediaTime::fromPlist(found(places, u"position"_s)),
                        .duration = MediaTime::fromPlist(found(places, u"duration"_s)),
                        .rate = MediaTime::fromPlist(found(places, u"rate"_s)),
                        .isReady = found(places, u"readyToPlay"_s).toBool()};
    // One that could not be answered tells of no fault of the movie.
    if (result.isAnswer) result.event.fault.reset();
    const QString item = found(places, u"item"_s).toMap().value(u"uuid"_s).toString();
    if (!item.isEmpty()) result.event.uuid = item;
    if (result.event.reason.isEmpty()) result.event.reason = found(places, u"reason"_s).toString();
    readState(result, type, places);
    return result;
}

}  // namespace velmora
