#pragma once

#include "System/PowerManager.h"

namespace velmora {

/// Keeps the computer from falling asleep while a movie plays: whoever watches a television touches nothing
/// here. Main thread only.
///
/// Destroying an active guard leaves the computer awake until the process ends.
class SleepGuard {
  public:
    /// The power manager must outlive it.
    explicit SleepGuard(PowerManager& power) : power_(power) {}

    [[nodiscard]] bool isActive() const { return isActive_; }
    void setActive(bool on);

  private:
    PowerManager& power_;
    std::optional<PowerManager::Assertion> assertion_;
    bool isActive_ = false;
};

}  // namespace velmora
