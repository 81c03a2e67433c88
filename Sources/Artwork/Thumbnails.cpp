#include "Artwork/Thumbnails.h"

#include "Artwork/Poster.h"
#include "Diagnostics/Log.h"
#include "Preparation/Tools.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>
#include <QStandardPaths>

#include <algorithm>
#include <chrono>
#include <cmath>

namespace velmora {

using namespace Qt::StringLiterals;

namespace {

constexpr double picturesInStrip = 300;
constexpr double shortestInterval = 5;  // seconds

enum class Decoding { hardware, software };

double intervalFor(const Poster::Probe& probe) {
    return std::max(std::round(probe.duration / picturesInStrip), shortestInterval);
}

QString whole(double number) {
    return QString::number(number, 'f', 0);
}

QStringList argumentsFor(const QString& movie, const Poster::Probe& probe, const QString& folder,
                         Decoding decoding) {
    // ffmpeg numbers the files itself; a percent sign of the folder's is none of its business.
    const QString output = QString(folder).replace(u'%', u"%%"_s) + u"/%04d.jpg"_s;
    const QString filter =
        u"fps=1/"_s + whole(intervalFor(probe)) + u',' + Poster::toneMapping(probe) + u"scale=480:-2"_s;
    QStringList arguments{u"-v"_s, u"error"_s};
    if (decoding == Decoding::hardware) arguments += {u"-hwaccel"_s, u"auto"_s};
    arguments += {u"-skip_frame"_s, u"nokey"_s, u"-i"_s,   movie,  u"-an"_s, u"-sn"_s,
                  u"-vf"_s,         filter,     u"-q:v"_s, u"6"_s, u"-y"_s,  output};
    return arguments;
}

/// Whether ffmpeg ran to its end, with hardware or else without. False after a stop request.
bool fill(const QUrl& ffmpeg, const QString& folder, const QUrl& movie, const Poster::Probe& probe,
          const std::stop_token& stop) {
    for (const Decoding decoding : {Decoding::hardware, Decoding::software}) {
        if (stop.stop_requested()) return false;
        const auto run = Tools::run(ffmpeg, argumentsFor(movie.toLocalFile(), probe, folder, decoding), stop);
        if (stop.stop_requested()) return false;
        if (run && run->status == 0) return true;
        logger().error(u"thumbnails: ffmpeg failed (hardware %1)"_s.arg(
            decoding == Decoding::hardware ? u"true"_s : u"false"_s));
    }
    return false;
}

QString manifestPath(const QString& folder) {
    return folder + u"/strip.json"_s;
}

/// Without it the strip is good for this process only, and made again by the next.
void writeManifest(const QString& folder, double interval, int count) {
    QSaveFile file(manifestPath(folder));
    if (!file.open(QIODevice::WriteOnly)) return;
    const QJsonObject manifest{{u"interval"_s, interval}, {u"count"_s, count}};
    file.write(QJsonDocument(manifest).toJson(QJsonDocument::Compact));
    file.commit();
}

}  // namespace

Thumbnails::Thumbnails(const QString& folder, double interval, int count)
    : folder_(folder), interval_(interval), count_(count) {}

std::shared_ptr<Thumbnails> Thumbnails::generate(const QUrl& movie, const std::stop_token& stop) {
    using SteadyClock = std::chrono::steady_clock;
    const auto& ffmpeg = Tools::ffmpeg();
    if (!ffmpeg || stop.stop_requested()) return nullptr;
    const QString path = folder(movie).toLocalFile();
    QDir(path).removeRecursively();
    QDir().mkpath(path);
    const Poster::Probe probe = Poster::probe(movie, stop);
    const double interval = intervalFor(probe);
    const auto start = SteadyClock::now();
    if (!fill(*ffmpeg, path, movie, probe, stop)) return nullptr;

    const auto count = static_cast<int>(QDir(path).entryList({u"*.jpg"_s}, QDir::Files).size());
    if (count == 0) return nullptr;
    writeManifest(path, interval, count);
    const auto elapsed = std::chrono::floor<std::chrono::seconds>(SteadyClock::now() - start);
    logger().notice(u"thumbnails: %1 frames every %2 s in %3 s for %4"_s.arg(count)
                        .arg(whole(interval))
                        .arg(elapsed.count())
                        .arg(QFileInfo(movie.toLocalFile()).fileName()));
    return std::make_shared<Thumbnails>(path, interval, count);
}

std::shared_ptr<Thumbnails> Thumbnails::stored(const QUrl& movie) {
    const QString path = folder(movie).toLocalFile();
    QFile file(manifestPath(path));
    if (!file.open(QIODevice::ReadOnly)) return nullptr;
    const QJsonDocument manifest = QJsonDocument::fromJson(file.readAll());
    const double interval = manifest[u"interval"_s].toDouble();
    const int count = manifest[u"count"_s].toInt();
    if (interval <= 0 || count < 1) return nullptr;
    return std::make_shared<Thumbnails>(path, interval, count);
}

QUrl Thumbnails::folder(const QUrl& movie) {
    return QUrl::fromLocalFile(QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) +
                               u"/Velmora/Thumbs/"_s + Poster::cacheKey(movie));
}

QImage Thumbnails::image(double time) {
    if (count_ < 1 || std::isnan(time)) return {};
    const auto number = static_cast<int>(std::clamp(std::round(time / interval_) + 1, 1.0, double(count_)));
    if (const auto known = cache_.constFind(number); known != cache_.cend()) return *known;
    const QImage loaded(u"%1/%2.jpg"_s.arg(folder_).arg(number, 4, 10, QLatin1Char('0')));
    if (!loaded.isNull()) cache_.insert(number, loaded);
    return loaded;
}

}  // namespace velmora
