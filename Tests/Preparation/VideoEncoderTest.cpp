#include "Preparation/EncoderTrials.h"
#include "Preparation/VideoEncoder.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace velmora {
namespace {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Kind = VideoEncoder::Kind;

TEST(VideoEncoder, arguments) {
    const auto video = [](const VideoEncoder& encoder, bool tenBit) {
        return encoder.videoArguments(tenBit, u"5M"_s).join(u' ');
    };
    const QString platform = u"-c:v hevc_videotoolbox -b:v 5M -tag:v hvc1 -allow_sw 1 "_s;
    EXPECT_EQ(video({Kind::videotoolbox}, false), platform + u"-pix_fmt nv12"_s);
    EXPECT_EQ(video({Kind::videotoolbox}, true), platform + u"-profile:v main10 -pix_fmt p010le"_s);
    const VideoEncoder oldCard{.kind = Kind::nvenc, .tenBitInHardware = false};
    EXPECT_EQ(video(oldCard, false), video({Kind::nvenc}, false));
    EXPECT_EQ(video(oldCard, true), video({}, true)) << "software";
}

/// A script in ffmpeg's place: lists `encoders`, and for a trial does what `trial` says in shell.
class StandIn {
  public:
    StandIn(const QString& encoders, const QString& trial) {
        QFile script(path());
        EXPECT_TRUE(script.open(QIODevice::WriteOnly));
        const QString text =
            u"#!/bin/sh\nall=\"$*\"\necho \"$all\" >> \"$0.calls\"\n"
            "case $all in *-encoders*) for name in %1; do echo \" V....D $name Some words\"; done;;\n"
            "*) %2;; esac\n"_s;
        script.write(text.arg(encoders, trial).toUtf8());
        script.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
    }
    [[nodiscard]] EncoderTrials trials(std::chrono::milliseconds limit = 20s) const {
        return {QUrl::fromLocalFile(path()), {u"/dev/dri/renderD128"_s, u"/dev/dri/renderD129"_s}, limit};
    }
    [[nodiscard]] qsizetype calls() const {
        QFile file(path() + u".calls"_s);
        return file.open(QIODevice::ReadOnly) ? file.readAll().count('\n') : 0;
    }

  private:
    [[nodiscard]] QString path() const { return folder_.filePath(u"ffmpeg"_s); }
    QTemporaryDir folder_;
};

TEST(EncoderTrials, theFirstCandidateThatWorksIsChosen) {
    struct Case {
        QString encoders;
        QString trial;
        VideoEncoder expected;
    };
    const QString all = u"libx264 hevc_nvenc hevc_qsv hevc_vaapi"_s;
    const Case cases[] = {
        {all, u"exit 1"_s, {}},
        {all, u"exit 0"_s, {Kind::nvenc}},
        {u"libx264 hevc_qsv"_s, u"exit 0"_s, {Kind::qsv}},
        {u"hevc_nvenc_like libx264"_s, u"exit 0"_s, {}},
        {all + u" hevc_videotoolbox"_s, u"exit 1"_s, {Kind::videotoolbox}},
        {all,
         u"case $all in *renderD129*) exit 0;; *) exit 1;; esac"_s,
         {.kind = Kind::vaapi, .device = u"/dev/dri/renderD129"_s}},
        {all,
         u"case $all in *main10*) exit 1;; *) exit 0;; esac"_s,
         {.kind = Kind::nvenc, .tenBitInHardware = false}},
    };
    for (const Case& testCase : cases) {
        const StandIn ffmpeg(testCase.encoders, testCase.trial);
        EXPECT_EQ(ffmpeg.trials().run({}), testCase.expected) << qPrintable(testCase.trial);
    }
    EXPECT_EQ(EncoderTrials{QUrl::fromLocalFile(u"/nowhere/ffmpeg"_s)}.run({}), VideoEncoder{});
}

TEST(EncoderTrials, aTrialThatHangsHasFailed) {
    const StandIn ffmpeg(u"hevc_nvenc"_s, u"exec sleep 60"_s);
    EXPECT_EQ(ffmpeg.trials(300ms).run({}), VideoEncoder{});
    EXPECT_EQ(ffmpeg.calls(), 2) << "the list and one trial";
}

TEST(EncoderTrials, aStopIsNoAnswer) {
    const StandIn ffmpeg(u"hevc_nvenc hevc_qsv"_s, u"exec sleep 60"_s);
    std::stop_source source;
    const std::jthread stopper([&] {
        while (ffmpeg.calls() < 2) std::this_thread::sleep_for(5ms);
        source.request_stop();
    });
    EXPECT_EQ(ffmpeg.trials().run(source.get_token()), std::nullopt);
    EXPECT_EQ(ffmpeg.calls(), 2);
}

}  // namespace
}  // namespace velmora
