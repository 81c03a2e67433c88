// The system's services over a private bus, with pretended ones at its other end.
#include "Platform/Linux/FreedesktopDesktop.h"
#include "Platform/Linux/LoginManager.h"
#include "Platform/Linux/RecentDocuments.h"
#include "Platform/WaitFor.h"
#include "System/SleepGuard.h"

#include <QDBusUnixFileDescriptor>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <poll.h>
#include <unistd.h>

#include <array>

namespace velmora {
namespace {

using namespace Qt::StringLiterals;
using test::waitFor;
using testing::ElementsAre;

/// A bus of the test's own.
class PrivateBus {
  public:
    PrivateBus() {
        daemon_.start(u"dbus-daemon"_s, {u"--session"_s, u"--nofork"_s, u"--print-address"_s,
                                         u"--address=unix:path=%1/bus"_s.arg(folder_.path())});
        daemon_.waitForReadyRead(10'000);
        address_ = QString::fromLatin1(daemon_.readLine()).trimmed();
    }
    ~PrivateBus() {
        for (const QString& name : names_) QDBusConnection::disconnectFromBus(name);
        daemon_.terminate();
        daemon_.waitForFinished(10'000);
    }
    QDBusConnection connection() {
        names_.append(address_ + QString::number(names_.size()));
        return QDBusConnection::connectToBus(address_, names_.last());
    }

  private:
    QTemporaryDir folder_;
    QProcess daemon_;
    QString address_;
    QStringList names_;
};

/// Keeps track of the locks that it gave away.
class PretendedLoginManager : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.login1.Manager")

  public:
    ~PretendedLoginManager() override {
        for (const int end : ends_) ::close(end);
    }
    [[nodiscard]] int held() const {
        int count = 0;
        for (const int end : ends_) {
            pollfd lock{end, POLLIN, 0};
            ::poll(&lock, 1, 0);
            if ((lock.revents & POLLHUP) == 0) ++count;
        }
        return count;
    }
    QStringList requests;

  public Q_SLOTS:
    QDBusUnixFileDescriptor Inhibit(const QString& what, const QString& who, const QString& why,
                                    const QString& mode) {
        requests.append(QStringList{what, who, why, mode}.join(u'|'));
        std::array<int, 2> lock{};
        EXPECT_EQ(::pipe(lock.data()), 0);
        ends_.append(lock[0]);
        QDBusUnixFileDescriptor given(lock[1]);
        ::close(lock[1]);
        return given;
    }

  private:
    QList<int> ends_;
};

class PretendedScreenSaver : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.ScreenSaver")

  public:
    QStringList requests;
    QList<uint> held;

  public Q_SLOTS:
    uint Inhibit(const QString& who, const QString& why) {
        requests.append(who + u'|' + why);
        held.append(uint(requests.size() + 40));
        return held.last();
    }
    void UnInhibit(uint cookie) { held.removeOne(cookie); }
};

class PretendedFileManager : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")

  public:
    QStringList shown;

  public Q_SLOTS:
    void ShowItems(const QStringList& addresses, const QString& /*startupId*/) { shown += addresses; }
};

class DesktopTest : public testing::Test {
  protected:
    void offer(QObject& service, const QString& name, const QString& path) {
        ASSERT_TRUE(services.registerObject(path, &service, QDBusConnection::ExportAllSlots));
        ASSERT_TRUE(services.registerService(name));
    }
    void offerLoginManager() { offer(logins, u"org.freedesktop.login1"_s, u"/org/freedesktop/login1"_s); }
    void offerScreenSaver() {
        offer(screenSaver, u"org.freedesktop.ScreenSaver"_s, u"/org/freedesktop/ScreenSaver"_s);
    }

    PrivateBus bus;
    QDBusConnection services = bus.connection();
    QDBusConnection client = bus.connection();
    PretendedLoginManager logins;
    PretendedScreenSaver screenSaver;
    LoginManager manager{{client, client}};
};

TEST_F(DesktopTest, TheSleepGuardHoldsOneLockAndGivesItBack) {
    offerLoginManager();
    offerScreenSaver();
    SleepGuard guard(manager);
    guard.setActive(true);
    guard.setActive(true);
    ASSERT_TRUE(waitFor([this] { return logins.held() == 1; }));
    EXPECT_EQ(logins.requests, QStringList(u"idle|Velmora|Velmora is streaming a movie|block"_s));
    guard.setActive(false);
    guard.setActive(false);
    ASSERT_TRUE(waitFor([this] { return logins.held() == 0; }));

    // Given back before it was granted: nothing stays.
    guard.setActive(true);
    guard.setActive(false);
    ASSERT_TRUE(waitFor([this] { return logins.requests.size() == 2 && logins.held() == 0; }));
    EXPECT_THAT(screenSaver.requests, ElementsAre());
    // Windows do not share: each holds its own.
    SleepGuard second(manager);
    guard.setActive(true);
    second.setActive(true);
    ASSERT_TRUE(waitFor([this] { return logins.held() == 2; }));
    guard.setActive(false);
    ASSERT_TRUE(waitFor([this] { return logins.held() == 1; }));
    manager.release(4711);
    EXPECT_EQ(logins.held(), 1);
}

TEST_F(DesktopTest, TheScreenSaverStandsInForTheLoginManager) {
    offerScreenSaver();
    const auto assertion = manager.preventIdleSleep(u"a movie"_s);
    ASSERT_TRUE(assertion);
    ASSERT_TRUE(waitFor([this] { return !screenSaver.held.isEmpty(); }));
    EXPECT_EQ(screenSaver.requests, QStringList(u"Velmora|a movie"_s));
    auto lit = manager.lightDisplay();
    ASSERT_TRUE(waitFor([this] { return screenSaver.held.size() == 2; }));
    manager.release(*assertion);
    lit.reset();
    EXPECT_TRUE(waitFor([this] { return screenSaver.held.isEmpty(); }));
}

TEST_F(DesktopTest, WithoutAnyServiceNothingFails) {
    const auto assertion = manager.preventIdleSleep(u"a movie"_s);
    ASSERT_TRUE(assertion);
    const auto lit = manager.lightDisplay();
    manager.release(*assertion);
    LoginManager alone({QDBusConnection(u"none"_s), QDBusConnection(u"none"_s)});
    EXPECT_EQ(alone.preventIdleSleep(u"a movie"_s), std::nullopt);
}

TEST_F(DesktopTest, FilesAreShownInTheFileManagerOrTheirFolderIsOpened) {
    const QTemporaryDir folder;
    const QString opened = folder.filePath(u"opened"_s);
    QFile opener(folder.filePath(u"xdg-open"_s));
    ASSERT_TRUE(opener.open(QIODevice::WriteOnly));
    opener.write("#!/bin/sh\nprintf %s \"$1\" >'" + opened.toUtf8() + ".part' && mv '" + opened.toUtf8() +
                 ".part' '" + opened.toUtf8() + "'\n");
    opener.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
    opener.close();
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", QFile::encodeName(folder.path()) + ':' + path);

    FreedesktopDesktop desktop({}, client);
    desktop.reveal(QUrl::fromLocalFile(u"/films/a b.mp4"_s));
    EXPECT_TRUE(waitFor([&] { return QFile::exists(opened); }));
    QFile written(opened);
    EXPECT_TRUE(written.open(QIODevice::ReadOnly));
    EXPECT_EQ(written.readAll(), "/films");
    qputenv("PATH", path);

    PretendedFileManager files;
    offer(files, u"org.freedesktop.FileManager1"_s, u"/org/freedesktop/FileManager1"_s);
    desktop.reveal(QUrl::fromLocalFile(u"/films/a b.mp4"_s));
    EXPECT_TRUE(waitFor([&] { return files.shown == QStringList(u"file:///films/a%20b.mp4"_s); }));
}

TEST(RecentDocuments, KeepsWhatOthersWroteAndCountsOurs) {
    const QUrl movie = QUrl::fromLocalFile(u"/films/Tom & \"Jerry\".mkv"_s);
    const QDateTime first(QDate(2024, 5, 1), QTime(20, 15), Qt::UTC);
    const auto fresh = RecentDocuments::with(movie, {}, first);
    ASSERT_TRUE(fresh);
    const QByteArray others = R"(<bookmark href="file:///a.txt" added="1" modified="2" visited="3">
  <info><metadata owner="http://freedesktop.org"><mime:mime-type type="text/plain"/></metadata></info>
 </bookmark>)";
    QByteArray list = *fresh;
    const QByteArray another = R"(<bookmark:application name="Other" exec="'o'" modified="m" count="7"/>)";
    list.replace("</bookmark:applications>", another + "</bookmark:applications>");
    list.replace("</xbel>", others + "</xbel>");
    const auto again = RecentDocuments::with(movie, list, first.addDays(1));
    ASSERT_TRUE(again);
    EXPECT_EQ(again->count("<bookmark "), 2);
    EXPECT_TRUE(again->contains(others)) << again->constData();
    EXPECT_TRUE(again->contains(another)) << again->constData();
    EXPECT_TRUE(
        again->contains("href=\"file:///films/Tom%20&amp;%20%22Jerry%22.mkv\" added=\"2024-05-01T20:15"
                        ":00.000Z\" modified=\"2024-05-02T20:15:00.000Z\""))
        << again->constData();
    EXPECT_EQ(again->count("name=\"Velmora\""), 1);
    EXPECT_TRUE(again->contains("modified=\"2024-05-02T20:15:00.000Z\" count=\"2\"")) << again->constData();
    EXPECT_TRUE(again->contains("type=\"video/x-matroska\""));
    for (const char* damaged : {"<xbel><bookmark", "<html></html>", "text"})
        EXPECT_EQ(RecentDocuments::with(movie, damaged, first), std::nullopt) << damaged;

    EXPECT_TRUE(RecentDocuments::add(movie));
    QFile file(RecentDocuments::path());
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    EXPECT_TRUE(file.readAll().contains("Jerry"));
    file.resize(100);
    file.close();
    EXPECT_FALSE(RecentDocuments::add(movie));
    EXPECT_EQ(QFile(RecentDocuments::path()).size(), 100) << "what is damaged may be mended by others";
}

}  // namespace
}  // namespace velmora

#include "DesktopTest.moc"
