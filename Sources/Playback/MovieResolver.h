#pragma once

#include <QSet>
#include <QString>
#include <QUrl>

#include <optional>

namespace velmora {

/// Lower-case extensions of movie files.
[[nodiscard]] const QSet<QString>& movieExtensions();

/// The movie that the user means by a file or a folder: a file itself, a folder's largest movie that is not a
/// prepared copy, and for a subtitle file the movie of its folder. Absent when there is none. Reads the
/// folder; any thread.
[[nodiscard]] std::optional<QUrl> resolveMovie(const QUrl& location);

}  // namespace velmora
