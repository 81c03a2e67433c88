#pragma once

#include "Platform/Linux/FreedesktopDesktop.h"
#include "Platform/Linux/LinuxPlayer.h"
#include "Platform/Linux/LoginManager.h"
#include "Platform/Linux/MpvPlayer.h"
#include "Platform/Linux/SettingsFile.h"
#include "Platform/Linux/TelevisionNetwork.h"
#include "Playback/BackgroundServices.h"
#include "Playback/Session.h"
#include "Sender/Discovery/Discovery.h"
#include "Sender/Discovery/KnownReceivers.h"
#include "Sender/SettingsVault.h"
#include "Support/VirtualClock.h"
#include "Television/Television.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace velmora::test {

/// What the windows of a process share; every part is the real one, and time runs five times faster.
class Process {
    static constexpr auto none = "none";

  public:
    FastClock clock{5};
    Discovery discovery{clock};
    SettingsFile settings{QStringLiteral("window-story")};
    SettingsFile secrets{QStringLiteral("window-story.secrets")};
    KnownReceivers known{settings};
    CredentialStore credentials{clock, nullptr, std::make_unique<SettingsVault>(secrets)};
    ReceiverMemory memory{&credentials, &known};
    TelevisionNetwork televisions{clock, discovery, memory};
    LinuxPlayerFactory players{
        clock, {.makeLocal = MpvPlayer::maker({.isMute = true, .hardwareDecoding = QStringLiteral("no")})}};
    LoginManager power{
        {QDBusConnection(QString::fromLatin1(none)), QDBusConnection(QString::fromLatin1(none))}};
    FreedesktopDesktop desktop{{}, QDBusConnection(QString::fromLatin1(none))};
    BackgroundWork work;
    BackgroundPreparer preparer{work};
    BackgroundArtwork artwork{work};
    World world{.clock = clock,
                .preferences = settings,
                .earlierPreferences = nullptr,
                .players = players,
                .power = power,
                .desktop = desktop,
                .preparer = preparer,
                .artwork = artwork};
};

/// A window's session without the window, and the television in front of it.
class Window {
  public:
    explicit Window(Process& process, const Television::Options& options = {})
        : process_(process), context(process.televisions.makeContext()) {
        switchOn(options);
        session = std::make_unique<Session>(process.world, context.get());
    }

    void switchOn(Television::Options options = {}) {
        options.port = port_;
        television = std::make_unique<Television>(process_.clock, options);
        EXPECT_TRUE(television->listen());
        port_ = television->receiver().port;
    }
    void chooseTelevision() {
        context->choose(Receiver::fromText(QStringLiteral("127.0.0.1:%1").arg(port_)).value());
    }
    [[nodiscard]] SimulatedPlayer::State shown() { return television->player().state(); }
    /// The movie plays there, and the session is through with its start.
    [[nodiscard]] bool isShown() {
        return session->canControlPlayback() && shown() == SimulatedPlayer::State::playing;
    }

  private:
    Process& process_;
    quint16 port_ = 0;

  public:
    std::unique_ptr<Television> television;
    std::unique_ptr<NetworkOutputContext> context;
    std::unique_ptr<Session> session;
};

}  // namespace velmora::test
