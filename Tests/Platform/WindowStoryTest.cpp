// What a window does with a movie and a television, without the window: every part is the real one.
#include "Platform/Linux/FreedesktopDesktop.h"
#include "Platform/Linux/LinuxPlayer.h"
#include "Platform/Linux/LoginManager.h"
#include "Platform/Linux/SettingsFile.h"
#include "Platform/Linux/TelevisionNetwork.h"
#include "Platform/WaitFor.h"
#include "Playback/BackgroundServices.h"
#include "Playback/Session.h"
#include "Sender/Discovery/Discovery.h"
#include "Support/VirtualClock.h"
#include "Television/Television.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cmath>

namespace velmora {
namespace {

using namespace Qt::StringLiterals;
using test::waitFor;
using Shown = test::SimulatedPlayer::State;

class WindowStory : public testing::Test {
  protected:
    WindowStory() {
        EXPECT_TRUE(television.listen());
        EXPECT_TRUE(QFile::copy(QStringLiteral(VELMORA_SAMPLE_MOVIES "/long.mkv"), movie.toLocalFile()));
    }
    void chooseTelevision() {
        context->choose(Receiver::fromText(u"127.0.0.1:%1"_s.arg(television.receiver().port)).value());
    }
    [[nodiscard]] bool isShown() {
        return session->isOnAppleTV() && television.player().state() == Shown::playing;
    }

    QTemporaryDir folder;
    const QUrl movie = QUrl::fromLocalFile(folder.filePath(u"Long.mkv"_s));
    test::FastClock clock{5};
    test::Television television{clock, {}};
    Discovery discovery{clock};
    TelevisionNetwork televisions{clock, discovery, {}};
    std::unique_ptr<NetworkOutputContext> context = televisions.makeContext();
    SettingsFile settings{u"window-story"_s};
    LinuxPlayerFactory players{clock, {.local = {.isMute = true, .hardwareDecoding = u"no"_s}}};
    LoginManager power{{QDBusConnection(u"none"_s), QDBusConnection(u"none"_s)}};
    FreedesktopDesktop desktop{{}, QDBusConnection(u"none"_s)};
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
    std::unique_ptr<Session> session = std::make_unique<Session>(world, &*context);
};

TEST_F(WindowStory, FromAFileToTheTelevisionAndBack) {
    chooseTelevision();
    session->open(movie, false);
    ASSERT_TRUE(waitFor([this] { return isShown() && !session->handingOverTo(); }));
    ASSERT_TRUE(waitFor([this] { return std::abs(session->duration() - 100) < 0.5; }));

    session->togglePlayPause();
    ASSERT_TRUE(waitFor([this] { return television.player().state() == Shown::paused; }));
    session->seek(60);
    session->togglePlayPause();
    ASSERT_TRUE(waitFor([this] { return isShown() && television.player().position() > 61; }));

    // The viewer leaves the movie at the television, and nobody brings it back.
    television.player().stop(u"left"_s);
    ASSERT_TRUE(waitFor([this] { return !session->isOnAppleTV() && !session->airPlay().deviceName(); }));
    EXPECT_FALSE(session->isPlaying());
    EXPECT_TRUE(session->phase().ready());
    ASSERT_TRUE(waitFor([this] { return session->player()->currentTime().value_or(0) > 50; }));
    EXPECT_NEAR(session->player()->currentTime().value_or(0), 62, 6);
    EXPECT_EQ(television.player().state(), Shown::idle);

    chooseTelevision();
    ASSERT_TRUE(waitFor([this] { return isShown() && television.player().position() > 55; }));
    EXPECT_FALSE(session->poster().isNull());
    session.reset();
    EXPECT_TRUE(waitFor([this] { return television.player().state() == Shown::idle; }));
    EXPECT_EQ(television.complaints(), QStringList());
}

}  // namespace
}  // namespace velmora
