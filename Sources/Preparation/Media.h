#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <expected>
#include <optional>
#include <stop_token>
#include <system_error>

namespace velmora {

/// Everything that can end a preparation without a result.
struct PrepareError {
    enum class Case {
        probeFailed,     ///< `detail`: what ffprobe said; may be empty
        notEnoughSpace,  ///< `needed`, `free`
        ffmpegFailed,    ///< `detail`: what ffmpeg said; may be empty
        toolsMissing,
        unreadable,
        noVideo,
        busy,       ///< another preparation is writing the same file
        cancelled,  ///< the caller asked for it; nothing to show
        system,     ///< `detail`: the platform's own words
    };

    Case which;
    QString detail = {};
    qint64 needed = 0;  ///< bytes
    qint64 free = 0;    ///< bytes

    [[nodiscard]] static PrepareError system(const std::error_code& code);

    /// The text that the user sees.
    [[nodiscard]] QString errorDescription() const;
};

/// What a movie file holds. An immutable value once made.
struct MediaInfo {
    struct Stream {
        enum class Kind { video, audio, subtitle, other };

        int index = 0;  ///< number in the file, as in the stream specifier 0:index
        Kind kind = Kind::other;
        QString codec = QStringLiteral("unknown");
        QString tag;  ///< four-character code; empty when absent
        std::optional<QString> pixelFormat;
        int width = 0;
        int height = 0;
        int channels = 0;
        std::optional<QString> language;  ///< ISO 639-2/T code
        std::optional<QString> title;
        bool isDefault = false;
        bool isForced = false;
    };

    QList<Stream> streams;
    QString container;    ///< comma-separated short names
    double duration = 0;  ///< seconds; 0 when unknown
    qint64 size = 0;      ///< bytes; 0 when unknown

    /// The picture: the first video stream that is not a cover.
    [[nodiscard]] const Stream* video() const;
    [[nodiscard]] QList<Stream> audio() const;
    [[nodiscard]] QList<Stream> subtitles() const;
    [[nodiscard]] bool isAppleContainer() const;
};

namespace MediaProbe {

/// Asks `ffprobe` what the movie holds. Blocks; any thread but the main one.
[[nodiscard]] std::expected<MediaInfo, PrepareError> probe(const QUrl& movie, const QUrl& ffprobe,
                                                           const std::stop_token& stop = {});

/// Reads ffprobe's JSON answer.
[[nodiscard]] std::expected<MediaInfo, PrepareError> parse(const QByteArray& json);

}  // namespace MediaProbe
}  // namespace velmora
