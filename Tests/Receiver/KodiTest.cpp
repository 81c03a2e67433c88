// velmora-cast and a real television.
#include "Receiver/KodiReceiver.h"
#include "Terminal/OnTerminal.h"

#include <QFile>
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
        kodi_.emplace();
        ASSERT_FALSE(kodi_->address().isEmpty());
        makeMovie();
    }

    /// Two minutes of HEVC with AC-3 sound: dark, with the time in large digits, and one subtitle throughout.
    void makeMovie() {
        const QStringList arguments{
            u"-v"_s,
            u"error"_s,
            u"-f"_s,
            u"lavfi"_s,
            u"-i"_s,
            u"color=0x203040:size=640x360:rate=24:duration=120,"
            "drawtext=font=Sans:fontsize=60:fontcolor=0x80c0ff:x=200:y=80:text='%{pts\\:hms}'"_s,
            u"-f"_s,
            u"lavfi"_s,
            u"-i"_s,
            u"sine=duration=120"_s,
            u"-c:v"_s,
            u"libx265"_s,
            u"-preset"_s,
            u"ultrafast"_s,
            u"-x265-params"_s,
            u"log-level=error"_s,
            u"-pix_fmt"_s,
            u"yuv420p"_s,
            u"-c:a"_s,
            u"ac3"_s,
            u"-ac"_s,
            u"6"_s,
            movie_};
        ASSERT_EQ(QProcess::execute(u"ffmpeg"_s, arguments), 0);
        QFile subtitles(folder_.filePath(u"Movie.en.srt"_s));
        ASSERT_TRUE(subtitles.open(QIODevice::WriteOnly));
        for (int second = 0; second < 120; ++second) {
            const QString line = u"%1\n00:%2:%3,000 --> 00:%2:%3,990\nThese words come with the movie\n\n"_s;
            const auto twoDigits = [](int number) { return u"%1"_s.arg(number, 2, 10, QChar(u'0')); };
            subtitles.write(
                line.arg(second + 1).arg(twoDigits(second / 60), twoDigits(second % 60)).toUtf8());
        }
    }

    [[nodiscard]] QStringList arguments() const { return {u"--to"_s, kodi_->address(), movie_}; }

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
    (void)cast.shows(" / 2:00");
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

TEST_F(KodiTest, ShowsPictureAndSubtitles) {
    OnTerminal cast(QStringLiteral(VELMORA_CAST), arguments());
    ASSERT_TRUE(cast.shows("Playing on")) << cast.screen().constData();
    // The television's own display of the start is gone by then.
    ASSERT_TRUE(eventually([&] { return kodi_->position() > 8; }));
    const double with = kodi_->whiteBelow(QStringLiteral(SCREENSHOTS "/subtitles-on.png"));
    kodi_->showSubtitles(false);
    QThread::msleep(1000);
    const double without = kodi_->whiteBelow(QStringLiteral(SCREENSHOTS "/subtitles-off.png"));
    EXPECT_GT(with, 0.005);
    EXPECT_LT(without, 0.0005);
    cast.type("q");
    EXPECT_EQ(cast.wait(), 0);
}

}  // namespace
