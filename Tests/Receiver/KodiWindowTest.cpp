// A window and a real television.
#include "Desk/Application.h"
#include "Receiver/KodiReceiver.h"
#include "Support/WaitFor.h"

#include <QJsonObject>
#include <QProcess>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace velmora::test;

namespace {

constexpr double tolerance = 2;  // seconds; both sides report in steps, and asking takes time

TEST(KodiWindowTest, PlaysAMovieThatTheUserSteersInTheWindow) {
    QString missing = KodiReceiver::whatIsMissing();
    if (missing.isEmpty()) missing = Desk::whatIsMissing();
    if (!missing.isEmpty()) GTEST_SKIP() << "No real receiver or no desktop here: " << missing.toStdString();
    const KodiReceiver kodi;
    ASSERT_FALSE(kodi.address().isEmpty());
    const QString name = KodiReceiver::shownName.toString();
    Desk desk({.systemBus = kodi.bus()});
    ASSERT_EQ(desk.problem(), QString());
    const QString movie = desk.path(u"Movie.mkv"_s);
    ASSERT_EQ(QProcess::execute(QStringLiteral(MAKE_MOVIE), {movie}), 0);
    Application velmora(desk, {movie});
    const auto window = velmora.window(u"Movie*"_s);
    ASSERT_TRUE(window);
    const auto seen = [&] { return qPrintable(velmora.tree()->toText() + velmora.log()); };

    ASSERT_TRUE(velmora.chooseTelevision(name)) << seen();
    ASSERT_TRUE(velmora.find(u"alert message"_s, u"Playing on "_s + name)) << seen();
    ASSERT_TRUE(velmora.bringForward(*window));
    EXPECT_TRUE(kodi.isPlaying());
    const BusPlayer player = velmora.players().value(0, {desk.sessionBus(), {}});
    const auto shown = [&] { return player.property(u"Position"_s).toDouble() / 1e6; };
    const auto agrees = [&] {
        return waitFor([&] { return std::abs(kodi.position() - shown()) < tolerance; });
    };
    EXPECT_TRUE(agrees()) << kodi.position() << ' ' << shown();

    EXPECT_TRUE(desk.display().press(Qt::Key_Space));
    ASSERT_TRUE(velmora.find(u"alert message"_s, u"Paused on "_s + name)) << seen();
    EXPECT_TRUE(waitFor([&] { return kodi.player().value(u"speed"_s).toInt(1) == 0; }));
    const double before = kodi.position();
    EXPECT_TRUE(desk.display().press(Qt::SHIFT | Qt::Key_Right));
    EXPECT_TRUE(waitFor([&] { return std::abs(kodi.position() - before - 60) < tolerance; }))
        << kodi.position();
    EXPECT_TRUE(agrees()) << kodi.position() << ' ' << shown();
    EXPECT_TRUE(desk.display().press(Qt::Key_Space));
    EXPECT_TRUE(waitFor([&] { return kodi.position() > before + 62; })) << "goes on there";

    desk.display().close(window->id);
    EXPECT_TRUE(velmora.hasWindows(0));
    EXPECT_TRUE(waitFor([&] { return !kodi.isPlaying(); }));
    EXPECT_TRUE(velmora.isRunning());
    EXPECT_EQ(velmora.quit(), 0);
}

}  // namespace
