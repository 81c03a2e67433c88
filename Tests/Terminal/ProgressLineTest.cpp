#include "Companions/Durations.h"
#include "Terminal/ProgressLine.h"
#include "Terminal/TerminalText.h"

#include <gtest/gtest.h>

#include <limits>

using namespace Qt::StringLiterals;
using namespace velmora;

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
const QString repacking = u"Repacking for Apple TV, no re-encode"_s;

TEST(ProgressLine, SpeaksOfTimeAsPeopleDo) {
    const std::pair<double, QString> clock[] = {
        {0, u"0:00"_s},  {59.9, u"0:59"_s},     {2232, u"37:12"_s},    {6723, u"1:52:03"_s},
        {-3, u"0:00"_s}, {infinity, u"0:00"_s}, {36000, u"10:00:00"_s}};
    for (const auto& [seconds, text] : clock) EXPECT_EQ(Durations::clockTime(seconds), text);
    const std::pair<double, QString> left[] = {{0, u"Less than a minute left"_s},
                                               {59.9, u"Less than a minute left"_s},
                                               {60, u"1 min left"_s},
                                               {170, u"3 min left"_s},
                                               {3599, u"1 h 0 min left"_s},
                                               {4320, u"1 h 12 min left"_s},
                                               {infinity, QString()}};
    for (const auto& [seconds, text] : left) EXPECT_EQ(Durations::timeLeft(seconds), text) << seconds;
}

TEST(ProgressLine, DropsTheLessImportantAsTheTerminalNarrows) {
    const Preparer::Update update{0.42, repacking, 170};
    const std::pair<int, QString> cases[] = {
        {79, u" 42 %  #######------------  Repacking for Apple TV, no re-encode  3 min left"_s},
        {50, u" 42 %  #####-------  Repacking for Ap…  3 min left"_s},
        {35, u" 42 %  ####------  3 min left"_s},
        {20, u" 42 %  3 min left"_s},
        {10, u" 42 %"_s},
        {3, u" 4…"_s},
    };
    for (const auto& [columns, text] : cases)
        EXPECT_EQ(ProgressLine::preparing(update, {columns, false}).toStdString(), text.toStdString());
    EXPECT_EQ(ProgressLine::preparing({std::nullopt, u"Looking at the file…"_s, {}}, {79, true}),
              u"Looking at the file…"_s);
    EXPECT_EQ(ProgressLine::preparing({1.5, {}, {}}, {20, true}), u"100 %  ██████████"_s);
}

TEST(ProgressLine, NeverOutgrowsTheTerminal) {
    const RemotePlayback::State playing{RemotePlayback::Phase::playing, 2232, 6723, {}};
    for (int columns = 0; columns < 120; ++columns) {
        const ProgressLine::Look look{columns, true};
        for (const double eta : {1.0, 5000.0}) {
            const QString line = ProgressLine::preparing({0.5, repacking, eta}, look);
            EXPECT_LE(TerminalText::columns(line), columns) << line.toStdString();
        }
        const QString line = ProgressLine::playing(playing, u"居間のテレビ Wohnzimmer"_s, look);
        EXPECT_LE(TerminalText::columns(line), columns) << line.toStdString();
    }
}

TEST(ProgressLine, ShowsWhatTheTelevisionDoes) {
    using Phase = RemotePlayback::Phase;
    const ProgressLine::Look look{79, true};
    EXPECT_EQ(ProgressLine::playing({Phase::playing, 2232, 6723, {}}, u"Den"_s, look),
              u"37:12 / 1:52:03  Playing on Den  (space, arrows, q)"_s);
    EXPECT_EQ(ProgressLine::playing({Phase::paused, 12, 0, {}}, u"Den"_s, {20, true}),
              u"0:12  Paused on Den"_s);
    EXPECT_EQ(ProgressLine::playing({Phase::connecting, 0, 0, {}}, u"De\x1bn"_s, look),
              u"Connecting to De\uFFFDn…"_s);
}

TEST(ProgressLine, PlainLinesComeAtNewStagesAndTenths) {
    ProgressLine::Plain plain;
    QStringList lines;
    for (const double progress : {0.0, 0.05, 0.1, 0.11, 0.37, 0.38, 1.0}) {
        if (const auto line =
                plain.line({progress, u"Repacking"_s, progress > 0.3 ? std::optional(90.0) : std::nullopt}))
            lines << *line;
    }
    if (const auto line = plain.line({std::nullopt, u"Finishing up…"_s, {}})) lines << *line;
    EXPECT_EQ(lines, (QStringList{u"Repacking"_s, u"Repacking: 10 %"_s, u"Repacking: 30 %, 2 min left"_s,
                                  u"Repacking: 100 %, 2 min left"_s, u"Finishing up…"_s}));
}

TEST(TerminalText, LeavesNothingForTheTerminalToObey) {
    const QString hostile = u"a\x1b[2Jb\rc\u009Bd\u202Ee\nf"_s;
    EXPECT_EQ(TerminalText::printable(hostile), u"a\uFFFD[2Jb\uFFFDc\uFFFDd\uFFFDe\nf"_s);
    EXPECT_EQ(TerminalText::columns(u"e\u0301電🎬"_s), 5);
    EXPECT_EQ(TerminalText::fit(u"電影院"_s, 4), u"電…"_s);
}

}  // namespace
