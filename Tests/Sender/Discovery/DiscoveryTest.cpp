#include "Sender/Discovery/Discovery.h"
#include "Support/VirtualClock.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QElapsedTimer>
#include <QHostInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace velmora;

namespace {

bool eventually(const std::function<bool()>& holds, std::chrono::milliseconds within = 20s) {
    QElapsedTimer timer;
    timer.start();
    while (!holds() && timer.elapsed() < within.count())
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    return holds();
}

using Result = std::expected<Receiver, QString>;

QCoro::Task<> ask(QCoro::Task<Result> task, Result& answer) {
    answer = co_await task;
}

/// Real Avahi daemons on two hosts that the script beside this file makes; skips where it cannot.
class DiscoveryTest : public testing::Test {
  protected:
    void SetUp() override {
        network_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        network_.start(QStringLiteral(AVAHI_NETWORK), {directory_.path()});
        const QString answer = line();
        if (answer.startsWith("missing"_L1))
            GTEST_SKIP() << "needs Avahi in namespaces: " << qPrintable(answer);
        ASSERT_EQ(answer, u"ready"_s);
        qDBusRegisterMetaType<QList<QByteArray>>();
        publisher_ = QDBusConnection::connectToBus(busOf(u"publisher"_s), u"publisher"_s);
    }
    void TearDown() override {
        QDBusConnection::disconnectFromBus(u"publisher"_s);
        network_.closeWriteChannel();
        network_.waitForFinished(-1);
    }

    QString line() {
        while (!network_.canReadLine() && network_.waitForReadyRead(90000)) {
        }
        return QString::fromUtf8(network_.readLine()).trimmed();
    }
    void tell(const QString& command) {
        network_.write(command.toUtf8() + '\n');
        ASSERT_EQ(line(), u"done"_s);
    }
    QString busOf(const QString& host) { return u"unix:path=%1/%2.bus"_s.arg(directory_.path(), host); }

    /// Calls the publisher's daemon: its server, or a group of services.
    QVariant call(const QString& path, const QString& method, const QVariantList& arguments = {}) {
        const QString interface = path == u"/"_s ? u"Server"_s : u"EntryGroup"_s;
        auto message = QDBusMessage::createMethodCall(u"org.freedesktop.Avahi"_s, path,
                                                      u"org.freedesktop.Avahi."_s + interface, method);
        message.setArguments(arguments);
        const QDBusMessage reply = publisher_.call(message);
        EXPECT_EQ(reply.type(), QDBusMessage::ReplyMessage) << qPrintable(reply.errorMessage());
        return reply.arguments().value(0);
    }
    void update(const QString& group, const QString& name, const QList<QByteArray>& txt) {
        call(group, u"UpdateServiceTxt"_s, {-1, -1, 0U, name, airPlay, QString(), QVariant::fromValue(txt)});
    }
    /// Announces a receiver on port 7000; returns the group's path.
    QString publish(const QString& name, const QList<QByteArray>& txt) {
        const QString group = call(u"/"_s, u"EntryGroupNew"_s).value<QDBusObjectPath>().path();
        call(group, u"AddService"_s,
             {-1, -1, 0U, name, airPlay, QString(), QString(), QVariant::fromValue(ushort(7000)),
              QVariant::fromValue(txt)});
        call(group, u"Commit"_s);
        return group;
    }

    /// Names, versions and addresses.
    static QString seen(const Discovery& discovery) {
        QStringList words;
        for (const Receiver& receiver : discovery.receivers()) {
            words << receiver.name << receiver.announced->systemVersion;
            for (const QHostAddress& address : receiver.addresses) words << address.toString();
        }
        return words.join(u' ');
    }

    const QString airPlay = u"_airplay._tcp"_s;
    const QList<QByteArray> appleTv{"deviceid=AA:BB:CC:DD:EE:FF", "features=0x4A7FDFD5,0x3C155FDE",
                                    "osvers=17.4"};
    const QString appleTvSeen = u"TV 17.4 192.0.2.2 fd00:db8::2"_s;

    QTemporaryDir directory_;
    QProcess network_;
    QDBusConnection publisher_{QString()};
};

TEST_F(DiscoveryTest, FollowsAReceiverThroughItsLife) {
    SystemClock clock;
    Discovery discovery(clock, busOf(u"viewer"_s));
    int changes = 0;
    QObject::connect(&discovery, &Discovery::receiversChanged, [&] { ++changes; });
    discovery.start();
    const QString group = publish(u"TV"_s, appleTv);
    Result found;
    const auto finding = ask(discovery.find(u"tv"_s, 20s), found);
    EXPECT_TRUE(eventually([&] { return seen(discovery) == appleTvSeen; })) << qPrintable(seen(discovery));

    EXPECT_TRUE(eventually([&] { return finding.isReady(); }));
    EXPECT_EQ(found ? found->identifier : found.error(), u"AA:BB:CC:DD:EE:FF"_s);

    auto updated = appleTv;
    updated.last() = "osvers=26.0";
    update(group, u"TV"_s, updated);
    EXPECT_TRUE(eventually([&] { return seen(discovery).contains("26.0"_L1); }));
    const int settled = changes;
    update(group, u"TV"_s, updated);
    EXPECT_FALSE(eventually([&] { return changes > settled; }, 1s)) << "the same once more is no news";

    publish(u"Küche ☂"_s, {"features=0x4A7FCA00,0xBC354BD0"});
    EXPECT_TRUE(eventually([&] { return discovery.receivers().size() == 2; }));
    EXPECT_FALSE(discovery.receivers().first().takesVideo());
    call(group, u"Free"_s);
    EXPECT_TRUE(eventually([&] { return seen(discovery) == u"Küche ☂  192.0.2.2 fd00:db8::2"_s; }));
    tell(u"stop-daemon publisher"_s);
    EXPECT_TRUE(eventually([&] { return discovery.receivers().isEmpty(); }));
}

TEST_F(DiscoveryTest, SurvivesTheEndOfDaemonAndBus) {
    test::FastClock clock(20);  // ten seconds pass before a bus that is gone is tried again
    Discovery discovery(clock, busOf(u"viewer"_s));
    QStringList reasons;
    QObject::connect(&discovery, &Discovery::unavailableReasonChanged,
                     [&] { reasons << discovery.unavailableReason(); });
    tell(u"stop-daemon viewer"_s);
    publish(u"TV"_s, appleTv);
    discovery.start();
    EXPECT_TRUE(eventually([&] { return discovery.unavailableReason().contains("avahi-daemon"_L1); }));
    EXPECT_FALSE(eventually([&] { return reasons.size() > 1; }, 500ms)) << "said once";
    tell(u"start-daemon viewer"_s);
    EXPECT_TRUE(eventually([&] { return seen(discovery) == appleTvSeen; })) << qPrintable(seen(discovery));
    EXPECT_TRUE(discovery.unavailableReason().isEmpty());

    tell(u"stop-bus viewer"_s);
    EXPECT_TRUE(eventually([&] { return discovery.unavailableReason().contains("D-Bus"_L1); }));
    EXPECT_TRUE(discovery.receivers().isEmpty());
    tell(u"start-bus viewer"_s);
    tell(u"start-daemon viewer"_s);
    EXPECT_TRUE(eventually([&] { return seen(discovery) == appleTvSeen; })) << qPrintable(seen(discovery));
}

TEST(DiscoveryWithoutBus, SaysSoAndStillResolvesWhatItCan) {
    SystemClock clock;
    std::optional<Discovery> discovery(std::in_place, clock, u"unix:path=/nonexistent/bus"_s);
    discovery->start();
    EXPECT_TRUE(eventually([&] { return discovery->unavailableReason().contains("D-Bus"_L1); }));
    const Receiver old{
        .name = u"Old"_s, .identifier = u"name=Old"_s, .address = QHostAddress(u"192.0.2.7"_s)};
    Result missing, vanished, named;
    const auto first = ask(discovery->find(u"TV"_s, 10s), missing);
    const auto second = ask(discovery->resolve(old, 10s), vanished);
    const auto third = ask(discovery->resolve(*Receiver::fromText(u"localhost"_s), 10s), named);
    ASSERT_TRUE(eventually([&] { return first.isReady() && second.isReady() && third.isReady(); }));
    EXPECT_TRUE(missing.error().contains(discovery->unavailableReason()));
    EXPECT_EQ(vanished, old) << "it may answer where it was";
    // A bare system may know no names at all, not even this one.
    if (!QHostInfo::fromName(u"localhost"_s).addresses().isEmpty()) {
        EXPECT_EQ(named ? named->address.toString() : named.error(), u"127.0.0.1"_s);
    }
}

TEST(DiscoveryWithoutBus, MayGoWhileItIsAsked) {
    SystemClock clock;
    std::optional<Discovery> discovery(std::in_place, clock, QString());  // never started
    const auto finding = discovery->find(u"TV"_s, 10s);
    discovery.reset();
    EXPECT_TRUE(eventually([&] { return finding.isReady(); }));
}

}  // namespace
