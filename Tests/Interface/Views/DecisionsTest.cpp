#include "Companions/Durations.h"
#include "Interface/Views/MovieDecisions.h"
#include "Interface/Views/PickerDecisions.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using MovieDecisions::Mode;
using MovieDecisions::Screen;
using MovieDecisions::StillAction;
using MovieDecisions::Tone;

const SessionPhase ready(SessionPhase::Playback{.source = {}, .file = {}, .note = {}, .subtitleTitles = {}});
const SessionPhase preparing(SessionPhase::Preparation{.source = {}, .stage = u"Repacking"_s});
const SessionPhase failed(SessionPhase::Failure{.source = {}, .message = u"No."_s});

MovieState on(const SessionPhase& phase, const std::optional<QString>& device = {}) {
    MovieState state;
    state.phase = phase;
    state.title = u"Session"_s;
    state.deviceName = device;
    return state;
}

MovieState remote(bool isPlaying, bool canControl = true) {
    MovieState state = on(ready, u"Den"_s);
    state.isOnAppleTV = true;
    state.isPlaying = isPlaying;
    state.canControlPlayback = canControl;
    state.canPlayAction = true;
    return state;
}

MovieState sending(bool isWaking) {
    MovieState state = on(ready, u"Den"_s);
    state.handingOverTo = u"Den"_s;
    state.isWaking = isWaking;
    return state;
}

MovieState offering(const std::optional<QString>& device) {
    MovieState state = on({}, device);
    state.lastMovieTitle = u"Last"_s;
    state.canPlayAction = true;
    return state;
}

struct Expected {
    Screen screen;
    Mode mode;
    const char* title;
    const char* help;
    const char* status;
    const char* statusSymbol;
    Tone tone;
    const char* glyph;
    const char* disc;
    StillAction still;
    bool isSolid;
};

TEST(MovieDecisions, EveryStateHasItsScreen) {
    const struct {
        MovieState state;
        Expected is;
    } cases[] = {
        {on({}),
         {Screen::empty, Mode::resume, "Session", "Resume and choose an Apple TV (Space)",
          "Resume and choose an Apple TV", "", Tone::quiet, "play", "play", StillAction::playAction, false}},
        {on(failed),
         {Screen::failed, Mode::resume, "Session", "Resume and choose an Apple TV (Space)",
          "Resume and choose an Apple TV", "", Tone::quiet, "play", "play", StillAction::playAction, false}},
        {offering({}),
         {Screen::movie, Mode::resume, "Last", "Resume and choose an Apple TV (Space)",
          "Resume and choose an Apple TV", "", Tone::quiet, "play", "play", StillAction::playAction, true}},
        {offering(u"Den (up)"_s),
         {Screen::movie, Mode::resume, "Last", "Resume on Den (up) (Space)", "Resume on Den (up)", "",
          Tone::quiet, "play", "play", StillAction::playAction, true}},
        {on(preparing),
         {Screen::movie, Mode::preparing, "Session", "Choose an Apple TV (Space)", "Repacking", "",
          Tone::quiet, "play", "", StillAction::none, false}},
        {on(preparing, u"Den"_s),
         {Screen::movie, Mode::preparing, "Session", "Starts on Den when ready", "Repacking", "", Tone::quiet,
          "play", "", StillAction::none, false}},
        {on(ready),
         {Screen::movie, Mode::waiting, "Session", "Choose an Apple TV (Space)", "Choose an Apple TV", "",
          Tone::quiet, "play", "", StillAction::none, false}},
        {sending(false),
         {Screen::movie, Mode::handover, "Session", "Sending to Den…", "Sending to Den…", "busy", Tone::plain,
          "play", "", StillAction::none, false}},
        {sending(true),
         {Screen::movie, Mode::handover, "Session", "Sending to Den…", "Waking Den…", "busy", Tone::plain,
          "play", "", StillAction::none, false}},
        {remote(true),
         {Screen::movie, Mode::remote, "Session", "Pause (Space)", "Playing on Den", "tv", Tone::plain,
          "pause", "pause", StillAction::togglePlayPause, false}},
        {remote(false),
         {Screen::movie, Mode::remote, "Session", "Play (Space)", "Paused on Den", "tv", Tone::plain, "play",
          "play", StillAction::togglePlayPause, true}},
        {remote(false, false),
         {Screen::movie, Mode::remote, "Session", "Play (Space)", "Paused on Den", "tv", Tone::plain, "play",
          "play", StillAction::none, true}},
        {on(ready, u"Den"_s),
         {Screen::movie, Mode::stalled, "Session", "Den didn't take it. Try again (Space)",
          "Den didn't take it. Try again", "warning", Tone::warning, "retry", "", StillAction::none, false}},
    };
    for (const auto& [state, is] : cases) {
        const QString help = MovieDecisions::playHelp(state);
        const MovieDecisions::Status status = MovieDecisions::status(state);
        SCOPED_TRACE(qPrintable(help));
        EXPECT_EQ(MovieDecisions::screen(state), is.screen);
        EXPECT_EQ(MovieDecisions::mode(state), is.mode);
        EXPECT_EQ(MovieDecisions::title(state), QString::fromUtf8(is.title));
        EXPECT_EQ(help, QString::fromUtf8(is.help));
        EXPECT_EQ(status.text, QString::fromUtf8(is.status));
        EXPECT_EQ(status.symbol, QString::fromUtf8(is.statusSymbol));
        EXPECT_EQ(status.tone, is.tone);
        EXPECT_EQ(MovieDecisions::playSymbol(state), QString::fromUtf8(is.glyph));
        EXPECT_EQ(MovieDecisions::disc(state).symbol, QString::fromUtf8(is.disc));
        EXPECT_EQ(MovieDecisions::stillAction(state), is.still);
        EXPECT_EQ(MovieDecisions::isPlaySolid(state), is.isSolid);
    }
    EXPECT_TRUE(MovieDecisions::disc(remote(true)).onlyUnderPointer);
    EXPECT_FALSE(MovieDecisions::disc(remote(false)).onlyUnderPointer);
}

TEST(MovieDecisions, TimesForEyesAndEars) {
    const struct {
        double seconds;
        const char* clock;
        const char* left;
        const char* spoken;
    } cases[] = {
        {-1, "0:00", "Less than a minute left", "0 seconds"},
        {59.9, "0:59", "Less than a minute left", "59 seconds"},
        {180, "3:00", "3 min left", "3 minutes"},
        {2467, "41:07", "41 min left", "41 minutes"},
        {4320, "1:12:00", "1 h 12 min left", "1 hour 12"},
        {7200, "2:00:00", "2 h 0 min left", "2 hours"},
        {27667, "7:41:07", "7 h 41 min left", "7 hours 41"},
        {qQNaN(), "0:00", "", "0 seconds"},
    };
    for (const auto& [seconds, clock, left, spoken] : cases) {
        EXPECT_EQ(Durations::clockTime(seconds), QString::fromUtf8(clock));
        EXPECT_EQ(Durations::timeLeft(seconds), QString::fromUtf8(left));
        EXPECT_EQ(Durations::spoken(seconds), QString::fromUtf8(spoken));
    }
    EXPECT_EQ(MovieDecisions::widestTime(5900), u"−0:00:00"_s);
    EXPECT_EQ(MovieDecisions::percentText(0.999), u"99%"_s);
    EXPECT_EQ(MovieDecisions::percentText({}), QString());
    EXPECT_EQ(MovieDecisions::spokenPosition({2467, 5900}), u"41 minutes of 1 hour 38"_s);
}

QStringList shown(const QList<MenuRow>& rows) {
    QStringList lines;
    for (const MenuRow& row : rows) {
        const char* const signs[] = {"", " ✓", " 🔒", " …"};
        const QString detail = row.detail.isEmpty() ? QString() : u" / "_s + row.detail;
        lines.append((row.canChoose || row.kind != MenuRow::Kind::choice ? QString() : u"("_s) + row.text +
                     detail + QString::fromUtf8(signs[static_cast<int>(row.sign)]));
    }
    return lines;
}

TEST(MovieDecisions, MediaMenuOffersWhatThereIs) {
    const MovieTracks::Track english{u"1"_s, u"English"_s};
    const MovieTracks::Track dutch{u"2"_s, u"Dutch"_s};
    const MovieTracks both{
        .audio = {english, dutch}, .subtitles = {dutch}, .chosenAudio = u"2"_s, .chosenSubtitle = {}};
    EXPECT_EQ(
        shown(MovieDecisions::mediaRows(both)),
        (QStringList{u"Audio"_s, u"English"_s, u"Dutch ✓"_s, {}, u"Subtitles"_s, u"Off ✓"_s, u"Dutch"_s}));
    const MovieTracks subtitles{
        .audio = {}, .subtitles = {dutch}, .chosenAudio = {}, .chosenSubtitle = u"2"_s};
    const QList<MenuRow> rows = MovieDecisions::mediaRows(subtitles);
    EXPECT_EQ(shown(rows), (QStringList{u"Subtitles"_s, u"Off"_s, u"Dutch ✓"_s}));
    EXPECT_EQ(MovieDecisions::trackOf(rows[1].identifier).identifier, std::nullopt);
    EXPECT_EQ(MovieDecisions::trackOf(rows[2].identifier).identifier, u"2"_s);
    EXPECT_TRUE(MovieDecisions::trackOf(MovieDecisions::mediaRows(both)[1].identifier).isAudio);
    EXPECT_FALSE(MovieDecisions::canChooseTracks({}));
}

TEST(PickerDecisions, TelevisionsByNameThoseWithoutVideoLast) {
    const Clock::Instant now{100s};
    PickerDecisions::Routes routes;
    routes.now = now;
    routes.televisions = {
        {.identifier = u"k"_s, .name = u"Attic Speaker"_s, .cannotShow = u"plays sound only"_s},
        {.identifier = u"s"_s, .name = u"Studio"_s, .nextTry = now + 23500ms},
        {.identifier = u"l"_s, .name = u"living room"_s, .asks = Television::Asks::code},
        {.identifier = u"d"_s, .name = u"Den"_s},
    };
    routes.chosen = u"d"_s;
    EXPECT_EQ(
        shown(PickerDecisions::rows(routes)),
        (QStringList{u"This computer"_s, u"Den ✓"_s, u"living room / Asks for a code 🔒"_s,
                     u"(Studio / Refused. Next try in 0:24"_s, u"(Attic Speaker / Plays sound only"_s}));
    // What comes later is appended, and a chosen one that is gone stays.
    routes.order = {u"l"_s, u"s"_s};
    routes.chosen = u"x"_s;
    routes.chosenName = u"Cellar"_s;
    EXPECT_EQ(PickerDecisions::order(routes), (QStringList{u"l"_s, u"s"_s, u"x"_s, u"d"_s, u"k"_s}));
}

TEST(PickerDecisions, SaysWhenThereIsNone) {
    PickerDecisions::Routes routes;
    EXPECT_EQ(shown(PickerDecisions::rows(routes)).last(), u"(Looking for televisions… …"_s);
    routes.hasLookedLong = true;
    EXPECT_EQ(shown(PickerDecisions::rows(routes)).last(), u"(No television found"_s);
    routes.unavailableReason = u"Avahi is not running."_s;
    EXPECT_EQ(shown(PickerDecisions::rows(routes)).last(), u"(No television found / Avahi is not running."_s);
}

TEST(PickerDecisions, QuestionsCountDown) {
    const Clock::Instant now{100s};
    TelevisionQuestion question{.asks = Television::Asks::code, .television = u"Den"_s};
    PickerDecisions::QuestionTexts texts = PickerDecisions::question(question, now);
    EXPECT_EQ(texts.title, u"Enter the code for Den"_s);
    EXPECT_EQ(texts.error, QString());
    EXPECT_TRUE(texts.canAnswer);
    question.wasWrong = true;
    question.nextTry = now + 24s;
    texts = PickerDecisions::question(question, now);
    EXPECT_EQ(texts.error, u"That code didn't match. Try again in 0:24."_s);
    EXPECT_FALSE(texts.canAnswer);
    question.asks = Television::Asks::password;
    texts = PickerDecisions::question(question, now + 24s);
    EXPECT_EQ(texts.error, u"That password didn't match."_s);
    EXPECT_FALSE(texts.canAnswer) << "before it is asked again";
}

}  // namespace
}  // namespace velmora
