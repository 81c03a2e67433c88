#pragma once

#include "Playback/BackgroundWork.h"

namespace velmora {

/// `Preparer` on a thread. The work must outlive every job.
class BackgroundPreparer : public MoviePreparer {
  public:
    explicit BackgroundPreparer(BackgroundWork& work) : work_(work) {}

    [[nodiscard]] Job prepare(const QUrl& movie, bool forceTranscode,
                              std::function<void(const Preparer::Update&)> updated,
                              std::function<void(const Outcome&)> finished) override;

  private:
    BackgroundWork& work_;
};

/// `Poster` and `Thumbnails`, the tools they run on threads. The work must outlive every job.
class BackgroundArtwork : public ArtworkMaker {
  public:
    explicit BackgroundArtwork(BackgroundWork& work) : work_(work) {}

    [[nodiscard]] QImage poster(const QUrl& movie) const override;
    [[nodiscard]] Job capturePoster(const QUrl& movie, std::optional<double> time,
                                    std::function<void(const QImage& poster)> finished) override;
    [[nodiscard]] std::shared_ptr<Thumbnails> storedThumbnails(const QUrl& movie) const override;
    [[nodiscard]] Job makeThumbnails(
        const QUrl& movie, std::function<void(const std::shared_ptr<Thumbnails>& strip)> finished) override;

  private:
    BackgroundWork& work_;
};

}  // namespace velmora
