#include "Sender/PlaybackReport.h"

#include "Sender/MediaTime.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

double time(const QVariantMap& map, const QString& key) {
    if (const auto plain = MediaTime::fromPlist(map.value(key))) return *plain;
    return MediaTime::fromPlist(map.value(key + u"CMTime"_s)).value_or(0);
}

std::optional<PlaybackFault> faultIn(const QVariantMap& map) {
    const QVariantMap error = map.value(u"error"_s).toMap();
    if (error.isEmpty()) return std::nullopt;
    return PlaybackFault{error.value(u"code"_s).toLongLong(), error.value(u"domain"_s).toString()};
}

PlaybackEvent::State stateNamed(const QString& name) {
    using State = PlaybackEvent::State;
    if (name == "loading"_L1) return State::loading;
    if (name == "playing"_L1) return State::playing;
    if (name == "paused"_L1) return State::paused;
    if (name == "stopped"_L1) return State::stopped;
    return State::other;
}

}  // namespace

PlaybackReport PlaybackReport::fromPlist(const QVariant& plist) {
    const QVariantMap map = plist.toMap();
    return {.isReady = map.value(u"readyToPlay"_s).toBool(),
            .position = time(map, u"position"_s),
            .duration = std::max(0.0, time(map, u"duration"_s)),
            .rate = MediaTime::fromPlist(map.value(u"rate"_s)),
            .uuid = map.value(u"uuid"_s).toString(),
            .fault = faultIn(map)};
}

std::optional<PlaybackEvent> PlaybackEvent::fromPlist(const QVariant& plist) {
    const QVariantMap map = plist.toMap();
    const QString category = map.value(u"category"_s, u"video"_s).toString();
    if (map.isEmpty() || category != "video"_L1) return std::nullopt;
    const QVariantMap params = map.value(u"params"_s).toMap();
    const QVariant uuid = map.value(u"uuid"_s, params.value(u"uuid"_s));
    return PlaybackEvent{.state = stateNamed(map.value(u"state"_s).toString()),
                         .reason = map.value(u"reason"_s).toString(),
                         .uuid = uuid.toString(),
                         .fault = faultIn(map)};
}

}  // namespace velmora
