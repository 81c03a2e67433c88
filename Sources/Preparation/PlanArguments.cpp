#include "Preparation/Plan.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace velmora {
namespace {

/// An absolute path is never taken for an option or a protocol, whatever the file is called.
QString pathOf(const QUrl& file) {
    return QFileInfo(file.toLocalFile()).absoluteFilePath();
}

QStringList inputs(const QUrl& source, const QList<Sidecar>& sidecars) {
    QStringList arguments{u"-i"_s, pathOf(source)};
    for (const Sidecar& sidecar : sidecars) {
        if (sidecar.encoding) arguments += {u"-sub_charenc"_s, *sidecar.encoding};
        arguments += {u"-i"_s, pathOf(sidecar.url)};
    }
    return arguments;
}

QString streamOf(const Plan::Subtitle::Source& source) {
    if (const auto* sidecar = std::get_if<Plan::Subtitle::FromSidecar>(&source)) {
        return QString::number(sidecar->inputIndex) + u":0"_s;
    }
    return u"0:"_s + QString::number(std::get<Plan::Subtitle::Embedded>(source).index);
}

QStringList maps(const Plan& plan) {
    QStringList arguments{u"-map"_s, u"0:"_s + QString::number(plan.videoIndex)};
    if (plan.audioIndex) arguments += {u"-map"_s, u"0:"_s + QString::number(*plan.audioIndex)};
    for (const Plan::Subtitle& track : plan.subtitles) arguments += {u"-map"_s, streamOf(track.source)};
    return arguments;
}

QStringList videoCodec(const Plan& plan) {
    if (const auto* encode = std::get_if<Plan::VideoEncode>(&plan.video)) {
        return plan.encoder.videoArguments(encode->tenBit, encode->bitrate);
    }
    QStringList arguments{u"-c:v"_s, u"copy"_s};
    const std::optional<QString>& retag = std::get<Plan::VideoCopy>(plan.video).retag;
    if (retag) arguments += {u"-tag:v"_s, *retag};
    return arguments;
}

QStringList audioCodec(const std::optional<Plan::Audio>& audio) {
    if (!audio) return {};
    const auto* encode = std::get_if<Plan::AudioEncode>(&*audio);
    if (!encode) return {u"-c:a"_s, u"copy"_s};
    return {u"-c:a"_s, u"aac"_s, u"-ac"_s, QString::number(encode->channels), u"-b:a"_s, encode->bitrate};
}

QString disposition(const Plan::Subtitle& track) {
    if (track.isDefault) return track.isForced ? u"default+forced"_s : u"default"_s;
    return track.isForced ? u"forced"_s : u"0"_s;
}

QStringList trackArguments(const Plan::Subtitle& track, qsizetype number) {
    const QString metadata = u"-metadata:s:s:"_s + QString::number(number);
    QStringList arguments;
    if (track.language) arguments += {metadata, u"language="_s + *track.language};
    if (track.title) {
        // MP4 keeps no titles; players show the handler's name.
        arguments += {metadata, u"title="_s + *track.title, metadata, u"handler_name="_s + *track.title};
    }
    return arguments + QStringList{u"-disposition:s:"_s + QString::number(number), disposition(track)};
}

QStringList subtitleArguments(const QList<Plan::Subtitle>& tracks) {
    if (tracks.isEmpty()) return {};
    QStringList arguments{u"-c:s"_s, u"mov_text"_s};
    for (qsizetype number = 0; number < tracks.size(); ++number) {
        arguments += trackArguments(tracks.at(number), number);
    }
    return arguments;
}

}  // namespace

QStringList Plan::ffmpegArguments(const QUrl& source, const QUrl& output, bool faststart) const {
    QStringList arguments{u"-y"_s,    u"-nostdin"_s,  u"-hide_banner"_s, u"-loglevel"_s,
                          u"error"_s, u"-progress"_s, u"pipe:1"_s,       u"-nostats"_s};
    // Devices are for encoding alone; a copy needs none and must not fail for want of one.
    if (std::holds_alternative<VideoEncode>(video)) arguments += encoder.inputArguments();
    arguments += inputs(source, sidecars);
    arguments += maps(*this);
    arguments += videoCodec(*this);
    arguments += audioCodec(audio);
    arguments += subtitleArguments(subtitles);
    arguments += {u"-avoid_negative_ts"_s, u"make_zero"_s};
    arguments += faststart ? QStringList{u"-movflags"_s, u"+faststart"_s}
                           : QStringList{u"-moov_size"_s, QString::number(moovReserve)};
    return arguments + QStringList{u"-f"_s, u"mp4"_s, pathOf(output)};
}

}  // namespace velmora
