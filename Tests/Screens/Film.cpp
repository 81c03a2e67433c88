#include "Screens/Film.h"

#include "Interface/Views/Scenery.h"

#include <QFile>
#include <QProcess>

namespace velmora::test {

using namespace Qt::StringLiterals;

struct Film::Kind {
    QString name;
    QSize size;
    int scenes;  ///< of ten minutes, each a shot again and again: at dusk, at night, at dusk…
};

namespace {

constexpr int shotSeconds = 60;
constexpr int shotsPerScene = 10;

bool ffmpeg(const QStringList& arguments) {
    return QProcess::execute(u"ffmpeg"_s,
                             QStringList{u"-v"_s, u"error"_s, u"-nostdin"_s, u"-y"_s} + arguments) == 0;
}

bool write(const QString& path, const QByteArray& text) {
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(text) == text.size();
}

}  // namespace

Film::Film(const QDir& folder) : folder_(folder) {
    folder_.mkpath(u"."_s);
}

QString Film::feature() {
    return make({.name = u"The Long Way to Velden"_s, .size = {1280, 720}, .scenes = 10});
}

QString Film::epic() {
    return make({.name = u"The Extraordinary and Altogether Unlikely Voyage of a Very Small Boat"_s,
                 .size = {1280, 536},
                 .scenes = 54});
}

/// The camera moves slowly from left to right.
bool Film::makeScene(const QString& name, const QImage& picture, const Kind& kind) {
    const QString still = folder_.filePath(name + u".png"_s);
    const QString camera = u"crop=%1:%2:x='t*%3/%4':y=0,format=yuv420p"_s.arg(kind.size.width())
                               .arg(kind.size.height())
                               .arg(picture.width() - kind.size.width())
                               .arg(shotSeconds);
    return picture.save(still) && ffmpeg({u"-loop"_s,
                                          u"1"_s,
                                          u"-framerate"_s,
                                          u"4"_s,
                                          u"-i"_s,
                                          still,
                                          u"-f"_s,
                                          u"lavfi"_s,
                                          u"-i"_s,
                                          u"anullsrc=sample_rate=48000"_s,
                                          u"-t"_s,
                                          QString::number(shotSeconds),
                                          u"-vf"_s,
                                          camera,
                                          u"-c:v"_s,
                                          u"libx264"_s,
                                          u"-preset"_s,
                                          u"veryfast"_s,
                                          u"-crf"_s,
                                          u"16"_s,
                                          u"-g"_s,
                                          u"120"_s,
                                          u"-c:a"_s,
                                          u"aac"_s,
                                          u"-b:a"_s,
                                          u"32k"_s,
                                          folder_.filePath(name + u".mkv"_s)});
}

QString Film::make(const Kind& kind) {
    QString made = folder_.filePath(kind.name + u".mkv"_s);
    if (QFile::exists(made)) return made;
    const QSize drawn = kind.size + QSize(kind.size.width() / 8, 0);
    if (!makeScene(u"dusk"_s, Scenery::dusk(drawn), kind)) return {};
    if (!makeScene(u"night"_s, Scenery::night(drawn), kind)) return {};
    QByteArray scenes;
    for (int scene = 0; scene < kind.scenes; ++scene)
        scenes += QByteArray(scene % 2 == 0 ? "file dusk.mkv\n" : "file night.mkv\n").repeated(shotsPerScene);
    const QString list = folder_.filePath(u"scenes.txt"_s);
    const QString words = folder_.filePath(u"words.srt"_s);
    if (!write(list, scenes) || !write(words, "1\n00:00:05,000 --> 00:00:09,000\nIs it far?\n")) return {};
    const bool isMade = ffmpeg({u"-f"_s,
                                u"concat"_s,
                                u"-i"_s,
                                list,
                                u"-i"_s,
                                words,
                                u"-i"_s,
                                words,
                                u"-i"_s,
                                words,
                                u"-map"_s,
                                u"0"_s,
                                u"-map"_s,
                                u"1"_s,
                                u"-map"_s,
                                u"2"_s,
                                u"-map"_s,
                                u"3"_s,
                                u"-c"_s,
                                u"copy"_s,
                                u"-metadata:s:s:0"_s,
                                u"language=nld"_s,
                                u"-metadata:s:s:1"_s,
                                u"language=eng"_s,
                                u"-metadata:s:s:2"_s,
                                u"language=eng"_s,
                                u"-disposition:s:2"_s,
                                u"hearing_impaired"_s,
                                made});
    return isMade ? made : QString();
}

}  // namespace velmora::test
