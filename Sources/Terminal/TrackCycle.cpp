#include "Terminal/TrackCycle.h"

#include "Playback/Session.h"

namespace velmora {

using namespace Qt::StringLiterals;
using Kind = MediaGroup::Kind;

namespace {

std::optional<MediaOption> trackBehind(const std::optional<MediaOption>& selected,
                                       const QList<MediaOption>& tracks, Kind kind) {
    const qsizetype next = selected ? tracks.indexOf(*selected) + 1 : 0;
    if (next < tracks.size()) return tracks[next];
    return kind == Kind::audible ? std::optional(tracks.first()) : std::nullopt;
}

}  // namespace

QString selectNextTrack(Session& session, Kind kind) {
    if (!session.canControlPlayback() || session.trackNames().isEmpty()) return {};
    const bool isSound = kind == Kind::audible;
    const auto& group = isSound ? session.audioGroup() : session.subtitleGroup();
    const QList<MediaOption> tracks = Tracks::real(group);
    if (tracks.isEmpty()) return isSound ? u"There is only one sound track."_s : u"There are no subtitles."_s;
    const auto& selected = isSound ? session.selectedAudio() : session.selectedSubtitle();
    const std::optional<MediaOption> next = trackBehind(selected, tracks, kind);
    session.select(next, kind);
    const QString name = next ? session.trackNames().value(next->identifier) : u"off"_s;
    return (isSound ? u"Sound: %1"_s : u"Subtitles: %1"_s).arg(name);
}

}  // namespace velmora
