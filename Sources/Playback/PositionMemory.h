#pragma once

#include <QUrl>

#include <optional>

namespace velmora {

class Preferences;

/// Where the user stopped in each movie. Main thread only.
class PositionMemory {
  public:
    explicit PositionMemory(Preferences& preferences) : preferences_(preferences) {}

    /// Notes the position and length (seconds; length 0 when unknown). Within the last minute the movie
    /// counts as finished; in the first ten seconds nothing is noted and an earlier position stays.
    void remember(const QUrl& movie, double position, double duration);

    /// Seconds to resume at; absent when there is nothing worth resuming.
    [[nodiscard]] std::optional<double> savedPosition(const QUrl& movie) const;
    [[nodiscard]] std::optional<double> savedDuration(const QUrl& movie) const;

    /// The next start is from the beginning.
    void forget(const QUrl& movie);

  private:
    Preferences& preferences_;
};

}  // namespace velmora
