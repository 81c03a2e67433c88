#pragma once

#include "Companions/Sidecar.h"
#include "Preparation/Media.h"
#include "Preparation/VideoEncoder.h"

#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <expected>
#include <optional>
#include <variant>

namespace velmora {

/// What a prepared file will hold and how each part of it is made. A pure function of what was probed, the
/// sidecars, the encoder, the user's preferred languages and the locale's language names.
struct Plan {
    struct VideoCopy {
        std::optional<QString> retag;  ///< four-character code to write; only ever "hvc1"
    };
    struct VideoEncode {
        bool tenBit = false;
        QString bitrate;  ///< "5M", "10M" or "24M"
    };
    using Video = std::variant<VideoCopy, VideoEncode>;

    struct AudioEncode {
        int channels = 0;  ///< 1 to 6
        QString bitrate;   ///< "192k" or "448k"
    };
    struct AudioCopy {};
    using Audio = std::variant<AudioEncode, AudioCopy>;

    struct Subtitle {
        struct Embedded {
            int index = 0;  ///< stream number in the movie
        };
        struct FromSidecar {
            int inputIndex = 0;  ///< ffmpeg's input number; 1 for the first sidecar
        };
        using Source = std::variant<Embedded, FromSidecar>;

        Source source;
        std::optional<QString> language;
        std::optional<QString> title;
        bool isDefault = false;
        bool isForced = false;
        bool isSDH = false;
    };

    Video video;
    int videoIndex = 0;
    std::optional<Audio> audio;
    std::optional<int> audioIndex;
    QList<Subtitle> subtitles;  ///< in output order: sidecars, then embedded
    QList<Sidecar> sidecars;    ///< as handed in; ffmpeg's inputs from 1
    int skippedBitmapSubtitles = 0;
    bool containerIsApple = false;
    qint64 moovReserve = 0;  ///< bytes kept free at the front for the movie index
    VideoEncoder encoder;

    /// Audio codecs copied as they are, and subtitle codecs that are text.
    static const QSet<QString>& appleAudio();
    static const QSet<QString>& textSubtitles();

    [[nodiscard]] static std::expected<Plan, PrepareError> make(const MediaInfo& info,
                                                                const QList<Sidecar>& sidecars,
                                                                bool forceTranscode,
                                                                const VideoEncoder& encoder);

    /// The complete argument list, without the executable.
    [[nodiscard]] QStringList ffmpegArguments(const QUrl& source, const QUrl& output, bool faststart) const;

    /// Display names of the subtitle tracks, in track order, unique.
    [[nodiscard]] QStringList subtitleTitles() const;
};

}  // namespace velmora
