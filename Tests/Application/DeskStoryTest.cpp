#include "Desk/Application.h"
#include "Desk/FileDrag.h"
#include "Desk/Movies.h"
#include "Desk/TelevisionProcess.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace velmora::test;

namespace {

class DeskStory : public testing::Test {
  protected:
    void SetUp() override {
        if (const QString missing = Desk::whatIsMissing(); missing == u"Xvfb")
            GTEST_SKIP() << "There is no Xvfb.";
        desk = std::make_unique<Desk>();
        ASSERT_EQ(desk->problem(), QString());
    }

    std::unique_ptr<Desk> desk;
};

TEST_F(DeskStory, PlaysOnATelevisionByKeyboard) {
    TelevisionProcess television(u"Living Room"_s);
    television.rememberOn(*desk);
    const QString movie = desk->path(u"movies/A Long Evening.mkv"_s);
    ASSERT_TRUE(makeMovie(movie));
    Application velmora(*desk, {movie});
    const auto window = velmora.window(u"A Long Evening*"_s);
    ASSERT_TRUE(window);
    ASSERT_TRUE(velmora.find(u"heading"_s, u"A Long Evening"_s)) << qPrintable(velmora.tree()->toText());
    ASSERT_TRUE(velmora.chooseTelevision(u"Living Room"_s)) << qPrintable(velmora.tree()->toText());
    ASSERT_TRUE(television.says(u"playing"_s)) << qPrintable(velmora.tree()->toText());

    ASSERT_TRUE(velmora.bringForward(*window));
    ASSERT_TRUE(velmora.find(u"push button"_s, u"Pause"_s));
    EXPECT_TRUE(desk->display().press(Qt::Key_Space));
    EXPECT_TRUE(television.says(u"paused"_s));
    EXPECT_TRUE(velmora.find(u"push button"_s, u"Play"_s));
    EXPECT_EQ(velmora.players().value(0, {desk->sessionBus(), {}}).property(u"PlaybackStatus"_s),
              u"Paused"_s);

    EXPECT_TRUE(desk->display().press(Qt::CTRL | Qt::Key_Q));
    EXPECT_EQ(velmora.waitForExit(), 0);
    EXPECT_TRUE(television.says(u"stopped"_s)) << qPrintable(television.lines().join(u'\n'));
    EXPECT_TRUE(television.lines().filter(u"refused"_s).isEmpty());
}

TEST_F(DeskStory, OpensTheMovieOfAFolderThatIsDropped) {
    ASSERT_TRUE(makeMovie(desk->path(u"movies/Dropped Folder/The Movie.mkv"_s), {.seconds = 10}));
    Application velmora(*desk);
    const auto window = velmora.window(u"Velmora"_s);
    ASSERT_TRUE(window);
    FileDrag drag(desk->display(), {QUrl::fromLocalFile(desk->path(u"movies/Dropped Folder"_s))});
    EXPECT_TRUE(drag.moveOver(window->id, window->geometry.center()));
    EXPECT_TRUE(drag.drop());
    EXPECT_TRUE(velmora.window(u"The Movie*"_s));
    EXPECT_TRUE(velmora.find(u"heading"_s, u"The Movie"_s)) << qPrintable(velmora.tree()->toText());
    EXPECT_EQ(velmora.quit(), 0);
}

TEST_F(DeskStory, OpensWindowsForWhatASecondStartHandsOver) {
    QStringList movies;
    for (const QString& name : {u"One.mkv"_s, u"Two.mkv"_s, u"Three.mkv"_s, u"Four.mkv"_s}) {
        movies << desk->path(u"movies/"_s + name);
        ASSERT_TRUE(makeMovie(movies.last(), {.seconds = 5}));
    }
    Application velmora(*desk, {movies.takeFirst()});
    ASSERT_TRUE(velmora.hasWindows(1));
    EXPECT_EQ(velmora.startAgain(movies), 0);
    EXPECT_TRUE(velmora.hasWindows(4));
    for (const QString& title : {u"One*"_s, u"Two*"_s, u"Three*"_s, u"Four*"_s})
        EXPECT_TRUE(velmora.window(title)) << qPrintable(title);
    EXPECT_EQ(velmora.quit(), 0);
}

}  // namespace
