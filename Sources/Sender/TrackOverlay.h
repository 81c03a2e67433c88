#pragma once

#include <QList>
#include <QString>

#include <expected>
#include <optional>

namespace velmora {

/// Which tracks of a movie are on when a television begins to play it.
struct TrackChoice {
    /// One out of the tracks of a kind, counted from 1 in the file's order.
    struct Track {
        int number = 0;  ///< 0: none is on
        int count = 0;   ///< how many there are; a file that has another number of them is left alone

        friend bool operator==(const Track&, const Track&) = default;
    };

    std::optional<Track> audio;     ///< absent: as the file has it
    std::optional<Track> subtitle;  ///< absent: as the file has it

    friend bool operator==(const TrackChoice&, const TrackChoice&) = default;
};

/// A byte of a file that is served with another value than it has on the disk.
struct BytePatch {
    qint64 offset = 0;
    char value = 0;

    friend bool operator==(const BytePatch&, const BytePatch&) = default;
};

/// What has to be laid over an MP4 of `size` bytes so that the chosen tracks are the enabled ones of their
/// kinds, which is where players begin: one byte for each track that differs, in the file's order. Empty when
/// the file has them so already.
///
/// Reads at offsets; the descriptor's position stays. Fails, with the reason for the log, where the file's
/// index is missing, broken or of boundless size, and where it does not have the tracks that are chosen from.
[[nodiscard]] std::expected<QList<BytePatch>, QString> trackOverlay(int descriptor, qint64 size,
                                                                    const TrackChoice& choice);

}  // namespace velmora
