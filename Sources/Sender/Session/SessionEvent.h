#pragma once

#include "Sender/PlaybackReport.h"

#include <QVariantMap>

#include <optional>

namespace velmora {

/// What a receiver says of its player on the event channel of a session, by itself or as an answer.
struct SessionEvent {
    PlaybackEvent event{};  ///< what the others' watch hears of it; `State::other` when only figures changed
    bool isAnswer = false;  ///< to a question of ours; no news of itself
    std::optional<double> position{};  ///< seconds
    std::optional<double> duration{};  ///< seconds
    std::optional<double> rate{};
    bool isReady = false;

    /// From a message without its envelope; nothing when it is not about the player.
    [[nodiscard]] static std::optional<SessionEvent> fromPlist(const QVariantMap& message);
};

}  // namespace velmora
