#pragma once

#include <QUrl>

#include <optional>

namespace velmora {

class Preferences;

/// What the user saw last, and where they stopped in each movie. Main thread only.
class PositionMemory {
  public:
    struct LastMovie {
        QUrl source;
        std::optional<double> position;  ///< seconds; absent when there is nothing worth resuming
        std::optional<double> duration;  ///< seconds

        friend bool operator==(const LastMovie&, const LastMovie&) = default;
    };

    explicit PositionMemory(Preferences& preferences) : preferences_(preferences) {}

    /// Notes the position and length (seconds; length 0 when unknown). Within the last minute the movie
    /// counts as finished; in the first ten seconds nothing is noted and an earlier position stays.
    void remember(const QUrl& movie, double position, double duration);

    /// Seconds to resume at; absent when there is nothing worth resuming.
    [[nodiscard]] std::optional<double> savedPosition(const QUrl& movie) const;
    [[nodiscard]] std::optional<double> savedDuration(const QUrl& movie) const;

    /// The next start is from the beginning.
    void forget(const QUrl& movie);

    void noteOpened(const QUrl& movie);
    /// The movie opened last; absent when it is no longer there.
    [[nodiscard]] std::optional<LastMovie> lastMovie() const;

    /// Takes over, once, what the product's predecessor stored; what is known here already stays.
    void migrate(const Preferences& earlier);

  private:
    Preferences& preferences_;
};

}  // namespace velmora
