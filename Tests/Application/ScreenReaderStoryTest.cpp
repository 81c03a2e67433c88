// What a screen reader tells, and what it can do, without keyboard and pointer.
#include "Application/Story.h"

#include <QDir>
#include <QFile>
#include <QSet>

namespace velmora::test {
namespace {

using namespace Qt::StringLiterals;

class ScreenReaderStory : public Story {
  protected:
    /// Every control has a name and does what its role promises, and none is there twice.
    static void checkControls(const Application& velmora, const char* where) {
        const auto tree = velmora.tree();
        ASSERT_TRUE(tree);
        QStringList problems;
        for (const Accessible& window : tree->children) check(window, problems);
        EXPECT_EQ(problems.join(QString()).toStdString(), "") << where << '\n' << seen(velmora);
    }

    [[nodiscard]] static Accessible find(const Application& velmora, const QString& role,
                                         const QString& name) {
        return velmora.find(role, name).value_or(Accessible{});
    }

  private:
    static void check(const Accessible& parent, QStringList& problems) {
        static const QSet<QString> focusables{u"push button"_s, u"slider"_s,       u"menu item"_s, u"text"_s,
                                              u"popup menu"_s,  u"dialog"_s,       u"frame"_s,     u"label"_s,
                                              u"heading"_s,     u"alert message"_s};
        static const QSet<QString> nameless{u"filler"_s, u"label"_s, u"panel"_s};
        QSet<QString> buttons;
        for (const Accessible& each : parent.children) {
            check(each, problems);
            if (!each.is(Accessible::showing)) continue;
            const bool isButton = each.role == u"push button";
            const bool isFocusable = each.is(Accessible::focusable);
            // While no television is chosen, to play is to choose one.
            const bool isTwice =
                isButton && buttons.contains(each.name) && each.name != u"Choose an Apple TV";
            buttons.insert(isButton ? each.name : QString());
            if ((each.name.isEmpty() && (isFocusable || !nameless.contains(each.role))) || isTwice ||
                (isFocusable && !focusables.contains(each.role)) ||
                (isButton && each.is(Accessible::enabled) && !each.actions.contains(u"Press"_s)))
                problems << each.toText();
        }
    }
};

TEST_F(ScreenReaderStory, DoesEverything) {
    TelevisionProcess television(u"Living Room"_s);
    television.rememberOn(*desk);
    const QString film = movie(u"A Long Evening.mkv"_s, lastingTenMinutes());
    const AccessibilityBus& reader = desk->accessibility();
    Application velmora(*desk);
    ASSERT_TRUE(velmora.find(u"push button"_s, u"Choose Movie…"_s)) << seen(velmora);
    checkControls(velmora, "empty");

    ASSERT_TRUE(velmora.press(u"push button"_s, u"Choose Movie…"_s));
    ASSERT_TRUE(velmora.find(u"push button"_s, u"Open This Folder"_s)) << seen(velmora);
    checkControls(velmora, "choosing a movie");
    ASSERT_TRUE(velmora.press(u"menu item"_s, u"movies"_s));
    ASSERT_TRUE(velmora.find(u"menu item"_s, u"A Long Evening.mkv"_s));
    ASSERT_TRUE(velmora.press(u"push button"_s, u"Enclosing Folder"_s));
    ASSERT_TRUE(velmora.press(u"menu item"_s, u"movies"_s));
    ASSERT_TRUE(velmora.press(u"menu item"_s, u"A Long Evening.mkv"_s));
    ASSERT_TRUE(velmora.find(u"slider"_s, u"Timeline"_s)) << seen(velmora);
    checkControls(velmora, "waiting");

    ASSERT_TRUE(velmora.press(u"push button"_s, u"Main Menu"_s));
    ASSERT_TRUE(velmora.find(u"popup menu"_s, u"Main Menu"_s)) << seen(velmora);
    checkControls(velmora, "main menu");
    EXPECT_TRUE(desk->display().press(Qt::Key_Escape));
    ASSERT_TRUE(velmora.isGone(u"popup menu"_s, {}));

    ASSERT_TRUE(velmora.press(u"push button"_s, u"Choose an Apple TV"_s));
    ASSERT_TRUE(velmora.find(u"menu item"_s, u"Living Room"_s)) << seen(velmora);
    checkControls(velmora, "televisions");
    ASSERT_TRUE(velmora.press(u"menu item"_s, u"Add a television by address…"_s));
    ASSERT_TRUE(velmora.find(u"dialog"_s, u"Add a television"_s)) << seen(velmora);
    checkControls(velmora, "dialog");
    ASSERT_TRUE(velmora.press(u"push button"_s, u"Cancel"_s));
    ASSERT_TRUE(velmora.isGone(u"dialog"_s, u"Add a television"_s));
    ASSERT_TRUE(velmora.press(u"push button"_s, u"Choose an Apple TV"_s));
    ASSERT_TRUE(velmora.press(u"menu item"_s, u"Living Room"_s));

    ASSERT_TRUE(television.says(u"playing"_s));
    ASSERT_TRUE(velmora.press(u"push button"_s, u"Pause"_s)) << seen(velmora);
    EXPECT_TRUE(television.says(u"paused"_s));
    checkControls(velmora, "remote");
    const BusPlayer player = velmora.players().value(0, {desk->sessionBus(), {}});
    EXPECT_TRUE(reader.setValue(find(velmora, u"slider"_s, u"Timeline"_s), 300));
    EXPECT_TRUE(isNear(player, 300)) << position(player);
    EXPECT_TRUE(reader.act(find(velmora, u"slider"_s, u"Timeline"_s), u"Increase"_s));
    EXPECT_TRUE(velmora.press(u"push button"_s, u"Forward 10 seconds"_s));
    EXPECT_TRUE(isNear(player, 320)) << position(player);
    EXPECT_TRUE(reader.act(find(velmora, u"slider"_s, u"Timeline"_s), u"Decrease"_s));
    EXPECT_TRUE(velmora.press(u"push button"_s, u"Back 10 seconds"_s));
    EXPECT_TRUE(isNear(player, 300)) << position(player);
    const Accessible timeline = find(velmora, u"slider"_s, u"Timeline"_s);
    EXPECT_NEAR(reader.value(timeline).value_or(0), 300, 1);
    EXPECT_EQ(timeline.description, u"5 minutes of 10 minutes"_s);
    EXPECT_TRUE(velmora.press(u"push button"_s, u"Play"_s));
    EXPECT_TRUE(television.says(u"playing at 0:05:"_s)) << qPrintable(television.lines().join(u'\n'));
    EXPECT_EQ(velmora.quit(), 0);
}

TEST_F(ScreenReaderStory, HearsWhatIsWrong) {
    const QString broken = desk->path(u"movies/Broken.mkv"_s);
    ASSERT_TRUE(QDir().mkpath(desk->path(u"movies"_s)));
    QFile file(broken);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write("no movie") > 0);
    file.close();
    {
        Application velmora(*desk, {broken});
        ASSERT_TRUE(velmora.find(u"alert message"_s, {}, [](const Accessible& each) {
            return each.name.startsWith(u"Couldn't get this movie ready "_s);
        })) << seen(velmora);
        checkControls(velmora, "failed");
        ASSERT_TRUE(velmora.press(u"push button"_s, u"Choose Another Movie…"_s));
        ASSERT_TRUE(velmora.press(u"push button"_s, u"Cancel"_s));
        EXPECT_TRUE(velmora.isGone(u"push button"_s, u"Open This Folder"_s));
        EXPECT_EQ(velmora.quit(), 0);
    }
    ASSERT_TRUE(QFile::remove(broken));
    Application velmora(*desk, {}, {.environment = {{u"PATH"_s, desk->path(u"nowhere"_s)}}});
    ASSERT_TRUE(
        velmora.find(u"alert message"_s, u"ffmpeg isn't installed, so movies can't be prepared yet."_s))
        << seen(velmora);
    checkControls(velmora, "without tools");
    ASSERT_TRUE(velmora.press(u"push button"_s, u"Copy the command sudo apt install ffmpeg"_s));
    EXPECT_TRUE(velmora.find(u"push button"_s, u"Copied"_s)) << seen(velmora);
    EXPECT_EQ(velmora.quit(), 0);
}

}  // namespace
}  // namespace velmora::test
