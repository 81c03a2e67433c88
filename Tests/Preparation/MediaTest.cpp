#include "Preparation/Media.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <tuple>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;
using namespace velmora;
using Case = PrepareError::Case;
using Kind = MediaInfo::Stream::Kind;

namespace {

MediaInfo parsed(const QByteArray& streams, const QByteArray& format = "{}") {
    const auto info = MediaProbe::parse("{\"streams\":[" + streams + "],\"format\":" + format + "}");
    if (!info) ADD_FAILURE() << qPrintable(info.error().detail);
    return info.value_or(MediaInfo{});
}

TEST(MediaProbe, readsStreams) {
    const MediaInfo info = parsed(R"(
        {"index": 0, "codec_type": "video", "codec_name": "mjpeg", "width": 600.0, "other": [1]},
        {"index": 1, "codec_type": "video", "codec_name": "hevc", "codec_tag_string": "hev1",
         "pix_fmt": "yuv420p10le", "width": 3840, "height": 2160, "disposition": {"default": 2, "forced": 1}},
        {"index": 3, "codec_type": "audio", "codec_name": null, "channels": 6, "tags": {"LANGUAGE": "ger"},
         "disposition": {"default": 1, "Forced": 1}},
        {"index": 4, "codec_type": "subtitle", "codec_name": "subrip",
         "tags": {"Title": " A \u00e9", "language": "und"}},
        {"index": 5, "codec_type": "data"}, {"index": 6})");
    ASSERT_EQ(info.streams.size(), 6);
    ASSERT_TRUE(info.video());
    const MediaInfo::Stream& video = *info.video();
    EXPECT_EQ(std::tuple(video.index, video.tag, video.pixelFormat, video.width, video.height),
              std::tuple(1, u"hev1"_s, std::optional(u"yuv420p10le"_s), 3840, 2160));
    EXPECT_EQ(std::pair(video.isDefault, video.isForced), std::pair(false, true));
    ASSERT_EQ(info.audio().size(), 1);
    const MediaInfo::Stream audio = info.audio().constFirst();
    EXPECT_EQ(std::tuple(audio.index, audio.codec, audio.channels, audio.language),
              std::tuple(3, u"unknown"_s, 6, std::optional(u"deu"_s)));
    EXPECT_EQ(std::pair(audio.isDefault, audio.isForced), std::pair(true, false));
    ASSERT_EQ(info.subtitles().size(), 1);
    EXPECT_EQ(info.subtitles().constFirst().title, u" A \u00E9"_s);
    EXPECT_EQ(info.subtitles().constFirst().language, std::nullopt);
    EXPECT_EQ(std::pair(info.streams.at(4).kind, info.streams.at(5).kind),
              std::pair(Kind::other, Kind::other));
    EXPECT_EQ(parsed(R"({"index": 0, "codec_type": "video", "codec_name": "png"})").video(), nullptr);
    // Bytes that are no text.
    EXPECT_EQ(parsed("{\"index\": 0, \"tags\": {\"title\": \"caf\xE9\"}}").streams.at(0).title,
              u"caf\uFFFD"_s);
}

TEST(MediaProbe, readsTheFormat) {
    const std::vector<std::tuple<QByteArray, double, qint64, bool>> rows = {
        {R"("format_name": "mov,mp4,mj2", "duration": "7200.5", "size": "5000000000")", 7200.5, 5'000'000'000,
         true},
        {R"("format_name": "matroska,webm", "duration": "N/A", "size": "+12")", 0, 12, false},
        {R"("format_name": "MOV", "duration": "inf", "size": "1.5")", 0, 0, false},
        {R"("format_name": ",mj2", "duration": null)", 0, 0, true},
        {"", 0, 0, false},
    };
    for (const auto& [format, duration, size, isApple] : rows) {
        const MediaInfo info = parsed("", '{' + format + '}');
        EXPECT_EQ(std::tuple(info.duration, info.size, info.isAppleContainer()),
                  std::tuple(duration, size, isApple))
            << format.constData();
    }
}

TEST(MediaProbe, refusesWhatItCannotTrust) {
    QList<QByteArray> answers =
        QByteArray(R"(;[];{;{"format": {}};{"streams": []};{"streams": {}, "format": {}};
        {"streams": [], "format": {"size": 5}})")
            .split(';');
    const QByteArray streams(
        R"(1;{};{"index": null};{"index": 1.5};{"index": "1"};{"index": 1, "width": 1e10};
        {"index": 1, "codec_name": 7};{"index": 1, "tags": []};{"index": 1, "tags": {"title": 7}};
        {"index": 1, "disposition": {"default": true}})");
    for (const QByteArray& stream : streams.split(';')) {
        answers.append("{\"format\": {}, \"streams\": [" + stream + "]}");
    }
    for (const QByteArray& answer : std::as_const(answers)) {
        const auto info = MediaProbe::parse(answer);
        ASSERT_FALSE(info) << answer.constData();
        EXPECT_EQ(info.error().which, Case::probeFailed);
        EXPECT_TRUE(info.error().detail.startsWith(u"Couldn't read ffprobe's answer: "_s));
    }
}

TEST(MediaProbe, tellsWhatTheToolSaid) {
    const QTemporaryDir folder;
    const auto probeWith = [&folder](const QByteArray& script, const std::stop_token& stop = {}) {
        QFile file(folder.filePath(QString::number(script.size())));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("#!/bin/sh\n" + script);
        file.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
        file.close();
        return MediaProbe::probe(QUrl::fromLocalFile(u"-a b.mkv"_s), QUrl::fromLocalFile(file.fileName()),
                                 stop);
    };
    EXPECT_EQ(probeWith("for word; do echo \"$word\" >&2; done; exit 1").error().detail,
              u"-v\nerror\n-print_format\njson\n-show_streams\n-show_format\n"_s +
                  QDir::current().absoluteFilePath(u"-a b.mkv"_s));
    EXPECT_EQ(probeWith("echo ' ' >&2; exit 1").error().errorDescription(),
              u"That doesn't look like a video file."_s);
    EXPECT_EQ(probeWith(R"(echo '{"streams": [], "format": {"size": "7"}}'; echo careful >&2)")->size, 7);
    const std::stop_source stop;
    stop.request_stop();
    EXPECT_EQ(probeWith("exit 1", stop.get_token()).error().which, Case::cancelled);
    const auto missing =
        MediaProbe::probe(QUrl::fromLocalFile(u"/a.mkv"_s), QUrl::fromLocalFile(u"/no/tool"_s));
    EXPECT_EQ(missing.error().errorDescription(), u"No such file or directory"_s);
}

TEST(PrepareError, speaksPlainly) {
    EXPECT_EQ((PrepareError{Case::probeFailed, u"bad"_s}).errorDescription(),
              u"Couldn't read the file: bad"_s);
    EXPECT_EQ(PrepareError{Case::ffmpegFailed}.errorDescription(), u"ffmpeg couldn't convert the file."_s);
    EXPECT_EQ((PrepareError{Case::ffmpegFailed, u"a\nb"_s}).errorDescription(),
              u"ffmpeg couldn't convert the file:\na\nb"_s);
    const QString sizes =
        u"-5=0 bytes|1499=1 kB|531600000=532 MB|999499999=999 MB|999500000=1 GB|4249999999=4.2 GB|"
        "999950000000=1 TB|1250000000000=1.3 TB|9223372036854775807=9 EB"_s;
    for (const QString& row : sizes.split(u'|')) {
        const qint64 bytes = row.section(u'=', 0, 0).toLongLong();
        const QString text = row.section(u'=', 1);
        const PrepareError error{.which = Case::notEnoughSpace, .needed = bytes, .free = 0};
        EXPECT_EQ(
            error.errorDescription(),
            u"Not enough free disk space to prepare this movie. Needs about %1, 0 bytes free."_s.arg(text));
    }
}

}  // namespace
