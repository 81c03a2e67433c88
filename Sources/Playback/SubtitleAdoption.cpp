#include "Playback/SubtitleAdoption.h"

#include "Companions/Language.h"
#include "Companions/Names.h"
#include "Companions/SubtitleText.h"
#include "Diagnostics/Log.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

std::optional<QString> languageOf(const QUrl& subtitle, const QString& movieStem) {
    const QString stem = Names::stem(Names::fileName(subtitle));
    if (const auto language = Language::fromFilename(stem, movieStem)) return language;
    const auto text = SubtitleText::read(subtitle.toLocalFile());
    return text ? Language::detect(text->text) : std::nullopt;
}

std::optional<QString> freePath(const QDir& folder, const QString& stem, const QString& extension) {
    constexpr int mostCopies = 20;  // whoever has that many has something else in mind
    for (int number = 1; number <= mostCopies; ++number) {
        const QString numbered = number == 1 ? stem : stem + u'.' + QString::number(number);
        QString path = folder.filePath(numbered + u'.' + extension);
        if (!QFileInfo::exists(path)) return path;
    }
    return std::nullopt;
}

}  // namespace

std::optional<QUrl> adoptSubtitle(const QUrl& subtitle, const QUrl& movie) {
    const QString movieStem = Names::stem(Names::fileName(movie));
    const std::optional<QString> language = languageOf(subtitle, movieStem);
    const QString stem = language ? movieStem + u'.' + *language : movieStem;
    const QDir folder = QFileInfo(movie.toLocalFile()).dir();
    const auto path = freePath(folder, stem, Names::extension(Names::fileName(subtitle)));
    if (!path) return std::nullopt;
    QFile file(subtitle.toLocalFile());
    if (file.copy(*path)) return QUrl::fromLocalFile(*path);
    logger().error(u"subtitle copy failed: "_s + file.errorString());
    return std::nullopt;
}

}  // namespace velmora
