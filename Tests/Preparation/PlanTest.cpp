#include "Preparation/Plan.h"

#include <gtest/gtest.h>

#include <tuple>
#include <vector>

using namespace Qt::StringLiterals;
using namespace velmora;
using Stream = MediaInfo::Stream;
using Kind = Stream::Kind;

namespace {

std::optional<QString> unlessDash(const QString& word) {
    return word == "-"_L1 ? std::nullopt : std::optional(word);
}

/// "video h264 yuv420p avc1 1920x1080", "audio dts 6 eng" or "subrip eng title", "-" for what is absent; an
/// asterisk at the end marks a default stream, an exclamation mark a forced one.
Stream stream(int index, QString text) {
    Stream result;
    result.index = index;
    if (text.endsWith(u'*')) result.isDefault = true;
    if (text.endsWith(u'!')) result.isForced = true;
    if (result.isDefault || result.isForced) text.chop(1);
    const QStringList words = text.split(u' ');
    if (words.at(0) == "video"_L1) {
        result.kind = Kind::video;
        result.codec = words.at(1);
        result.pixelFormat = unlessDash(words.at(2));
        result.tag = words.at(3);
        result.width = words.at(4).section(u'x', 0, 0).toInt();
        result.height = words.at(4).section(u'x', 1).toInt();
    } else if (words.at(0) == "audio"_L1) {
        result.kind = Kind::audio;
        result.codec = words.at(1);
        result.channels = words.at(2).toInt();
        result.language = unlessDash(words.at(3));
    } else {
        result.kind = Kind::subtitle;
        result.codec = words.at(0);
        result.language = unlessDash(words.at(1));
        if (words.size() > 2) result.title = words.mid(2).join(u' ');
    }
    return result;
}

/// "A.en.srt eng", with "sdh" or "forced" behind.
Sidecar sidecar(const QString& text) {
    const QStringList words = text.split(u' ');
    Sidecar result;
    result.url = QUrl::fromLocalFile(u"/films/"_s + words.at(0));
    result.language = unlessDash(words.at(1));
    result.isSDH = words.contains("sdh"_L1);
    result.isForced = words.contains("forced"_L1);
    return result;
}

class PlanTest : public testing::Test {
  protected:
    PlanTest() {
        qputenv("LANG", "en_US.UTF-8");
        qputenv("LANGUAGE", "nl:en");
    }
    ~PlanTest() override {
        qunsetenv("LANG");
        qunsetenv("LANGUAGE");
    }

    /// Plans a movie of `streams`, behind an H.264 picture unless they begin with one of their own.
    static Plan plan(QStringList streams, const QStringList& sidecars = {}, bool force = false,
                     double duration = 0) {
        if (streams.isEmpty() || !streams.constFirst().startsWith("video"_L1)) {
            streams.prepend(u"video h264 yuv420p avc1 1920x1080"_s);
        }
        MediaInfo info;
        info.duration = duration;
        info.container = u"mov,mp4"_s;
        for (const QString& each : streams)
            info.streams.append(stream(static_cast<int>(info.streams.size()), each));
        QList<Sidecar> files;
        for (const QString& each : sidecars) files.append(sidecar(each));
        VideoEncoder encoder;
        encoder.kind = VideoEncoder::Kind::videotoolbox;
        return Plan::make(info, files, force, encoder).value();
    }

    /// The arguments from the first -map to before -avoid_negative_ts.
    static QString middle(const Plan& plan) {
        const QString all = plan.ffmpegArguments({}, {}, true).join(u' ');
        return all.mid(all.indexOf("-map"_L1)).section(u" -avoid"_s, 0, 0);
    }
};

TEST_F(PlanTest, copiesVideoThatTelevisionsPlay) {
    const QString encode = u"-c:v hevc_videotoolbox -b:v %1 -tag:v hvc1 -allow_sw 1 "_s;
    const QString eight = encode + u"-pix_fmt nv12"_s;
    const QString ten = encode + u"-profile:v main10 -pix_fmt p010le"_s;
    const std::vector<std::tuple<QString, bool, QString>> rows = {
        {u"video h264 yuvj420p avc1 1920x1080"_s, false, u"-c:v copy"_s},
        {u"video h264 yuv420p avc1 1920x1080"_s, true, eight.arg(u"10M"_s)},
        {u"video h264 yuv420p10le avc1 1920x1080"_s, false, ten.arg(u"10M"_s)},
        {u"video h264 yuv422p avc1 1280x720"_s, false, eight.arg(u"5M"_s)},
        {u"video h264 - avc1 1920x1080"_s, false, eight.arg(u"10M"_s)},
        {u"video hevc yuv420p10le hev1 1920x1080"_s, false, u"-c:v copy -tag:v hvc1"_s},
        {u"video hevc nv12  1920x1080"_s, false, u"-c:v copy -tag:v hvc1"_s},
        {u"video hevc p010le HVC1 1920x1080"_s, false, u"-c:v copy"_s},
        {u"video hevc yuv420p12le hvc1 3840x2160"_s, false, eight.arg(u"24M"_s)},
        {u"video vp9 yuv420p - 1000x1529"_s, false, eight.arg(u"5M"_s)},
        {u"video vp9 yuv420p - 1000x1530"_s, false, eight.arg(u"10M"_s)},
        {u"video vp9 yuv420p - 1000x4799"_s, false, eight.arg(u"10M"_s)},
        {u"video vp9 yuv420p - 1000x4800"_s, false, eight.arg(u"24M"_s)},
        {u"video vp9 yuv420p - 100000x100000"_s, false, eight.arg(u"24M"_s)},
    };
    for (const auto& [picture, force, arguments] : rows) {
        EXPECT_EQ(middle(plan({picture}, {}, force)), u"-map 0:0 "_s + arguments) << qPrintable(picture);
    }
    EXPECT_EQ(Plan::make({}, {}, false, {}).error().which, PrepareError::Case::noVideo);
}

TEST_F(PlanTest, choosesOneAudioTrack) {
    const std::vector<std::tuple<QStringList, int, QString>> rows = {
        {{u"audio dts 6 eng*"_s, u"audio ac3 6 eng"_s}, 2, u"copy"_s},
        {{u"audio dts 6 eng*"_s, u"audio ac3 6 fra"_s, u"audio aac 2 -"_s}, 1, u"aac -ac 6 -b:a 448k"_s},
        {{u"audio ac3 6 fra"_s, u"audio dts 2 eng*"_s}, 2, u"aac -ac 2 -b:a 192k"_s},
        {{u"audio dts 6 -"_s, u"audio ac3 6 fra"_s}, 2, u"copy"_s},
        {{u"audio aac 2 -"_s, u"audio ac3 6 -*"_s, u"audio aac 2 -*"_s}, 2, u"copy"_s},
        {{u"audio truehd 8 eng"_s}, 1, u"aac -ac 6 -b:a 448k"_s},
        {{u"audio aac 8 eng"_s}, 1, u"copy"_s},
        {{u"audio aac 0 eng"_s}, 1, u"copy"_s},
        {{u"audio aac 9 eng"_s}, 1, u"aac -ac 6 -b:a 448k"_s},
        {{u"audio opus 0 eng"_s}, 1, u"aac -ac 1 -b:a 192k"_s},
    };
    for (const auto& [tracks, index, arguments] : rows) {
        EXPECT_EQ(middle(plan(tracks)), u"-map 0:0 -map 0:%1 -c:v copy -c:a %2"_s.arg(index).arg(arguments))
            << qPrintable(tracks.join(u", "_s));
    }
}

TEST_F(PlanTest, namesSubtitles) {
    const std::vector<std::tuple<QStringList, QStringList, QStringList>> rows = {
        {{u"A.srt -"_s}, {}, {u"Subtitles"_s}},
        {{u"A.srt nld sdh forced"_s}, {}, {u"Nederlands (SDH) (forced)"_s}},
        {{u"A.srt - forced"_s}, {}, {u"Subtitles (forced)"_s}},
        {{u"A.en.srt eng"_s, u"A.en.sdh.srt eng sdh"_s, u"B.x.srt xyz"_s},
         {},
         {u"Engels · A.en"_s, u"Engels (SDH) · A.en.sdh"_s, u"B.x"_s}},
        {{},
         {u"subrip eng"_s, u"ass eng"_s, u"text eng Engels 2"_s, u"webvtt eng!"_s, u"ssa - FORCED one!"_s,
          u"mov_text xyz "_s},
         {u"Engels"_s, u"Engels 2"_s, u"Engels 2"_s, u"Engels (forced)"_s, u"FORCED one"_s, u""_s}},
    };
    for (const auto& [sidecars, streams, titles] : rows) {
        EXPECT_EQ(plan(streams, sidecars).subtitleTitles(), titles);
    }
}

TEST_F(PlanTest, showsTheSubtitleThatSuitsTheUser) {
    const std::vector<std::tuple<QStringList, QStringList, qsizetype>> rows = {
        {{}, {u"subrip eng*"_s, u"subrip nld"_s}, 1},
        {{}, {u"subrip deu*"_s, u"subrip -"_s}, -1},
        {{}, {u"subrip nld!"_s, u"subrip eng"_s}, 1},
        {{}, {u"subrip nld Hard of Hearing"_s, u"subrip nld x.CC.y"_s, u"subrip nld accents"_s}, 2},
        {{}, {u"subrip nld SDH"_s, u"subrip eng"_s}, 0},
        {{u"a.srt deu"_s}, {u"subrip nld"_s}, 0},
        {{u"a.srt nld forced"_s}, {u"subrip eng"_s}, 1},
        {{u"a.srt -"_s, u"b.srt eng sdh"_s, u"c.srt eng"_s}, {}, 2},
        {{u"a.srt -"_s, u"b.srt -"_s}, {}, 0},
    };
    for (const auto& [sidecars, streams, chosen] : rows) {
        const QList<Plan::Subtitle> tracks = plan(streams, sidecars).subtitles;
        for (qsizetype track = 0; track < tracks.size(); ++track) {
            EXPECT_EQ(tracks.at(track).isDefault, track == chosen)
                << qPrintable((sidecars + streams).join(u", "_s)) << ": " << track;
        }
    }
}

TEST_F(PlanTest, reservesRoomForTheIndex) {
    const QString text = u"subrip eng"_s;
    const QString bitmap = u"hdmv_pgs_subtitle eng"_s;
    const std::vector<std::tuple<double, QStringList, qint64>> rows = {
        {30, {bitmap}, 2'183'600},
        {7200, {text, bitmap, text}, 24'896'000},
        {1e300, {text, bitmap}, 3'120'002'000'000},
    };
    for (const auto& [duration, streams, reserve] : rows) {
        const Plan made = plan(streams, {}, false, duration);
        EXPECT_EQ(made.moovReserve, reserve);
        EXPECT_EQ(made.skippedBitmapSubtitles, 1);
    }
}

TEST_F(PlanTest, rendersTheWholeCommand) {
    Plan made = plan({u"video hevc yuv420p hev1 1920x1080"_s, u"subrip eng Signs; 100%!"_s,
                      u"dvd_subtitle eng"_s, u"ass -"_s, u"audio dts 6 eng"_s},
                     {u"-a%03d.srt nld"_s, u"b:c.srt -"_s});
    made.sidecars[0].encoding = u"CP1252"_s;
    const QUrl source = QUrl::fromLocalFile(u"/films/A b.mkv"_s);
    const QUrl output = QUrl::fromLocalFile(u"/out/A.mp4.part"_s);
    const QString before = u"-y|-nostdin|-hide_banner|-loglevel|error|-progress|pipe:1|-nostats|"_s;
    const QString between =
        u"-i|/films/A b.mkv|-sub_charenc|CP1252|-i|/films/-a%03d.srt|-i|/films/b:c.srt|"
        "-map|0:0|-map|0:4|-map|1:0|-map|2:0|-map|0:1|-map|0:3|"
        "-c:v|copy|-tag:v|hvc1|-c:a|aac|-ac|6|-b:a|448k|-c:s|mov_text|"
        "-metadata:s:s:0|language=nld|-metadata:s:s:0|title=Nederlands · -a%03d|"
        "-metadata:s:s:0|handler_name=Nederlands · -a%03d|-disposition:s:0|default|"
        "-metadata:s:s:1|title=b:c|-metadata:s:s:1|handler_name=b:c|-disposition:s:1|0|"
        "-metadata:s:s:2|language=eng|-metadata:s:s:2|title=Signs; 100%|"
        "-metadata:s:s:2|handler_name=Signs; 100%|-disposition:s:2|forced|-disposition:s:3|0|"
        "-avoid_negative_ts|make_zero|"_s;
    const QString after = u"|-f|mp4|/out/A.mp4.part"_s;
    EXPECT_EQ(made.ffmpegArguments(source, output, false).join(u'|'),
              before + between + u"-moov_size|2198000"_s + after);
    EXPECT_EQ(made.ffmpegArguments(source, output, true).join(u'|'),
              before + between + u"-movflags|+faststart"_s + after);

    made.encoder.kind = VideoEncoder::Kind::vaapi;
    made.encoder.device = u"/dev/dri/renderD128"_s;
    EXPECT_TRUE(made.ffmpegArguments(source, output, false).join(u'|').startsWith(before + between));
    made.video = Plan::VideoEncode{false, u"5M"_s};
    EXPECT_EQ(made.ffmpegArguments(source, output, false).mid(8, 3).join(u'|'),
              u"-vaapi_device|/dev/dri/renderD128|-i"_s);
}

}  // namespace
