#pragma once

#include "Playback/SessionPhase.h"
#include "System/Clock.h"

#include <QString>

#include <optional>

namespace velmora {

/// Notices when a preparation ends that took so long that the user went to do something else. Pure but for
/// what it remembers; main thread only.
class PreparationWatch {
  public:
    struct Message {
        QString summary;
        QString body;

        friend bool operator==(const Message&, const Message&) = default;
    };

    /// A shorter preparation is not worth a message.
    static constexpr Clock::Duration longPreparation = std::chrono::seconds(20);

    /// To be told of each phase. The message for the user, if this one deserves it.
    [[nodiscard]] std::optional<Message> note(const SessionPhase& phase, Clock::Instant now, bool isInFront);

  private:
    std::optional<QUrl> source_;  ///< of the preparation under way
    Clock::Instant began_{};
};

}  // namespace velmora
