#include "Terminal/SessionParts.h"

#include "Platform/Linux/FileEngine.h"
#include "Playback/Session.h"

namespace velmora {

SessionParts::SessionParts(Clock& clock, Preferences& preferences, Discovery& discovery,
                           const ReceiverMemory& memory)
    : network_(clock, discovery, memory),
      context_(network_.makeContext()),
      players_(clock, {.makeLocal = FileEngine::maker()}),
      world_{.clock = clock,
             .preferences = preferences,
             .earlierPreferences = nullptr,
             .players = players_,
             .power = power_,
             .desktop = desktop_,
             .preparer = preparer_,
             .artwork = artwork_,
             .hasOfferedLastMovie = true} {}

std::unique_ptr<Session> SessionParts::makeSession() {
    return std::make_unique<Session>(world_, context_.get());
}

QImage SessionParts::NoArtwork::poster(const QUrl& /*movie*/) const {
    return {};
}

Job SessionParts::NoArtwork::capturePoster(const QUrl& /*movie*/, std::optional<double> /*time*/,
                                           std::function<void(const QImage&)> /*finished*/) {
    return {};
}

std::shared_ptr<Thumbnails> SessionParts::NoArtwork::storedThumbnails(const QUrl& /*movie*/) const {
    return nullptr;
}

Job SessionParts::NoArtwork::makeThumbnails(
    const QUrl& /*movie*/, std::function<void(const std::shared_ptr<Thumbnails>&)> /*finished*/) {
    return {};
}

}  // namespace velmora
