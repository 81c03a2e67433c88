#pragma once

#include "Platform/Linux/FreedesktopDesktop.h"
#include "Platform/Linux/LinuxPlayer.h"
#include "Platform/Linux/LoginManager.h"
#include "Platform/Linux/TelevisionNetwork.h"
#include "Playback/BackgroundServices.h"
#include "Playback/World.h"

#include <memory>

namespace velmora {

class Discovery;
class Session;

/// What a session is put together of where there is no window: no pictures are made, and nothing is shown or
/// heard on this computer. Main thread; outlives its sessions.
class SessionParts {
  public:
    /// All of these must outlive it.
    SessionParts(Clock& clock, Preferences& preferences, Discovery& discovery, const ReceiverMemory& memory);

    [[nodiscard]] std::unique_ptr<Session> makeSession();

    [[nodiscard]] TelevisionNetwork& network() { return network_; }
    [[nodiscard]] NetworkOutputContext& context() { return *context_; }

  private:
    class NoArtwork : public ArtworkMaker {
      public:
        [[nodiscard]] QImage poster(const QUrl& movie) const override;
        [[nodiscard]] Job capturePoster(const QUrl& movie, std::optional<double> time,
                                        std::function<void(const QImage& poster)> finished) override;
        [[nodiscard]] std::shared_ptr<Thumbnails> storedThumbnails(const QUrl& movie) const override;
        [[nodiscard]] Job makeThumbnails(
            const QUrl& movie,
            std::function<void(const std::shared_ptr<Thumbnails>& strip)> finished) override;
    };

    TelevisionNetwork network_;
    std::unique_ptr<NetworkOutputContext> context_;
    LinuxPlayerFactory players_;
    LoginManager power_;
    FreedesktopDesktop desktop_;
    BackgroundWork work_;
    BackgroundPreparer preparer_{work_};
    NoArtwork artwork_;
    World world_;
};

}  // namespace velmora
