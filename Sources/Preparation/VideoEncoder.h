#pragma once

#include <QString>
#include <QStringList>

#include <stop_token>

namespace velmora {

/// How this machine re-encodes video. A value that the plan takes as an input.
struct VideoEncoder {
    enum class Kind { videotoolbox, nvenc, qsv, vaapi, software };

    Kind kind = Kind::software;
    /// Older hardware makes 8-bit HEVC only; 10-bit video is then left to software.
    bool tenBitInHardware = true;
    /// The graphics card's render node; vaapi only.
    QString device = {};

    /// Whether hardware does the work, for 8-bit or for 10-bit video.
    [[nodiscard]] bool isHardware(bool tenBit) const;

    /// Arguments that stand before the first input (a device to open, for one).
    [[nodiscard]] QStringList inputArguments() const;

    /// Arguments that produce the video at `bitrate` ("10M").
    [[nodiscard]] QStringList videoArguments(bool tenBit, const QString& bitrate) const;

    /// For the log: ffmpeg's name of the encoder, "software" where there is none.
    [[nodiscard]] QString name() const;

    /// The encoder to use here: hardware that has proven itself in a trial of a few frames, else software.
    /// The trials run once per process; blocks for them, and a stop request ends the wait: the answer is then
    /// software, and the next call tries again. Any thread but the main one.
    [[nodiscard]] static VideoEncoder available(const std::stop_token& stop = {});

    bool operator==(const VideoEncoder&) const = default;
};

}  // namespace velmora
