#include "Interface/Application/MovieBrowser.h"

#include <QCollator>
#include <QDir>
#include <QFileInfo>
#include <QLocale>
#include <QStandardPaths>
#include <QStorageInfo>

#include <algorithm>
#include <utility>

namespace velmora {

using namespace Qt::StringLiterals;

namespace {

const QString folderSymbol = u"folder"_s;

/// A memory stick, a disc, a disk that was plugged in.
bool isPluggedIn(const QStorageInfo& volume) {
    const QString root = volume.rootPath();
    return volume.isReady() && (root.startsWith("/media/"_L1) || root.startsWith("/run/media/"_L1) ||
                                root.startsWith("/mnt/"_L1));
}

QFileInfoList sorted(QFileInfoList entries) {
    // Where no language is set, numbers are to be numbers all the same.
    const QLocale locale;
    QCollator collator(locale.language() == QLocale::C ? QLocale(QLocale::English) : locale);
    collator.setNumericMode(true);
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    std::ranges::sort(entries, [&collator](const QFileInfo& one, const QFileInfo& other) {
        return collator.compare(one.fileName(), other.fileName()) < 0;
    });
    return entries;
}

}  // namespace

MovieBrowser::MovieBrowser(QStringList extensions, QObject* parent)
    : QObject(parent), extensions_(std::move(extensions)) {
    connect(&places_, &MenuRows::chosen, this, &MovieBrowser::choose);
    connect(&contents_, &MenuRows::chosen, this, &MovieBrowser::choose);
    QList<MenuRow> places;
    const auto add = [&places](const QString& path, const QString& name) {
        const bool isThere = std::ranges::count(places, path, &MenuRow::identifier) > 0;
        if (!path.isEmpty() && !isThere && QFileInfo(path).isDir())
            places.append({.identifier = path, .text = name, .symbol = folderSymbol});
    };
    for (const auto place : {QStandardPaths::MoviesLocation, QStandardPaths::DownloadLocation}) {
        const QString path = QStandardPaths::writableLocation(place);
        if (path != QDir::homePath()) add(path, QFileInfo(path).fileName());
    }
    add(QDir::homePath(), tr("Home"));
    const auto volumes = QStorageInfo::mountedVolumes();
    for (const QStorageInfo& volume : volumes)
        if (isPluggedIn(volume)) add(volume.rootPath(), QFileInfo(volume.rootPath()).fileName());
    add(u"/"_s, tr("This computer"));
    places_.show(places);
}

void MovieBrowser::show(const QString& path) {
    QFileInfo folder(QDir::cleanPath(path));
    while (!(folder.isDir() && folder.isReadable()) && !folder.isRoot()) folder.setFile(folder.path());
    path_ = folder.absoluteFilePath();

    const QDir contents(path_);
    QList<MenuRow> rows;
    for (const QFileInfo& each : sorted(contents.entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot)))
        rows.append({.identifier = each.absoluteFilePath(), .text = each.fileName(), .symbol = folderSymbol});
    for (const QFileInfo& each : sorted(contents.entryInfoList(QDir::Files)))
        if (extensions_.contains(each.suffix().toLower()))
            rows.append({.identifier = each.absoluteFilePath(),
                         .text = each.fileName(),
                         .symbol = u"film"_s,
                         .keys = QLocale().formattedDataSize(each.size(), 1, QLocale::DataSizeSIFormat)});
    if (rows.isEmpty()) rows.append(MenuRow::heading(u"none"_s, tr("No movies here")));
    contents_.show(rows);
    Q_EMIT folderChanged();
}

QString MovieBrowser::name() const {
    return path_ == QDir::homePath() ? tr("Home") : canGoUp() ? QFileInfo(path_).fileName() : path_;
}

void MovieBrowser::goUp() {
    show(QFileInfo(path_).path());
}

void MovieBrowser::choose(const QString& path) {
    if (QFileInfo(path).isDir())
        show(path);
    else
        Q_EMIT movieChosen(QUrl::fromLocalFile(path));
}

}  // namespace velmora
