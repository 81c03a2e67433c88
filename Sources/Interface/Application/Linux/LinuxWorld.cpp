#include "Interface/Application/Linux/LinuxWorld.h"

#include "Interface/Application/Linux/LivePicture.h"
#include "Interface/Application/Linux/NetworkTelevisions.h"
#include "Platform/Linux/Graphics.h"
#include "Platform/Linux/MpvPlayer.h"
#include "Platform/Linux/NetworkOutputContext.h"

#include <QQuickWindow>

#include <utility>

namespace velmora {

using namespace Qt::StringLiterals;

namespace {

class LinuxWindow : public WindowWorld {
  public:
    LinuxWindow(Clock& clock, Discovery& discovery, TelevisionNetwork& network, const ReceiverMemory& memory)
        : context_(network.makeContext()), televisions_(clock, discovery, *context_, memory) {}

    [[nodiscard]] OutputContext* outputContext() override { return context_.get(); }
    [[nodiscard]] Televisions& televisions() override { return televisions_; }
    void finish(std::function<void()> done) override { context_->output().finish(std::move(done)); }

  private:
    std::unique_ptr<NetworkOutputContext> context_;
    NetworkTelevisions televisions_;
};

}  // namespace

void LinuxWorld::chooseGraphics() {
    const bool isChosen =
        qEnvironmentVariableIsSet("QT_QUICK_BACKEND") || qEnvironmentVariableIsSet("QSG_RHI_BACKEND");
    QQuickWindow::setGraphicsApi(isChosen || Graphics::hasProcessor() ? QSGRendererInterface::OpenGL
                                                                      : QSGRendererInterface::Software);
}

LinuxWorld::LinuxWorld()
    : preferences_(u"com.quillet.velmora"_s),
      earlierPreferences_(u"com.quillet.orvane"_s),
      secrets_(u"com.quillet.velmora.secrets"_s),
      desktop_([this](const Desktop::MovieDialog& dialog, Desktop::Picked picked) {
          if (picker_) picker_(dialog, std::move(picked));
      }),
      discovery_(clock_),
      known_(preferences_),
      credentials_(clock_, secrets_),
      network_(clock_, discovery_, {&credentials_, &known_}),
      players_(clock_,
               {.makeLocal = MpvPlayer::maker({}), .lightDisplay = [this] { return power_.lightDisplay(); }}),
      preparer_(work_),
      artwork_(work_),
      world_{.clock = clock_,
             .preferences = preferences_,
             .earlierPreferences = &earlierPreferences_,
             .players = players_,
             .power = power_,
             .desktop = desktop_,
             .preparer = preparer_,
             .artwork = artwork_} {
    discovery_.start();
}

std::unique_ptr<WindowWorld> LinuxWorld::makeWindowWorld() {
    return std::make_unique<LinuxWindow>(clock_, discovery_, network_,
                                         ReceiverMemory{&credentials_, &known_});
}

std::unique_ptr<QQuickItem> LinuxWorld::makeLivePicture(Player& player) {
    auto* const local = dynamic_cast<LinuxPlayer*>(&player);
    auto* const mpv = local ? dynamic_cast<MpvPlayer*>(&local->local()) : nullptr;
    return mpv ? std::make_unique<LivePicture>(*mpv) : nullptr;
}

}  // namespace velmora
