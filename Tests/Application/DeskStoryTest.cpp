// Windows, and what the desktop gives them.
#include "Application/Story.h"
#include "Desk/FileDrag.h"

#include <QDBusMessage>
#include <QDBusPendingCall>

#include <csignal>

namespace velmora::test {
namespace {

using namespace Qt::StringLiterals;

class DeskStory : public Story {
  protected:
    void tell(const QString& method, const QVariantList& arguments) const {
        QDBusMessage call = QDBusMessage::createMethodCall(
            u"com.quillet.velmora"_s, u"/com/quillet/velmora"_s, u"org.freedesktop.Application"_s, method);
        call.setArguments(arguments + QVariantList{QVariantMap()});
        desk->sessionBus().asyncCall(call);
    }
};

TEST_F(DeskStory, ShowsEachMovieInAWindowOfItsOwn) {
    const QStringList movies{movie(u"One.mkv"_s), movie(u"Two.mkv"_s), movie(u"Three.mkv"_s)};
    Application velmora(*desk, movies);
    ASSERT_TRUE(velmora.hasWindows(3));
    EXPECT_EQ(velmora.startAgain({movie(u"Four.mkv"_s), movie(u"Five.mkv"_s), movie(u"Six.mkv"_s)}), 0);
    EXPECT_TRUE(velmora.hasWindows(6));
    for (const QString& title : {u"One*"_s, u"Two*"_s, u"Three*"_s, u"Four*"_s, u"Five*"_s, u"Six*"_s})
        EXPECT_TRUE(velmora.window(title)) << qPrintable(title);

    const auto two = velmora.window(u"Two*"_s);
    EXPECT_NE(desk->display().activeWindow(), two->id);
    EXPECT_EQ(velmora.startAgain({movies[1]}), 0);
    EXPECT_TRUE(waitFor([&] { return desk->display().activeWindow() == two->id; })) << "comes forward";
    EXPECT_EQ(velmora.startAgain({}), 0);
    EXPECT_TRUE(velmora.hasWindows(6));
    EXPECT_EQ(velmora.startAgain({u"--new-window"_s}), 0);
    EXPECT_TRUE(velmora.hasWindows(7));
    EXPECT_EQ(velmora.quit(), 0);
}

TEST_F(DeskStory, IsDarkAndLightWithTheDesktop) {
    const Application velmora(*desk, {});
    const auto window = velmora.window(u"*"_s);
    ASSERT_TRUE(window);
    const auto isDark = [&] {
        const QImage picture = velmora.picture(*window);
        return picture.isNull() ? -1 : int(picture.pixelColor(picture.rect().center() / 4).lightness() < 128);
    };
    // Dark is also a window in which nothing has been drawn yet.
    for (const bool wanted : {false, true, false}) {
        desk->setLook({.isDark = wanted});
        EXPECT_TRUE(waitFor([&] { return isDark() == int(wanted); })) << wanted;
    }
}

TEST_F(DeskStory, StaysWithoutWindowsUntilItIsWanted) {
    Application velmora(*desk, {movie(u"First.mkv"_s)});
    const auto window = velmora.window(u"First*"_s);
    ASSERT_TRUE(window);
    EXPECT_EQ(velmora.players().size(), 1);
    desk->display().close(window->id);
    EXPECT_TRUE(velmora.hasWindows(0));
    EXPECT_TRUE(waitFor([&] { return velmora.players().isEmpty(); }));

    EXPECT_EQ(velmora.startAgain({}), 0);
    EXPECT_TRUE(velmora.hasWindows(1));
    tell(u"Open"_s, {QStringList{QUrl::fromLocalFile(movie(u"Per Bus.mkv"_s)).toString()}});
    EXPECT_TRUE(velmora.window(u"Per Bus*"_s));
    tell(u"ActivateAction"_s, {u"new-window"_s, QVariantList()});
    EXPECT_TRUE(velmora.hasWindows(3));
    EXPECT_TRUE(waitFor([&] { return velmora.players().size() == 3; }));
    ::kill(static_cast<pid_t>(velmora.pid()), SIGTERM);  // as when the user logs out
    EXPECT_EQ(velmora.waitForExit(), 0);
    EXPECT_TRUE(velmora.players().isEmpty());
}

TEST_F(DeskStory, TakesDroppedMoviesOnly) {
    const QString inFolder = movie(u"Dropped Folder/The Movie.mkv"_s);
    const QString other = movie(u"Other.mkv"_s);
    Application velmora(*desk);
    const auto window = velmora.window(u"Velmora"_s);
    ASSERT_TRUE(window && velmora.find(u"push button"_s, u"Choose Movie…"_s));
    const QPoint middle = window->geometry.center();
    {
        FileDrag words(desk->display(), "Velmora", "text/plain");
        EXPECT_FALSE(words.moveOver(window->id, middle));
    }
    FileDrag folder(desk->display(), {QUrl::fromLocalFile(desk->path(u"movies/Dropped Folder"_s))});
    EXPECT_TRUE(folder.moveOver(window->id, middle));
    EXPECT_TRUE(velmora.find({}, u"Drop to Open"_s)) << seen(velmora);
    folder.leave();
    EXPECT_TRUE(velmora.isGone({}, u"Drop to Open"_s));
    EXPECT_TRUE(folder.moveOver(window->id, middle));
    EXPECT_TRUE(folder.drop());
    EXPECT_TRUE(velmora.window(u"The Movie*"_s));
    EXPECT_TRUE(velmora.find(u"heading"_s, u"The Movie"_s)) << seen(velmora);

    FileDrag two(desk->display(), {QUrl::fromLocalFile(other), QUrl::fromLocalFile(inFolder)});
    EXPECT_TRUE(two.moveOver(window->id, middle));
    EXPECT_TRUE(two.drop());
    EXPECT_TRUE(velmora.window(u"Other*"_s));
    EXPECT_TRUE(velmora.hasWindows(1)) << "only the first is opened";
    EXPECT_EQ(velmora.quit(), 0);
}

}  // namespace
}  // namespace velmora::test
