// Sample movies of every kind go through the whole preparation; what comes out is looked at with ffprobe and
// decoded.
#include "Media/MediaFixture.h"
#include "Preparation/Preparer.h"

#include <gmock/gmock.h>

namespace velmora {
namespace {

using namespace Qt::StringLiterals;

constexpr auto repacked = "Repacking for Apple TV, no re-encode";
constexpr auto newSound = "Repacking, re-encoding audio only";
constexpr auto newPicture = "Re-encoding video for Apple TV";

struct Beside {
    const char* name;
    QByteArray content;
};
struct Row {
    const char* sample;
    const char* name;  ///< in the movie's folder; names as people have them
    const char* prepared;
    const char* note;
    QStringList streams;
    std::vector<const char*> subtitles = {};  ///< how each track begins
    std::vector<Beside> beside = {};
    bool force = false;
};

QByteArray subtitle(const QByteArray& text) {
    return "1\n00:00:00,100 --> 00:00:00,900\n" + text + "\n\n2\n00:00:01,100 --> 00:00:01,900\n...\n\n";
}

void PrintTo(const Row& row, std::ostream* stream) {
    *stream << row.sample << ' ' << row.name;
}

class PreparedMovies : public test::MoviesTest, public testing::WithParamInterface<Row> {
  protected:
    static void SetUpTestSuite() { qputenv("LC_ALL", "en_US.UTF-8"); }

    static auto prepare(const QString& movie, bool force) {
        return Preparer().prepare(QUrl::fromLocalFile(movie), force, [](const Preparer::Update&) {});
    }
};

TEST_P(PreparedMovies, AreWhatAppleTelevisionsTake) {
    const Row& row = GetParam();
    const QString movie = add(QString::fromUtf8(row.sample), QString::fromUtf8(row.name));
    for (const auto& [name, content] : row.beside) test::writeFile(path(QString::fromUtf8(name)), content);

    const auto result = prepare(movie, row.force);
    ASSERT_TRUE(result) << qPrintable(result.error().errorDescription());
    const QString prepared = result->file.toLocalFile();
    EXPECT_EQ(prepared, path(QString::fromUtf8(row.prepared)));
    EXPECT_TRUE(result->note.startsWith(QString::fromUtf8(row.note))) << qPrintable(result->note);
    EXPECT_EQ(test::streamsOf(prepared), row.streams.join(u'\n').toStdString());
    EXPECT_EQ(test::decodingErrors(prepared), "");
    for (std::size_t track = 0; track < row.subtitles.size(); ++track) {
        EXPECT_THAT(test::subtitleText(prepared, track), testing::StartsWith(row.subtitles[track]));
    }
    if (prepared == movie) return;

    const QStringList boxes = test::boxesOf(prepared);
    EXPECT_LT(boxes.indexOf(u"moov"_s), boxes.indexOf(u"mdat"_s)) << qPrintable(boxes.join(u' '));
    EXPECT_EQ(result->subtitleTitles.size(), static_cast<qsizetype>(row.subtitles.size()));
    EXPECT_EQ(files().filter(u".part"_s) + files().filter(u"lock"_s), QStringList());
    if (row.force) return;
    EXPECT_EQ(prepare(movie, false)->note, u"Prepared earlier, reusing"_s);
}

const QString h264 = u"video h264 avc1 yuv420p"_s;
const QString hevc = u"video hevc hvc1 yuv420p10le"_s;
const QString stereo = u"audio aac 2 und"_s;

INSTANTIATE_TEST_SUITE_P(
    Zoo, PreparedMovies,
    testing::Values(
        Row{"as-is.mp4",
            "As is.mp4",
            "As is.mp4",
            "Already Apple-native, playing as is",
            {h264, stereo, u"subtitle mov_text und SubtitleHandler default"_s},
            {"one"}},
        Row{"as-is.mp4",
            "As is.mp4",
            "As is (Velmora).mp4",
            repacked,
            {h264, stereo, u"subtitle mov_text eng English default"_s,
             u"subtitle mov_text und SubtitleHandler"_s},
            {"beside", "one"},
            {{"As is.en.srt", subtitle("beside")}}},
        Row{"hev1.mp4",
            "Größe – 映画 🎬.mp4",
            "Größe – 映画 🎬 (Velmora).mp4",
            repacked,
            {hevc, u"audio aac 2 eng"_s, u"subtitle mov_text eng SubtitleHandler default"_s},
            {"one"}},
        Row{"hevc.mkv",
            "It's \"$HOME\" 100% #1.mkv",
            "It's \"$HOME\" 100% #1.mp4",
            repacked,
            {hevc, u"audio ac3 6 ger"_s, u"subtitle mov_text eng English SDH default"_s,
             u"subtitle mov_text deu SubtitleHandler forced"_s, u"subtitle mov_text fra SubtitleHandler"_s},
            {"one", "eins", "<i>un, deux</i>"}},
        Row{"h264.mkv",
            "-i -y.mkv",
            "-i -y.mp4",
            repacked,
            {h264, stereo, u"subtitle mov_text deu German · 2_German default"_s,
             u"subtitle mov_text nld Dutch · 3_Dutch"_s,
             u"subtitle mov_text eng English (forced) · English.forced forced"_s},
            {"für die Mädchen „so“\n", "één café\n", "sign"},
            {{"Subs/2_German.srt", subtitle("f\xfcr die M\xe4"
                                            "dchen \x84so\x93")},
             {"Subs/3_Dutch.srt", subtitle("één café")},
             {"Subs/English.forced.vtt", "WEBVTT\n\n00:00.100 --> 00:00.900\nsign\n"}}},
        Row{"hi10p.mkv", "new\nline.mkv", "new\nline.mp4", newPicture, {hevc, stereo}},
        Row{"mpeg4.avi", "%03d.avi", "%03d.mp4", newPicture, {h264, u"audio mp3 2 und"_s}},
        Row{"vp9.webm", "a:b\\c?d*e.webm", "a:b\\c?d*e.mp4", newPicture, {h264, u"audio aac 2 dut"_s}},
        Row{"h264.mkv", "Twice.mkv.mkv", "Twice.mkv.mp4", repacked, {h264, stereo}},
        Row{"silent.mkv", "file:silent.mkv", "file:silent.mp4", repacked, {h264}},
        Row{"dts.mkv", "a  b .mkv", "a  b .mp4", newSound, {h264, u"audio aac 6 eng"_s}},
        Row{"truehd.mkv", "x.mkv", "x.mp4", repacked, {h264, u"audio eac3 6 dut"_s}},
        Row{"opus.mkv", "x", "x.mp4", newSound, {h264, u"audio aac 2 nld"_s}},
        Row{"bitmaps.mkv",
            "x.mkv",
            "x.mp4",
            repacked,
            {h264, u"audio ac3 6 und"_s, u"subtitle mov_text eng SubtitleHandler default"_s},
            {"one"}},
        Row{"cover.mkv", "x.mkv", "x.mp4", repacked, {hevc, stereo}},
        Row{"h264.mkv", "x.mkv", "x.mp4", newPicture, {h264, stereo}, {}, {}, true}));

}  // namespace
}  // namespace velmora
