#include "Preparation/VideoEncoder.h"

#include "Diagnostics/Log.h"
#include "Preparation/EncoderTrials.h"
#include "Preparation/Tools.h"

#include <condition_variable>
#include <mutex>
#include <optional>

namespace velmora {
namespace {

using namespace Qt::StringLiterals;

// The next preset costs a quarter more time and gains no picture at the plan's bit rates
// (Benchmarks/encoder-presets).
constexpr auto x264Preset = "superfast"_L1;
constexpr auto x265Preset = "superfast"_L1;

QStringList softwareArguments(bool tenBit, const QString& bitrate) {
    // H.264 for 8 bits, since its encoder is more than twice as fast; Apple devices play 10 bits as HEVC
    // only.
    if (!tenBit) {
        return {u"-c:v"_s, u"libx264"_s,    u"-preset"_s, x264Preset,    u"-b:v"_s,
                bitrate,   u"-profile:v"_s, u"high"_s,    u"-pix_fmt"_s, u"yuv420p"_s};
    }
    // libx265 reports on itself whatever ffmpeg's own log level, and would talk over a real error.
    return {u"-c:v"_s,     u"libx265"_s,     u"-preset"_s,      x265Preset,          u"-b:v"_s,
            bitrate,       u"-tag:v"_s,      u"hvc1"_s,         u"-profile:v"_s,     u"main10"_s,
            u"-pix_fmt"_s, u"yuv420p10le"_s, u"-x265-params"_s, u"log-level=error"_s};
}

QStringList formatArguments(bool tenBit) {
    if (!tenBit) return {u"-pix_fmt"_s, u"nv12"_s};
    return {u"-profile:v"_s, u"main10"_s, u"-pix_fmt"_s, u"p010le"_s};
}

/// VA-API encodes pictures that lie in the card's memory; the filter brings them there.
QStringList uploadArguments(bool tenBit) {
    if (!tenBit) return {u"-vf"_s, u"format=nv12,hwupload"_s};
    return {u"-profile:v"_s, u"main10"_s, u"-vf"_s, u"format=p010,hwupload"_s};
}

/// The answer of the trials, made by the first caller while later ones wait.
class Availability {
  public:
    VideoEncoder get(const std::stop_token& stop) {
        const std::optional<QUrl>& ffmpeg = Tools::ffmpeg();
        std::unique_lock guard(lock_);
        changed_.wait(guard, stop, [this] { return !trying_; });
        if (answer_) return *answer_;
        if (trying_ || stop.stop_requested() || !ffmpeg) return {};
        trying_ = true;
        guard.unlock();
        const std::optional<VideoEncoder> answer = EncoderTrials{*ffmpeg}.run(stop);
        if (answer) tell(*answer);
        guard.lock();
        trying_ = false;
        answer_ = answer;
        changed_.notify_all();
        return answer.value_or(VideoEncoder{});
    }

  private:
    static void tell(const VideoEncoder& encoder) {
        const QString depths =
            encoder.isHardware(false) && !encoder.isHardware(true) ? u", 8 bit only"_s : QString();
        logger().notice(u"video encoder: "_s + encoder.name() + depths);
    }

    std::mutex lock_;
    std::condition_variable_any changed_;
    bool trying_ = false;
    std::optional<VideoEncoder> answer_;
};

}  // namespace

bool VideoEncoder::isHardware(bool tenBit) const {
    return kind != Kind::software && (!tenBit || tenBitInHardware);
}

QStringList VideoEncoder::inputArguments() const {
    if (kind != Kind::vaapi) return {};
    return {u"-vaapi_device"_s, device};
}

QStringList VideoEncoder::videoArguments(bool tenBit, const QString& bitrate) const {
    if (!isHardware(tenBit)) return softwareArguments(tenBit, bitrate);
    QStringList arguments{u"-c:v"_s, name(), u"-b:v"_s, bitrate, u"-tag:v"_s, u"hvc1"_s};
    if (kind == Kind::videotoolbox) arguments += {u"-allow_sw"_s, u"1"_s};
    return arguments + (kind == Kind::vaapi ? uploadArguments(tenBit) : formatArguments(tenBit));
}

QString VideoEncoder::name() const {
    switch (kind) {
        case Kind::videotoolbox:
            return u"hevc_videotoolbox"_s;
        case Kind::nvenc:
            return u"hevc_nvenc"_s;
        case Kind::qsv:
            return u"hevc_qsv"_s;
        case Kind::vaapi:
            return u"hevc_vaapi"_s;
        case Kind::software:
            break;
    }
    return u"software"_s;
}

VideoEncoder VideoEncoder::available(const std::stop_token& stop) {
    static Availability availability;
    return availability.get(stop);
}

}  // namespace velmora
