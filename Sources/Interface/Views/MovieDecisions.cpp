#include "Interface/Views/MovieDecisions.h"

#include "Companions/Durations.h"

#include <QCoreApplication>

#include <algorithm>
#include <cmath>

namespace velmora::MovieDecisions {

using namespace Qt::StringLiterals;

namespace {

const QString audioPrefix = u"audio:"_s;
const QString subtitlePrefix = u"subtitle:"_s;

QString tr(const char* text) {
    return QCoreApplication::translate("velmora::MovieDecisions", text);
}

QString chosenDevice(const MovieState& state) {
    return state.deviceName.value_or(QString());
}

QString handoverDevice(const MovieState& state) {
    return state.handingOverTo.value_or(tr("Apple TV"));
}

QString playOrPause(const MovieState& state) {
    return state.isPlaying ? u"pause"_s : u"play"_s;
}

void addTracks(QList<MenuRow>& rows, const QString& prefix, const QList<MovieTracks::Track>& tracks,
               const std::optional<QString>& chosen) {
    for (const MovieTracks::Track& track : tracks)
        rows.append({.identifier = prefix + track.identifier,
                     .text = track.name,
                     .sign = chosen == track.identifier ? MenuRow::Sign::chosen : MenuRow::Sign::none});
}

}  // namespace

Screen screen(const MovieState& state) {
    if (state.phase.failed()) return Screen::failed;
    return state.phase.isIdle() && !state.lastMovieTitle ? Screen::empty : Screen::movie;
}

Mode mode(const MovieState& state) {
    if (state.phase.preparing()) return Mode::preparing;
    if (!state.phase.ready()) return Mode::resume;
    if (state.handingOverTo) return Mode::handover;
    if (!state.deviceName) return Mode::waiting;
    return state.isOnAppleTV ? Mode::remote : Mode::stalled;
}

QString title(const MovieState& state) {
    const bool offersLastMovie = mode(state) == Mode::resume && state.lastMovieTitle;
    return offersLastMovie ? *state.lastMovieTitle : state.title;
}

QString playHelp(const MovieState& state) {
    switch (mode(state)) {
        case Mode::resume:
            return state.deviceName ? tr("Resume on %1 (Space)").arg(chosenDevice(state))
                                    : tr("Resume and choose an Apple TV (Space)");
        case Mode::preparing:
            return state.deviceName ? tr("Starts on %1 when ready").arg(chosenDevice(state))
                                    : tr("Choose an Apple TV (Space)");
        case Mode::waiting:
            return tr("Choose an Apple TV (Space)");
        case Mode::handover:
            return tr("Sending to %1…").arg(handoverDevice(state));
        case Mode::remote:
            return state.isPlaying ? tr("Pause (Space)") : tr("Play (Space)");
        case Mode::stalled:
            return tr("%1 didn't take it. Try again (Space)")
                .arg(state.deviceName.value_or(tr("The Apple TV")));
    }
    return {};
}

QString playSymbol(const MovieState& state) {
    switch (mode(state)) {
        case Mode::stalled:
            return u"retry"_s;
        case Mode::remote:
            return playOrPause(state);
        default:
            return u"play"_s;
    }
}

bool isPlaySolid(const MovieState& state) {
    return state.canPlayAction && (mode(state) != Mode::remote || !state.isPlaying);
}

QString airPlayHelp(const MovieState& state) {
    return state.deviceName ? tr("Playing on %1").arg(chosenDevice(state)) : tr("Choose an Apple TV");
}

bool isAirPlayLit(const MovieState& state) {
    return mode(state) == Mode::waiting;
}

Status status(const MovieState& state) {
    switch (mode(state)) {
        case Mode::preparing:
            return {.text = state.phase.preparing()->stage, .symbol = {}, .tone = Tone::quiet};
        case Mode::handover: {
            const QString text =
                state.isWaking ? tr("Waking %1…").arg(handoverDevice(state)) : playHelp(state);
            return {.text = text, .symbol = u"busy"_s, .tone = Tone::plain};
        }
        case Mode::remote: {
            const QString text = state.isPlaying ? tr("Playing on %1") : tr("Paused on %1");
            return {.text = text.arg(chosenDevice(state)), .symbol = u"tv"_s, .tone = Tone::plain};
        }
        case Mode::stalled: {
            const QString text = state.notice.isEmpty() ? withoutKey(playHelp(state)) : state.notice;
            return {.text = text, .symbol = u"warning"_s, .tone = Tone::warning};
        }
        case Mode::waiting:
            if (!state.notice.isEmpty()) return {.text = state.notice, .symbol = {}, .tone = Tone::plain};
            [[fallthrough]];
        default:
            return {.text = withoutKey(playHelp(state)), .symbol = {}, .tone = Tone::quiet};
    }
}

StillAction stillAction(const MovieState& state) {
    const Mode now = mode(state);
    if (now == Mode::resume) return StillAction::playAction;
    return now == Mode::remote && state.canControlPlayback ? StillAction::togglePlayPause : StillAction::none;
}

Disc disc(const MovieState& state) {
    switch (mode(state)) {
        case Mode::resume:
            return {.symbol = u"play"_s};
        case Mode::remote:
            return {.symbol = playOrPause(state), .onlyUnderPointer = state.isPlaying};
        default:
            return {};
    }
}

double stillOpacity(const MovieState& state) {
    return mode(state) == Mode::handover ? 0.55 : 1;
}

QString withoutKey(const QString& help) {
    const qsizetype key = help.endsWith(u')') ? help.lastIndexOf(u" ("_s) : -1;
    return key < 0 ? help : help.first(key);
}

QString percentText(const std::optional<double>& progress) {
    if (!progress || !std::isfinite(*progress)) return {};
    return tr("%1%").arg(static_cast<int>(std::clamp(*progress, 0.0, 1.0) * 100));
}

QString widestTime(double duration) {
    QString text = Durations::remaining(duration);
    for (QChar& character : text)
        if (character.isDigit()) character = u'0';
    return text;
}

QString spokenPosition(const MovieState::Timeline& timeline) {
    const QString position = Durations::spoken(timeline.position);
    return timeline.duration > 0 ? tr("%1 of %2").arg(position, Durations::spoken(timeline.duration))
                                 : position;
}

bool canChooseTracks(const MovieTracks& tracks) {
    return !tracks.audio.isEmpty() || !tracks.subtitles.isEmpty();
}

QList<MenuRow> mediaRows(const MovieTracks& tracks) {
    QList<MenuRow> rows;
    if (!tracks.audio.isEmpty()) {
        rows.append(MenuRow::heading(u"audio"_s, tr("Audio")));
        addTracks(rows, audioPrefix, tracks.audio, tracks.chosenAudio);
    }
    if (tracks.subtitles.isEmpty()) return rows;
    if (!rows.isEmpty()) rows.append(MenuRow::line(u"line"_s));
    rows.append(MenuRow::heading(u"subtitles"_s, tr("Subtitles")));
    rows.append({.identifier = subtitlePrefix,
                 .text = tr("Off"),
                 .sign = tracks.chosenSubtitle ? MenuRow::Sign::none : MenuRow::Sign::chosen});
    addTracks(rows, subtitlePrefix, tracks.subtitles, tracks.chosenSubtitle);
    return rows;
}

TrackChoice trackOf(const QString& rowIdentifier) {
    const bool isAudio = rowIdentifier.startsWith(audioPrefix);
    const QString track = rowIdentifier.sliced(isAudio ? audioPrefix.size() : subtitlePrefix.size());
    return {.isAudio = isAudio, .identifier = track.isEmpty() ? std::nullopt : std::optional(track)};
}

}  // namespace velmora::MovieDecisions
