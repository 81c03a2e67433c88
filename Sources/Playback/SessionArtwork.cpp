// The movie's poster and the pictures of its timeline.
#include "Playback/Session.h"

namespace velmora {

void Session::capturePoster(std::optional<double> time) {
    const auto* playback = phase_.ready();
    if (!playback || posterJob_.isRunning() || handingOverTo_) return;
    const QUrl movie = playback->source;
    const auto finished = [this, movie](const QImage& poster) {
        posterJob_ = {};
        const auto* current = phase_.ready();
        if (!poster.isNull() && current && current->source == movie) setPoster(poster);
    };
    posterJob_ = world_.artwork.capturePoster(movie, time, finished);
}

void Session::captureEarlyPoster(const QUrl& movie) {
    const auto finished = [this, movie](const QImage& poster) {
        earlyPosterJob_ = {};
        // One that has come meanwhile is newer.
        if (!poster.isNull() && currentSource() == movie && poster_.isNull()) setPoster(poster);
    };
    earlyPosterJob_ = world_.artwork.capturePoster(movie, memory_.savedPosition(movie), finished);
}

void Session::loadThumbnails(const QUrl& movie) {
    thumbnailJob_ = {};
    showThumbnails(world_.artwork.storedThumbnails(movie));
    if (thumbnails_) return;
    const auto finished = [this, movie](const std::shared_ptr<Thumbnails>& strip) {
        thumbnailJob_ = {};
        if (currentSource() == movie) showThumbnails(strip);
    };
    thumbnailJob_ = world_.artwork.makeThumbnails(movie, finished);
}

void Session::showPoster(const std::optional<QUrl>& movie) {
    setPoster(movie ? world_.artwork.poster(*movie) : QImage());
}

void Session::setPoster(const QImage& poster) {
    poster_ = poster;
    Q_EMIT artworkChanged();
}

void Session::showThumbnails(const std::shared_ptr<Thumbnails>& strip) {
    thumbnails_ = strip;
    Q_EMIT artworkChanged();
}

void Session::setScrubPreview(const QImage& preview) {
    scrubPreview_ = preview;
    Q_EMIT artworkChanged();
}

}  // namespace velmora
