#include "Interface/Updater/Installation.h"
#include "Interface/Updater/Updater.h"
#include "Sender/Pairing/Crypto.h"
#include "Support/ScriptedSystem.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace velmora;

namespace {

const Secret seed(QByteArray(32, 's'));

QJsonObject payload(const QString& version = u"1.10"_s, const QString& issued = u"2026-03-01T00:00:00Z"_s) {
    return {{u"product"_s, u"com.quillet.velmora"_s},
            {u"version"_s, version},
            {u"issued"_s, issued},
            {u"page"_s, u"https://example.org/velmora"_s},
            {u"notes"_s, u"Better."_s}};
}
QJsonObject with(QJsonObject object, const QString& key, const QJsonValue& value) {
    object[key] = value;
    return object;
}
QByteArray envelope(const QByteArray& signedBytes, const QByteArray& signature) {
    return QJsonDocument(QJsonObject{{u"payload"_s, QString::fromLatin1(signedBytes.toBase64())},
                                     {u"signature"_s, QString::fromLatin1(signature.toBase64())}})
        .toJson();
}
QByteArray feed(const QJsonObject& content) {
    const QByteArray bytes = QJsonDocument(content).toJson();
    return envelope(bytes, Crypto::sign(seed, bytes));
}

class ScriptedSource : public UpdateSource {
  public:
    int asked = 0;
    Fetched fetched;
    void fetch(const QUrl& /*feed*/, Fetched callback) override {
        ++asked;
        fetched = std::move(callback);
    }
};

class UpdaterTest : public testing::Test {
  protected:
    Updater::Build build{.version = u"1.9"_s,
                         .feed = QUrl(u"https://example.org/feed"_s),
                         .key = Crypto::ed25519PublicKey(seed)};
    ScriptedSource source;
    test::MapPreferences preferences;
    QList<Updater::Outcome> outcomes;

    /// One check, answered with this.
    QString check(const UpdateSource::Answer& answer) {
        Updater updater(build, source, preferences);
        listen(updater);
        updater.checkForUpdates();
        if (source.fetched) std::exchange(source.fetched, {})(answer);
        QCoreApplication::processEvents();
        return outcomes.isEmpty() ? QString() : outcomes.last().title + u": "_s + outcomes.last().text;
    }
    void listen(Updater& updater) {
        QObject::connect(&updater, &Updater::checked,
                         [this](const Updater::Outcome& outcome) { outcomes << outcome; });
    }
};

TEST_F(UpdaterTest, JudgesFeeds) {
    const QByteArray bytes = QJsonDocument(payload()).toJson();
    const Secret otherSeed(QByteArray(32, 'o'));
    QByteArray bent = Crypto::sign(seed, bytes);
    bent[5] = static_cast<char>(bent[5] ^ 1);
    const std::pair<QByteArray, QString> cases[] = {
        {feed(payload()), u"1.10 is available: You have version 1.9.\n\nBetter."_s},
        {feed(payload(u"1.9.0"_s)), u"up to date"_s},
        {feed(payload(u"1.8.99"_s)), u"up to date"_s},
        {"", u"damaged"_s},
        {"<html>", u"damaged"_s},
        {"[]", u"damaged"_s},
        {bytes, u"damaged"_s},
        {R"({"payload":"%%%%","signature":""})", u"damaged"_s},
        {QByteArray(UpdateFeed::maxSize + 1, ' '), u"damaged"_s},
        {envelope(bytes, {}), u"not signed"_s},
        {envelope(bytes, bent), u"not signed"_s},
        {envelope(bytes, Crypto::sign(otherSeed, bytes)), u"not signed"_s},
        {envelope(bytes + ' ', Crypto::sign(seed, bytes)), u"not signed"_s},
        {feed(with(payload(), u"product"_s, u"com.quillet.orvane"_s)), u"another program"_s},
        {feed(with(payload(), u"version"_s, u"1.10-evil"_s)), u"damaged"_s},
        {feed(with(payload(), u"version"_s, 2)), u"damaged"_s},
        {feed(with(payload(), u"page"_s, u"http://example.org/"_s)), u"damaged"_s},
        {feed(with(payload(), u"page"_s, u"file:///bin/sh"_s)), u"damaged"_s},
        {feed(with(payload(), u"issued"_s, u"2026-03-01T00:00:00"_s)), u"damaged"_s},
        {feed(with(payload(), u"notes"_s, QString(100'000, u'x'))), u"damaged"_s},
    };
    for (const auto& [answer, expected] : cases) {
        preferences.remove(u"updateFeedIssued"_s);
        const QString said = check(answer);
        EXPECT_TRUE(said.contains(expected))
            << said.toStdString() << "\nfor " << answer.left(300).toStdString();
        EXPECT_EQ(outcomes.last().page.isEmpty(), !said.contains(u"is available"_s));
    }
}

TEST_F(UpdaterTest, RefusesNewsOlderThanWhatItAcceptedBefore) {
    check(feed(payload(u"1.10"_s, u"2026-03-01T00:00:00Z"_s)));
    EXPECT_TRUE(check(feed(payload(u"1.11"_s, u"2026-02-28T23:59:59Z"_s))).contains(u"older news"_s));
    EXPECT_TRUE(check(feed(payload(u"1.11"_s, u"2026-03-01T00:00:00Z"_s))).contains(u"1.11 is available"_s));
}

TEST_F(UpdaterTest, ContactsNobodyInADevelopmentBuildOrWhereAPackageManagerRules) {
    const struct {
        Updater::Build build;
        bool canCheck;
        QString says;
    } cases[] = {
        {{.version = u"0.0.0"_s, .feed = build.feed, .key = build.key}, false, {}},
        {{.version = {}, .feed = build.feed, .key = build.key}, false, {}},
        {{.version = u"1.0"_s, .feed = build.feed, .key = build.key, .keeper = u"Flatpak"_s},
         true,
         u"Flatpak"_s},
        {{.version = u"1.0"_s}, true, u"does not know"_s},
    };
    for (const auto& each : cases) {
        build = each.build;
        outcomes.clear();
        EXPECT_EQ(Updater(build, source, preferences).canCheckForUpdates(), each.canCheck);
        const QString said = check(feed(payload()));
        EXPECT_TRUE(each.says.isEmpty() ? said.isEmpty() : said.contains(each.says)) << said.toStdString();
        EXPECT_EQ(source.asked, 0);
    }
    const std::pair<QString, bool> programs[] = {
        {u"/usr/bin/velmora"_s, true},     {u"/usr/local/bin/velmora"_s, false},
        {u"/app/bin/velmora"_s, true},     {u"/opt/velmora/velmora"_s, false},
        {u"/home/a/usr/velmora"_s, false}, {u"/usrx/velmora"_s, false},
    };
    for (const auto& [program, isKept] : programs)
        EXPECT_EQ(!installationKeeper(program).isEmpty(), isKept) << program.toStdString();
}

TEST_F(UpdaterTest, ChecksOnceAtATimeAndSurvivesItsOwnEnd) {
    auto updater = std::make_unique<Updater>(build, source, preferences);
    listen(*updater);
    QList<bool> states;
    QObject::connect(updater.get(), &Updater::canCheckForUpdatesChanged,
                     [&] { states << updater->canCheckForUpdates(); });
    updater->checkForUpdates();
    updater->checkForUpdates();
    EXPECT_EQ(source.asked, 1);
    source.fetched(std::unexpected(u"No network."_s));
    QCoreApplication::processEvents();
    EXPECT_EQ(states, (QList<bool>{false, true}));
    EXPECT_EQ(outcomes, (QList<Updater::Outcome>{{u"Couldn't check for updates"_s, u"No network."_s}}));
    updater->checkForUpdates();
    updater.reset();
    source.fetched(feed(payload()));
    EXPECT_EQ(outcomes.size(), 1);
}

}  // namespace
