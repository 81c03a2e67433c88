// Posters and thumbnail strips over stand-ins for the tools, which write down how they were called.
#include "Artwork/Poster.h"
#include "Artwork/Thumbnails.h"
#include "Diagnostics/Log.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>
#include <QUuid>

#include <gmock/gmock.h>

#include <thread>

namespace velmora {
namespace {

using namespace Qt::StringLiterals;

const QString toneMapping =
    u"zscale=t=linear:npl=100,format=gbrpf32le,zscale=p=bt709,tonemap=tonemap=hable:desat=0,"
    "zscale=t=bt709:m=bt709:r=tv,"_s;

void write(const QString& path, const QByteArray& content) {
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << qPrintable(path);
    file.write(content);
}

QByteArray read(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(none)");
}

class ArtworkTest : public testing::Test {
  protected:
    ArtworkTest() {
        qputenv("VELMORA_STAND_INS", QFile::encodeName(tools_.path()));
        ffmpegDoes("printf picture >\"$output\"");
        probeAnswers("7200");
    }

    void probeAnswers(const QByteArray& duration, const QByteArray& transfer = {}) {
        const QByteArray stream = transfer.isEmpty() ? "" : R"({"color_transfer": ")" + transfer + R"("})";
        write(tools_.filePath(u"ffprobe"_s),
              "echo probed >>'" + log_ + "'\ncat <<'END'\n" + R"({"streams": [)" + stream +
                  R"(], "format": {"duration": ")" + duration + R"("}})" + "\nEND\n");
    }

    /// `script` finds the last argument in $output.
    void ffmpegDoes(const QByteArray& script) {
        write(tools_.filePath(u"ffmpeg"_s),
              "echo \"$@\" >>'" + log_ + "'\nfor output; do :; done\n" + script + '\n');
    }

    /// What the tools were called with since the last call of this, less what depends on the movie.
    QStringList calls() {
        const QString text = QString::fromUtf8(read(tools_.filePath(u"log"_s)));
        QFile::remove(tools_.filePath(u"log"_s));
        return QString(text).replace(movie_.toLocalFile(), u"MOVIE"_s).split(u'\n', Qt::SkipEmptyParts);
    }

    void nextMovie() {
        movie_ = QUrl::fromLocalFile(u"/films/"_s + QUuid::createUuid().toString(QUuid::Id128) + u".mkv"_s);
    }

    static QString logged() {
        logger().finish();
        return QString::fromUtf8(
            read(qEnvironmentVariable("XDG_STATE_HOME") + u"/Logs/Velmora/velmora.log"_s));
    }

    QTemporaryDir tools_;
    const QByteArray log_ = QFile::encodeName(tools_.filePath(u"log"_s));
    /// Another one for each test: what was probed is remembered.
    QUrl movie_ = QUrl::fromLocalFile(u"/films/"_s + QUuid::createUuid().toString(QUuid::Id128) + u".mkv"_s);
};

TEST_F(ArtworkTest, PostersShowTheRightMoment) {
    struct Row {
        std::optional<double> time;
        QByteArray duration;
        QByteArray transfer;
        QString seek;
        bool isMapped;
    };
    const Row rows[] = {
        {4.9, "7200", "", u"300.00"_s, false},          {4.9, "1000", "bt709", u"80.00"_s, false},
        {std::nullopt, "N/A", "", u"60.00"_s, false},   {std::nullopt, "inf", "", u"60.00"_s, false},
        {5.0, "7200", "arib-std-b67", u"5.00"_s, true}, {412.76, "7200", "smpte2084", u"412.76"_s, true}};
    for (const Row& row : rows) {
        nextMovie();
        probeAnswers(row.duration, row.transfer);
        EXPECT_TRUE(Poster::captureFromSource(movie_, row.time));
        const QString poster = Poster::url(movie_).toLocalFile();
        EXPECT_EQ(read(poster), "picture");
        const QString expected =
            u"-v error -ss %1 -i MOVIE -an -sn -frames:v 1 -vf %2scale=1280:-2:flags=lanczos,"
            "format=yuvj420p -q:v 3 -y %3.part.jpg"_s.arg(row.seek, row.isMapped ? toneMapping : QString(),
                                                          poster.chopped(4));
        EXPECT_EQ(calls(), (QStringList{u"probed"_s, expected}));
    }
    EXPECT_TRUE(logged().contains(u"poster (ffmpeg): frame at 412s saved for "_s + movie_.fileName()));
}

TEST_F(ArtworkTest, AFailedCaptureLeavesTheOldPoster) {
    const QString poster = Poster::url(movie_).toLocalFile();
    EXPECT_EQ(poster, Poster::url(QUrl::fromLocalFile(u"/films/x/../"_s + movie_.fileName())).toLocalFile());
    EXPECT_THAT(poster.toStdString(), testing::MatchesRegex(".*/Velmora/Posters/[0-9a-f]{24}\\.jpg"));
    write(poster, "old");
    for (const char* script : {"exit 1", "exit 0", "printf half >\"$output\"; exit 1"}) {
        ffmpegDoes(script);
        EXPECT_FALSE(Poster::captureFromSource(movie_, 60)) << script;
        EXPECT_EQ(read(poster), "old") << script;
    }
    ffmpegDoes("exit 0");  // writes nothing, while the last run's half picture is still there
    EXPECT_FALSE(Poster::captureFromSource(movie_, 60));
    EXPECT_EQ(read(poster), "old");
}

TEST_F(ArtworkTest, StripsAreMadeInOneRun) {
    struct Row {
        QByteArray duration;
        QByteArray transfer;
        int interval;
    };
    for (const Row& row :
         {Row{"7200", "smpte2084", 24}, Row{"100", "", 5}, Row{"1650", "", 6}, Row{"", "", 5}}) {
        nextMovie();
        probeAnswers(row.duration, row.transfer);
        const QString folder = Thumbnails::folder(movie_).toLocalFile();
        write(folder + u"/0009.jpg"_s, "of an older strip");
        ffmpegDoes("for n in 1 2 3; do printf p >\"${output%/*}/000$n.jpg\"; done");
        EXPECT_EQ(Thumbnails::stored(movie_), nullptr);
        const auto strip = Thumbnails::generate(movie_);
        ASSERT_NE(strip, nullptr);
        EXPECT_EQ(strip->count(), 3);
        EXPECT_EQ(strip->interval(), row.interval);
        const QString expected =
            u"-v error -hwaccel auto -skip_frame nokey -i MOVIE -an -sn -vf fps=1/%1,%2scale=480:-2 -q:v 6 "
            "-y %3/%04d.jpg"_s.arg(row.interval)
                .arg(row.transfer.isEmpty() ? QString() : toneMapping, folder);
        EXPECT_EQ(calls(), (QStringList{u"probed"_s, expected}));
        const auto stored = Thumbnails::stored(movie_);
        ASSERT_NE(stored, nullptr);
        EXPECT_EQ(stored->count(), 3);
        EXPECT_EQ(stored->interval(), row.interval);
    }
}

TEST_F(ArtworkTest, SoftwareDecodesWhereHardwareCannot) {
    ffmpegDoes("case \"$*\" in *hwaccel*) exit 1;; esac; printf p >\"${output%/*}/0001.jpg\"");
    EXPECT_NE(Thumbnails::generate(movie_), nullptr);
    const QStringList made = calls();
    ASSERT_EQ(made.size(), 3);
    EXPECT_EQ(made[2], QString(made[1]).remove(u"-hwaccel auto "_s));
    for (const char* script : {"exit 1", "exit 0"}) {  // failing, and without a picture
        ffmpegDoes(script);
        EXPECT_EQ(Thumbnails::generate(movie_), nullptr) << script;
        EXPECT_EQ(Thumbnails::stored(movie_), nullptr) << script;
    }
    EXPECT_EQ(logged().count(u"thumbnails: ffmpeg failed (hardware true)"_s), 2);
    EXPECT_EQ(logged().count(u"thumbnails: ffmpeg failed (hardware false)"_s), 1);
}

TEST_F(ArtworkTest, AStopEndsARunAndLeavesNoStrip) {
    ffmpegDoes("printf p >\"${output%/*}/0001.jpg\"; exec sleep 60");
    std::stop_source source;
    std::jthread stopper([&] {
        const QString picture = Thumbnails::folder(movie_).toLocalFile() + u"/0001.jpg"_s;
        while (!QFile::exists(picture)) std::this_thread::yield();
        source.request_stop();
    });
    EXPECT_EQ(Thumbnails::generate(movie_, source.get_token()), nullptr);
    EXPECT_EQ(Thumbnails::stored(movie_), nullptr);
    EXPECT_EQ(calls().size(), 2) << "a stop is no reason to try software";
    EXPECT_FALSE(Poster::captureFromSource(movie_, 60, source.get_token()));
    EXPECT_FALSE(QFile::exists(tools_.filePath(u"log"_s)));
}

TEST_F(ArtworkTest, ImagesAreTheNearestAndManifestsMustMakeSense) {
    const QString folder = Thumbnails::folder(movie_).toLocalFile();
    for (const auto& [manifest, isUsable] :
         std::initializer_list<std::pair<QByteArray, bool>>{{R"({"count":300,"interval":24})", true},
                                                            {R"({"count":0,"interval":24})", false},
                                                            {R"({"count":3,"interval":0})", false},
                                                            {R"({"count":"3","interval":24})", false},
                                                            {R"({"count":3})", false},
                                                            {"{", false}}) {
        write(folder + u"/strip.json"_s, manifest);
        EXPECT_EQ(Thumbnails::stored(movie_) != nullptr, isUsable) << manifest.constData();
    }
    Thumbnails strip(folder, 24, 300);
    const auto add = [&](const QString& name, int width) {
        QImage(width, 1, QImage::Format_RGB32).save(folder + name);
    };
    add(u"/0001.jpg"_s, 1);
    add(u"/0002.jpg"_s, 2);
    add(u"/0300.jpg"_s, 300);
    const std::pair<double, int> expected[] = {{0, 1},  {11.9, 1}, {12, 2},       {-30, 1},
                                               {35, 2}, {36, 0},   {99'999, 300}, {1e300, 300}};
    for (const auto& [time, width] : expected) EXPECT_EQ(strip.image(time).width(), width) << time;
    add(u"/0003.jpg"_s, 3);
    EXPECT_EQ(strip.image(36).width(), 3) << "what was missing is looked for again";
}

}  // namespace
}  // namespace velmora
