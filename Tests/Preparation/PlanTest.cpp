#include "Preparation/Plan.h"

#include <QRegularExpression>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace velmora;
using Stream = MediaInfo::Stream;

namespace {

std::optional<QString> unlessDash(const QString& word) {
    return word == "-"_L1 ? std::nullopt : std::optional(word);
}

/// "video h264 yuv420p avc1 1920 1080", "audio dts 6 eng" or "text subrip eng Title", "-" for what is absent;
/// an asterisk at the end marks a default stream, an exclamation mark a forced one.
Stream stream(qsizetype index, QString text) {
    Stream result;
    result.index = static_cast<int>(index);
    result.isDefault = text.endsWith(u'*');
    result.isForced = text.endsWith(u'!');
    if (result.isDefault || result.isForced) text.chop(1);
    const QStringList words = text.split(u' ');
    result.codec = words.at(1);
    if (words.at(0) == "video"_L1) {
        result.kind = Stream::Kind::video;
        result.pixelFormat = unlessDash(words.at(2));
        result.tag = words.at(3);
        result.width = words.at(4).toInt();
        result.height = words.at(5).toInt();
    } else {
        const bool isAudio = words.at(0) == "audio"_L1;
        result.kind = isAudio ? Stream::Kind::audio : Stream::Kind::subtitle;
        result.channels = words.at(2).toInt();
        result.language = unlessDash(words.at(isAudio ? 3 : 2));
        if (!isAudio && words.size() > 3) result.title = words.mid(3).join(u' ');
    }
    return result;
}

/// "file A.en.srt eng", with "sdh" or "forced" behind.
Sidecar sidecar(const QString& text) {
    const QStringList words = text.split(u' ');
    Sidecar result;
    result.url = QUrl::fromLocalFile(u"/films/"_s + words.at(1));
    result.language = unlessDash(words.at(2));
    result.isSDH = words.contains("sdh"_L1);
    result.isForced = words.contains("forced"_L1);
    return result;
}

/// Plans a movie of these streams and sidecars, separated by commas, behind an H.264 picture unless they
/// begin with one of their own, for a user who prefers Dutch to English.
Plan plan(const QString& parts, bool force = false, double duration = 0) {
    qputenv("LANG", "en_US.UTF-8");
    qputenv("LANGUAGE", "nl:en");
    MediaInfo info;
    info.duration = duration;
    if (!parts.startsWith("video"_L1)) info.streams.append(stream(0, u"video h264 yuv420p avc1 1920 1080"_s));
    QList<Sidecar> sidecars;
    for (const QString& part : parts.split(u", "_s, Qt::SkipEmptyParts)) {
        if (part.startsWith("file"_L1)) {
            sidecars.append(sidecar(part));
        } else {
            info.streams.append(stream(info.streams.size(), part));
        }
    }
    VideoEncoder encoder;
    encoder.kind = VideoEncoder::Kind::videotoolbox;
    return Plan::make(info, sidecars, force, encoder).value();
}

/// The arguments from the first -map to before -avoid_negative_ts.
QString middle(const Plan& plan) {
    const QString all = plan.ffmpegArguments({}, {}, true).join(u' ');
    return all.mid(all.indexOf("-map"_L1)).section(u" -avoid"_s, 0, 0);
}

TEST(Plan, copiesVideoThatTelevisionsPlay) {
    QString rows =
        u"h264 yuvj420p avc1 1920 1080=copy|h264 yuv420p10le avc1 1920 1080=ten 10M|h264 - - 1920 1080=eight "
        u"10M|"
        "hevc yuv420p10le hev1 1920 1080=copy -tag:v hvc1|hevc nv12 - 1920 1080=copy -tag:v hvc1|"
        "hevc p010le HVC1 1920 1080=copy|hevc yuv420p12le hvc1 3840 2160=eight 24M|"
        "vp9 yuv420p - 1000 1529=eight 5M|vp9 yuv420p - 1000 1530=eight 10M|vp9 yuv420p - 1000 4799=eight "
        "10M|"
        "vp9 yuv420p - 1000 4800=eight 24M|vp9 yuv420p - 100000 100000=eight 24M"_s;
    const QString encode = u"hevc_videotoolbox -b:v \\1 -tag:v hvc1 -allow_sw 1 "_s;
    rows.replace(QRegularExpression(u"ten (\\d+M)"_s), encode + u"-profile:v main10 -pix_fmt p010le"_s);
    rows.replace(QRegularExpression(u"eight (\\d+M)"_s), encode + u"-pix_fmt nv12"_s);
    for (const QString& row : rows.split(u'|')) {
        EXPECT_EQ(middle(plan(u"video "_s + row.section(u'=', 0, 0))),
                  u"-map 0:0 -c:v "_s + row.section(u'=', 1));
    }
    EXPECT_EQ(middle(plan({}, true)),
              u"-map 0:0 -c:v hevc_videotoolbox -b:v 10M -tag:v hvc1 -allow_sw 1 -pix_fmt nv12"_s);
    EXPECT_EQ(Plan::make({}, {}, false, {}).error().which, PrepareError::Case::noVideo);
}

TEST(Plan, choosesOneAudioTrack) {
    const QString rows =
        u"audio dts 6 eng*, audio ac3 6 eng=2 copy|"
        "audio dts 6 eng*, audio ac3 6 fra, audio aac 2 -=1 aac -ac 6 -b:a 448k|"
        "audio ac3 6 fra, audio dts 2 eng*=2 aac -ac 2 -b:a 192k|audio dts 6 -, audio ac3 6 fra=2 copy|"
        "audio aac 2 -, audio ac3 6 -*, audio aac 2 -*=2 copy|audio truehd 8 eng=1 aac -ac 6 -b:a 448k|"
        "audio aac 8 eng=1 copy|audio aac 0 eng=1 copy|audio aac 9 eng=1 aac -ac 6 -b:a 448k|"
        "audio opus 0 eng=1 aac -ac 1 -b:a 192k"_s;
    for (const QString& row : rows.split(u'|')) {
        const QString choice = row.section(u'=', 1);
        EXPECT_EQ(middle(plan(row.section(u'=', 0, 0))),
                  u"-map 0:0 -map 0:%1 -c:v copy -c:a %2"_s.arg(choice.section(u' ', 0, 0),
                                                                choice.section(u' ', 1)));
    }
}

TEST(Plan, namesSubtitles) {
    const QString rows =
        u"file A.srt -=Subtitles|file A.srt nld sdh forced=Nederlands (SDH) (forced)|"
        "file A.srt - forced=Subtitles (forced)|file A.en.srt eng, file A.en.sdh.srt eng sdh, file B.x.srt "
        "xyz="
        "Engels · A.en, Engels (SDH) · A.en.sdh, B.x|text subrip eng, text ass eng, text text eng Engels 2, "
        "text webvtt eng!, text ssa - FORCED one!=Engels, Engels 2, Engels 2, Engels (forced), FORCED one"_s;
    for (const QString& row : rows.split(u'|')) {
        EXPECT_EQ(plan(row.section(u'=', 0, 0)).subtitleTitles().join(u", "_s), row.section(u'=', 1));
    }
}

TEST(Plan, showsTheSubtitleThatSuitsTheUser) {
    // The tracks, and which of them in the order of the output is shown.
    const QString rows =
        u"text subrip eng*, text subrip nld=1|text subrip deu*, text subrip -=none|"
        "text subrip nld!, text subrip eng=1|text subrip nld SDH, text subrip eng=0|"
        "text subrip nld Hard of Hearing, text subrip nld x.CC.y, text subrip nld accents=2|"
        "text subrip nld, file a.srt deu=0|text subrip eng, file a.srt nld forced=1|"
        "file a.srt -, file b.srt eng sdh, file c.srt eng=2|file a.srt -, file b.srt -=0"_s;
    for (const QString& row : rows.split(u'|')) {
        QStringList shown;
        const QList<Plan::Subtitle> tracks = plan(row.section(u'=', 0, 0)).subtitles;
        for (qsizetype track = 0; track < tracks.size(); ++track) {
            if (tracks.at(track).isDefault) shown.append(QString::number(track));
        }
        EXPECT_EQ(shown.isEmpty() ? u"none"_s : shown.join(u' '), row.section(u'=', 1)) << qPrintable(row);
    }
}

TEST(Plan, reservesRoomForTheIndex) {
    EXPECT_EQ(plan({}, false, 30).moovReserve, 2'183'600);
    EXPECT_EQ(plan(u"text subrip eng, text subrip -"_s, false, 7200).moovReserve, 24'896'000);
    EXPECT_EQ(plan(u"text subrip eng"_s, false, 1e300).moovReserve, 3'120'002'000'000);
    const Plan leavesOut = plan(u"text hdmv_pgs_subtitle eng, text dvb_subtitle eng"_s);
    EXPECT_EQ(leavesOut.moovReserve, 2'183'600);
    EXPECT_EQ(leavesOut.skippedBitmapSubtitles, 2);
}

TEST(Plan, rendersTheWholeCommand) {
    Plan made = plan(
        u"video hevc yuv420p hev1 1920 1080, text subrip eng Signs; 100%!, text dvd_subtitle eng, "
        "text ass -, audio dts 6 eng, file -a%03d.srt nld, file b:c.srt -"_s);
    made.sidecars[0].encoding = u"CP1252"_s;
    const auto rendered = [&made](bool faststart) {
        return made
            .ffmpegArguments(QUrl::fromLocalFile(u"/films/A b.mkv"_s),
                             QUrl::fromLocalFile(u"/out/A.mp4.part"_s), faststart)
            .join(u'|');
    };
    const QString expected =
        u"-y|-nostdin|-hide_banner|-loglevel|error|-progress|pipe:1|-nostats|"
        "-i|/films/A b.mkv|-sub_charenc|CP1252|-i|/films/-a%03d.srt|-i|/films/b:c.srt|"
        "-map|0:0|-map|0:4|-map|1:0|-map|2:0|-map|0:1|-map|0:3|"
        "-c:v|copy|-tag:v|hvc1|-c:a|aac|-ac|6|-b:a|448k|-c:s|mov_text|"
        "-metadata:s:s:0|language=nld|-metadata:s:s:0|title=Nederlands · -a%03d|"
        "-metadata:s:s:0|handler_name=Nederlands · -a%03d|-disposition:s:0|default|"
        "-metadata:s:s:1|title=b:c|-metadata:s:s:1|handler_name=b:c|-disposition:s:1|0|"
        "-metadata:s:s:2|language=eng|-metadata:s:s:2|title=Signs; 100%|"
        "-metadata:s:s:2|handler_name=Signs; 100%|-disposition:s:2|forced|-disposition:s:3|0|"
        "-avoid_negative_ts|make_zero|-moov_size|2198000|-f|mp4|/out/A.mp4.part"_s;
    EXPECT_EQ(rendered(false), expected);
    EXPECT_EQ(rendered(true), QString(expected).replace("-moov_size|2198000"_L1, "-movflags|+faststart"_L1));
    made.encoder.kind = VideoEncoder::Kind::vaapi;
    made.encoder.device = u"/dev/dri/renderD128"_s;
    EXPECT_EQ(rendered(false), expected);
    made.video = Plan::VideoEncode{false, u"5M"_s};
    EXPECT_TRUE(rendered(false).contains("|-nostats|-vaapi_device|/dev/dri/renderD128|-i|/films"_L1));
}

}  // namespace
