#include "Interface/Application/PrivateBus.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using velmora::test::PrivateBus;

namespace {

/// The program itself, on the real system without a screen. Every window is a player on the bus.
class Program : public testing::Test {
  protected:
    void SetUp() override {
        if (!PrivateBus::isRunning()) GTEST_SKIP() << "There is no dbus-daemon.";
    }
    void TearDown() override {
        first.kill();
        first.waitForFinished();
    }

    QString addFile(const QString& name) {
        QFile file(folder.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        return file.fileName();
    }
    static void start(QProcess& program, const QStringList& arguments) {
        program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        program.start(QStringLiteral(VELMORA), arguments);
        ASSERT_TRUE(program.waitForStarted());
    }
    /// Its exit status and what it printed.
    static std::pair<int, QByteArray> run(const QStringList& arguments) {
        QProcess program;
        start(program, arguments);
        EXPECT_TRUE(program.waitForFinished());
        return {program.exitCode(), program.readAllStandardOutput()};
    }
    static qsizetype windows() {
        const QStringList names = QDBusConnection::sessionBus().interface()->registeredServiceNames();
        return names.filter(u"org.mpris.MediaPlayer2.velmora"_s).size();
    }
    static bool hasWindows(qsizetype count) {
        QElapsedTimer timer;
        timer.start();
        while (windows() != count && timer.elapsed() < 20'000)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
        return windows() == count;
    }

    QTemporaryDir folder;
    QProcess first;
};

TEST_F(Program, RunsOnceAndOpensAWindowForEachMovie) {
    const QStringList movies{addFile(u"one.mkv"_s), addFile(u"two.mkv"_s), addFile(u"three.mkv"_s)};
    start(first, movies);
    ASSERT_TRUE(hasWindows(3)) << windows();
    EXPECT_EQ(run({movies[0], addFile(u"four.mkv"_s), addFile(u"five.mkv"_s)}).first, 0);
    EXPECT_TRUE(hasWindows(5)) << windows();
    EXPECT_EQ(run({}).first, 0);
    EXPECT_EQ(run({u"--new-window"_s}).first, 0);
    EXPECT_TRUE(hasWindows(6)) << windows();
    EXPECT_EQ(first.state(), QProcess::Running);

    QDBusMessage quit = QDBusMessage::createMethodCall(u"com.quillet.velmora"_s, u"/com/quillet/velmora"_s,
                                                       u"org.freedesktop.Application"_s, u"ActivateAction"_s);
    quit << u"quit"_s << QVariantList() << QVariantMap();
    QDBusConnection::sessionBus().call(quit);
    EXPECT_TRUE(first.waitForFinished());
    EXPECT_EQ(first.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(first.exitCode(), 0);
    EXPECT_EQ(windows(), 0);
}

TEST_F(Program, EndsWellWhenTheSessionEnds) {
    start(first, {addFile(u"one.mkv"_s)});
    ASSERT_TRUE(hasWindows(1));
    first.terminate();
    EXPECT_TRUE(first.waitForFinished());
    EXPECT_EQ(first.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(first.exitCode(), 0);
}

TEST_F(Program, AnswersWithoutAWindow) {
    EXPECT_TRUE(run({u"--help"_s}).second.contains("--new-window"));
    EXPECT_TRUE(run({u"--version"_s}).second.startsWith("velmora "));
    EXPECT_EQ(run({u"--nonsense"_s}).first, 2);
    EXPECT_EQ(run({u"-platform"_s, u"xcb"_s, u"-display"_s, u":nowhere"_s}).first, 1) << "no desktop";
}

}  // namespace
