#pragma once

#include "Interface/Views/MenuRow.h"
#include "Interface/Views/MovieState.h"

/// What a window shows in which state. Pure functions; the texts are in the user's language, the symbols are
/// names of files in Symbols/.
namespace velmora::MovieDecisions {

enum class Screen { empty, failed, movie };
enum class Mode { resume, preparing, waiting, handover, remote, stalled };
enum class StillAction { none, playAction, togglePlayPause };
enum class Tone { quiet, plain, warning };

/// The line under the title.
struct Status {
    QString text;
    QString symbol;  ///< "busy" turns; empty: none
    Tone tone = Tone::quiet;
};

/// The round sign that lies on the still.
struct Disc {
    QString symbol;  ///< empty: none
    bool onlyUnderPointer = false;
};

[[nodiscard]] Screen screen(const MovieState& state);
[[nodiscard]] Mode mode(const MovieState& state);

[[nodiscard]] QString title(const MovieState& state);
[[nodiscard]] QString playHelp(const MovieState& state);
[[nodiscard]] QString playSymbol(const MovieState& state);
/// The application waits for the user to press it.
[[nodiscard]] bool isPlaySolid(const MovieState& state);
[[nodiscard]] QString airPlayHelp(const MovieState& state);
/// The AirPlay button is what to press next.
[[nodiscard]] bool isAirPlayLit(const MovieState& state);
[[nodiscard]] Status status(const MovieState& state);

[[nodiscard]] StillAction stillAction(const MovieState& state);
[[nodiscard]] Disc disc(const MovieState& state);
/// The picture steps back while it is on its way to a television.
[[nodiscard]] double stillOpacity(const MovieState& state);

/// A help text without the key at its end: what a screen reader and the status line say.
[[nodiscard]] QString withoutKey(const QString& help);

/// "42%"; empty when unknown.
[[nodiscard]] QString percentText(const std::optional<double>& progress);
/// The widest text that the labels of a timeline of this length can show.
[[nodiscard]] QString widestTime(double duration);
/// "41 minutes of 1 hour 38"
[[nodiscard]] QString spokenPosition(const MovieState::Timeline& timeline);

[[nodiscard]] bool canChooseTracks(const MovieTracks& tracks);
/// Audio where there is a choice, then subtitles with "Off" first. The identifiers are those that
/// `trackOf` understands.
[[nodiscard]] QList<MenuRow> mediaRows(const MovieTracks& tracks);

struct TrackChoice {
    bool isAudio = false;
    std::optional<QString> identifier;  ///< absent: subtitles off
};
[[nodiscard]] TrackChoice trackOf(const QString& rowIdentifier);

}  // namespace velmora::MovieDecisions
