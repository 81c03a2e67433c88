#include "Artwork/Poster.h"

#include "Diagnostics/Log.h"
#include "Preparation/Tools.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QStandardPaths>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <mutex>

namespace velmora::Poster {

using namespace Qt::StringLiterals;

namespace {

// Seconds. Earlier frames are usually black.
constexpr double earliestTime = 5;

// Where to look without a time: past the titles, before the story gives itself away.
constexpr double automaticShare = 0.08;
constexpr double latestAutomaticTime = 300;
constexpr double timeWithoutDuration = 60;

constexpr int width = 1280;
constexpr int quality = 3;  // of the encoder's 2 (best) to 31

constexpr qsizetype keyBytes = 12;

QString folder() {
    const QString path =
        QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) + u"/Velmora/Posters"_s;
    QDir().mkpath(path);
    return path;
}

double automaticTime(const Probe& probe) {
    if (probe.duration <= 0) return timeWithoutDuration;
    return std::min(probe.duration * automaticShare, latestAutomaticTime);
}

/// What ffprobe said; absent when that makes no sense.
std::optional<Probe> readAnswer(const QByteArray& json) {
    const QJsonDocument answer = QJsonDocument::fromJson(json);
    if (!answer.isObject()) return std::nullopt;
    const QString transfer = answer[u"streams"_s].toArray().at(0)[u"color_transfer"_s].toString();
    const double duration = answer[u"format"_s][u"duration"_s].toString().toDouble();
    return Probe{.duration = std::isfinite(duration) ? duration : 0,
                 .isHdr = transfer == u"smpte2084"_s || transfer == u"arib-std-b67"_s};
}

bool grab(const QUrl& movie, double time, const QString& output, const std::stop_token& stop) {
    const auto& ffmpeg = Tools::ffmpeg();
    if (!ffmpeg) return false;
    const QString filter =
        toneMapping(probe(movie, stop)) + u"scale=%1:-2:flags=lanczos,format=yuvj420p"_s.arg(width);
    // The seek stands before the input: only the one frame is decoded.
    const QStringList arguments{u"-v"_s,        u"error"_s,
                                u"-ss"_s,       QString::number(std::max(time, 0.0), 'f', 2),
                                u"-i"_s,        movie.toLocalFile(),
                                u"-an"_s,       u"-sn"_s,
                                u"-frames:v"_s, u"1"_s,
                                u"-vf"_s,       filter,
                                u"-q:v"_s,      QString::number(quality),
                                u"-y"_s,        output};
    if (stop.stop_requested()) return false;
    const auto run = Tools::run(*ffmpeg, arguments, stop);
    // Past the movie's end ffmpeg is content and writes nothing.
    return run && run->status == 0 && !stop.stop_requested() && QFile::exists(output);
}

}  // namespace

QString cacheKey(const QUrl& movie) {
    const QString path = QDir::cleanPath(QFileInfo(movie.toLocalFile()).absoluteFilePath());
    const QByteArray digest = QCryptographicHash::hash(path.toUtf8(), QCryptographicHash::Sha256);
    return QString::fromLatin1(digest.first(keyBytes).toHex());
}

QUrl url(const QUrl& movie) {
    return QUrl::fromLocalFile(folder() + u'/' + cacheKey(movie) + u".jpg"_s);
}

bool captureFromSource(const QUrl& movie, std::optional<double> time, const std::stop_token& stop) {
    const double frameTime = time && *time >= earliestTime ? *time : automaticTime(probe(movie, stop));
    const QString final = url(movie).toLocalFile();
    const QString partial = final.chopped(4) + u".part.jpg"_s;
    QFile::remove(partial);  // of a run that was cut short; it must not pass for this one's
    if (!grab(movie, frameTime, partial, stop)) return false;
    if (std::rename(QFile::encodeName(partial).constData(), QFile::encodeName(final).constData()) != 0)
        return false;
    logger().notice(u"poster (ffmpeg): frame at %1s saved for %2"_s.arg(static_cast<qint64>(frameTime))
                        .arg(QFileInfo(movie.toLocalFile()).fileName()));
    return true;
}

Probe probe(const QUrl& movie, const std::stop_token& stop) {
    static std::mutex lock;
    static QHash<QUrl, Probe> probes;
    {
        const std::scoped_lock guard(lock);
        if (const auto known = probes.constFind(movie); known != probes.cend()) return *known;
    }
    const auto& ffprobe = Tools::ffprobe();
    if (!ffprobe || stop.stop_requested()) return {};
    const QStringList arguments{u"-v"_s,  u"error"_s,         u"-select_streams"_s,
                                u"v:0"_s, u"-show_entries"_s, u"stream=color_transfer:format=duration"_s,
                                u"-of"_s, u"json"_s,          movie.toLocalFile()};
    const auto run = Tools::run(*ffprobe, arguments, stop);
    // A probe cut short says nothing of the movie.
    if (stop.stop_requested()) return {};
    const Probe found = run ? readAnswer(run->standardOutput).value_or(Probe()) : Probe();
    const std::scoped_lock guard(lock);
    probes.insert(movie, found);
    return found;
}

QString toneMapping(const Probe& probe) {
    if (!probe.isHdr) return {};
    return u"zscale=t=linear:npl=100,format=gbrpf32le,zscale=p=bt709,tonemap=tonemap=hable:desat=0,"
           "zscale=t=bt709:m=bt709:r=tv,"_s;
}

}  // namespace velmora::Poster
