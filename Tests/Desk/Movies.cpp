#include "Desk/Movies.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>

namespace velmora::test {

using namespace Qt::StringLiterals;

bool makeMovie(const QString& path, const MovieKind& kind) {
    QDir().mkpath(QFileInfo(path).path());
    const QString picture = kind.picture + (kind.picture.contains(u'=') ? u':' : u'=') +
                            u"size=%1x%2:rate=12"_s.arg(kind.size.width()).arg(kind.size.height());
    const QString seconds = QString::number(kind.seconds);
    QStringList arguments{u"-v"_s, u"error"_s, u"-nostdin"_s, u"-y"_s, u"-f"_s, u"lavfi"_s, u"-i"_s, picture};
    if (kind.hasSound)
        arguments += {u"-f"_s, u"lavfi"_s, u"-i"_s, u"sine=sample_rate=48000"_s, u"-c:a"_s, u"aac"_s};
    arguments += {u"-t"_s, seconds, u"-c:v"_s,     kind.codec,   u"-preset"_s, u"ultrafast"_s,
                  u"-g"_s, u"24"_s, u"-pix_fmt"_s, u"yuv420p"_s, path};
    return QProcess::execute(u"ffmpeg"_s, arguments) == 0;
}

}  // namespace velmora::test
