#include "Playback/BackgroundServices.h"

#include "Artwork/Poster.h"
#include "Artwork/Thumbnails.h"

using namespace Qt::StringLiterals;

namespace velmora {

Job BackgroundPreparer::prepare(const QUrl& movie, bool forceTranscode,
                                std::function<void(const Preparer::Update&)> updated,
                                std::function<void(const Outcome&)> finished) {
    const auto work = [movie, forceTranscode, updated = std::move(updated), finished = std::move(finished)](
                          const std::stop_token& stop, const BackgroundWork::Post& post) {
        const auto onUpdate = [&](const Preparer::Update& update) {
            post([updated, update] { updated(update); });
        };
        const Outcome outcome = Preparer().prepare(movie, forceTranscode, onUpdate, stop);
        post([finished, outcome] { finished(outcome); });
    };
    return work_.start(u"prepare:"_s + movie.toLocalFile(), work);
}

QImage BackgroundArtwork::poster(const QUrl& movie) const {
    return QImage(Poster::url(movie).toLocalFile());
}

Job BackgroundArtwork::capturePoster(const QUrl& movie, std::optional<double> time,
                                     std::function<void(const QImage& poster)> finished) {
    const auto work = [movie, time, finished = std::move(finished)](const std::stop_token& stop,
                                                                    const BackgroundWork::Post& post) {
        const bool isCaptured = Poster::captureFromSource(movie, time, stop);
        const QImage poster = isCaptured ? QImage(Poster::url(movie).toLocalFile()) : QImage();
        post([finished, poster] { finished(poster); });
    };
    return work_.start(u"poster:"_s + movie.toLocalFile(), work);
}

std::shared_ptr<Thumbnails> BackgroundArtwork::storedThumbnails(const QUrl& movie) const {
    return Thumbnails::stored(movie);
}

Job BackgroundArtwork::makeThumbnails(
    const QUrl& movie, std::function<void(const std::shared_ptr<Thumbnails>& strip)> finished) {
    const auto work = [movie, finished = std::move(finished)](const std::stop_token& stop,
                                                              const BackgroundWork::Post& post) {
        const std::shared_ptr<Thumbnails> strip = Thumbnails::generate(movie, stop);
        post([finished, strip] { finished(strip); });
    };
    return work_.start(u"thumbnails:"_s + movie.toLocalFile(), work);
}

}  // namespace velmora
