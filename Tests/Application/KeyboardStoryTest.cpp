#include "Application/Story.h"

#include <QDir>

namespace velmora::test {
namespace {

using namespace Qt::StringLiterals;

using KeyboardStory = Story;

TEST_F(KeyboardStory, SteersTheTelevision) {
    TelevisionProcess television(u"Living Room"_s);
    television.rememberOn(*desk);
    Application velmora(*desk, {movie(u"A Long Evening.mkv"_s, lastingTenMinutes())});
    const auto window = velmora.window(u"A Long Evening*"_s);
    ASSERT_TRUE(window);
    ASSERT_TRUE(playOn(velmora, television)) << seen(velmora);
    ASSERT_TRUE(velmora.bringForward(*window));
    ASSERT_TRUE(velmora.find(u"push button"_s, u"Pause"_s));

    Display& display = desk->display();
    EXPECT_TRUE(display.press(Qt::Key_Space));
    EXPECT_TRUE(television.says(u"paused"_s));
    EXPECT_TRUE(velmora.find(u"push button"_s, u"Play"_s));
    const BusPlayer player = velmora.players().value(0, {desk->sessionBus(), {}});
    EXPECT_EQ(player.property(u"PlaybackStatus"_s), u"Paused"_s);
    const double start = position(player);
    const struct {
        QKeyCombination keys;
        double leadTo;
    } cases[] = {{Qt::SHIFT | Qt::Key_Right, 60},
                 {Qt::Key_Right, 70},
                 {Qt::Key_Left, 60},
                 {Qt::SHIFT | Qt::Key_Left, 0},
                 {Qt::SHIFT | Qt::Key_Right, 60}};
    for (const auto& each : cases) {
        EXPECT_TRUE(display.press(each.keys));
        EXPECT_TRUE(isNear(player, start + each.leadTo)) << each.leadTo << ' ' << position(player);
    }
    EXPECT_TRUE(display.press(Qt::Key_Space));
    EXPECT_TRUE(television.says(u"playing at 0:01:"_s)) << qPrintable(television.lines().join(u'\n'));
    EXPECT_TRUE(display.press(Qt::Key_F10));
    EXPECT_TRUE(velmora.press(u"menu item"_s, u"Start Over"_s));
    EXPECT_TRUE(waitFor([&] { return position(player) < 20; }));

    EXPECT_TRUE(display.press(Qt::CTRL | Qt::Key_Q));
    EXPECT_EQ(velmora.waitForExit(), 0);
    EXPECT_TRUE(television.says(u"stopped"_s)) << qPrintable(television.lines().join(u'\n'));
    EXPECT_TRUE(television.lines().filter(u"refused"_s).isEmpty());
}

TEST_F(KeyboardStory, LeavesAPreparationAloneButCancelsIt) {
    TelevisionProcess television(u"Living Room"_s);
    television.rememberOn(*desk);
    const MovieKind slow{.seconds = 120, .size = {1280, 720}, .hasSound = false, .codec = u"mpeg4"_s};
    Application velmora(*desk, {movie(u"Slow.mkv"_s, slow)});
    ASSERT_TRUE(velmora.chooseTelevision(u"Living Room"_s)) << seen(velmora);
    ASSERT_TRUE(velmora.find(u"push button"_s, u"Starts on Living Room when ready"_s)) << seen(velmora);
    ASSERT_TRUE(velmora.bringForward(velmora.windows().value(0)));
    for (const auto key : {Qt::Key_Space, Qt::Key_Right, Qt::Key_Left})
        EXPECT_TRUE(desk->display().press(key));
    EXPECT_TRUE(velmora.find(u"progress bar"_s, u"Preparing the movie"_s));
    EXPECT_TRUE(desk->display().press(Qt::CTRL | Qt::Key_Period));
    EXPECT_TRUE(velmora.isGone(u"progress bar"_s, u"Preparing the movie"_s)) << seen(velmora);
    EXPECT_FALSE(velmora.tree()->find(u"popup menu"_s, {}));
    EXPECT_TRUE(television.lines().filter(u"loading"_s).isEmpty());
    const QDir folder(desk->path(u"movies"_s));
    const auto names = [&] {
        return folder.entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    };
    EXPECT_TRUE(waitFor([&] { return names() == QStringList{u"Slow.mkv"_s}; }))
        << qPrintable(names().join(u' '));
    EXPECT_EQ(velmora.quit(), 0);
}

TEST_F(KeyboardStory, OpensAndClosesWindowsAndTypes) {
    (void)movie(u"Another.mkv"_s);
    Application velmora(*desk, {movie(u"A Long Evening.mkv"_s)});
    const auto window = velmora.window(u"A Long Evening*"_s);
    ASSERT_TRUE(window && velmora.bringForward(*window));
    ASSERT_TRUE(velmora.find(u"slider"_s, u"Timeline"_s)) << seen(velmora);
    Display& display = desk->display();

    ASSERT_TRUE(velmora.press(u"push button"_s, u"Choose an Apple TV"_s));
    ASSERT_TRUE(velmora.press(u"menu item"_s, u"Add a television by address…"_s)) << seen(velmora);
    const auto field = velmora.find({}, u"Name or address"_s,
                                    [](const Accessible& each) { return each.is(Accessible::focused); });
    ASSERT_TRUE(field) << seen(velmora);
    EXPECT_TRUE(display.type(u"d n"_s) && display.press(Qt::Key_Left) && display.type(u"e "_s));
    EXPECT_TRUE(waitFor([&] { return desk->accessibility().text(*field) == u"d e n"; }))
        << qPrintable(desk->accessibility().text(*field));
    EXPECT_TRUE(display.press(Qt::Key_Escape));
    EXPECT_TRUE(velmora.isGone({}, u"Name or address"_s));

    EXPECT_TRUE(display.press(Qt::Key_F10));
    EXPECT_TRUE(velmora.find(u"popup menu"_s, u"Main Menu"_s)) << seen(velmora);
    EXPECT_TRUE(display.press(Qt::CTRL | Qt::Key_N));
    EXPECT_TRUE(velmora.hasWindows(2)) << "an open menu keeps nothing from the keyboard";
    EXPECT_TRUE(velmora.find(u"push button"_s, u"Choose Movie…"_s));
    const auto second = velmora.window(u"Velmora"_s);
    ASSERT_TRUE(second && velmora.bringForward(*second));
    EXPECT_TRUE(display.press(Qt::CTRL | Qt::Key_O));
    ASSERT_TRUE(velmora.window(u"Choose a movie*"_s)) << seen(velmora);
    ASSERT_TRUE(velmora.find(u"menu item"_s, u"movies"_s)) << seen(velmora);
    EXPECT_TRUE(display.type(u"m"_s) && display.press(Qt::Key_Return));
    ASSERT_TRUE(velmora.find(u"menu item"_s, u"Another.mkv"_s)) << seen(velmora);
    EXPECT_TRUE(display.press(Qt::Key_End) && display.press(Qt::Key_Return));
    const auto another = velmora.window(u"Another*"_s);
    ASSERT_TRUE(another) << seen(velmora);
    EXPECT_TRUE(velmora.hasWindows(2));
    EXPECT_TRUE(waitFor([&] { return display.activeWindow() == another->id; }));
    EXPECT_TRUE(display.press(Qt::CTRL | Qt::Key_W));
    EXPECT_TRUE(velmora.hasWindows(1));
    EXPECT_TRUE(velmora.bringForward(*window));
    EXPECT_TRUE(display.press(Qt::CTRL | Qt::Key_Q));
    EXPECT_EQ(velmora.waitForExit(), 0);
}

}  // namespace
}  // namespace velmora::test
