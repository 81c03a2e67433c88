#include "Television/Television.h"
#include "Terminal/Cast.h"
#include "Terminal/OnTerminal.h"

#include <QProcess>

#include <csignal>

using namespace Qt::StringLiterals;
using velmora::test::CastTest;
using velmora::test::OnTerminal;
using velmora::test::Television;

namespace {

// Half of the movie is done, and then nothing moves.
constexpr const char* endless = "echo some > \"$output\"; echo out_time_us=50000000; exec sleep 60\n";

struct Ran {
    int status;
    QByteArray output;
    QByteArray errors;
};

Ran run(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.start(program, arguments);
    process.waitForFinished();
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            process.readAllStandardOutput(), process.readAllStandardError()};
}

TEST_F(CastTest, PrintsOnlyThePathsOfWhatItPrepared) {
    scriptFfmpeg(
        "case $output in *Bad*) echo disk on fire >&2; exit 1;; esac\n"
        "echo out_time_us=50000000; sleep 0.3; echo movie > \"$output\"\n");
    const QString good = addMovie(u"Good ü.2019.mkv"_s);
    const Ran ran =
        run(program_, {u"--prepare-only"_s, path(u"Missing.mkv"_s), addMovie(u"Bad.mkv"_s), good});
    EXPECT_EQ(ran.status, 1);
    EXPECT_EQ(ran.output, path(u"Good ü.2019.mp4"_s).toUtf8() + '\n');
    for (const QByteArray line : {"No movie found at ", "disk on fire", "Good ü (2019)", ": 50 %"})
        EXPECT_TRUE(ran.errors.contains(line)) << line.constData() << " in " << ran.errors.constData();
    EXPECT_FALSE(ran.errors.contains('\x1b'));
    EXPECT_FALSE(ran.errors.contains("ffmpeg at")) << "The log is on the terminal";

    const Ran again = run(program_, {u"--prepare-only"_s, good});
    EXPECT_EQ(again.status, 0);
    EXPECT_EQ(again.output, ran.output);
    EXPECT_TRUE(again.errors.contains("reusing"));
}

TEST_F(CastTest, ExplainsItself) {
    const Ran wrong = run(program_, {u"--bogus"_s});
    EXPECT_EQ(wrong.status, 2);
    EXPECT_TRUE(wrong.output.isEmpty());
    EXPECT_TRUE(wrong.errors.contains("--bogus"));
    const Ran help = run(program_, {u"--help"_s});
    EXPECT_EQ(help.status, 0);
    EXPECT_TRUE(help.output.contains("--prepare-only") && help.errors.isEmpty());
    const Ran unknown = run(program_, {u"--to"_s, u"no-such-television.invalid"_s, addMovie(u"A.mkv"_s)});
    EXPECT_EQ(unknown.status, 1);
    EXPECT_TRUE(unknown.errors.contains("no-such-television.invalid")) << unknown.errors.constData();
}

TEST_F(CastTest, LeavesNothingBehindWhenAskedToEnd) {
    scriptFfmpeg(endless);
    const QString movie = addMovie(u"Movie.mkv"_s);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        QProcess process;
        process.setReadChannel(QProcess::StandardError);
        process.start(program_, {u"--prepare-only"_s, movie});
        while (!process.readLine().contains("50 %"))
            ASSERT_TRUE(process.canReadLine() || process.waitForReadyRead());
        ASSERT_TRUE(movies().contains(u"Movie.mp4.part"_s));
        kill(static_cast<pid_t>(process.processId()), number);
        ASSERT_TRUE(process.waitForFinished(10000));
        EXPECT_EQ(process.exitCode(), 130) << number;
        EXPECT_EQ(movies(), QStringList{u"Movie.mkv"_s});
        EXPECT_TRUE(process.readAllStandardOutput().isEmpty());
    }
}

TEST_F(CastTest, DrawsABarAndGivesTheTerminalBack) {
    scriptFfmpeg(endless);
    OnTerminal cast(program_, {u"--prepare-only"_s, addMovie(u"Movie.mkv"_s)});
    EXPECT_TRUE(cast.shows(" 50 %  █"));
    EXPECT_TRUE(cast.shows("Less than a minute left"));
    cast.type("\x03");
    EXPECT_EQ(cast.wait(), 130);
    EXPECT_GT(cast.screen().lastIndexOf("\x1b[?25h"), cast.screen().lastIndexOf("\x1b[?25l"));
    EXPECT_EQ(movies(), QStringList{u"Movie.mkv"_s});
}

TEST_F(CastTest, CrashShowsTheCursorAgain) {
    scriptFfmpeg(endless);
    OnTerminal cast(program_, {u"--prepare-only"_s, addMovie(u"Movie.mkv"_s)});
    ASSERT_TRUE(cast.shows(" 50 %"));
    kill(cast.pid(), SIGSEGV);
    // A sanitizer takes the signal in our place.
    EXPECT_NE(cast.wait(), 0);
#ifndef __SANITIZE_ADDRESS__
    EXPECT_GT(cast.screen().lastIndexOf("\x1b[?25h"), cast.screen().lastIndexOf("\x1b[?25l"));
#endif
}

/// A movie that plays, and a television to play it on.
class CastingTest : public CastTest {
  protected:
    CastingTest() {
        scriptFfmpeg(
            "exec ffmpeg -v error -f lavfi -i color=size=64x64:rate=2:duration=100 -c:v libx264 -movflags "
            "+faststart -f mp4 \"$output\"\n");
        EXPECT_TRUE(television_.listen());
    }
    [[nodiscard]] QStringList arguments() {
        return {u"--to"_s, u"127.0.0.1:%1"_s.arg(television_.receiver().port), addMovie(u"Movie.mkv"_s)};
    }

    velmora::SystemClock clock_;
    Television television_{clock_, {}};
};

TEST_F(CastingTest, PlaysSteersStopsAndResumes) {
    using enum velmora::test::SimulatedPlayer::State;
    OnTerminal cast(program_, arguments());
    ASSERT_TRUE(cast.shows("Playing on 127.0.0.1")) << cast.screen().constData();
    EXPECT_FALSE(cast.echoes());
    cast.type(" ");
    ASSERT_TRUE(cast.shows("Paused on"));
    EXPECT_EQ(television_.player().state(), paused);
    const double before = television_.player().position();
    // Faster than the television follows: each counts.
    cast.type("\x1b[C\x1b[C\x1b[C\x1b[D");
    EXPECT_TRUE(cast.waitFor([&] { return std::abs(television_.player().position() - before - 20) < 1; }));
    cast.type(" ");
    ASSERT_TRUE(cast.shows("Playing on"));
    cast.type("q");
    EXPECT_EQ(cast.wait(), 0);
    EXPECT_TRUE(cast.screen().contains("The next start resumes at 0:2"));
    EXPECT_TRUE(cast.echoes());
    EXPECT_EQ(television_.player().state(), idle);

    OnTerminal again(program_, arguments());
    ASSERT_TRUE(again.shows("Resuming at 0:2"));
    ASSERT_TRUE(again.shows("Playing on"));
    EXPECT_NEAR(television_.player().position(), before + 20, 5);
    again.type("\x03");
    EXPECT_EQ(again.wait(), 130);
    EXPECT_EQ(television_.player().state(), idle);
    EXPECT_EQ(television_.complaints(), QStringList());
}

TEST_F(CastingTest, SaysWhyNothingPlays) {
    // Nobody listens on the port that throws everything away.
    const Ran ran = run(program_, {u"--to"_s, u"127.0.0.1:9"_s, addMovie(u"Movie.mkv"_s)});
    EXPECT_EQ(ran.status, 1);
    EXPECT_TRUE(ran.errors.contains("127.0.0.1")) << ran.errors.constData();
    EXPECT_TRUE(ran.output.isEmpty());
}

}  // namespace
