#include "Preparation/Media.h"

#include "Companions/Language.h"
#include "Preparation/Tools.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>

#include <algorithm>
#include <cmath>
#include <limits>

using namespace Qt::StringLiterals;

namespace velmora {
namespace {

using Stream = MediaInfo::Stream;

/// Takes values out of ffprobe's answer. What is absent is empty; the first value of a wrong type, or absent
/// though required, is kept as the error.
class AnswerReader {
  public:
    [[nodiscard]] MediaInfo read(const QJsonObject& answer) {
        MediaInfo info;
        if (!answer.value("streams"_L1).isArray()) fail(u"“streams” is not a list"_s);
        const QJsonArray streams = answer.value("streams"_L1).toArray();
        for (const auto& value : streams) {
            if (!value.isObject()) fail(u"a stream is not an object"_s);
            info.streams.append(stream(value.toObject()));
        }
        if (!answer.value("format"_L1).isObject()) fail(u"“format” is not an object"_s);
        const QJsonObject format = answer.value("format"_L1).toObject();
        info.container = text(format, "format_name"_L1).value_or(QString());
        info.duration = text(format, "duration"_L1).value_or(QString()).toDouble();
        if (!std::isfinite(info.duration)) info.duration = 0;
        info.size = text(format, "size"_L1).value_or(QString()).toLongLong();
        return info;
    }

    [[nodiscard]] const QString& error() const { return error_; }

  private:
    [[nodiscard]] Stream stream(const QJsonObject& object) {
        Stream stream;
        if (isAbsent(object.value("index"_L1))) fail(u"a stream has no “index”"_s);
        stream.index = integer(object, "index"_L1);
        stream.kind = kind(text(object, "codec_type"_L1).value_or(QString()));
        stream.codec = text(object, "codec_name"_L1).value_or(stream.codec);
        stream.tag = text(object, "codec_tag_string"_L1).value_or(QString());
        stream.pixelFormat = text(object, "pix_fmt"_L1);
        stream.width = integer(object, "width"_L1);
        stream.height = integer(object, "height"_L1);
        stream.channels = integer(object, "channels"_L1);
        readTags(child(object, "tags"_L1), stream);
        readDisposition(child(object, "disposition"_L1), stream);
        return stream;
    }

    void readTags(const QJsonObject& tags, Stream& stream) {
        for (const QString& key : tags.keys()) {
            if (!tags.value(key).isString()) fail(u"the tag “%1” is not text"_s.arg(key));
            const QString value = tags.value(key).toString();
            if (key.compare("language"_L1, Qt::CaseInsensitive) == 0) {
                stream.language = Language::normalize(value);
            } else if (key.compare("title"_L1, Qt::CaseInsensitive) == 0) {
                stream.title = value;
            }
        }
    }

    void readDisposition(const QJsonObject& disposition, Stream& stream) {
        for (const QString& key : disposition.keys()) {
            if (!isInteger(disposition.value(key)))
                fail(u"the disposition “%1” is not a whole number"_s.arg(key));
        }
        stream.isDefault = disposition.value("default"_L1).toInt() == 1;
        stream.isForced = disposition.value("forced"_L1).toInt() == 1;
    }

    static Stream::Kind kind(const QString& type) {
        if (type == "video"_L1) return Stream::Kind::video;
        if (type == "audio"_L1) return Stream::Kind::audio;
        return type == "subtitle"_L1 ? Stream::Kind::subtitle : Stream::Kind::other;
    }

    static bool isAbsent(const QJsonValue& value) { return value.isUndefined() || value.isNull(); }

    static bool isInteger(const QJsonValue& value) {
        const double number = value.toDouble(std::numeric_limits<double>::quiet_NaN());
        return std::trunc(number) == number && std::abs(number) <= std::numeric_limits<int>::max();
    }

    [[nodiscard]] std::optional<QString> text(const QJsonObject& object, QLatin1StringView key) {
        const QJsonValue value = object.value(key);
        if (isAbsent(value)) return {};
        if (!value.isString()) fail(u"“%1” is not text"_s.arg(key));
        return value.toString();
    }

    [[nodiscard]] int integer(const QJsonObject& object, QLatin1StringView key) {
        const QJsonValue value = object.value(key);
        if (isAbsent(value)) return 0;
        if (!isInteger(value)) fail(u"“%1” is not a whole number"_s.arg(key));
        return value.toInt();
    }

    [[nodiscard]] QJsonObject child(const QJsonObject& object, QLatin1StringView key) {
        const QJsonValue value = object.value(key);
        if (!isAbsent(value) && !value.isObject()) fail(u"“%1” is not an object"_s.arg(key));
        return value.toObject();
    }

    void fail(const QString& reason) {
        if (error_.isEmpty()) error_ = reason;
    }

    QString error_;
};

/// Pictures that files carry as video streams: the cover of an album or a film.
bool isCover(const QString& codec) {
    static const QSet<QString> covers{u"mjpeg"_s, u"png"_s, u"bmp"_s, u"gif"_s};
    return covers.contains(codec);
}

QList<Stream> ofKind(const QList<Stream>& streams, Stream::Kind kind) {
    QList<Stream> result;
    std::copy_if(streams.begin(), streams.end(), std::back_inserter(result),
                 [kind](const Stream& stream) { return stream.kind == kind; });
    return result;
}

std::unexpected<PrepareError> probeFailed(const QString& detail) {
    return std::unexpected(PrepareError{PrepareError::Case::probeFailed, detail});
}

}  // namespace

const Stream* MediaInfo::video() const {
    const auto found = std::find_if(streams.begin(), streams.end(), [](const Stream& stream) {
        return stream.kind == Stream::Kind::video && !isCover(stream.codec);
    });
    return found == streams.end() ? nullptr : &*found;
}

QList<Stream> MediaInfo::audio() const {
    return ofKind(streams, Stream::Kind::audio);
}

QList<Stream> MediaInfo::subtitles() const {
    return ofKind(streams, Stream::Kind::subtitle);
}

bool MediaInfo::isAppleContainer() const {
    static const QSet<QString> apple{u"mov"_s, u"mp4"_s, u"m4a"_s, u"3gp"_s, u"3g2"_s, u"mj2"_s};
    const QStringList names = container.split(u',');
    return std::any_of(names.begin(), names.end(), [](const QString& name) { return apple.contains(name); });
}

std::expected<MediaInfo, PrepareError> MediaProbe::probe(const QUrl& movie, const QUrl& ffprobe,
                                                         const std::stop_token& stop) {
    // An absolute path is never taken for an option or a protocol.
    const QStringList arguments{u"-v"_s,
                                u"error"_s,
                                u"-print_format"_s,
                                u"json"_s,
                                u"-show_streams"_s,
                                u"-show_format"_s,
                                QFileInfo(movie.toLocalFile()).absoluteFilePath()};
    const auto output = Tools::run(ffprobe, arguments, stop);
    if (stop.stop_requested()) return std::unexpected(PrepareError{PrepareError::Case::cancelled});
    if (!output) return std::unexpected(PrepareError::system(output.error()));
    if (output->status != 0) return probeFailed(output->stderrText().trimmed());
    return parse(output->standardOutput);
}

std::expected<MediaInfo, PrepareError> MediaProbe::parse(const QByteArray& json) {
    QJsonParseError syntax;
    // Tags of old files may hold bytes of any encoding; one bad letter in a title is no reason to fail.
    const QJsonDocument document = QJsonDocument::fromJson(QString::fromUtf8(json).toUtf8(), &syntax);
    AnswerReader reader;
    MediaInfo info = reader.read(document.object());
    const QString error = syntax.error == QJsonParseError::NoError ? reader.error() : syntax.errorString();
    if (!error.isEmpty()) return probeFailed(u"Couldn't read ffprobe's answer: "_s + error);
    return info;
}

}  // namespace velmora
