#include "Playback/MovieResolver.h"

#include "Companions/Sidecar.h"

#include <QDir>
#include <QFileInfo>
#include <QStringList>

namespace velmora {

using namespace Qt::StringLiterals;

namespace {

/// Copies made by this program and by its predecessor, and what marks a file as one.
bool isPreparedCopy(const QString& name, const QSet<QString>& names) {
    return name.endsWith(u" (Velmora).mp4") || name.endsWith(u" (Orvane).mp4") ||
           names.contains(name + u".velmora"_s) || names.contains(name + u".orvane"_s);
}

std::optional<QUrl> largestMovie(const QDir& folder) {
    const QStringList listing = folder.entryList(
        QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Unsorted);
    const QSet<QString> names(listing.cbegin(), listing.cend());
    std::optional<QUrl> largest;
    qint64 largestSize = -1;
    for (const QString& name : listing) {
        const QFileInfo entry(folder, name);
        if (!movieExtensions().contains(entry.suffix().toLower())) continue;
        if (entry.isDir() || isPreparedCopy(name, names) || entry.size() <= largestSize) continue;
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
