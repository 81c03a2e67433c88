#include "Companions/Sidecar.h"

#include "Companions/Language.h"
#include "Companions/Names.h"
#include "Companions/SubtitleText.h"

#include <QDir>
#include <QFileInfo>
#include <QSet>

#include <unicode/uchar.h>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace velmora {
namespace {

const QSet<QString>& subfolders() {
    static const QSet<QString> set{u"subs"_s, u"subtitles"_s, u"sub"_s};
    return set;
}

/// Words of release names. Shared by a movie and a subtitle they say that the two belong together.
const QSet<QString>& releaseWords() {
    static const QSet<QString> set{
        u"web"_s,    u"webrip"_s, u"webdl"_s, u"bluray"_s, u"brrip"_s, u"bdrip"_s, u"hdtv"_s,
        u"dvdrip"_s, u"remux"_s,  u"amzn"_s,  u"nf"_s,     u"dsnp"_s,  u"atvp"_s,  u"x264"_s,
        u"x265"_s,   u"h264"_s,   u"h265"_s,  u"hevc"_s,   u"avc"_s,   u"10bit"_s, u"hdr"_s,
        u"dv"_s,     u"2160p"_s,  u"1080p"_s, u"720p"_s,   u"aac"_s,   u"ddp"_s,   u"atmos"_s,
    };
    return set;
}

const QSet<QString>& movieExtensions() {
    static const QSet<QString> set{u"mkv"_s,  u"mp4"_s, u"m4v"_s, u"mov"_s,  u"avi"_s,
                                   u"webm"_s, u"wmv"_s, u"ts"_s,  u"m2ts"_s, u"flv"_s};
    return set;
}

constexpr qint64 prefixScore = 1000;
constexpr qint64 tellingScore = 5;
constexpr qint64 ordinaryScore = 1;

bool hasNumeral(const QString& token) {
    const QList<uint> characters = token.toUcs4();
    return std::any_of(characters.begin(), characters.end(), [](uint character) {
        return u_getIntPropertyValue(static_cast<UChar32>(character), UCHAR_NUMERIC_TYPE) != U_NT_NONE;
    });
}

qint64 worth(const QString& token) {
    if (Names::characterCount(token) < 4) return ordinaryScore;
    return hasNumeral(token) || releaseWords().contains(token) ? tellingScore : ordinaryScore;
}

qint64 scoreOf(const QString& name, const QSet<QString>& nameTokens, const QString& base,
               const QSet<QString>& movieTokens) {
    if (Names::beginsWith(name, base)) return prefixScore;
    qint64 sum = 0;
    for (const QString& token : nameTokens& movieTokens) sum += worth(token);
    return sum;
}

bool hasOneMovie(const QStringList& names) {
    return std::count_if(names.begin(), names.end(), [&names](const QString& name) {
               return movieExtensions().contains(Names::extension(name)) &&
                      !Sidecar::isPreparedOutput(name, names);
           }) == 1;
}

/// All names in a folder in the order that the file system gives them; none when it cannot be listed. A name
/// that begins with "._" is not a file of its own: on disks written by a Mac it holds the attributes of the
/// file of that name.
QStringList list(const QString& folder) {
    QStringList names = QDir(folder).entryList(
        QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Unsorted);
    names.removeIf([](const QString& name) { return name.startsWith(u"._"_s); });
    return names;
}

/// A folder or a device named like a subtitle is none: ffmpeg would fail on it, or wait for it forever. What
/// cannot be read, or is a link to nothing, stays, so that the user hears of it.
bool isOtherThanFile(const QString& path) {
    const QFileInfo info(path);
    return info.exists() && !info.isFile();
}

/// The paths of the subtitle files that lie beside the movie and belong to it.
QStringList candidates(const QString& folder, const QString& base) {
    const QStringList names = list(folder);
    const bool oneMovie = hasOneMovie(names);
    const auto isSubtitle = [](const QString& name) {
        return Sidecar::extensions().contains(Names::extension(name));
    };
    QStringList result;
    for (const QString& name : names) {
        const QString path = folder + u'/' + name;
        if (isSubtitle(name)) {
            if (oneMovie || Names::beginsWith(name, base)) result.append(path);
        } else if (oneMovie && subfolders().contains(name.toLower())) {
            for (const QString& entry : list(path)) {
                if (isSubtitle(entry)) result.append(path + u'/' + entry);
            }
        }
    }
    result.removeIf(isOtherThanFile);
    return result;
}

QDateTime distantPast() {
    return {QDate(1, 1, 1), QTime(0, 0), Qt::UTC};
}

Sidecar describe(const QString& path, const QString& base, const QSet<QString>& movieTokens) {
    const QFileInfo file(path);
    const QString name = Names::stem(file.fileName());
    const QStringList tokenList = Sidecar::tokens(name);
    const QSet<QString> tokens(tokenList.begin(), tokenList.end());
    Sidecar sidecar;
    sidecar.url = QUrl::fromLocalFile(path);
    sidecar.modified = file.lastModified().isValid() ? file.lastModified() : distantPast();
    sidecar.language = Language::fromFilename(name, base);
    if (const std::optional<SubtitleText> text = SubtitleText::read(path)) {
        if (!text->isUnicode) sidecar.encoding = u"CP1252"_s;
        if (!sidecar.language) sidecar.language = Language::detect(text->text);
    }
    sidecar.isForced = tokens.contains(u"forced"_s);
    sidecar.isSDH = tokens.intersects({u"sdh"_s, u"hi"_s, u"cc"_s});
    sidecar.score = scoreOf(name, tokens, base, movieTokens);
    return sidecar;
}

/// Best score first, then by file name in the order of code points.
bool isBefore(const Sidecar& left, const Sidecar& right) {
    if (left.score != right.score) return left.score > right.score;
    const QList<uint> leftName = Names::fileName(left.url).toUcs4();
    const QList<uint> rightName = Names::fileName(right.url).toUcs4();
    return std::lexicographical_compare(leftName.begin(), leftName.end(), rightName.begin(), rightName.end());
}

}  // namespace

QList<Sidecar> Sidecar::find(const QUrl& movie) {
    const QFileInfo file(movie.adjusted(QUrl::StripTrailingSlash).toLocalFile());
    const QString base = Names::stem(file.fileName());
    const QStringList tokenList = tokens(base);
    const QSet<QString> movieTokens(tokenList.begin(), tokenList.end());
    QList<Sidecar> result;
    for (const QString& path : candidates(file.absolutePath(), base)) {
        result.append(describe(path, base, movieTokens));
    }
    std::stable_sort(result.begin(), result.end(), isBefore);
    return result;
}

QStringList Sidecar::tokens(const QString& text) {
    return Names::pieces(text);
}

bool Sidecar::isPreparedOutput(const QString& name, const QStringList& names) {
    if (name.endsWith(u" (Velmora).mp4"_s) || name.endsWith(u" (Orvane).mp4"_s)) return true;
    if (names.contains(name + u".velmora"_s) || names.contains(name + u".orvane"_s)) return true;
    // The marker that preparation leaves today is a hidden file.
    return names.contains(u'.' + name + u".velmora"_s);
}

const QStringList& Sidecar::extensions() {
    static const QStringList list{u"srt"_s, u"vtt"_s, u"ass"_s, u"ssa"_s};
    return list;
}

}  // namespace velmora
