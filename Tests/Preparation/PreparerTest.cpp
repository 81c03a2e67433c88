#include "Preparation/Preparer.h"
#include "Preparation/ProgressReader.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gmock/gmock.h>

#include <future>
#include <limits>

namespace velmora {
namespace {

using namespace Qt::StringLiterals;
using Case = PrepareError::Case;
using Output = Preparer::Output;

void write(const QString& path, const QByteArray& content) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << qPrintable(path);
    file.write(content);
}

QByteArray read(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(none)");
}

QString text(const Preparer::Update& update) {
    const auto number = [](const std::optional<double>& value) {
        return value ? QString::number(*value) : u"-"_s;
    };
    return number(update.progress) + u' ' + update.stage + u' ' + number(update.eta);
}

TEST(ProgressReader, TellsProgressAndTimeLeft) {
    struct Row {
        double duration;
        bool movesIndex;
        const char* line;
        double elapsed;
        QString expected;
    };
    for (const Row& row : {
             Row{3600, false, "out_time_us=1800000000", 100, u"0.5 Work 100"_s},
             Row{3600, false, "out_time_ms=900000000", 10, u"0.25 Work 30"_s},
             Row{100, false, "out_time_us=2000000", 10, u"0.02 Work -"_s},
             Row{100, false, "out_time_us=-9223372036854775807", 10, u"0 Work -"_s},
             Row{100, false, "out_time_us=250000000", 10, u"1 Work 0"_s},
             Row{100, true, "out_time_us=99400000", 99.4, u"0.994 Work 0.6"_s},
             Row{100, true, "out_time_us=99500000", 99.5, u"- Finishing up… -"_s},
             Row{100, false, "out_time_us=N/A", 1, {}},
             Row{100, false, "out_time_us=nan", 1, {}},
             Row{100, false, "out_time=00:00:01.0", 1, {}},
             Row{100, false, "frame=12", 1, {}},
             Row{0, false, "out_time_us=1000000", 1, {}},
         }) {
        const ProgressReader reader{row.duration, u"Work"_s, row.movesIndex};
        const auto update = reader.read(QString::fromLatin1(row.line), row.elapsed);
        EXPECT_EQ(update ? text(*update) : QString(), row.expected) << row.line;
    }
}

/// A folder with a movie in it, and tools that do what the test says.
class PreparerTest : public testing::Test {
  protected:
    PreparerTest() {
        QDir().mkpath(tools_.path());
        qputenv("VELMORA_STAND_INS", QFile::encodeName(tools_.path()));
        write(movie_, "the movie");
        probeAnswers();
        ffmpegDoes("printf prepared >\"$output\"");
    }

    void probeAnswers(const QByteArray& moreStreams = {}) {
        write(tools_.filePath(u"ffprobe"_s),
              R"(cat <<'END'
{"streams": [{"index": 0, "codec_type": "video", "codec_name": "h264", "pix_fmt": "yuv420p"})" +
                  moreStreams + R"(],
 "format": {"format_name": "matroska", "duration": "100", "size": "9"}}
END
)");
    }

    /// `script` finds the file to write in $output.
    void ffmpegDoes(const QByteArray& script) {
        write(tools_.filePath(u"ffmpeg"_s),
              "case \"$*\" in *Movie*) ;; *) exit 1;; esac # no hardware encoder\n"
              "echo \"$*\" >>\"$VELMORA_STAND_INS/calls\"\n"
              "for output; do :; done\n" +
                  script + "\n");
    }

    [[nodiscard]] qsizetype ffmpegCalls() const {
        const QString calls = tools_.filePath(u"calls"_s);
        return QFile::exists(calls) ? read(calls).count('\n') : 0;
    }

    std::expected<Preparer::Result, PrepareError> prepare(bool force = false) {
        updates_.clear();
        return Preparer().prepare(
            QUrl::fromLocalFile(movie_), force,
            [this](const Preparer::Update& update) {
                updates_.append(text(update));
                if (onUpdate_) onUpdate_(update);
            },
            stop_.get_token());
    }

    [[nodiscard]] QStringList files() const {
        return QDir(folder_.path()).entryList(QDir::Files | QDir::Hidden, QDir::Name);
    }

    QTemporaryDir tools_;
    QTemporaryDir folder_;
    QString movie_ = folder_.filePath(u"Movie.mkv"_s);
    QString prepared_ = folder_.filePath(u"Movie.mp4"_s);
    QString fingerprint_ = folder_.filePath(u".Movie.mp4.velmora"_s);
    const QStringList whenDone_{u".Movie.mp4.velmora"_s, u"Movie.mkv"_s, u"Movie.mp4"_s};
    QStringList updates_;
    std::function<void(const Preparer::Update&)> onUpdate_;
    std::stop_source stop_;
};

TEST_F(PreparerTest, RepeatsWithFaststartAndReportsTheStages) {
    probeAnswers(R"(,{"index":1,"codec_type":"audio","codec_name":"dts"},)"
                 R"({"index":2,"codec_type":"subtitle","codec_name":"dvd_subtitle"})");
    const QString stage = u"Repacking, re-encoding audio only · 1 image subtitle track(s) left out"_s;
    // ffmpeg 5 ends with status 0 when the room for the index was too small; others say so.
    for (const QByteArray status : {"0", "17"}) {
        ffmpegDoes(
            "echo out_time_us=1000000\n"
            "case \"$*\" in\n"
            "*'-movflags +faststart'*) test ! -e \"$output\" && printf whole >\"$output\"\n"
            "  echo out_time_us=99900000;;\n"
            "*) printf damaged >\"$output\"\n"
            "  echo '[mp4] reserved_moov_size is too small, needed 28752 additional' >&2; exit " +
            status + ";; esac");
        write(movie_, status);
        const auto result = prepare();
        ASSERT_TRUE(result);
        EXPECT_EQ(result->note, u"Repacking, re-encoding audio only"_s);
        EXPECT_EQ(read(prepared_), "whole");
        EXPECT_EQ(updates_, (QStringList{u"- Looking at the file… -"_s, u"0 "_s + stage + u" -"_s,
                                         u"0.01 "_s + stage + u" -"_s, u"0.01 "_s + stage + u" -"_s,
                                         u"- Finishing up… -"_s}));
    }
}

TEST_F(PreparerTest, PreparesAgainWhenAnythingChanged) {
    const auto touch = [](const QString& path, int seconds) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        file.setFileTime(QDateTime::fromSecsSinceEpoch(seconds), QFileDevice::FileModificationTime);
    };
    const QString sidecar = folder_.filePath(u"Movie.en.srt"_s);
    const std::vector<std::pair<const char*, std::function<void()>>> changes{
        {"nothing was there", [] {}},
        {"the movie's time", [&] { touch(movie_, 1000); }},
        {"the movie's size", [&] { write(movie_, "another cut"), touch(movie_, 1000); }},
        {"a sidecar more", [&] { write(sidecar, "1\n"); }},
        {"the sidecar's time", [&] { touch(sidecar, 1000); }},
        {"the sidecar is gone", [&] { QFile::remove(sidecar); }},
        {"another plan", [&] { probeAnswers(R"(,{"index":1,"codec_type":"audio"})"); }},
        {"the prepared file is empty", [&] { write(prepared_, ""); }},
        {"the prepared file is gone", [&] { QFile::remove(prepared_); }},
        {"half a fingerprint", [&] { write(fingerprint_, read(fingerprint_).chopped(1)); }},
    };
    // What a crash has left is in nobody's way.
    write(prepared_ + u".part"_s, "left");
    write(folder_.filePath(u".Movie.velmora-lock"_s), "");
    qsizetype calls = 0;
    for (const auto& [change, make] : changes) {
        make();
        const auto result = prepare();
        ASSERT_TRUE(result) << change;
        EXPECT_EQ(result->file, QUrl::fromLocalFile(prepared_)) << change;
        EXPECT_EQ(read(prepared_), "prepared") << change;
        EXPECT_EQ(ffmpegCalls(), ++calls) << change;
        EXPECT_EQ(prepare()->note, u"Prepared earlier, reusing"_s) << change;
    }
    EXPECT_EQ(ffmpegCalls(), calls);
    EXPECT_EQ(files(), whenDone_);
}

TEST_F(PreparerTest, ForcedAlwaysPreparesAgain) {
    for (int time = 1; time <= 2; ++time) {
        EXPECT_EQ(prepare(true)->note, u"Re-encoding video for Apple TV (software)"_s);
        EXPECT_EQ(ffmpegCalls(), time);
    }
    EXPECT_EQ(prepare()->note, u"Repacking for Apple TV, no re-encode"_s);
}

TEST_F(PreparerTest, FailuresLeaveTheOlderFileAlone) {
    ASSERT_TRUE(prepare());
    const QByteArray fingerprint = read(fingerprint_);
    const QByteArray begin = "printf half >\"$output\"\n";
    struct Row {
        QByteArray ffmpeg;
        int calls;
        QString detail;
    };
    const Row rows[] = {
        {"printf '1\\n\\n2\\n3\\n4\\n5\\n' >&2; exit 1", 1, u"2\n3\n4\n5"_s},
        {"exit 7", 1, {}},
        {"kill -9 $$", 1, {}},
        {"echo 'Error: MOOV room' >&2; exit 1", 2, u"Error: MOOV room"_s},
        {"echo 'Error writing trailer of x: No space left on device' >&2", 1,
         u"Error writing trailer of x: No space left on device"_s},
        {"echo '" + movie_.toUtf8() + ": Input/output error' >&2", 1, movie_ + u": Input/output error"_s},
    };
    for (const Row& row : rows) {
        QFile::remove(tools_.filePath(u"calls"_s));
        ffmpegDoes(begin + row.ffmpeg);
        write(movie_, row.ffmpeg);
        const auto result = prepare();
        ASSERT_FALSE(result) << row.ffmpeg.constData();
        EXPECT_EQ(result.error().which, Case::ffmpegFailed) << row.ffmpeg.constData();
        EXPECT_EQ(result.error().detail, row.detail) << row.ffmpeg.constData();
        EXPECT_EQ(ffmpegCalls(), row.calls) << row.ffmpeg.constData();
        EXPECT_EQ(files(), whenDone_);
        EXPECT_EQ(read(prepared_), "prepared");
        EXPECT_EQ(read(fingerprint_), fingerprint);
    }
}

TEST_F(PreparerTest, StopsPromptlyAndCleansUp) {
    ASSERT_TRUE(prepare());
    write(movie_, "another movie");
    ffmpegDoes("printf half >\"$output\"; echo out_time_us=1000000; exec sleep 60");
    for (const QString& stage : {u"Looking"_s, u"Repacking"_s, u"0.01 Repacking"_s}) {
        stop_ = std::stop_source();
        onUpdate_ = [&](const Preparer::Update& update) {
            if (text(update).contains(stage)) stop_.request_stop();
        };
        const auto result = prepare();
        ASSERT_FALSE(result);
        EXPECT_EQ(result.error().which, Case::cancelled);
        EXPECT_EQ(files(), whenDone_) << qPrintable(stage);
        EXPECT_EQ(read(prepared_), "prepared") << qPrintable(stage);
    }
}

TEST_F(PreparerTest, TheSecondOfTwoWaitsAndReuses) {
    ffmpegDoes("until test -e \"$VELMORA_STAND_INS/go\"; do sleep 0.01; done; printf prepared >\"$output\"");
    const auto isWaiting = [](const Preparer::Update& update) {
        return update.stage == u"Waiting for another Velmora to finish preparing this movie…"_s;
    };
    std::promise<void> started;
    auto first = std::async(std::launch::async, [&] {
        return Preparer().prepare(QUrl::fromLocalFile(movie_), false, [&](const Preparer::Update& update) {
            if (update.progress) started.set_value();
        });
    });
    started.get_future().wait();

    onUpdate_ = [&](const Preparer::Update& update) {
        if (isWaiting(update)) stop_.request_stop();
    };
    EXPECT_EQ(prepare().error().which, Case::cancelled);

    stop_ = std::stop_source();
    onUpdate_ = [&](const Preparer::Update& update) {
        if (isWaiting(update)) write(tools_.filePath(u"go"_s), "");
    };
    const auto second = prepare();
    ASSERT_TRUE(second);
    EXPECT_EQ(second->note, u"Prepared earlier, reusing"_s);
    EXPECT_EQ(first.get()->note, u"Repacking for Apple TV, no re-encode"_s);
    EXPECT_EQ(ffmpegCalls(), 1);
    EXPECT_EQ(files(), whenDone_);
}

TEST_F(PreparerTest, TakesAnotherNameRatherThanSomebodysFile) {
    const QString other = folder_.filePath(u"Movie (Velmora).mp4"_s);
    const auto location = [](const QString& movie) {
        return Output::location(QUrl::fromLocalFile(movie)).toLocalFile();
    };
    EXPECT_EQ(location(movie_), prepared_);
    EXPECT_EQ(location(prepared_), other) << "the movie itself";
    write(prepared_, "the user's own");
    EXPECT_EQ(location(movie_), other) << "a file that is not ours";
    write(fingerprint_, "");
    EXPECT_EQ(location(movie_), prepared_) << "a file that is ours";
    QFile::remove(movie_);
    ASSERT_TRUE(QFile::link(prepared_, movie_));
    EXPECT_EQ(location(movie_), other) << "a link to the movie";
    ASSERT_TRUE(prepare());
    EXPECT_EQ(read(prepared_), "the user's own");
    EXPECT_EQ(read(other), "prepared");

    const QString videos = QDir::homePath() + u"/Videos/Velmora"_s;
    EXPECT_EQ(location(u"/nowhere/Some.Movie.avi"_s), videos + u"/Some.Movie.mp4"_s);
    EXPECT_TRUE(QDir(videos).exists());
}

TEST_F(PreparerTest, FingerprintNamesEverythingThatCounts) {
    Plan plan;
    Sidecar sidecar;
    sidecar.url = QUrl::fromLocalFile(folder_.filePath(u"gone.srt"_s));
    plan.sidecars = {sidecar};
    QFile file(movie_);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    file.setFileTime(QDateTime::fromMSecsSinceEpoch(1'700'000'000'999), QFileDevice::FileModificationTime);
    const QUrl source = QUrl::fromLocalFile(movie_);
    const QStringList lines = Output::fingerprint(source, plan.sidecars, plan).split(u'\n');
    const QString arguments = plan.ffmpegArguments(source, QUrl::fromLocalFile(u"/out"_s), false).join(u' ');
    EXPECT_EQ(lines, (QStringList{u"velmora-v1"_s, movie_ + u"|9|1700000000"_s,
                                  sidecar.url.toLocalFile() + u"|0|0"_s, arguments}));
}

TEST_F(PreparerTest, AsksForATenthMoreThanTheMovie) {
    const QUrl prepared = QUrl::fromLocalFile(prepared_);
    EXPECT_TRUE(Output::ensureSpace(prepared, 10));
    EXPECT_TRUE(Output::ensureSpace(QUrl::fromLocalFile(u"/nowhere/Movie.mp4"_s), 10'000'000'000));
    const auto refused = Output::ensureSpace(prepared, 1'000'000'000'000'000);
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().which, Case::notEnoughSpace);
    EXPECT_EQ(refused.error().needed, 1'100'000'200'000'000);
    EXPECT_GT(refused.error().free, 0);
    EXPECT_FALSE(Output::ensureSpace(prepared, std::numeric_limits<qint64>::max()));
}

}  // namespace
}  // namespace velmora
