#include "Platform/Linux/LinuxPlayerItem.h"

#include "Companions/Language.h"

#include <QCoreApplication>

#include <algorithm>
#include <utility>

namespace velmora {

using namespace Qt::StringLiterals;
using Kind = MediaGroup::Kind;

namespace {

/// The texts of this file, for translators.
struct Texts {
    Q_DECLARE_TR_FUNCTIONS(Player)
};

std::size_t indexOf(Kind kind) {
    return static_cast<std::size_t>(kind);
}

QString identifierOf(const LocalEngine::Track& track) {
    return (track.kind == Kind::audible ? u"audio:%1"_s : u"text:%1"_s).arg(track.number);
}

QString channelWords(int channels) {
    switch (channels) {
        case 1:
            return u"mono"_s;
        case 2:
            return u"stereo"_s;
        case 6:
            return u"5.1"_s;
        case 8:
            return u"7.1"_s;
        default:
            return Texts::tr("%1 channels").arg(channels);
    }
}

QString plainName(const LocalEngine::Track& track) {
    if (!track.title.isEmpty()) return track.title;
    const auto code = Language::normalize(track.language);
    const auto name = code ? Language::displayName(*code) : std::nullopt;
    return name.value_or(Texts::tr("Track %1").arg(track.number));
}

/// Audio tracks of the same name are told apart by their channels.
QString nameOf(const LocalEngine::Track& track, const QList<LocalEngine::Track>& all) {
    const QString name = plainName(track);
    const auto isNamesake = [&](const LocalEngine::Track& other) {
        return other.kind == track.kind && plainName(other) == name;
    };
    const bool isUnique = std::ranges::count_if(all, isNamesake) == 1;
    if (isUnique || track.kind != Kind::audible || track.channels == 0) return name;
    return u"%1 (%2)"_s.arg(name, channelWords(track.channels));
}

}  // namespace

std::optional<MediaGroup> LinuxPlayerItem::groupOf(const QList<LocalEngine::Track>& tracks, Kind kind) {
    MediaGroup group{.kind = kind, .options = {}};
    for (const LocalEngine::Track& track : tracks) {
        if (track.kind != kind) continue;
        const bool isTagged = !track.language.isEmpty();
        group.options.append({.identifier = identifierOf(track),
                              .displayName = nameOf(track, tracks),
                              .language = isTagged ? std::optional(track.language) : std::nullopt,
                              .isTrack = true,
                              .hasOnlyForcedSubtitles = kind == Kind::legible && track.isForced,
                              .describesSound = track.describesSound});
    }
    return group.options.isEmpty() ? std::nullopt : std::optional(group);
}

void LinuxPlayerItem::loadGroup(Kind kind, GroupLoaded loaded) {
    waiting_.push_back({kind, std::move(loaded)});
    if (status_ == Status::unknown) return;
    QMetaObject::invokeMethod(this, &LinuxPlayerItem::answerAll, Qt::QueuedConnection);
}

void LinuxPlayerItem::answerAll() {
    for (const Waiting& waiting : std::exchange(waiting_, {})) {
        waiting.loaded(status_ == Status::failed ? std::nullopt : groupOf(tracks_, waiting.kind));
    }
}

std::optional<MediaOption> LinuxPlayerItem::selected(Kind kind) const {
    const auto number = selectedTrack(kind);
    const auto group = groupOf(tracks_, kind);
    if (!number || !group) return std::nullopt;
    const QString identifier = identifierOf({.kind = kind, .number = *number});
    const auto found = std::ranges::find(group->options, identifier, &MediaOption::identifier);
    return found == group->options.end() ? std::nullopt : std::optional(*found);
}

void LinuxPlayerItem::select(const std::optional<MediaOption>& option, Kind kind) {
    std::optional<int> number;
    for (const LocalEngine::Track& track : tracks_) {
        if (option && track.kind == kind && identifierOf(track) == option->identifier) number = track.number;
    }
    if (option && !number) return;  // of another item
    if (std::exchange(selected_.at(indexOf(kind)), number) == number) return;
    Q_EMIT selectionChanged(kind);
}

std::optional<int> LinuxPlayerItem::selectedTrack(Kind kind) const {
    return selected_.at(indexOf(kind));
}

int LinuxPlayerItem::trackCount(Kind kind) const {
    return static_cast<int>(std::ranges::count(tracks_, kind, &LocalEngine::Track::kind));
}

void LinuxPlayerItem::takeLoaded(std::optional<double> duration, const QList<LocalEngine::Track>& tracks) {
    duration_ = duration;
    tracks_ = tracks;
    for (const LocalEngine::Track& track : tracks) {
        if (track.isSelected) selected_.at(indexOf(track.kind)) = track.number;
    }
    if (status_ != Status::unknown) return;
    status_ = Status::readyToPlay;
    QMetaObject::invokeMethod(this, &LinuxPlayerItem::answerAll, Qt::QueuedConnection);
    Q_EMIT statusChanged();
}

void LinuxPlayerItem::takeFailure(const QString& reason) {
    const Status before = std::exchange(status_, Status::failed);
    error_ = reason;
    QMetaObject::invokeMethod(this, &LinuxPlayerItem::answerAll, Qt::QueuedConnection);
    if (before == Status::readyToPlay) {
        Q_EMIT failedToPlayToEnd(reason);
    } else {
        Q_EMIT statusChanged();
    }
}

}  // namespace velmora
