#pragma once

#include "Preparation/VideoEncoder.h"

#include <QStringList>
#include <QUrl>

#include <chrono>
#include <optional>
#include <stop_token>

namespace velmora {

/// Finds the encoder that works on this machine: an ffmpeg lists what it was built with, not what it can
/// reach, so each candidate has to encode a few frames.
struct EncoderTrials {
    QUrl ffmpeg;
    /// Graphics cards to try, best first.
    QStringList renderNodes = systemRenderNodes();
    /// For one trial. A driver that takes longer than this over a few frames is broken.
    std::chrono::milliseconds timeLimit{10'000};

    /// Absent when `stop` came before the answer. Blocks.
    [[nodiscard]] std::optional<VideoEncoder> run(const std::stop_token& stop) const;

    [[nodiscard]] static QStringList systemRenderNodes();

  private:
    [[nodiscard]] QStringList listedEncoders(const std::stop_token& stop) const;
    [[nodiscard]] bool encodes(const VideoEncoder& candidate, bool tenBit, const std::stop_token& stop) const;
    [[nodiscard]] bool succeeds(const QStringList& arguments, const std::stop_token& stop,
                                QByteArray* standardOutput = nullptr) const;
};

}  // namespace velmora
