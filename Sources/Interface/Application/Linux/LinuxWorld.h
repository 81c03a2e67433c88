#pragma once

#include "Interface/Application/ApplicationWorld.h"
#include "Platform/Linux/FreedesktopDesktop.h"
#include "Platform/Linux/LinuxPlayer.h"
#include "Platform/Linux/LoginManager.h"
#include "Platform/Linux/SettingsFile.h"
#include "Platform/Linux/TelevisionNetwork.h"
#include "Playback/BackgroundServices.h"
#include "Playback/World.h"
#include "Sender/CredentialStore.h"
#include "Sender/Discovery/Discovery.h"
#include "Sender/Discovery/KnownReceivers.h"
#include "System/Clock.h"

namespace velmora {

/// The real system beneath the windows. Looks for televisions from the start, so that they are there when the
/// picker opens. Main thread only.
class LinuxWorld : public ApplicationWorld {
  public:
    /// What windows are to be drawn with, before the first of them. OpenGL is what the movie's pictures can
    /// be drawn with. An imitation of it costs more than to draw without it: several times the time to start
    /// and the processor's while a movie plays. Qt's own variables for this overrule it.
    static void chooseGraphics();

    LinuxWorld();

    [[nodiscard]] World& world() override { return world_; }
    [[nodiscard]] std::unique_ptr<WindowWorld> makeWindowWorld() override;
    [[nodiscard]] std::unique_ptr<QQuickItem> makeLivePicture(Player& player) override;

    [[nodiscard]] Preferences& preferences() { return preferences_; }
    /// What shows the dialog for choosing a movie; until then nothing is ever chosen.
    void setMoviePicker(FreedesktopDesktop::MoviePicker picker) { picker_ = std::move(picker); }

  private:
    SystemClock clock_;
    SettingsFile preferences_;
    SettingsFile earlierPreferences_;
    SettingsFile secrets_;
    LoginManager power_;
    FreedesktopDesktop::MoviePicker picker_;
    FreedesktopDesktop desktop_;
    Discovery discovery_;
    KnownReceivers known_;
    CredentialStore credentials_;
    TelevisionNetwork network_;
    LinuxPlayerFactory players_;
    BackgroundWork work_;
    BackgroundPreparer preparer_;
    BackgroundArtwork artwork_;
    World world_;
};

}  // namespace velmora
