#pragma once

#include <QString>
#include <QUrl>

namespace velmora::Title {

/// The display title of the movie file: "Some.Movie.2019.1080p.mkv" reads "Some Movie (2019)".
[[nodiscard]] QString pretty(const QUrl& movie);

}  // namespace velmora::Title
