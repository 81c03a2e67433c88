#pragma once

#include <QString>
#include <QUrl>

#include <optional>
#include <stop_token>

/// One still frame of each movie, kept as a JPEG in the user's cache. Nothing here fails loudly: without a
/// poster there is simply none to show.
///
/// `url`, `cacheKey` and reading the poster: any thread. The others start tools and block until these have
/// ended: any thread but the main one. A stop request ends them early, with nothing changed in the cache.
namespace velmora::Poster {

/// What is needed to know of a movie before a frame is taken from it.
struct Probe {
    double duration = 0;  ///< seconds; 0 when unknown
    bool isHdr = false;   ///< PQ or HLG, to be tone-mapped
    bool operator==(const Probe&) const = default;
};

/// Names everything that is cached for a movie: 24 hexadecimal digits that tell nothing of its name.
/// Different ways to write one path have one key.
[[nodiscard]] QString cacheKey(const QUrl& movie);

/// The poster's file, which exists only once there is a poster. Makes the folder for it.
[[nodiscard]] QUrl url(const QUrl& movie);

/// Takes the frame at `time` (seconds) and makes it the movie's poster. Without a time, or in the first
/// seconds, which are usually black, it chooses a frame itself. False when there is no new poster; an older
/// one stays then.
[[nodiscard]] bool captureFromSource(const QUrl& movie, std::optional<double> time,
                                     const std::stop_token& stop = {});

/// Asks `ffprobe` once for each movie and process, whatever it answers. Nothing is known of a movie that
/// cannot be probed.
[[nodiscard]] Probe probe(const QUrl& movie, const std::stop_token& stop = {});

/// The filters that bring an HDR picture into the range of a JPEG, to be put before others; nothing for a
/// picture that is there already.
[[nodiscard]] QString toneMapping(const Probe& probe);

}  // namespace velmora::Poster
