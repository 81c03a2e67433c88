#include "Preparation/Media.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

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
    EXPECT_EQ(video.index, 1);
    EXPECT_EQ(video.tag, u"hev1"_s);
    EXPECT_EQ(video.pixelFormat, u"yuv420p10le"_s);
    EXPECT_EQ(std::pair(video.width, video.height), std::pair(3840, 2160));
    EXPECT_FALSE(video.isDefault);
    EXPECT_TRUE(video.isForced);
    ASSERT_EQ(info.audio().size(), 1);
    const MediaInfo::Stream audio = info.audio().constFirst();
    EXPECT_EQ(std::tuple(audio.index, audio.codec, audio.channels, audio.language),
              std::tuple(3, u"unknown"_s, 6, std::optional(u"deu"_s)));
    EXPECT_TRUE(audio.isDefault);
    EXPECT_FALSE(audio.isForced);
    ASSERT_EQ(info.subtitles().size(), 1);
    EXPECT_EQ(info.subtitles().constFirst().title, u" A \u00E9"_s);
    EXPECT_EQ(info.subtitles().constFirst().language, std::nullopt);
    EXPECT_EQ(info.streams.at(4).kind, Kind::other);
    EXPECT_EQ(info.streams.at(5).kind, Kind::other);
    EXPECT_EQ(parsed(R"({"index": 0, "codec_type": "video", "codec_name": "png"})").video(), nullptr);
}

TEST(MediaProbe, readsTheFormat) {
    struct Row {
        QByteArray format;
        double duration;
        qint64 size;
        bool isApple;
    };
    const std::vector<Row> rows = {
        {R"({"format_name": "mov,mp4,m4a,3gp,3g2,mj2", "duration": "7200.5", "size": "5000000000"})", 7200.5,
         5'000'000'000, true},
        {R"({"format_name": "matroska,webm", "duration": "N/A", "size": "+12"})", 0, 12, false},
        {R"({"format_name": "MOV", "duration": "inf", "size": "1.5"})", 0, 0, false},
        {R"({"format_name": ",mj2", "duration": null})", 0, 0, true},
        {"{}", 0, 0, false},
    };
    for (const Row& row : rows) {
        const MediaInfo info = parsed("", row.format);
        EXPECT_EQ(info.duration, row.duration) << row.format.constData();
        EXPECT_EQ(info.size, row.size) << row.format.constData();
        EXPECT_EQ(info.isAppleContainer(), row.isApple) << row.format.constData();
    }
}

TEST(MediaProbe, refusesWhatItCannotTrust) {
    for (const QByteArray& answer : std::vector<QByteArray>{
             "", "[]", "{", R"({"format": {}})", R"({"streams": []})", R"({"streams": {}, "format": {}})",
             R"({"streams": [1], "format": {}})", R"({"streams": [{}], "format": {}})",
             R"({"streams": [{"index": null}], "format": {}})",
             R"({"streams": [{"index": 1.5}], "format": {}})",
             R"({"streams": [{"index": "1"}], "format": {}})",
             R"({"streams": [{"index": 1, "width": 1e10}], "format": {}})",
             R"({"streams": [{"index": 1, "codec_name": 7}], "format": {}})",
             R"({"streams": [{"index": 1, "tags": []}], "format": {}})",
             R"({"streams": [{"index": 1, "tags": {"title": 7}}], "format": {}})",
             R"({"streams": [{"index": 1, "disposition": {"default": true}}], "format": {}})",
             R"({"streams": [], "format": {"size": 5}})"}) {
        const auto info = MediaProbe::parse(answer);
        ASSERT_FALSE(info) << answer.constData();
        EXPECT_EQ(info.error().which, Case::probeFailed);
        EXPECT_TRUE(info.error().detail.startsWith(u"Couldn't read ffprobe's answer: "_s))
            << answer.constData();
        EXPECT_GT(info.error().detail.size(), 32) << answer.constData();
    }
}

TEST(MediaProbe, bearsBytesThatAreNoText) {
    const MediaInfo info = parsed("{\"index\": 0, \"tags\": {\"title\": \"caf\xE9\"}}");
    EXPECT_EQ(info.streams.at(0).title, u"caf\uFFFD"_s);
}

TEST(MediaProbe, tellsWhatTheToolSaid) {
    const QTemporaryDir folder;
    const auto probeWith = [&folder](const QByteArray& script, const std::stop_token& stop = {}) {
        QFile file(folder.filePath(u"probe"_s));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("#!/bin/sh\n" + script);
        file.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
        const QUrl tool = QUrl::fromLocalFile(file.fileName());
        file.close();
        auto info = MediaProbe::probe(QUrl::fromLocalFile(u"-a b.mkv"_s), tool, stop);
        file.remove();
        return info;
    };
    EXPECT_EQ(probeWith("for word; do echo \"$word\" >&2; done; exit 1").error().detail,
              u"-v\nerror\n-print_format\njson\n-show_streams\n-show_format\n"_s +
                  QDir::current().absoluteFilePath(u"-a b.mkv"_s));
    EXPECT_EQ(probeWith("echo ' ' >&2; exit 1").error().errorDescription(),
              u"That doesn't look like a video file."_s);
    const auto info = probeWith(R"(echo '{"streams": [], "format": {"size": "7"}}'; echo careful >&2)");
    EXPECT_EQ(info.value_or(MediaInfo{}).size, 7);
    std::stop_source stop;
    stop.request_stop();
    EXPECT_EQ(probeWith("exit 1", stop.get_token()).error().which, Case::cancelled);
    const auto missing =
        MediaProbe::probe(QUrl::fromLocalFile(u"/a.mkv"_s), QUrl::fromLocalFile(u"/no/tool"_s));
    EXPECT_EQ(missing.error().which, Case::system);
    EXPECT_EQ(missing.error().errorDescription(), u"No such file or directory"_s);
}

TEST(PrepareError, speaksPlainly) {
    const std::vector<std::pair<PrepareError, QString>> rows = {
        {{Case::probeFailed, u"bad"_s}, u"Couldn't read the file: bad"_s},
        {{Case::ffmpegFailed}, u"ffmpeg couldn't convert the file."_s},
        {{Case::ffmpegFailed, u"a\nb"_s}, u"ffmpeg couldn't convert the file:\na\nb"_s},
        {{Case::toolsMissing},
         u"The bundled ffmpeg is missing. Rebuild the app, or install ffmpeg with Homebrew:  brew install ffmpeg"_s},
    };
    for (const auto& [error, text] : rows) EXPECT_EQ(error.errorDescription(), text);
    const std::vector<std::pair<qint64, QString>> sizes = {
        {0, u"0 bytes"_s},
        {1'499, u"1 kB"_s},
        {531'600'000, u"532 MB"_s},
        {999'499'999, u"999 MB"_s},
        {999'500'000, u"1 GB"_s},
        {4'249'999'999, u"4.2 GB"_s},
        {999'950'000'000, u"1 TB"_s},
        {1'250'000'000'000, u"1.3 TB"_s},
        {std::numeric_limits<qint64>::max(), u"9 EB"_s},
        {-5, u"0 bytes"_s},
    };
    for (const auto& [bytes, text] : sizes) {
        const PrepareError error{.which = Case::notEnoughSpace, .needed = bytes, .free = 0};
        EXPECT_EQ(
            error.errorDescription(),
            u"Not enough free disk space to prepare this movie. Needs about %1, 0 bytes free."_s.arg(text));
    }
}

}  // namespace
