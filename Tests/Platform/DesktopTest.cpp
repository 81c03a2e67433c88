// The system's services over a private bus, with pretended ones at its other end.
#include "Platform/Linux/FreedesktopDesktop.h"
#include "Platform/Linux/LoginManager.h"
#include "Platform/Linux/RecentDocuments.h"
#include "Support/WaitFor.h"
#include "System/SleepGuard.h"

#include <QDBusUnixFileDescriptor>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>

namespace velmora {
namespace {

using namespace Qt::StringLiterals;
using test::waitFor;

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

/// All the services in one: each is offered under its own name.
class Pretended : public QObject {
    Q_OBJECT

  public:
    ~Pretended() override {
        for (const int end : locks_) ::close(end);
    }
    /// The login manager's locks that nobody has closed.
    [[nodiscard]] int locks() const {
        return static_cast<int>(std::ranges::count_if(locks_, [](int end) {
            pollfd lock{end, POLLIN, 0};
            ::poll(&lock, 1, 0);
            return (lock.revents & POLLHUP) == 0;
        }));
    }
    QStringList requests;
    QList<uint> cookies;  ///< the screen saver's that were not given back
    QStringList shown;

  public Q_SLOTS:
    // NOLINTBEGIN(readability-identifier-naming): named by the services' specifications
    QDBusUnixFileDescriptor Inhibit(const QString& what, const QString& who, const QString& why,
                                    const QString& mode) {
        requests.append(QStringList{what, who, why, mode}.join(u'|'));
        std::array<int, 2> lock{};
        EXPECT_EQ(::pipe(lock.data()), 0);
        locks_.append(lock[0]);
        QDBusUnixFileDescriptor given;
        given.giveFileDescriptor(lock[1]);
        return given;
    }
    uint Inhibit(const QString& who, const QString& why) {
        requests.append(who + u'|' + why);
        cookies.append(uint(requests.size() + 40));
        return cookies.last();
    }
    void UnInhibit(uint cookie) { cookies.removeOne(cookie); }
    void ShowItems(const QStringList& addresses, const QString& /*startupId*/) { shown += addresses; }
    // NOLINTEND(readability-identifier-naming)

  private:
    QList<int> locks_;
};

class DesktopTest : public testing::Test {
  protected:
    void offer(const QString& name, const QString& interface) {
        const QString path = u'/' + QString(name).replace(u'.', u'/');
        ASSERT_TRUE(services.registerObject(path, interface, &pretended, QDBusConnection::ExportAllSlots));
        ASSERT_TRUE(services.registerService(name));
    }
    void offerLoginManager() { offer(u"org.freedesktop.login1"_s, u"org.freedesktop.login1.Manager"_s); }
    void offerScreenSaver() { offer(u"org.freedesktop.ScreenSaver"_s, u"org.freedesktop.ScreenSaver"_s); }

    PrivateBus bus;
    QDBusConnection services = bus.connection();
    QDBusConnection client = bus.connection();
    Pretended pretended;
    LoginManager manager{{client, client}};
};

TEST_F(DesktopTest, EachSleepGuardHoldsOneLockAndGivesItBack) {
    offerLoginManager();
    offerScreenSaver();
    SleepGuard guard(manager);
    guard.setActive(true);
    guard.setActive(true);
    ASSERT_TRUE(waitFor([this] { return pretended.locks() == 1; }));
    EXPECT_EQ(pretended.requests, QStringList(u"idle|Velmora|Velmora is streaming a movie|block"_s));
    guard.setActive(false);
    guard.setActive(false);
    ASSERT_TRUE(waitFor([this] { return pretended.locks() == 0; }));

    // Given back before it was granted: nothing stays.
    guard.setActive(true);
    guard.setActive(false);
    ASSERT_TRUE(waitFor([this] { return pretended.requests.size() == 2 && pretended.locks() == 0; }));
    SleepGuard second(manager);
    guard.setActive(true);
    second.setActive(true);
    ASSERT_TRUE(waitFor([this] { return pretended.locks() == 2; }));
    guard.setActive(false);
    ASSERT_TRUE(waitFor([this] { return pretended.locks() == 1; }));
    EXPECT_EQ(pretended.requests.size(), 4) << "the screen saver was not asked";
}

TEST_F(DesktopTest, TheScreenSaverStandsInForTheLoginManager) {
    LoginManager alone({QDBusConnection(u"none"_s), QDBusConnection(u"none"_s)});
    EXPECT_EQ(alone.preventIdleSleep(u"a movie"_s), std::nullopt);
    offerScreenSaver();
    const auto assertion = manager.preventIdleSleep(u"a movie"_s);
    ASSERT_TRUE(assertion);
    ASSERT_TRUE(waitFor([this] { return !pretended.cookies.isEmpty(); }));
    EXPECT_EQ(pretended.requests, QStringList(u"Velmora|a movie"_s));
    auto lit = manager.lightDisplay();
    ASSERT_TRUE(waitFor([this] { return pretended.cookies.size() == 2; }));
    manager.release(*assertion);
    lit.reset();
    EXPECT_TRUE(waitFor([this] { return pretended.cookies.isEmpty(); }));
}

TEST_F(DesktopTest, FilesAreShownInTheFileManagerOrTheirFolderIsOpened) {
    const QTemporaryDir folder;
    const QString opened = folder.filePath(u"opened"_s);
    QFile opener(folder.filePath(u"xdg-open"_s));
    ASSERT_TRUE(opener.open(QIODevice::WriteOnly));
    opener.write("#!/bin/sh\nln -s \"$1\" '" + opened.toUtf8() + "'\n");
    opener.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
    opener.close();
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", QFile::encodeName(folder.path()) + ':' + path);

    FreedesktopDesktop desktop({}, client);
    desktop.reveal(QUrl::fromLocalFile(u"/films/a b.mp4"_s));
    EXPECT_TRUE(waitFor([&] { return QFile::symLinkTarget(opened) == u"/films"_s; }));
    qputenv("PATH", path);

    offer(u"org.freedesktop.FileManager1"_s, u"org.freedesktop.FileManager1"_s);
    desktop.reveal(QUrl::fromLocalFile(u"/films/a b.mp4"_s));
    EXPECT_TRUE(waitFor([&] { return pretended.shown == QStringList(u"file:///films/a%20b.mp4"_s); }));
}

TEST(RecentDocuments, KeepsWhatOthersWroteAndCountsOurs) {
    const QUrl movie = QUrl::fromLocalFile(u"/films/Tom & \"Jerry\".mkv"_s);
    const QDateTime first(QDate(2024, 5, 1), QTime(20, 15), Qt::UTC);
    QByteArray list = RecentDocuments::with(movie, {}, first).value_or("");
    const QByteArray others = R"(<bookmark href="file:///a.txt" added="1" modified="2" visited="3">
  <info><metadata owner="http://freedesktop.org"><mime:mime-type type="text/plain"/></metadata></info>
 </bookmark>)";
    const QByteArray another = R"(<bookmark:application name="Other" exec="'o'" modified="m" count="7"/>)";
    list.replace("</bookmark:applications>", another + "</bookmark:applications>");
    list.replace("</xbel>", others + "</xbel>");
    const QByteArray again = RecentDocuments::with(movie, list, first.addDays(1)).value_or("");
    for (const QByteArray& part :
         {others, another, QByteArray("type=\"video/x-matroska\""), QByteArray("count=\"2\""),
          QByteArray(
              "href=\"file:///films/Tom%20&amp;%20%22Jerry%22.mkv\" added=\"2024-05-01T20:15:00.000Z\" "
              "modified=\"2024-05-02T20:15:00.000Z\"")}) {
        EXPECT_EQ(again.count(part), 1) << part.constData() << "\nin\n" << again.constData();
    }
    for (const char* damaged : {"<xbel><bookmark", "<html></html>", "text"})
        EXPECT_EQ(RecentDocuments::with(movie, damaged, first), std::nullopt) << damaged;

    {
        FreedesktopDesktop desktop({}, QDBusConnection(u"none"_s));
        for (const char* name : {"/films/a.mkv", "/films/b.mkv", "/films/a.mkv"})
            desktop.noteRecentDocument(QUrl::fromLocalFile(QString::fromLatin1(name)));
    }
    QFile both(RecentDocuments::path());
    ASSERT_TRUE(both.open(QIODevice::ReadOnly));
    const QByteArray kept = both.readAll();
    EXPECT_EQ(kept.count("<bookmark "), 2) << kept.constData();
    EXPECT_EQ(kept.count("count=\"2\""), 1) << kept.constData();

    EXPECT_TRUE(RecentDocuments::add(movie));
    EXPECT_TRUE(QFile::resize(RecentDocuments::path(), 100));
    EXPECT_FALSE(RecentDocuments::add(movie));
    EXPECT_EQ(QFile(RecentDocuments::path()).size(), 100) << "what is damaged may be mended by others";
}

}  // namespace
}  // namespace velmora

#include "DesktopTest.moc"
