#pragma once

#include <QUrl>

#include <optional>

namespace velmora {

/// Copies a subtitle file next to `movie`, named so that it is found with it: the movie's name, the
/// subtitle's language, and a number where that is taken. The new file; absent when it cannot be copied.
/// Reads and writes files and waits for them; subtitles are small.
[[nodiscard]] std::optional<QUrl> adoptSubtitle(const QUrl& subtitle, const QUrl& movie);

}  // namespace velmora
