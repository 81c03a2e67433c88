#include "Interface/Application/AppDelegate.h"
#include "Interface/Application/Freedesktop/SingleInstance.h"
#include "Interface/Application/LaunchOptions.h"
#include "Interface/Application/PrivateBus.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLocalSocket>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace velmora;
using velmora::test::PrivateBus;

namespace {

QUrl movie(const QString& name) {
    return QUrl::fromLocalFile(u"/movies/"_s + name);
}

/// Delivers events until `done`, at most for as long as a slow machine may need.
template <typename Done>
bool comesTrue(Done done) {
    QElapsedTimer timer;
    timer.start();
    while (!done() && timer.elapsed() < 10'000) QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
    return done();
}

TEST(AppDelegate, KeepsWhatCameBeforeTheFirstWindow) {
    QList<QUrl> opened;
    int timesInFront = 0;
    AppDelegate delegate([&] { ++timesInFront; });
    EXPECT_FALSE(delegate.takePendingUrl());

    delegate.open({movie(u"a"_s), movie(u"b"_s)});
    delegate.open({movie(u"c"_s)});
    EXPECT_EQ(timesInFront, 2);
    delegate.setOpenWindow([&](const QUrl& url) {
        opened << url;
        EXPECT_FALSE(delegate.takePendingUrl()) << "a window that opens meanwhile takes another's movie";
    });
    EXPECT_EQ(delegate.takePendingUrl(), movie(u"a"_s));
    EXPECT_EQ(opened, (QList<QUrl>{movie(u"b"_s), movie(u"c"_s)}));
    EXPECT_FALSE(delegate.takePendingUrl());

    delegate.open({movie(u"d"_s)});
    EXPECT_EQ(opened.last(), movie(u"d"_s));
    EXPECT_TRUE(delegate.pending().isEmpty());
    EXPECT_EQ(timesInFront, 3);
    delegate.open({});
    EXPECT_EQ(timesInFront, 4) << "an empty list still brings the application to the front";
}

TEST(AppDelegate, DropsTheOthersWhenNothingOpensWindows) {
    AppDelegate delegate({});
    delegate.open({movie(u"a"_s), movie(u"b"_s)});
    EXPECT_EQ(delegate.takePendingUrl(), movie(u"a"_s));
    EXPECT_FALSE(delegate.takePendingUrl());
}

TEST(LaunchOptions, ReadsPathsUrlsAndOptions) {
    const QTemporaryDir folder;
    const QString oddName = u"file:odd name.mkv"_s;
    QFile odd(folder.filePath(oddName));
    ASSERT_TRUE(odd.open(QIODevice::WriteOnly));
    using enum LaunchRequest::Action;
    const struct {
        QStringList arguments;
        LaunchRequest::Action action;
        QStringList paths;
    } cases[] = {
        {{}, activate, {}},
        {{u"--new-window"_s}, newWindow, {}},
        {{u"a.mkv"_s, u"/b c/"_s, u"../d%20.mkv"_s},
         open,
         {folder.filePath(u"a.mkv"_s), u"/b c"_s, QDir::cleanPath(folder.filePath(u"../d%20.mkv"_s))}},
        {{u"file:///b%20c/%C3%A4.mkv"_s, u"file:///x/../y#z"_s}, open, {u"/b c/ä.mkv"_s, u"/y"_s}},
        {{oddName}, open, {odd.fileName()}},
        {{u"--new-window"_s, u"--"_s, u"--help"_s}, open, {folder.filePath(u"--help"_s)}},
    };
    for (const auto& each : cases) {
        const auto options = LaunchOptions::parse(each.arguments, folder.path());
        ASSERT_TRUE(options) << options.error().toStdString();
        EXPECT_EQ(options->request.action, each.action) << each.arguments.join(u' ').toStdString();
        QStringList paths;
        for (const QUrl& url : options->request.movies) paths << url.toLocalFile();
        EXPECT_EQ(paths, each.paths) << paths.join(u' ').toStdString();
    }
    EXPECT_EQ(LaunchOptions::parse({u"--version"_s}, {})->action, LaunchOptions::Action::version);
    EXPECT_FALSE(LaunchOptions::parse({u"--fullscreen"_s}, {}));
    EXPECT_FALSE(LaunchOptions::parse({u""_s}, {})) << "not the working folder";
}

class Handover : public testing::TestWithParam<bool> {
  protected:
    void SetUp() override {
        if (GetParam() && !PrivateBus::isRunning()) GTEST_SKIP() << "There is no dbus-daemon.";
        QObject::connect(&first, &SingleInstance::requested,
                         [this](const LaunchRequest& request) { requests << request; });
    }
    /// Another start of the program, as a process of its own; its exit status.
    int startAgain(const QStringList& arguments) {
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        if (!GetParam()) environment.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, u"disabled:"_s);
        process.setProcessEnvironment(environment);
        process.setProcessChannelMode(QProcess::ForwardedChannels);
        process.start(QCoreApplication::applicationFilePath(),
                      QStringList{u"hand-over"_s, socket} + arguments);
        EXPECT_TRUE(comesTrue([&] { return process.state() == QProcess::NotRunning; }));
        return process.exitCode();
    }

    QTemporaryDir folder;
    QString socket = folder.filePath(u"socket"_s);
    QDBusConnection bus = GetParam() ? QDBusConnection::sessionBus() : QDBusConnection(u"no such bus"_s);
    SingleInstance first{bus, socket};
    QList<LaunchRequest> requests;
};

TEST_P(Handover, GivesFilesToTheProcessThatRunsAlready) {
    if (!GetParam()) {  // left behind by one that crashed
        QFile stale(socket);
        ASSERT_TRUE(stale.open(QIODevice::WriteOnly));
    }
    ASSERT_EQ(first.start({}), SingleInstance::Role::first);

    EXPECT_EQ(startAgain({u"/movies/one two.mkv"_s, u"/movies/ä#%.mkv"_s, u"/movies/folder/"_s}), 0);
    EXPECT_EQ(startAgain({}), 0);
    EXPECT_EQ(startAgain({u"--new-window"_s}), 0);
    ASSERT_TRUE(comesTrue([&] { return requests.size() == 3; }));
    using enum LaunchRequest::Action;
    EXPECT_EQ(requests[0].action, open);
    EXPECT_EQ(requests[0].movies,
              (QList<QUrl>{movie(u"one two.mkv"_s), movie(u"ä#%.mkv"_s), movie(u"folder"_s)}));
    EXPECT_EQ(requests[1].action, activate);
    EXPECT_EQ(requests[2].action, newWindow);
}

INSTANTIATE_TEST_SUITE_P(OverTheBusAndWithout, Handover, testing::Bool(),
                         [](const auto& each) { return each.param ? "Bus" : "Socket"; });

TEST(HandoverSocket, DropsWhatIsNoRequest) {
    const QTemporaryDir folder;
    HandoverSocket server(folder.filePath(u"socket"_s));
    int requests = 0;
    QObject::connect(&server, &HandoverSocket::requested, [&] { ++requests; });
    ASSERT_EQ(server.handOverOrListen({}), HandoverSocket::Outcome::listening);
    for (const QByteArray& bytes :
         {QByteArray("{}\n"), QByteArray("[1]\n"), QByteArray("{\"action\":\"erase\",\"movies\":[]}\n"),
          QByteArray("{\"action\":\"open\",\"movies\":\"x\"}\n"), QByteArray(2 << 20, 'x')}) {
        QLocalSocket client;
        client.connectToServer(folder.filePath(u"socket"_s));
        client.write(bytes);
        EXPECT_TRUE(comesTrue([&] { return client.state() == QLocalSocket::UnconnectedState; }));
        EXPECT_EQ(client.readAll(), QByteArray()) << bytes.left(40).toStdString();
    }
    EXPECT_EQ(requests, 0);
}

}  // namespace
