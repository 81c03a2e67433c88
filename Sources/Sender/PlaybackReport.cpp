#include "Sender/PlaybackReport.h"

#include <cmath>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

constexpr double longestMovie = 1'000'000;  // seconds; anything beyond is not a time

std::optional<double> seconds(const QVariant& value) {
    bool isNumber = false;
    const double number = value.toDouble(&isNumber);
    if (!isNumber || !std::isfinite(number) || std::abs(number) > longestMovie) return std::nullopt;
    return number;
}

// Newer receivers tell times as a fraction.
std::optional<double> secondsOfFraction(const QVariantMap& time) {
    const double scale = time.value(u"timescale"_s).toDouble();
    const bool isValid = (time.value(u"flags"_s).toLongLong() & 1) != 0 && scale > 0;
    return isValid ? seconds(time.value(u"value"_s).toDouble() / scale) : std::nullopt;
}

double time(const QVariantMap& map, const QString& key) {
    if (const auto plain = seconds(map.value(key))) return *plain;
    return secondsOfFraction(map.value(key + u"CMTime"_s).toMap()).value_or(0);
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
            .rate = seconds(map.value(u"rate"_s)),
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
