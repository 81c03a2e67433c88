// velmora-cast and a real television.
#include "Receiver/KodiReceiver.h"
#include "Terminal/OnTerminal.h"

#include <QElapsedTimer>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using velmora::test::KodiReceiver;
using velmora::test::OnTerminal;

namespace {

constexpr double tolerance = 1.5;  // seconds; both sides report in steps, and asking takes time

class KodiTest : public testing::Test {
  protected:
    void SetUp() override {
        const QString missing = KodiReceiver::whatIsMissing();
        if (!missing.isEmpty()) GTEST_SKIP() << "No real receiver here: " << missing.toStdString();
        start();
        ASSERT_EQ(QProcess::execute(QStringLiteral(MAKE_MOVIE), {movie_}), 0);
    }

    void start(const QString& password = {}) {
        kodi_.reset();
        kodi_.emplace(password);
        ASSERT_FALSE(kodi_->address().isEmpty());
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", kodi_->bus().toUtf8());
    }

    [[nodiscard]] QStringList arguments() const {
        return {u"--to"_s, KodiReceiver::shownName.toString(), movie_};
    }

    const QTemporaryDir folder_;
    const QString movie_ = folder_.filePath(u"Movie.mkv"_s);
    std::optional<KodiReceiver> kodi_;
};

template <typename Condition>
bool eventually(Condition condition) {
    for (int attempt = 0; attempt < 60 && !condition(); ++attempt) QThread::msleep(200);
    return condition();
}

/// The position that the line on the terminal shows last.
double shownPosition(OnTerminal& cast) {
    static const QRegularExpression times(u"(\\d+):(\\d\\d) / 2:00"_s);
    QElapsedTimer redrawn;
    redrawn.start();
    (void)cast.waitFor([&] { return redrawn.hasExpired(600); });
    QRegularExpressionMatch last;
    for (auto matches = times.globalMatch(QString::fromUtf8(cast.screen())); matches.hasNext();)
        last = matches.next();
    return last.captured(1).toDouble() * 60 + last.captured(2).toDouble();
}

/// Whether Kodi is where the terminal says that it is.
void expectAgreement(OnTerminal& cast, const KodiReceiver& kodi) {
    const double shown = shownPosition(cast);
    EXPECT_NEAR(kodi.position(), shown, tolerance);
}

TEST_F(KodiTest, PlaysPausesSeeksStopsAndResumes) {
    OnTerminal cast(QStringLiteral(VELMORA_CAST), arguments());
    ASSERT_TRUE(cast.shows("Playing on")) << cast.screen().constData();
    expectAgreement(cast, *kodi_);
    const QJsonObject playing = kodi_->player();
    EXPECT_TRUE(playing.value(u"subtitleenabled"_s).toBool());
    EXPECT_EQ(playing.value(u"currentsubtitle"_s).toObject().value(u"language"_s), u"eng"_s);

    cast.type(" ");
    ASSERT_TRUE(cast.shows("Paused on"));
    EXPECT_EQ(kodi_->player().value(u"speed"_s).toInt(), 0);
    const double before = kodi_->position();
    cast.type("\x1b[C\x1b[C");
    EXPECT_TRUE(eventually([&] { return std::abs(kodi_->position() - before - 20) < tolerance; }));
    expectAgreement(cast, *kodi_);
    cast.type(" ");
    ASSERT_TRUE(cast.shows("Playing on"));
    EXPECT_TRUE(eventually([&] { return kodi_->position() > before + 22; }));
    expectAgreement(cast, *kodi_);
    const double left = kodi_->position();
    cast.type("q");
    EXPECT_EQ(cast.wait(), 0);
    EXPECT_TRUE(cast.screen().contains("The next start resumes at 0:"));
    EXPECT_TRUE(cast.echoes());
    EXPECT_FALSE(kodi_->isPlaying());

    OnTerminal again(QStringLiteral(VELMORA_CAST), arguments());
    ASSERT_TRUE(again.shows("Resuming at 0:"));
    ASSERT_TRUE(again.shows("Playing on"));
    EXPECT_NEAR(kodi_->position(), left, 5);
    expectAgreement(again, *kodi_);
    again.type("\x03");
    EXPECT_EQ(again.wait(), 130);
    EXPECT_FALSE(kodi_->isPlaying());
}

TEST_F(KodiTest, TellsItsRemoteControlFromItsDeath) {
    {
        OnTerminal cast(QStringLiteral(VELMORA_CAST), arguments());
        ASSERT_TRUE(cast.shows("Playing on"));
        kodi_->stop();
        EXPECT_EQ(cast.wait(), 0);
        EXPECT_TRUE(cast.screen().contains("stopped at the television")) << cast.screen().constData();
    }
    OnTerminal cast(QStringLiteral(VELMORA_CAST), arguments());
    ASSERT_TRUE(cast.shows("Playing on"));
    cast.type("\x1b[A");
    ASSERT_TRUE(eventually([&] { return kodi_->position() > 60; }));
    expectAgreement(cast, *kodi_);
    kodi_->die();
    EXPECT_TRUE(cast.shows("connection to the television was lost. Trying again"))
        << cast.screen().constData();
    kodi_->comeBack();
    EXPECT_TRUE(cast.shows("Playing on"));
    EXPECT_TRUE(eventually([&] { return kodi_->position() > 58; }));
    expectAgreement(cast, *kodi_);
    cast.type("q");
    EXPECT_EQ(cast.wait(), 0);
}

TEST_F(KodiTest, AsksForThePasswordOnce) {
    start(u"geheim ☂"_s);
    OnTerminal cast(QStringLiteral(VELMORA_CAST), arguments());
    for (const char* word : {"falsch", "geheim ☂"}) {
        ASSERT_TRUE(cast.shows("AirPlay password of")) << cast.screen().constData();
        EXPECT_FALSE(cast.echoes());
        cast.type(QByteArray(word) + '\n');
    }
    EXPECT_TRUE(cast.screen().contains("did not take this password")) << cast.screen().constData();
    ASSERT_TRUE(cast.shows("Playing on"));
    cast.type("q");
    EXPECT_EQ(cast.wait(), 0);

    OnTerminal again(QStringLiteral(VELMORA_CAST), arguments());
    ASSERT_TRUE(again.shows("Playing on")) << again.screen().constData();
    again.type("q");
    EXPECT_EQ(again.wait(), 0);
}

TEST_F(KodiTest, PlaysTheChosenTracksAtTheSamePlace) {
    const QString movie = folder_.filePath(u"Languages.mp4"_s);
    ASSERT_EQ(QProcess::execute(QStringLiteral(MAKE_MOVIE), {movie}), 0);
    OnTerminal cast(QStringLiteral(VELMORA_CAST), {u"--to"_s, KodiReceiver::shownName.toString(), movie});
    ASSERT_TRUE(cast.shows("Playing on")) << cast.screen().constData();
    EXPECT_EQ(kodi_->languages(), u"eng eng"_s);
    // The tracks are looked at when the start is over.
    ASSERT_TRUE(eventually([&] { return kodi_->position() > 8; }));
    const struct {
        const char* keys;
        const char* told;
        QString languages;
        int speed;
    } steps[] = {
        {"a", "Sound: German", u"ger eng"_s, 1},
        {"ss", "Subtitles: off", u"ger -"_s, 1},
        {"s", "Subtitles: English", u"ger eng"_s, 0},
        {"a", "Sound: English", u"eng eng"_s, 0},
    };
    for (const auto& [keys, told, languages, speed] : steps) {
        const auto hasSpeed = [&] { return kodi_->player().value(u"speed"_s).toInt() == speed; };
        if (!hasSpeed()) cast.type(" ");
        ASSERT_TRUE(eventually(hasSpeed));
        QElapsedTimer passed;
        passed.start();
        const double before = kodi_->position();
        cast.type(keys);
        ASSERT_TRUE(cast.shows(told)) << cast.screen().constData();
        const auto isShown = [&] { return kodi_->languages() == languages && hasSpeed(); };
        ASSERT_TRUE(eventually(isShown)) << told << ", and there is " << kodi_->languages().toStdString();
        const double now = kodi_->position();
        EXPECT_GT(now, before - 2) << told;
        EXPECT_LT(now, before + 2 + speed * double(passed.elapsed()) / 1000) << told;
        QThread::sleep(3);  // for whatever else it may do yet
        EXPECT_EQ(kodi_->languages(), languages);
        if (speed == 0) expectAgreement(cast, *kodi_);
    }
    cast.type("q");
    EXPECT_EQ(cast.wait(), 0);
    EXPECT_FALSE(cast.screen().contains("Trying again")) << cast.screen().constData();
}

TEST_F(KodiTest, ShowsPictureAndSubtitles) {
    OnTerminal cast(QStringLiteral(VELMORA_CAST), arguments());
    ASSERT_TRUE(cast.shows("Playing on")) << cast.screen().constData();
    // A busy computer may show the first picture long after the sound has begun.
    const auto white = [this](const QString& name) {
        return kodi_->whiteBelow(QStringLiteral(SCREENSHOTS) + name);
    };
    EXPECT_TRUE(eventually([&] { return white(u"/subtitles-on.png"_s) > 0.005; }));
    kodi_->showSubtitles(false);
    EXPECT_TRUE(eventually([&] { return white(u"/subtitles-off.png"_s) < 0.0005; }));
    cast.type("q");
    EXPECT_EQ(cast.wait(), 0);
}

}  // namespace
