#include "Preparation/EncoderTrials.h"

#include "Preparation/Tools.h"

#include <QDir>

#include <condition_variable>
#include <mutex>
#include <thread>

namespace velmora {
namespace {

using namespace Qt::StringLiterals;
using Kind = VideoEncoder::Kind;

/// Asks `source` to stop when its life is longer than `limit`.
class Deadline {
  public:
    Deadline(std::chrono::milliseconds limit, std::stop_source& source)
        : thread_([this, limit, &source](const std::stop_token& over) {
              std::unique_lock guard(lock_);
              expired_.wait_for(guard, over, limit, [] { return false; });
              if (!over.stop_requested()) source.request_stop();
          }) {}

  private:
    std::mutex lock_;
    std::condition_variable_any expired_;
    std::jthread thread_;
};

}  // namespace

std::optional<VideoEncoder> EncoderTrials::run(const std::stop_token& stop) const {
    QList<VideoEncoder> candidates{{Kind::nvenc}, {Kind::qsv}};
    for (const QString& node : renderNodes) candidates.append({.kind = Kind::vaapi, .device = node});

    const QStringList listed = listedEncoders(stop);
    // The system's own encoder, with a software encoder of its own behind it: it always works.
    if (VideoEncoder platform{Kind::videotoolbox}; listed.contains(platform.name())) return platform;
    VideoEncoder found;
    for (VideoEncoder candidate : candidates) {
        if (!listed.contains(candidate.name()) || !encodes(candidate, false, stop)) continue;
        candidate.tenBitInHardware = encodes(candidate, true, stop);
        found = candidate;
        break;
    }
    // What failed after a stop request has not been tried.
    if (stop.stop_requested()) return {};
    return found;
}

QStringList EncoderTrials::systemRenderNodes() {
    const QDir folder(u"/dev/dri"_s);
    QStringList nodes;
    for (const QString& name : folder.entryList({u"renderD*"_s}, QDir::System | QDir::Files, QDir::Name)) {
        nodes += folder.absoluteFilePath(name);
    }
    return nodes;
}

QStringList EncoderTrials::listedEncoders(const std::stop_token& stop) const {
    QByteArray answer;
    if (!succeeds({u"-hide_banner"_s, u"-encoders"_s}, stop, &answer)) return {};
    QStringList names;
    for (const QString& line : QString::fromUtf8(answer).split(u'\n')) {
        names += line.simplified().section(u' ', 1, 1);  // flags, name, description
    }
    return names;
}

bool EncoderTrials::encodes(const VideoEncoder& candidate, bool tenBit, const std::stop_token& stop) const {
    QStringList arguments{u"-nostdin"_s, u"-hide_banner"_s, u"-loglevel"_s, u"error"_s};
    arguments += candidate.inputArguments();
    arguments += {u"-f"_s, u"lavfi"_s, u"-i"_s, u"testsrc2=size=1280x720:rate=24"_s, u"-frames:v"_s, u"5"_s};
    arguments += candidate.videoArguments(tenBit, u"5M"_s);
    arguments += {u"-f"_s, u"null"_s, u"-"_s};
    return succeeds(arguments, stop);
}

bool EncoderTrials::succeeds(const QStringList& arguments, const std::stop_token& stop,
                             QByteArray* standardOutput) const {
    if (stop.stop_requested()) return false;
    std::stop_source trial;
    const std::stop_callback forward(stop, [&trial] { trial.request_stop(); });
    const Deadline deadline(timeLimit, trial);
    const auto output = Tools::run(ffmpeg, arguments, trial.get_token());
    if (output && standardOutput != nullptr) *standardOutput = output->standardOutput;
    return output && output->status == 0;
}

}  // namespace velmora
