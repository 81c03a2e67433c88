#pragma once

#include <QByteArrayView>
#include <QString>

#include <optional>

namespace velmora {

/// The text of a subtitle file, as far as it is needed to tell its language, and how it is encoded.
/// Stateless; any thread.
struct SubtitleText {
    /// How much of a file in an old encoding is decoded, in bytes, and of any text is kept, in characters.
    static constexpr qsizetype longest = 120'000;

    /// UTF-8, or UTF-16 that says so by its mark, which ffmpeg recodes unasked. Otherwise the text is taken
    /// for Windows code page 1252.
    bool isUnicode = true;
    QString text;  ///< at most `longest` characters

    /// Reads the file once, in pieces; a file of any size takes little memory. Files beyond 64 MiB are judged
    /// by that much: no subtitle is that long. Absent when it cannot be read.
    [[nodiscard]] static std::optional<SubtitleText> read(const QString& path);

    /// The same for bytes at hand.
    [[nodiscard]] static SubtitleText decode(QByteArrayView bytes);
};

}  // namespace velmora
