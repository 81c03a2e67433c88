#include "Playback/MovieResolver.h"

#include "Companions/Sidecar.h"

#include <QDir>
#include <QFileInfo>
#include <QStringList>

namespace velmora {

using namespace Qt::StringLiterals;

namespace {

std::optional<QUrl> largestMovie(const QDir& folder) {
    const QStringList listing = folder.entryList(
        QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Unsorted);
    std::optional<QUrl> largest;
    qint64 largestSize = -1;
    for (const QString& name : listing) {
        const QFileInfo entry(folder, name);
        if (!movieExtensions().contains(entry.suffix().toLower())) continue;
        if (entry.isDir() || Sidecar::isPreparedOutput(name, listing) || entry.size() <= largestSize)
            continue;
        largest = QUrl::fromLocalFile(folder.filePath(name));
        largestSize = entry.size();
    }
    return largest;
}

}  // namespace

const QSet<QString>& movieExtensions() {
    static const QSet<QString> extensions{u"mkv"_s,  u"mp4"_s, u"m4v"_s,  u"mov"_s, u"avi"_s, u"webm"_s,
                                          u"wmv"_s,  u"ts"_s,  u"m2ts"_s, u"mts"_s, u"flv"_s, u"mpg"_s,
                                          u"mpeg"_s, u"vob"_s, u"ogv"_s,  u"3gp"_s};
    return extensions;
}

std::optional<QUrl> resolveMovie(const QUrl& location) {
    const QString path = QDir::cleanPath(QFileInfo(location.toLocalFile()).absoluteFilePath());
    const QFileInfo entry(path);
    if (location.toLocalFile().isEmpty() || !entry.exists()) return std::nullopt;
    if (entry.isDir()) return largestMovie(QDir(path));
    if (Sidecar::extensions().contains(entry.suffix().toLower())) return largestMovie(entry.dir());
    return QUrl::fromLocalFile(path);
}

}  // namespace velmora
