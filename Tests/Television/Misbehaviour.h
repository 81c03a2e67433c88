#pragma once

#include <QMap>
#include <QString>

#include <expected>
#include <utility>

namespace velmora::test {

/// What a receiver gets wrong on demand. Each comes with a number: seconds, or how often.
enum class Misbehaviour {
    neverFetches,
    ignoresPlay,
    failsPlay,
    drops,
    goesSilent,
    startsAtZero,
    pausesItself,
    isStoppedThere,
    liesInEvents,
    jumpsBack,
    endsLinesBare,
    omitsLengths,
    hidesDuration,
    wantsPin,
    doubtsPin,
    restricted,
    isBusy,
    isTakenOver,
    refusesPtp,
    refusesNtp,
    opensEventsLate,
    hidesInfo,
    asksConsent,
    mutesRemote,
    sleeps,
    ends,
};

using Misbehaviours = QMap<Misbehaviour, double>;

/// Reads `KIND` or `KIND=NUMBER`; fails with the reason.
[[nodiscard]] std::expected<std::pair<Misbehaviour, double>, QString> readMisbehaviour(const QString& text);

/// One line a kind.
[[nodiscard]] QString misbehaviourHelp();

}  // namespace velmora::test
