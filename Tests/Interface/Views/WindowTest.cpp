// What hands do to a window: pointer, keys, menus and dialogs, on the software scene graph without a display.
#include "Interface/Views/Appearance.h"
#include "Interface/Views/Scenery.h"
#include "Interface/Views/Showcase.h"

#include <QGuiApplication>
#include <QQuickItem>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

namespace velmora::test {
namespace {

QStringList warnings;

void noteWarning(QtMsgType type, const QMessageLogContext& /*context*/, const QString& message) {
    if (type != QtDebugMsg && type != QtInfoMsg) warnings.append(message);
}

class Window : public testing::Test {
  protected:
    void SetUp() override {
        warnings.clear();
        showcase.mainMenu.show({MenuRow{.identifier = u"new"_s, .text = u"New Window"_s}});
        showcase.movie.show(States::playing(u"Den"_s));
        showcase.movie.show(MovieTracks{.audio = {},
                                        .subtitles = {{u"1"_s, u"Dutch"_s}, {u"2"_s, u"English"_s}},
                                        .chosenAudio = {},
                                        .chosenSubtitle = {}});
        ASSERT_TRUE(showcase.open());
    }
    void TearDown() override { EXPECT_TRUE(warnings.isEmpty()) << qPrintable(warnings.join(u'\n')); }

    void press(int key) { QTest::keyClick(&showcase.view, static_cast<Qt::Key>(key)); }
    SystemClock clock;
    Showcase showcase{clock};
};

TEST_F(Window, DraggingTheTimelineSeeksOnce) {
    const QSignalSpy seeks(&showcase.movie, &MovieScreenModel::seekRequested);
    const auto* const scrubber = showcase.part("timeline")->property("scrubber").value<QQuickItem*>();
    const auto at = [scrubber](double part) {
        return scrubber->mapToScene({scrubber->width() * part, scrubber->height() / 2}).toPoint();
    };
    QTest::mousePress(&showcase.view, Qt::LeftButton, {}, at(0.2));
    for (double part = 0.2; part <= 0.8; part += 0.05) QTest::mouseMove(&showcase.view, at(part));
    QTest::mouseMove(&showcase.view, at(0.5));
    EXPECT_TRUE(showcase.movie.isDragging());
    EXPECT_TRUE(seeks.isEmpty());
    QTest::mouseRelease(&showcase.view, Qt::LeftButton, {}, at(0.5));
    ASSERT_EQ(seeks.size(), 1);
    EXPECT_NEAR(seeks.first().first().toDouble(), 2950, 20);
}

TEST_F(Window, MenusAreSteeredByKeysAndGiveTheFocusBack) {
    const QSignalSpy chosen(&showcase.movie, &MovieScreenModel::subtitleChosen);
    QQuickItem* const opener = showcase.part("mediaButton")->property("button").value<QQuickItem*>();
    opener->forceActiveFocus(Qt::TabFocusReason);
    press(Qt::Key_Return);
    showcase.settle();
    EXPECT_TRUE(showcase.screen()->property("isModal").toBool());
    press(Qt::Key_Down);
    press(Qt::Key_E);
    press(Qt::Key_Up);
    press(Qt::Key_Return);
    showcase.settle();
    ASSERT_EQ(chosen.size(), 1);
    EXPECT_EQ(chosen.first().first().toString(), u"1"_s);
    EXPECT_FALSE(showcase.screen()->property("isModal").toBool());
    EXPECT_EQ(showcase.view.activeFocusItem(), opener);
}

TEST_F(Window, TabGoesThroughTheControlsInTheirOrder) {
    const auto button = [this](const char* name) {
        return showcase.part(name)->property("button").value<QQuickItem*>();
    };
    EXPECT_EQ(showcase.view.activeFocusItem(), button("playButton"));
    auto* const scrubber = showcase.part("timeline")->property("scrubber").value<QQuickItem*>();
    scrubber->forceActiveFocus(Qt::TabFocusReason);
    press(Qt::Key_Tab);
    EXPECT_EQ(showcase.view.activeFocusItem(), button("mediaButton"));
    press(Qt::Key_Tab);
    press(Qt::Key_Tab);
    EXPECT_EQ(showcase.view.activeFocusItem(), button("playButton"));
    press(Qt::Key_Tab);
    press(Qt::Key_Tab);
    EXPECT_EQ(showcase.view.activeFocusItem(), button("airPlayButton"));
    press(Qt::Key_Tab);
    press(Qt::Key_Tab);
    EXPECT_EQ(showcase.view.activeFocusItem(), scrubber);
    // What cannot be pressed is left out.
    showcase.movie.show(States::waiting());
    button("mediaButton")->forceActiveFocus(Qt::TabFocusReason);
    press(Qt::Key_Tab);
    EXPECT_EQ(showcase.view.activeFocusItem(), button("playButton"));
}

TEST_F(Window, ACodeIsSentWithItsFourthDigit) {
    showcase.televisions.ask(TelevisionQuestion{.asks = Television::Asks::code, .television = u"Den"_s});
    showcase.settle();
    for (const int key : {Qt::Key_4, Qt::Key_X, Qt::Key_7, Qt::Key_1}) press(key);
    EXPECT_TRUE(showcase.televisions.answers.isEmpty());
    press(Qt::Key_9);
    EXPECT_EQ(showcase.televisions.answers, QStringList{u"4719"_s});
    press(Qt::Key_Escape);
    showcase.settle();
    EXPECT_EQ(showcase.televisions.timesDismissed, 1);
    EXPECT_FALSE(showcase.screen()->property("isModal").toBool());
    // The next television asks in the same dialog.
    showcase.televisions.ask(TelevisionQuestion{.asks = Television::Asks::code, .television = u"Attic"_s});
    showcase.settle();
    for (const int key : {Qt::Key_1, Qt::Key_2, Qt::Key_3, Qt::Key_4}) press(key);
    EXPECT_EQ(showcase.televisions.answers.last(), u"1234"_s);
}

TEST_F(Window, AnAddressThatIsNoneIsToldInTheDialog) {
    QMetaObject::invokeMethod(showcase.part("picker"), "openAddressDialog");
    showcase.settle();
    for (const char key : {'a', ' ', 'b'}) QTest::keyClick(&showcase.view, key);
    press(Qt::Key_Return);
    showcase.settle();
    EXPECT_TRUE(showcase.screen()->property("isModal").toBool());
    press(Qt::Key_Backspace);
    press(Qt::Key_Backspace);
    press(Qt::Key_Return);
    showcase.settle();
    EXPECT_EQ(showcase.televisions.added, (QStringList{u"a b"_s, u"a"_s}));
    EXPECT_FALSE(showcase.screen()->property("isModal").toBool());
}

// Every change of screen, size, palette and picture, with nothing to complain about.
TEST_F(Window, GoesThroughEveryState) {
    for (const bool isDark : {true, false}) {
        Appearance::instance().setLook({.isDark = isDark, .hasHighContrast = isDark, .animates = !isDark});
        for (const MovieState& state :
             {MovieState(), States::failed(u"No."_s, true), States::resume(), States::preparing(),
              States::waiting(), States::handover(u"Den"_s), States::playing(u"Den"_s)}) {
            showcase.movie.show(state);
            MovieArtwork artwork;
            if (state.timeline.duration > 0) artwork.poster = Scenery::snow({160, 68});
            showcase.movie.show(artwork);
            showcase.view.resize(isDark ? QSize(520, 400) : QSize(700, 900));
            QTest::qWait(20);
        }
    }
    EXPECT_FALSE(showcase.view.grabWindow().isNull());
}

}  // namespace
}  // namespace velmora::test

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    qputenv("DBUS_SESSION_BUS_ADDRESS", "disabled:");
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    qInstallMessageHandler(velmora::test::noteWarning);
    velmora::Appearance::instance().setLook({.animates = false});
    return RUN_ALL_TESTS();
}
