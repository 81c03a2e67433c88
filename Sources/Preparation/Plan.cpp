#include "Preparation/Plan.h"

#include "Companions/Language.h"
#include "Companions/Names.h"

#include <QRegularExpression>

#include <algorithm>
#include <limits>
#include <tuple>

using namespace Qt::StringLiterals;

namespace velmora {
namespace {

using Stream = MediaInfo::Stream;

/// Sampling that the platform's decoders take: 4:2:0 with 8 bits, and for HEVC with 10.
bool isEightBit(const QString& pixelFormat) {
    static const QSet<QString> formats{u"yuv420p"_s, u"yuvj420p"_s, u"nv12"_s};
    return formats.contains(pixelFormat);
}

bool isTenBit(const QString& pixelFormat) {
    static const QSet<QString> formats{u"yuv420p10le"_s, u"p010le"_s};
    return formats.contains(pixelFormat);
}

/// The bit rate for pictures up to about 720p, up to about 1440p, and beyond.
QString videoBitrate(qint64 pixels) {
    if (pixels < 1'530'000) return u"5M"_s;
    return pixels < 4'800'000 ? u"10M"_s : u"24M"_s;
}

Plan::Video planVideo(const Stream& stream, bool forceTranscode) {
    const QString pixelFormat = stream.pixelFormat.value_or(QString());
    if (!forceTranscode && stream.codec == "h264"_L1 && isEightBit(pixelFormat)) return Plan::VideoCopy{};
    if (!forceTranscode && stream.codec == "hevc"_L1 && (isEightBit(pixelFormat) || isTenBit(pixelFormat))) {
        // Apple's players show no picture for HEVC under its other tag, "hev1".
        if (stream.tag.toLower() == "hvc1"_L1) return Plan::VideoCopy{};
        return Plan::VideoCopy{u"hvc1"_s};
    }
    return Plan::VideoEncode{pixelFormat.contains("10"_L1),
                             videoBitrate(qint64{stream.width} * stream.height)};
}

/// The first copyable track of the language that plays first; else that first track, re-encoded.
void planAudio(QList<Stream> tracks, Plan& plan) {
    if (tracks.isEmpty()) return;
    std::stable_partition(tracks.begin(), tracks.end(), [](const Stream& track) { return track.isDefault; });
    const Stream& lead = tracks.constFirst();
    const auto copyable = std::find_if(tracks.cbegin(), tracks.cend(), [&lead](const Stream& track) {
        return (!lead.language || track.language == lead.language) &&
               Plan::appleAudio().contains(track.codec) && track.channels < 9;
    });
    if (copyable != tracks.cend()) {
        plan.audio = Plan::AudioCopy{};
        plan.audioIndex = copyable->index;
        return;
    }
    plan.audio =
        Plan::AudioEncode{std::clamp(lead.channels, 1, 6), lead.channels > 2 ? u"448k"_s : u"192k"_s};
    plan.audioIndex = lead.index;
}

std::optional<QString> languageName(const std::optional<QString>& code) {
    return code ? Language::displayName(*code) : std::nullopt;
}

const QString& unnamed() {
    static const QString text = u"Subtitles"_s;
    return text;
}

/// Equally named sidecars stay distinguishable by their file names.
QString sidecarTitle(const Sidecar& sidecar, bool isOnlyOne) {
    std::optional<QString> name = languageName(sidecar.language);
    if (sidecar.isSDH) name = name.value_or(unnamed()) + u" (SDH)"_s;
    if (sidecar.isForced) name = name.value_or(unnamed()) + u" (forced)"_s;
    if (isOnlyOne) return name.value_or(unnamed());
    const QString stem = Names::stem(Names::fileName(sidecar.url));
    return name ? *name + u" · "_s + stem : stem;
}

bool saysSDH(const QString& title) {
    static const QRegularExpression marker(
        u"sdh|hearing|\\bcc\\b"_s,
        QRegularExpression::CaseInsensitiveOption | QRegularExpression::UseUnicodePropertiesOption);
    return marker.match(title).hasMatch();
}

void planSidecars(Plan& plan) {
    for (int position = 0; position < plan.sidecars.size(); ++position) {
        const Sidecar& sidecar = plan.sidecars.at(position);
        plan.subtitles.append({.source = Plan::Subtitle::FromSidecar{position + 1},
                               .language = sidecar.language,
                               .title = sidecarTitle(sidecar, plan.sidecars.size() == 1),
                               .isForced = sidecar.isForced,
                               .isSDH = sidecar.isSDH});
    }
}

void planEmbedded(const QList<Stream>& streams, Plan& plan) {
    for (const Stream& stream : streams) {
        if (!Plan::textSubtitles().contains(stream.codec)) {
            ++plan.skippedBitmapSubtitles;
            continue;
        }
        plan.subtitles.append({.source = Plan::Subtitle::Embedded{stream.index},
                               .language = stream.language,
                               .title = stream.title,
                               .isForced = stream.isForced,
                               .isSDH = saysSDH(stream.title.value_or(QString()))});
    }
}

/// Marks the track that suits the user best: any full sidecar goes before the movie's own tracks, which are
/// shown only in a preferred language.
void chooseDefault(QList<Plan::Subtitle>& tracks) {
    const QStringList preferred = Language::preferred();
    const auto rank = [&preferred](const Plan::Subtitle& track) {
        const qsizetype position = track.language ? preferred.indexOf(*track.language) : -1;
        return position < 0 ? std::numeric_limits<qsizetype>::max() : position;
    };
    const auto best = [&](const auto& isCandidate) {
        Plan::Subtitle* found = nullptr;
        for (Plan::Subtitle& track : tracks) {
            if (track.isForced || !isCandidate(track)) continue;
            const auto order = std::tuple(rank(track), track.isSDH);
            if (!found || order < std::tuple(rank(*found), found->isSDH)) found = &track;
        }
        return found;
    };
    Plan::Subtitle* chosen = best([](const Plan::Subtitle& track) {
        return std::holds_alternative<Plan::Subtitle::FromSidecar>(track.source);
    });
    if (!chosen) {
        chosen = best([&preferred](const Plan::Subtitle& track) {
            return track.language && preferred.contains(*track.language);
        });
    }
    if (chosen) chosen->isDefault = true;
}

/// Bytes that the index takes at most: a few tables with an entry per sample, at 60 pictures, 50 sound
/// packets and two subtitles a second, half as much again, and room for what does not grow.
qint64 moovReserveFor(double duration, qsizetype subtitleCount) {
    // A movie counts for a minute at least; bounded because the duration is what a file claims of itself.
    const double seconds = std::clamp(std::max(60.0, duration), 60.0, 1e9);
    const double tracks = static_cast<double>(subtitleCount);
    const double entries = 60 * seconds * 24 + 50 * seconds * 12 + seconds * tracks * 2 * 20;
    return static_cast<qint64>(entries * 1.5) + 2'000'000;
}

}  // namespace

const QSet<QString>& Plan::appleAudio() {
    static const QSet<QString> codecs{u"aac"_s, u"ac3"_s, u"eac3"_s, u"alac"_s, u"mp3"_s};
    return codecs;
}

const QSet<QString>& Plan::textSubtitles() {
    static const QSet<QString> codecs{u"subrip"_s, u"ass"_s, u"ssa"_s, u"webvtt"_s, u"mov_text"_s, u"text"_s};
    return codecs;
}

std::expected<Plan, PrepareError> Plan::make(const MediaInfo& info, const QList<Sidecar>& sidecars,
                                             bool forceTranscode, const VideoEncoder& encoder) {
    const Stream* video = info.video();
    if (!video) return std::unexpected(PrepareError{PrepareError::Case::noVideo});
    Plan plan;
    plan.video = planVideo(*video, forceTranscode);
    plan.videoIndex = video->index;
    planAudio(info.audio(), plan);
    plan.sidecars = sidecars;
    planSidecars(plan);
    planEmbedded(info.subtitles(), plan);
    chooseDefault(plan.subtitles);
    plan.containerIsApple = info.isAppleContainer();
    plan.moovReserve = moovReserveFor(info.duration, plan.subtitles.size());
    plan.encoder = encoder;
    return plan;
}

QStringList Plan::subtitleTitles() const {
    QStringList result;
    QHash<QString, int> counts;
    for (const Subtitle& track : subtitles) {
        QString name = track.title ? *track.title : languageName(track.language).value_or(unnamed());
        if (track.isForced && !name.contains("forced"_L1, Qt::CaseInsensitive)) name += u" (forced)"_s;
        const int count = ++counts[name];
        result.append(count == 1 ? name : name + u' ' + QString::number(count));
    }
    return result;
}

}  // namespace velmora
