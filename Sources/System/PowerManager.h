#pragma once

#include <QString>

#include <optional>

namespace velmora {

/// Keeps the computer awake. Main thread only; neither operation waits for the system's answer.
class PowerManager {
  public:
    using Assertion = quint32;  ///< never 0

    PowerManager() = default;
    PowerManager(const PowerManager&) = delete;
    PowerManager& operator=(const PowerManager&) = delete;
    virtual ~PowerManager() = default;

    /// From now until `release`, or the end of the process, the computer does not fall asleep because nobody
    /// touches it. The display may go dark. `reason` is shown to whoever asks the system why. Absent when the
    /// system offers no such thing.
    [[nodiscard]] virtual std::optional<Assertion> preventIdleSleep(const QString& reason) = 0;

    /// Without effect for an assertion that is not held, or that the system refused after all.
    virtual void release(Assertion assertion) = 0;
};

}  // namespace velmora
