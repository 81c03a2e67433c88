// What windows do with movies and televisions, without the windows.
#include "Platform/Window.h"
#include "Support/WaitFor.h"
#include "Television/Misbehaviour.h"

#include <QFile>
#include <QProcess>

#include <cmath>

namespace velmora {
namespace {

using namespace Qt::StringLiterals;
using test::Misbehaviour;
using test::waitFor;
using test::Window;
using Shown = test::SimulatedPlayer::State;

class WindowStory : public testing::Test {
  protected:
    ~WindowStory() override {
        window.session.reset();
        EXPECT_TRUE(waitFor([this] { return window.shown() == Shown::idle; }));
        EXPECT_EQ(window.television->complaints(), QStringList());
    }

    QUrl addMovie(const QString& name, const QString& sample = u"long.mkv"_s) {
        const QUrl movie = QUrl::fromLocalFile(folder.filePath(name));
        EXPECT_TRUE(QFile::copy(QStringLiteral(VELMORA_SAMPLE_MOVIES "/") + sample, movie.toLocalFile()));
        return movie;
    }
    void play(Window& where, const QUrl& movie) {
        where.chooseTelevision();
        where.session->open(movie, false);
        ASSERT_TRUE(waitFor([&where] { return where.isShown(); }));
    }
    [[nodiscard]] test::SimulatedPlayer& player() { return window.television->player(); }

    QTemporaryDir folder;
    test::Process process;
    Window window{process};
    Session& session = *window.session;
};

TEST_F(WindowStory, FromAFileToTheTelevisionAndBack) {
    play(window, addMovie(u"Long.mkv"_s));
    ASSERT_TRUE(waitFor([this] { return std::abs(session.duration() - 100) < 0.5; }));

    session.togglePlayPause();
    ASSERT_TRUE(waitFor([this] { return window.shown() == Shown::paused; }));
    session.seek(60);
    session.togglePlayPause();
    ASSERT_TRUE(waitFor([this] { return window.isShown() && player().position() > 61; }));

    // The viewer leaves the movie at the television, and nobody brings it back.
    player().stop(u"left"_s);
    ASSERT_TRUE(waitFor([this] { return !session.isOnAppleTV() && !session.airPlay().deviceName(); }));
    EXPECT_FALSE(session.isPlaying());
    EXPECT_TRUE(session.phase().ready());
    ASSERT_TRUE(waitFor([this] { return session.player()->currentTime().value_or(0) > 50; }));
    EXPECT_NEAR(session.player()->currentTime().value_or(0), 62, 6);
    EXPECT_EQ(window.shown(), Shown::idle);

    window.chooseTelevision();
    ASSERT_TRUE(waitFor([this] { return window.isShown() && player().position() > 55; }));
    EXPECT_FALSE(session.poster().isNull());
}

TEST_F(WindowStory, ResumesInTheMiddleOfALongMovie) {
    const QUrl movie = QUrl::fromLocalFile(folder.filePath(u"Two Hours.mp4"_s));
    const QStringList making{u"-v"_s,
                             u"error"_s,
                             u"-f"_s,
                             u"lavfi"_s,
                             u"-i"_s,
                             u"color=size=64x36:rate=1:duration=7200"_s,
                             u"-c:v"_s,
                             u"libx264"_s,
                             u"-preset"_s,
                             u"ultrafast"_s,
                             u"-movflags"_s,
                             u"+faststart"_s,
                             movie.toLocalFile()};
    ASSERT_EQ(QProcess::execute(u"ffmpeg"_s, making), 0);
    constexpr double place = 37 * 60;
    PositionMemory(process.settings).remember(movie, place, 7200);
    double landed = 0;  // where the picture first moved behind the beginning
    QObject::connect(&session, &Session::routeChanged, [&] {
        if (session.isOnAppleTV() && landed == 0) landed = player().movie().startSeconds;
    });
    play(window, movie);
    EXPECT_NEAR(landed, place, 1);
    EXPECT_NEAR(session.duration(), 7200, 2);
    const double there = player().position();
    EXPECT_NEAR(session.player()->currentTime().value_or(0), there, 1);
    EXPECT_GE(there, place - 1);
    EXPECT_LT(there, place + 20);
}

TEST_F(WindowStory, FollowsTheTelevisionsOwnRemote) {
    play(window, addMovie(u"Long.mkv"_s));
    ASSERT_TRUE(waitFor([this] { return player().position() > 15; }));
    player().setRate(0);
    ASSERT_TRUE(waitFor([this] { return !session.isPlaying(); }));
    EXPECT_TRUE(session.canControlPlayback());
    EXPECT_NEAR(session.player()->currentTime().value_or(0), player().position(), 1);
    player().setRate(1);
    EXPECT_TRUE(waitFor([this] { return session.isPlaying() && window.isShown(); }));
}

TEST_F(WindowStory, ReturnsToATelevisionThatCameBack) {
    for (const bool isPaused : {false, true}) {
        if (!isPaused) play(window, addMovie(u"Long.mkv"_s));
        session.seek(isPaused ? 60 : 40);
        if (isPaused) session.togglePlayPause();
        const auto wanted = isPaused ? Shown::paused : Shown::playing;
        ASSERT_TRUE(waitFor([&] { return window.shown() == wanted && player().position() > 40; }));
        const double before = player().position();
        window.television.reset();
        ASSERT_TRUE(waitFor([this] { return !session.player()->isExternalPlaybackActive(); }));
        window.switchOn();
        ASSERT_TRUE(waitFor([&] { return session.canControlPlayback() && window.shown() == wanted; }));
        EXPECT_EQ(session.isPlaying(), !isPaused);
        EXPECT_NEAR(player().position(), before, 6);
    }
}

QString outputOf(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.start(program, QStringList{u"-v"_s, u"error"_s} + arguments);
    // The television and the session go on meanwhile.
    EXPECT_TRUE(waitFor([&] { return process.state() == QProcess::NotRunning; }));
    return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
}

/// The languages of the sound and the text that players begin with.
QString languagesOf(const QString& movie) {
    const QString shown =
        outputOf(u"ffprobe"_s, {u"-of"_s, u"csv=p=0"_s, u"-show_entries"_s,
                                u"stream_disposition=default:stream_tags=language"_s, movie});
    return shown.split(u'\n').filter(u"1,"_s).join(u' ').remove(u"1,und"_s).remove(u"1,"_s).trimmed();
}

/// Of all tracks.
QString contentOf(const QString& movie) {
    return outputOf(u"ffmpeg"_s, {u"-t"_s, u"5"_s, u"-i"_s, movie, u"-map"_s, u"0"_s, u"-c"_s, u"copy"_s,
                                  u"-f"_s, u"hash"_s, u"-"_s});
}

TEST_F(WindowStory, ChosenTracksTakeEffectOnTheTelevision) {
    using Kind = MediaGroup::Kind;
    const QUrl movie = addMovie(u"Languages.mp4"_s, u"languages.mp4"_s);
    play(window, movie);
    const auto url = [this] { return player().movie().url.toString(); };
    const QString first = url();
    EXPECT_EQ(languagesOf(first), u"eng eng"_s);
    ASSERT_TRUE(waitFor([this] { return session.audioGroup() && session.subtitleGroup(); }));
    EXPECT_EQ(url(), first) << "what the television shows is what the session takes for selected";
    EXPECT_EQ(session.selectedSubtitle(), session.subtitleGroup()->options[0]);

    int interruptions = 0;
    QObject::connect(&session, &Session::routeChanged, [&] { ++interruptions; });
    QObject::connect(&session, &Session::playingChanged, [&] { ++interruptions; });
    QObject::connect(&session, &Session::playerChanged, [&] { ++interruptions; });
    session.seek(50);
    ASSERT_TRUE(waitFor([this] { return window.isShown() && player().position() > 50.5; }));
    const double before = player().position();
    session.select(session.audioGroup()->options[1], Kind::audible);
    session.select(std::nullopt, Kind::legible);
    ASSERT_TRUE(waitFor([&] { return url() != first && window.isShown() && player().position() > 50; }));
    EXPECT_NEAR(player().position(), before, 6) << "at five times the speed";
    EXPECT_EQ(languagesOf(url()), u"ger"_s);
    // Long enough for everything that looks after a handover.
    ASSERT_TRUE(waitFor([&] { return player().position() > before + 12; }));
    EXPECT_EQ(interruptions, 0);

    session.togglePlayPause();
    ASSERT_TRUE(waitFor([this] { return window.shown() == Shown::paused; }));
    const double paused = player().position();
    const QString second = url();
    session.select(session.subtitleGroup()->options[1], Kind::legible);
    ASSERT_TRUE(waitFor([&] { return url() != second && window.shown() == Shown::paused; }));
    EXPECT_NEAR(player().position(), paused, 6);
    EXPECT_EQ(languagesOf(url()), u"ger ger"_s);
    EXPECT_EQ(contentOf(url()), contentOf(movie.toLocalFile()));
    EXPECT_FALSE(session.isPlaying());
    EXPECT_EQ(interruptions, 1) << "the pause";

    // Back here, and there once more.
    window.context->setOutputDevice(std::nullopt, 0);
    ASSERT_TRUE(waitFor([this] { return !session.airPlay().deviceName() && session.selectedSubtitle(); }));
    EXPECT_EQ(session.selectedSubtitle(), session.subtitleGroup()->options[1]);
    session.select(session.subtitleGroup()->options[0], Kind::legible);
    const QString third = url();
    window.chooseTelevision();
    ASSERT_TRUE(waitFor([&] { return url() != third && window.isShown(); }));
    EXPECT_EQ(languagesOf(url()), u"ger eng"_s);
}

TEST_F(WindowStory, TwoWindowsFeedTwoTelevisions) {
    Window other(process);
    play(window, addMovie(u"One.mkv"_s));
    play(other, addMovie(u"Two.mkv"_s));
    EXPECT_NE(player().movie().url, other.television->player().movie().url);
    session.togglePlayPause();
    other.session->seek(50);
    EXPECT_TRUE(waitFor([this] { return window.shown() == Shown::paused; }));
    EXPECT_TRUE(waitFor([&other] { return other.isShown() && other.television->player().position() > 50; }));
    EXPECT_LT(player().position(), 45);
    other.session.reset();
    EXPECT_TRUE(waitFor([&other] { return other.shown() == Shown::idle; }));
    EXPECT_EQ(window.shown(), Shown::paused);
}

}  // namespace
}  // namespace velmora
