#pragma once

#include <QString>
#include <QVariant>

#include <optional>

namespace velmora {

/// What a receiver's player says went wrong.
struct PlaybackFault {
    qint64 code = 0;
    QString domain;
};

/// One answer to the question what is playing. Every receiver leaves out something.
struct PlaybackReport {
    bool isReady = false;
    double position = 0;           ///< seconds; may be below zero at the beginning
    double duration = 0;           ///< seconds; 0 when not told
    std::optional<double> rate{};  ///< 0 while paused or stalled; one receiver says 1 while paused
    QString uuid{};                ///< of the movie that it is about; empty when not told
    std::optional<PlaybackFault> fault{};

    /// From the property list of `/playback-info`; anything unknown or absurd in it is left out.
    [[nodiscard]] static PlaybackReport fromPlist(const QVariant& plist);
};

/// What a receiver announces by itself about its player. Said in the wrong order at times, and "playing" is
/// said of movies that never start.
struct PlaybackEvent {
    enum class State { loading, playing, paused, stopped, other };

    State state = State::other;
    QString reason{};  ///< with `stopped`: "ended", "interrupted", …; often empty
    QString uuid{};    ///< of the movie that it is about; empty when not told
    std::optional<PlaybackFault> fault{};

    /// From the property list of an event; nothing when it is not about video.
    [[nodiscard]] static std::optional<PlaybackEvent> fromPlist(const QVariant& plist);
};

}  // namespace velmora
