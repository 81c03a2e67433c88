// A window's player and a strict television, with everything between them real.
#include "Platform/Linux/LinuxPlayer.h"
#include "Platform/Linux/Televisions.h"
#include "Platform/WaitFor.h"
#include "Sender/Discovery/Discovery.h"
#include "Support/VirtualClock.h"
#include "Television/Television.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

using namespace Qt::StringLiterals;
using test::waitFor;
using Shown = test::SimulatedPlayer::State;
using Status = Player::TimeControlStatus;

TEST(PlayerAndTelevision, FromHereToThereToTheEnd) {
    test::FastClock clock(5);
    test::Television television(clock, {});
    ASSERT_TRUE(television.listen());
    Discovery discovery(clock);
    Televisions televisions(clock, discovery, {});
    const auto context = televisions.makeContext();
    const auto typed = Receiver::fromText(u"127.0.0.1:%1"_s.arg(television.receiver().port));
    ASSERT_TRUE(typed);
    context->choose(*typed);
    LinuxPlayerFactory factory(clock, {.local = {.isMute = true, .hardwareDecoding = u"no"_s}});
    const auto player = factory.makePlayer();
    player->setOutputContext(&*context);

    player->replaceCurrentItem(
        factory.makeItem(QUrl::fromLocalFile(QStringLiteral(VELMORA_SAMPLE_MOVIES "/long.mp4"))));
    player->seek(40, {.before = 0, .after = 0}, {});
    player->play();
    ASSERT_TRUE(waitFor([&] { return player->isExternalPlaybackActive(); }));
    EXPECT_EQ(player->timeControlStatus(), Status::playing);
    EXPECT_EQ(television.player().state(), Shown::playing);
    EXPECT_GE(player->currentTime().value_or(0), 40);
    EXPECT_NEAR(player->currentTime().value_or(0), television.player().position(), 1);

    television.player().setRate(0);
    ASSERT_TRUE(waitFor([&] { return player->timeControlStatus() == Status::paused; }));
    player->play();
    ASSERT_TRUE(waitFor([&] { return television.player().state() == Shown::playing; }));
    player->seek(96, {.before = 0.5, .after = 0}, {});
    ASSERT_TRUE(waitFor([&] { return player->timeControlStatus() == Status::playing; }));
    ASSERT_TRUE(waitFor([&] { return player->timeControlStatus() == Status::paused; }));
    EXPECT_NEAR(player->currentTime().value_or(0), 100, 0.5);
    EXPECT_TRUE(player->isExternalPlaybackActive());
    EXPECT_EQ(television.complaints(), QStringList());
}

}  // namespace
}  // namespace velmora
