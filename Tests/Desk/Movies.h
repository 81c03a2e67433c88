#pragma once

#include <QSize>
#include <QString>

namespace velmora::test {

struct MovieKind {
    double seconds = 100;
    QSize size{320, 180};
    QString picture = QStringLiteral("testsrc2");  ///< a source of ffmpeg's: "testsrc2", "color=navy"…
    bool hasSound = true;
    QString codec = QStringLiteral("libx264");  ///< what it is to be encoded with; "mpeg4" must be re-encoded
};

/// Makes a movie that is prepared without re-encoding unless it says so, in a second or so; folders as
/// needed. Matroska or MP4, by the name. False when ffmpeg fails.
bool makeMovie(const QString& path, const MovieKind& kind = {});

}  // namespace velmora::test
