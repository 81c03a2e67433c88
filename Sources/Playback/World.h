#pragma once

#include "Companions/Language.h"
#include "Preparation/Preparer.h"

#include <QImage>
#include <QStringList>
#include <QUrl>

#include <expected>
#include <functional>
#include <memory>
#include <optional>

namespace velmora {

class Clock;
class Desktop;
class PlayerFactory;
class PowerManager;
class Preferences;
class Thumbnails;

/// Work that goes on elsewhere. Destroying it, or assigning another, asks the work to end, and nothing of it
/// is heard any more.
class Job {
  public:
    Job() = default;
    explicit Job(std::shared_ptr<void> keepAlive) : keepAlive_(std::move(keepAlive)) {}
    [[nodiscard]] bool isRunning() const { return keepAlive_ != nullptr; }

  private:
    std::shared_ptr<void> keepAlive_;
};

/// Prepares movies off the main thread. Called, and calling back, on the main thread, never from inside a
/// call.
class MoviePreparer {
  public:
    using Outcome = std::expected<Preparer::Result, PrepareError>;

    MoviePreparer() = default;
    MoviePreparer(const MoviePreparer&) = delete;
    MoviePreparer& operator=(const MoviePreparer&) = delete;
    virtual ~MoviePreparer() = default;

    [[nodiscard]] virtual Job prepare(const QUrl& movie, bool forceTranscode,
                                      std::function<void(const Preparer::Update&)> updated,
                                      std::function<void(const Outcome&)> finished) = 0;
};

/// Posters and timeline strips, cached per movie; the slow part off the main thread. Called, and calling
/// back, on the main thread, never from inside a call. Nothing fails: what there is not is null.
class ArtworkMaker {
  public:
    ArtworkMaker() = default;
    ArtworkMaker(const ArtworkMaker&) = delete;
    ArtworkMaker& operator=(const ArtworkMaker&) = delete;
    virtual ~ArtworkMaker() = default;

    /// The poster in the cache.
    [[nodiscard]] virtual QImage poster(const QUrl& movie) const = 0;
    /// Takes the frame at `time` (seconds; absent: whichever seems good) for the cached poster, which comes
    /// decoded; null when there is no new one.
    [[nodiscard]] virtual Job capturePoster(const QUrl& movie, std::optional<double> time,
                                            std::function<void(const QImage& poster)> finished) = 0;

    /// The strip in the cache.
    [[nodiscard]] virtual std::shared_ptr<Thumbnails> storedThumbnails(const QUrl& movie) const = 0;
    [[nodiscard]] virtual Job makeThumbnails(
        const QUrl& movie, std::function<void(const std::shared_ptr<Thumbnails>& strip)> finished) = 0;
};

/// What the sessions of a process need of the rest of the program. Everything here outlives them.
struct World {
    Clock& clock;
    Preferences& preferences;
    Preferences* earlierPreferences;  ///< of the product's predecessor, taken over once; may be null
    PlayerFactory& players;
    PowerManager& power;
    Desktop& desktop;
    MoviePreparer& preparer;
    ArtworkMaker& artwork;

    std::function<QStringList()> preferredLanguages = Language::preferred;

    /// Only the first window offers to go on with the last movie.
    bool hasOfferedLastMovie = false;
};

}  // namespace velmora
