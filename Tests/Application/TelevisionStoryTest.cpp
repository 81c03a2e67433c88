#include "Application/Story.h"

namespace velmora::test {
namespace {

using namespace Qt::StringLiterals;

class TelevisionStory : public Story {
  protected:
    static QString said(TelevisionProcess& television) { return television.lines().join(u'\n'); }
    static bool knowsLength(const Accessible& timeline) {
        return timeline.description.endsWith(u"of 10 minutes");
    }
};

TEST_F(TelevisionStory, TwoWindowsPlayOnTwoTelevisions) {
    TelevisionProcess livingRoom(u"Living Room"_s);
    TelevisionProcess bedroom(u"Bedroom"_s);
    livingRoom.rememberOn(*desk);
    bedroom.rememberOn(*desk);
    const QString first = movie(u"First.mkv"_s, lastingTenMinutes());
    const QString second = movie(u"Second.mkv"_s, lastingTenMinutes());
    Application velmora(*desk, {first});
    ASSERT_TRUE(playOn(velmora, livingRoom)) << seen(velmora);
    ASSERT_TRUE(velmora.find(u"push button"_s, u"Playing on Living Room"_s));
    EXPECT_EQ(velmora.startAgain({second}), 0);
    ASSERT_TRUE(playOn(velmora, bedroom)) << seen(velmora);
    ASSERT_TRUE(velmora.find(u"push button"_s, u"Playing on Bedroom"_s));

    const auto firstWindow = velmora.window(u"First*"_s);
    const auto secondWindow = velmora.window(u"Second*"_s);
    const auto secondPlayer = playerOf(velmora, u"Second"_s);
    ASSERT_TRUE(firstWindow && secondWindow && secondPlayer);
    ASSERT_TRUE(velmora.bringForward(*firstWindow));
    EXPECT_TRUE(desk->display().press(Qt::Key_Space));
    EXPECT_TRUE(livingRoom.says(u"paused"_s)) << qPrintable(said(livingRoom));
    ASSERT_TRUE(velmora.bringForward(*secondWindow));
    EXPECT_TRUE(desk->display().press(Qt::SHIFT | Qt::Key_Right));
    EXPECT_TRUE(waitFor([&] { return position(*secondPlayer) > 60; })) << seen(velmora);
    EXPECT_TRUE(bedroom.lines().filter(u"paused"_s).isEmpty()) << qPrintable(said(bedroom));

    desk->display().close(firstWindow->id);
    EXPECT_TRUE(livingRoom.says(u"stopped"_s)) << qPrintable(said(livingRoom));
    const double place = position(*secondPlayer);
    EXPECT_TRUE(waitFor([&] { return position(*secondPlayer) > place + 1; })) << "goes on";

    EXPECT_EQ(velmora.startAgain({first}), 0);
    ASSERT_TRUE(playOn(velmora, livingRoom)) << seen(velmora);
    EXPECT_TRUE(bedroom.lines().filter(u"stopped"_s).isEmpty()) << qPrintable(said(bedroom));
    EXPECT_EQ(velmora.quit(), 0);
    EXPECT_TRUE(livingRoom.says(u"stopped"_s)) << qPrintable(said(livingRoom));
    EXPECT_TRUE(bedroom.says(u"stopped"_s)) << qPrintable(said(bedroom));
}

TEST_F(TelevisionStory, GoesOnTomorrowWhereTheUserLeft) {
    TelevisionProcess television(u"Living Room"_s);
    television.rememberOn(*desk);
    {
        Application velmora(*desk, {movie(u"A Long Evening.mkv"_s, lastingTenMinutes())});
        ASSERT_TRUE(playOn(velmora, television)) << seen(velmora);
        ASSERT_TRUE(velmora.find(u"push button"_s, u"Pause"_s));
        const auto timeline = velmora.find(u"slider"_s, u"Timeline"_s, knowsLength);
        ASSERT_TRUE(timeline) << seen(velmora);
        const QPoint fiveAndAHalf = timeline->bounds.center() + QPoint(24, 0);
        desk->display().movePointer(fiveAndAHalf);
        EXPECT_TRUE(velmora.isGone(u"tool tip"_s, {})) << "lies over the timeline";
        desk->display().click(fiveAndAHalf);
        EXPECT_TRUE(isNear(velmora.players().value(0, {desk->sessionBus(), {}}), 330, 25)) << seen(velmora);
        EXPECT_TRUE(desk->display().press(Qt::Key_Space));
        EXPECT_TRUE(television.says(u"paused at 0:05:"_s)) << qPrintable(said(television));
        EXPECT_TRUE(desk->display().press(Qt::CTRL | Qt::Key_Q));
        EXPECT_EQ(velmora.waitForExit(), 0);
        EXPECT_TRUE(television.says(u"stopped"_s));
    }
    Application velmora(*desk);
    ASSERT_TRUE(velmora.find(u"heading"_s, u"A Long Evening"_s)) << seen(velmora);
    ASSERT_TRUE(velmora.find(u"push button"_s, u"Resume and choose an Apple TV"_s)) << seen(velmora);
    ASSERT_TRUE(velmora.bringForward(velmora.windows().value(0)));
    EXPECT_TRUE(desk->display().press(Qt::Key_Space));
    ASSERT_TRUE(velmora.press(u"menu item"_s, u"Living Room"_s)) << seen(velmora);
    EXPECT_TRUE(television.says(u"playing at 0:05:"_s)) << qPrintable(said(television));
    EXPECT_EQ(velmora.quit(), 0);
}

TEST_F(TelevisionStory, SaysThatATelevisionRefusesAndTriesAgain) {
    auto television = std::make_unique<TelevisionProcess>(u"Living Room"_s,
                                                          QStringList{u"--misbehave"_s, u"fail-play=99"_s});
    television->rememberOn(*desk);
    const QString port = QString::number(television->port());
    Application velmora(*desk, {movie(u"A Long Evening.mkv"_s, lastingTenMinutes())});
    ASSERT_TRUE(velmora.chooseTelevision(u"Living Room"_s)) << seen(velmora);
    const QString refused = u"Living Room didn't take it. Try again"_s;
    // Two attempts of several seconds each.
    ASSERT_TRUE(waitFor([&] { return velmora.tree()->find(u"push button"_s, refused); }, 60))
        << seen(velmora);
    EXPECT_TRUE(velmora.tree()->find(u"alert message"_s, {})) << seen(velmora);
    EXPECT_TRUE(velmora.find(u"slider"_s, u"Timeline"_s, knowsLength)) << seen(velmora);
    television.reset();
    television = std::make_unique<TelevisionProcess>(u"Living Room"_s, QStringList{u"--port"_s, port});
    EXPECT_TRUE(velmora.click(u"push button"_s, refused));
    EXPECT_TRUE(television->says(u"playing"_s)) << seen(velmora);
    EXPECT_TRUE(velmora.find(u"alert message"_s, u"Playing on Living Room"_s)) << seen(velmora);
    EXPECT_EQ(velmora.quit(), 0);
}

TEST_F(TelevisionStory, AsksForTheCode) {
    TelevisionProcess television(u"Living Room"_s, {u"--flavour"_s, u"legacy-pin"_s, u"--pin"_s, u"2468"_s});
    Application velmora(*desk, {movie(u"A Long Evening.mkv"_s, lastingTenMinutes())});
    ASSERT_TRUE(velmora.window(u"A Long Evening*"_s));
    ASSERT_TRUE(velmora.addTelevision(television.address())) << seen(velmora);
    const auto isFocused = [](const Accessible& each) { return each.is(Accessible::focused); };
    for (const QString& code : {u"1357"_s, u"2468"_s}) {
        ASSERT_TRUE(television.says(u"PIN 2468"_s)) << qPrintable(said(television));
        ASSERT_TRUE(velmora.find({}, u"Code, four digits"_s, isFocused)) << seen(velmora);
        EXPECT_TRUE(desk->display().type(u' ' + code));
        if (code != u"2468") {
            EXPECT_TRUE(velmora.find(u"alert message"_s, u"That code didn't match."_s)) << seen(velmora);
        }
    }
    EXPECT_TRUE(television.says(u"playing"_s)) << seen(velmora);
    EXPECT_TRUE(velmora.isGone({}, u"Code, four digits"_s));
    EXPECT_EQ(velmora.quit(), 0);
}

TEST_F(TelevisionStory, GoesOnWhenTheTelevisionComesBack) {
    auto television = std::make_unique<TelevisionProcess>(u"Living Room"_s);
    television->rememberOn(*desk);
    const QString port = QString::number(television->port());
    Application velmora(*desk, {movie(u"A Long Evening.mkv"_s, lastingTenMinutes())});
    ASSERT_TRUE(playOn(velmora, *television)) << seen(velmora);
    ASSERT_TRUE(velmora.press(u"push button"_s, u"Pause"_s));
    ASSERT_TRUE(television->says(u"paused"_s));
    const BusPlayer player = velmora.players().value(0, {desk->sessionBus(), {}});
    EXPECT_TRUE(player.call(u"Seek"_s, {qlonglong(120'000'000)}));
    EXPECT_TRUE(waitFor([&] { return position(player) > 119; }));
    EXPECT_TRUE(player.call(u"Play"_s));
    ASSERT_TRUE(television->says(u"playing at 0:02:"_s)) << qPrintable(said(*television));

    television.reset();
    television = std::make_unique<TelevisionProcess>(u"Living Room"_s, QStringList{u"--port"_s, port});
    EXPECT_TRUE(television->says(u"playing at 0:0"_s)) << seen(velmora);
    EXPECT_TRUE(waitFor([&] { return position(player) > 120; }));
    EXPECT_TRUE(velmora.find(u"alert message"_s, u"Playing on Living Room"_s)) << seen(velmora);
    EXPECT_EQ(velmora.quit(), 0);
    EXPECT_TRUE(television->says(u"stopped"_s));
}

}  // namespace
}  // namespace velmora::test
