#pragma once

#include <QString>
#include <QStringList>

#include <stop_token>

namespace velmora {

/// How this machine re-encodes video. A value that the plan takes as an input.
struct VideoEncoder {
    enum class Kind { videotoolbox, nvenc, qsv, vaapi, software };

    Kind kind = Kind::software;

    [[nodiscard]] bool isHardware() const { return kind != Kind::software; }

    /// Arguments that stand before the first input (a device to open, for one).
    [[nodiscard]] QStringList inputArguments() const;

    /// Arguments that produce the video at `bitrate` ("10M").
    [[nodiscard]] QStringList videoArguments(bool tenBit, const QString& bitrate) const;

    /// The encoder to use here: hardware that has proven itself in a trial of a few frames, else software.
    /// The trials run once per process; blocks for them. Any thread.
    [[nodiscard]] static VideoEncoder available(const std::stop_token& stop = {});

    bool operator==(const VideoEncoder&) const = default;
};

}  // namespace velmora
