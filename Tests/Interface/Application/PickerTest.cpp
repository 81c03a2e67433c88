#include "Interface/Application/Freedesktop/FileChooserPortal.h"
#include "Interface/Application/MovieBrowser.h"
#include "Interface/Application/PrivateBus.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVirtualObject>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace velmora;
using velmora::test::PrivateBus;

namespace {

using Unavailable = FileChooserPortal::Unavailable;

/// A desktop's portal whose user answers at once; on a connection of its own.
class Portal : public QDBusVirtualObject {
  public:
    static constexpr uint noAnswer = 99;
    uint response = noAnswer;
    QStringList uris;
    QVariantMap options;
    QStringList closed;

    Portal() {
        bus_.registerVirtualObject(u"/org/freedesktop/portal/desktop"_s, this, QDBusConnection::SubPath);
        bus_.registerService(u"org.freedesktop.portal.Desktop"_s);
    }
    ~Portal() override { QDBusConnection::disconnectFromBus(u"portal"_s); }

    [[nodiscard]] QString introspect(const QString& /*path*/) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& /*bus*/) override {
        if (message.member() == u"Close") closed << message.path();
        if (message.member() != u"OpenFile") return true;
        options = qdbus_cast<QVariantMap>(message.arguments().value(2));
        const QString sender = message.service().mid(1).replace(u'.', u'_');
        const QString handle = u"/org/freedesktop/portal/desktop/request/%1/%2"_s.arg(
            sender, options[u"handle_token"_s].toString());
        QDBusMessage signal =
            QDBusMessage::createSignal(handle, u"org.freedesktop.portal.Request"_s, u"Response"_s);
        signal << response << QVariantMap{{u"uris"_s, uris}};
        // The user is faster than the portal's answer to the call.
        if (response != noAnswer) bus_.send(signal);
        bus_.send(message.createReply(QVariant::fromValue(QDBusObjectPath(handle))));
        return true;
    }

  private:
    QDBusConnection bus_ = QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"portal"_s);
};

TEST(FileChooserPortal, SaysWhatTheUserChoseOrThatThereIsNoDialog) {
    if (!PrivateBus::isRunning()) GTEST_SKIP() << "There is no dbus-daemon.";
    QList<FileChooserPortal::Answer> answers;
    FileChooserPortal withoutBus(QDBusConnection(u"no bus"_s));
    withoutBus.ask({.title = u"Choose"_s},
                   [&](const FileChooserPortal::Answer& answer) { answers << answer; });
    ASSERT_TRUE(QTest::qWaitFor([&] { return !answers.isEmpty(); }));
    EXPECT_FALSE(answers.first().has_value());

    FileChooserPortal chooser(QDBusConnection::sessionBus());
    const auto ask = [&](bool wantsFolder) {
        chooser.ask({.title = u"Choose"_s, .wantsFolder = wantsFolder, .extensions = {u"mp4"_s}},
                    [&](const FileChooserPortal::Answer& answer) { answers << answer; });
    };
    const auto answerTo = [&](bool wantsFolder) {
        answers.clear();
        ask(wantsFolder);
        return QTest::qWaitFor([&] { return !answers.isEmpty(); }) ? answers.first()
                                                                   : std::unexpected(Unavailable::noPortal);
    };
    EXPECT_FALSE(answerTo(false).has_value()) << "there is none on this bus";

    Portal portal;
    const QUrl movie = QUrl::fromLocalFile(u"/home/a/Ein Film – 100 %.mp4"_s);
    const struct {
        uint response;
        QStringList uris;
        FileChooserPortal::Answer expected;
    } cases[] = {
        {0, {QString::fromLatin1(movie.toEncoded())}, movie},
        {1, {}, std::nullopt},
        {2, {}, std::unexpected(Unavailable::noPortal)},
        {0, {}, std::unexpected(Unavailable::noPortal)},
        {0, {u"https://example.org/a.mp4"_s}, std::unexpected(Unavailable::noPortal)},
    };
    for (const auto& each : cases) {
        portal.response = each.response;
        portal.uris = each.uris;
        EXPECT_TRUE(answerTo(false) == each.expected) << each.response << each.uris.join(u' ').toStdString();
        EXPECT_TRUE(portal.options.contains(u"filters"_s) && !portal.options.contains(u"directory"_s));
    }
    answerTo(true);
    EXPECT_TRUE(portal.options[u"directory"_s].toBool());

    answers.clear();
    portal.response = Portal::noAnswer;
    ask(false);
    chooser.cancel();
    EXPECT_TRUE(QTest::qWaitFor([&] { return portal.closed.size() == 1; })) << "the dialog is taken away";
    EXPECT_TRUE(answers.isEmpty());
}

TEST(MovieBrowser, ShowsFoldersAndMoviesAndWalks) {
    const QTemporaryDir home;
    const QDir root(home.path());
    for (const auto& folder : {u"Series 10"_s, u"series 2"_s, u".hidden"_s, u"Empty"_s}) root.mkdir(folder);
    for (const auto& name : {u"b.MKV"_s, u"A (2026).mp4"_s, u"notes.txt"_s, u"a.srt"_s}) {
        QFile file(root.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    }
    MovieBrowser browser({u"mkv"_s, u"mp4"_s});
    QList<QUrl> chosen;
    QObject::connect(&browser, &MovieBrowser::movieChosen, [&](const QUrl& movie) { chosen << movie; });
    const auto shown = [&] {
        QStringList texts;
        for (const MenuRow& row : browser.contents()->rows()) texts << row.text;
        return texts.join(u'|');
    };
    browser.show(root.filePath(u"gone/deeper"_s));
    EXPECT_EQ(browser.folder(), QUrl::fromLocalFile(home.path())) << "the nearest that is there";
    EXPECT_EQ(shown(), u"Empty|series 2|Series 10|A (2026).mp4|b.MKV");
    browser.contents()->choose(4);
    EXPECT_EQ(chosen, QList<QUrl>{QUrl::fromLocalFile(root.filePath(u"b.MKV"_s))});
    browser.contents()->choose(0);
    EXPECT_EQ(browser.name(), u"Empty");
    EXPECT_EQ(shown(), u"No movies here");
    EXPECT_EQ(browser.contents()->first(), -1) << "which cannot be pressed";
    browser.goUp();
    EXPECT_EQ(browser.contents()->rows().size(), 5);
    browser.show(u"/"_s);
    EXPECT_FALSE(browser.canGoUp());
}

}  // namespace
