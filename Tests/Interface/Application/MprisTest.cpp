#include "Interface/Application/Freedesktop/MprisPlayer.h"
#include "Interface/Application/Freedesktop/TaskbarProgress.h"
#include "Interface/Application/PrivateBus.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusInterface>
#include <QDBusMessage>
#include <QDBusReply>
#include <QElapsedTimer>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace velmora;
using velmora::test::PrivateBus;

namespace {

const QString path = u"/org/mpris/MediaPlayer2"_s;
const QString playerInterface = u"org.mpris.MediaPlayer2.Player"_s;
const QString baseName = u"org.mpris.MediaPlayer2.velmora"_s;

/// A panel: notes the signals that come, and asks without keeping the player from answering.
class Panel : public QObject {
    Q_OBJECT

  public:
    Panel() {
        bus.connect({}, path, u"org.freedesktop.DBus.Properties"_s, u"PropertiesChanged"_s, this,
                    SLOT(changed(QString, QVariantMap, QStringList)));
        bus.connect({}, path, playerInterface, u"Seeked"_s, this, SLOT(seeked(qlonglong)));
        bus.connect({}, {}, u"com.canonical.Unity.LauncherEntry"_s, u"Update"_s, this,
                    SLOT(updated(QString, QVariantMap)));
    }

    QDBusConnection bus = QDBusConnection::sessionBus();
    QList<QVariantMap> changes;
    QList<qlonglong> seeks;
    QList<QVariantMap> launcher;

    QDBusMessage ask(const QString& service, const QString& interface, const QString& method,
                     const QVariantList& arguments = {}) {
        QDBusMessage message = QDBusMessage::createMethodCall(service, path, interface, method);
        message.setArguments(arguments);
        return bus.call(message, QDBus::BlockWithGui, 5000);
    }
    QVariant property(const QString& name, const QString& interface = playerInterface) {
        const QDBusReply<QDBusVariant> reply =
            ask(baseName, u"org.freedesktop.DBus.Properties"_s, u"Get"_s, {interface, name});
        return reply.value().variant();
    }
    [[nodiscard]] QStringList players() const {
        return bus.interface()->registeredServiceNames().value().filter(baseName);
    }

  private Q_SLOTS:
    void changed(const QString&, const QVariantMap& properties, const QStringList&) { changes << properties; }
    void seeked(qlonglong position) { seeks << position; }
    void updated(const QString&, const QVariantMap& properties) { launcher << properties; }
};

template <typename Done>
bool comesTrue(Done done) {
    QElapsedTimer timer;
    timer.start();
    while (!done() && timer.elapsed() < 10'000) QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
    return done();
}

class Mpris : public testing::Test {
  protected:
    void SetUp() override {
        if (!PrivateBus::isRunning()) GTEST_SKIP() << "There is no dbus-daemon.";
    }

    MprisPlayer::Controls controls() {
        const auto note = [this](const QString& what) { return [this, what] { asked << what; }; };
        return {.raise = note(u"raise"_s),
                .close = note(u"close"_s),
                .play = note(u"play"_s),
                .pause = note(u"pause"_s),
                .playPause = note(u"playPause"_s),
                .stop = note(u"stop"_s),
                .seek = [this](double position) { asked << u"seek %1"_s.arg(position); },
                .open = [this](const QUrl& url) { asked << u"open "_s + url.toString(); }};
    }
    static MprisState playing() {
        return {.status = MprisState::Status::playing,
                .track = MprisState::Track{3, u"The Long Way"_s, QUrl(u"file:///m/a.mkv"_s), 5400.5,
                                           QUrl(u"file:///c/p.jpg"_s)},
                .canPlay = true,
                .canPause = true,
                .canSeek = true};
    }
    QStringList take() { return std::exchange(asked, {}); }

    QStringList asked;
};

TEST_F(Mpris, ShowsTheMovieAndTellsOfChanges) {
    Panel panel;
    MprisPlayer player(controls());
    EXPECT_EQ(panel.property(u"PlaybackStatus"_s), u"Stopped"_s);
    EXPECT_EQ(panel.property(u"CanControl"_s), true);
    EXPECT_EQ(panel.property(u"DesktopEntry"_s, u"org.mpris.MediaPlayer2"_s), u"com.quillet.velmora"_s);

    player.show(playing());
    player.show(playing());
    ASSERT_TRUE(comesTrue([&] { return !panel.changes.isEmpty(); }));
    EXPECT_EQ(panel.changes[0].size(), 5) << "status, metadata and what can be done";
    const QVariantMap metadata = qdbus_cast<QVariantMap>(panel.property(u"Metadata"_s));
    EXPECT_EQ(metadata[u"mpris:length"_s].toLongLong(), 5'400'500'000);
    EXPECT_EQ(metadata[u"mpris:artUrl"_s], u"file:///c/p.jpg"_s);
    EXPECT_EQ(metadata[u"xesam:title"_s], u"The Long Way"_s);

    MprisState paused = playing();
    paused.status = MprisState::Status::paused;
    player.show(paused);
    ASSERT_TRUE(comesTrue([&] { return panel.changes.size() == 2; })) << "the same state is told once";
    EXPECT_EQ(panel.changes[1], (QVariantMap{{u"PlaybackStatus"_s, u"Paused"_s}}));

    for (const double position : {0.5, 1.0, 62.0, 62.5, 10.0}) player.showPosition(position);
    ASSERT_TRUE(comesTrue([&] { return panel.seeks.size() == 2; }));
    EXPECT_EQ(panel.seeks, (QList<qlonglong>{62'000'000, 10'000'000})) << "jumps only";
    EXPECT_EQ(panel.property(u"Position"_s).toLongLong(), 10'000'000);
}

TEST_F(Mpris, DoesWhatIsPossibleAndNothingElse) {
    Panel panel;
    MprisPlayer player(controls());
    const auto tell = [&](const QString& method, const QVariantList& arguments = {}) {
        return panel.ask(baseName, playerInterface, method, arguments).type();
    };
    for (const QString& method : {u"Play"_s, u"Pause"_s, u"PlayPause"_s, u"Next"_s, u"Previous"_s})
        EXPECT_EQ(tell(method), QDBusMessage::ReplyMessage);
    tell(u"Seek"_s, {qlonglong(10)});
    EXPECT_EQ(take(), QStringList()) << "nothing is open";

    player.show(playing());
    player.showPosition(100);
    const auto track = [](int number) {
        return QVariant::fromValue(QDBusObjectPath(u"/com/quillet/velmora/movie/%1"_s.arg(number)));
    };
    const qlonglong second = 1'000'000;
    tell(u"Play"_s);
    tell(u"Pause"_s);
    tell(u"PlayPause"_s);
    tell(u"Seek"_s, {-30 * second});
    tell(u"SetPosition"_s, {track(3), 60 * second});
    tell(u"SetPosition"_s, {track(2), 70 * second});
    tell(u"SetPosition"_s, {track(3), 9'999 * second});
    tell(u"SetPosition"_s, {track(3), -second});
    tell(u"OpenUri"_s, {u"file:///m/b%20c.mkv"_s});
    tell(u"OpenUri"_s, {u"nonsense"_s});
    tell(u"Stop"_s);
    panel.ask(baseName, u"org.mpris.MediaPlayer2"_s, u"Raise"_s);
    EXPECT_EQ(take(), (QStringList{u"pause"_s, u"playPause"_s, u"seek 70"_s, u"seek 60"_s,
                                   u"open file:///m/b c.mkv"_s, u"stop"_s, u"raise"_s}));
}

TEST_F(Mpris, HasOnePlayerForEachWindow) {
    const Panel panel;
    {
        const MprisPlayer first(controls());
        const MprisPlayer second(controls());
        EXPECT_EQ(panel.players().size(), 2);
        EXPECT_EQ(panel.players().filter(u".instance"_s).size(), 1);
    }
    EXPECT_TRUE(comesTrue([&] { return panel.players().isEmpty(); }));
    const MprisPlayer again(controls());
    EXPECT_EQ(panel.players(), QStringList{baseName});
}

TEST_F(Mpris, TaskbarShowsTheAverageOfAllPreparations) {
    Panel panel;
    TaskbarProgress taskbar(panel.bus);
    const QObject one;
    const QObject other;
    // Each by itself: the bus library may hand the very first signal over behind the next ones.
    const auto arrives = [&](qsizetype count) {
        return comesTrue([&] { return panel.launcher.size() == count; });
    };
    taskbar.show(&one, 0.5);
    ASSERT_TRUE(arrives(1));
    taskbar.show(&one, 0.504);
    taskbar.show(&other, 0.0);
    ASSERT_TRUE(arrives(2));
    taskbar.show(&one, std::nullopt);
    ASSERT_TRUE(arrives(3));
    taskbar.show(&other, std::nullopt);
    ASSERT_TRUE(arrives(4));
    QList<double> shown;
    for (const QVariantMap& each : panel.launcher) shown << each[u"progress"_s].toDouble();
    EXPECT_EQ(shown, (QList<double>{0.5, 0.252, 0.0, 0.0}));
    EXPECT_EQ(panel.launcher[2][u"progress-visible"_s], true);
    EXPECT_EQ(panel.launcher[3][u"progress-visible"_s], false);
}

}  // namespace

#include "MprisTest.moc"
