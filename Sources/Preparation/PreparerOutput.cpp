#include "Companions/Names.h"
#include "Preparation/Preparer.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <sys/stat.h>
#include <sys/statvfs.h>

#include <algorithm>
#include <cstdio>

namespace velmora {
namespace {

using namespace Qt::StringLiterals;

/// Changing it makes every file prepared before stale.
constexpr auto fingerprintVersion = "velmora-v1"_L1;

/// Room asked for beyond the movie's own size, for re-encoded sound and the index: a tenth and this much.
constexpr qint64 spareSpace = 200'000'000;

QString fingerprintPath(const QUrl& prepared) {
    const QFileInfo file(prepared.toLocalFile());
    return file.path() + "/."_L1 + file.fileName() + ".velmora"_L1;
}

bool isSameFile(const QString& one, const QString& other) {
    struct stat first = {};
    struct stat second = {};
    return ::stat(QFile::encodeName(one).constData(), &first) == 0 &&
           ::stat(QFile::encodeName(other).constData(), &second) == 0 && first.st_dev == second.st_dev &&
           first.st_ino == second.st_ino;
}

/// Whether the prepared file of `movie` may have this name. It may not replace the movie itself, by whatever
/// name or link that is reached, nor a file that no earlier preparation has put there.
bool mayWrite(const QString& path, const QString& movie) {
    if (QDir::cleanPath(path) == QDir::cleanPath(movie)) return false;
    const QFileInfo file(path);
    if (!file.exists() && !file.isSymLink()) return true;
    return QFile::exists(fingerprintPath(QUrl::fromLocalFile(path))) && !isSameFile(path, movie);
}

QString outputFolder(const QFileInfo& movie) {
    if (QFileInfo(movie.path()).isWritable()) return movie.path();
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::MoviesLocation) + "/Velmora"_L1;
    QDir().mkpath(folder);
    return folder;
}

QString stamp(const QUrl& url) {
    const QFileInfo file(url.toLocalFile());
    const bool known = file.exists();
    const qint64 modified = known ? file.lastModified().toSecsSinceEpoch() : 0;
    return QStringList{url.toLocalFile(), QString::number(known ? file.size() : 0), QString::number(modified)}
        .join(u'|');
}

}  // namespace

QUrl Preparer::Output::location(const QUrl& movie) {
    const QFileInfo file(movie.toLocalFile());
    const QString base = outputFolder(file) + u'/' + Names::stem(file.fileName());
    const QString usual = base + ".mp4"_L1;
    return QUrl::fromLocalFile(mayWrite(usual, file.filePath()) ? usual : base + " (Velmora).mp4"_L1);
}

QUrl Preparer::Output::lockFile(const QUrl& movie) {
    const QFileInfo file(movie.toLocalFile());
    const QString name = u'.' + Names::stem(file.fileName()) + ".velmora-lock"_L1;
    return QUrl::fromLocalFile(outputFolder(file) + u'/' + name);
}

QString Preparer::Output::fingerprint(const QUrl& source, const QList<Sidecar>& sidecars, const Plan& plan) {
    QStringList lines{fingerprintVersion, stamp(source)};
    for (const Sidecar& sidecar : sidecars) lines.append(stamp(sidecar.url));
    lines.append(plan.ffmpegArguments(source, QUrl::fromLocalFile(u"/out"_s), false).join(u' '));
    return lines.join(u'\n');
}

bool Preparer::Output::isFresh(const QUrl& prepared, const QString& fingerprint) {
    if (QFileInfo(prepared.toLocalFile()).size() < 1) return false;
    QFile file(fingerprintPath(prepared));
    return file.open(QIODevice::ReadOnly) && file.readAll() == fingerprint.toUtf8();
}

std::expected<void, PrepareError> Preparer::Output::ensureSpace(const QUrl& prepared, qint64 sourceSize) {
    struct statvfs volume = {};
    const QString folder = QFileInfo(prepared.toLocalFile()).path();
    // Some file systems answer without knowing: a volume of no size at all.
    if (::statvfs(QFile::encodeName(folder).constData(), &volume) != 0 || volume.f_blocks == 0) return {};
    const auto free = static_cast<qint64>(volume.f_bavail * volume.f_frsize);
    // Bounded because the size is what a file claims of itself.
    const double scaled = std::clamp(static_cast<double>(sourceSize) * 1.1, 0.0, 9e18);
    const qint64 needed = static_cast<qint64>(scaled) + spareSpace;
    if (free >= needed) return {};
    return std::unexpected(
        PrepareError{.which = PrepareError::Case::notEnoughSpace, .needed = needed, .free = free});
}

void Preparer::Output::forget(const QUrl& prepared) {
    QFile::remove(fingerprintPath(prepared));
}

void Preparer::Output::remember(const QString& fingerprint, const QUrl& prepared) {
    // Not QSaveFile: it forces the text to the disk, maybe before the end of the movie gets there, and after
    // a power failure the text would vouch for half a movie. Unforced, the older data goes first.
    const QString path = fingerprintPath(prepared);
    QFile file(path + ".new"_L1);
    const QByteArray text = fingerprint.toUtf8();
    const bool written = file.open(QIODevice::WriteOnly) && file.write(text) == text.size() && file.flush();
    file.close();
    if (!written || std::rename(QFile::encodeName(file.fileName()).constData(),
                                QFile::encodeName(path).constData()) != 0) {
        file.remove();
    }
}

}  // namespace velmora
