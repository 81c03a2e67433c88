#include "Playback/Tracks.h"

#include "Companions/Language.h"

#include <limits>
#include <utility>

using namespace Qt::StringLiterals;

namespace velmora::Tracks {

namespace {

constexpr qsizetype unwanted = std::numeric_limits<qsizetype>::max();

qsizetype rank(const MediaOption& option, const QStringList& preferredLanguages) {
    if (!option.language) return unwanted;
    const QString code = Language::normalize(option.language).value_or(*option.language);
    const qsizetype place = preferredLanguages.indexOf(code);
    return place < 0 ? unwanted : place;
}

bool isForHardOfHearing(const MediaOption& option, const Names& names) {
    return option.describesSound || names.value(option.identifier).contains("(SDH)"_L1);
}

}  // namespace

QList<MediaOption> real(const std::optional<MediaGroup>& group) {
    QList<MediaOption> tracks;
    if (!group) return tracks;
    for (const MediaOption& option : group->options)
        if (option.isTrack && !option.hasOnlyForcedSubtitles) tracks.append(option);
    return tracks;
}

Names names(const std::optional<MediaGroup>& subtitles, const std::optional<MediaGroup>& audio,
            const QStringList& subtitleTitles) {
    Names names;
    QHash<QString, int> untitled;
    const QList<MediaOption> tracks = real(subtitles);
    for (qsizetype i = 0; i < tracks.size(); ++i) {
        const MediaOption& track = tracks[i];
        if (i < subtitleTitles.size()) {
            names.insert(track.identifier, subtitleTitles[i]);
            continue;
        }
        const int count = ++untitled[track.displayName];
        const QString number = count > 1 ? u' ' + QString::number(count) : QString();
        names.insert(track.identifier, track.displayName + number);
    }
    if (audio)
        for (const MediaOption& option : audio->options) names.insert(option.identifier, option.displayName);
    return names;
}

std::optional<MediaOption> defaultSubtitle(const MediaGroup& subtitles, const Names& names,
                                           const QStringList& preferredLanguages) {
    std::optional<MediaOption> best;
    std::pair bestMerit(unwanted, true);
    for (const MediaOption& track : real(subtitles)) {
        const std::pair merit(rank(track, preferredLanguages), isForHardOfHearing(track, names));
        if (merit.first == unwanted || (best && merit >= bestMerit)) continue;
        best = track;
        bestMerit = merit;
    }
    return best;
}

}  // namespace velmora::Tracks
