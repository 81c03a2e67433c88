#include "Terminal/CommandLine.h"

#include <gtest/gtest.h>

#include <tuple>

using namespace Qt::StringLiterals;
using velmora::CommandLine;
using Action = CommandLine::Action;

namespace {

CommandLine casting(const QString& television, const QString& movie) {
    CommandLine line;
    line.television = television;
    line.movies = {movie};
    return line;
}

auto parts(const CommandLine& line) {
    return std::tie(line.action, line.television, line.movies, line.startOver, line.reEncode);
}

TEST(CommandLine, ReadsWhatItUnderstands) {
    CommandLine everything = casting(u"tv"_s, u"a.mkv"_s);
    everything.startOver = everything.reEncode = true;
    CommandLine preparing;
    preparing.action = Action::prepareOnly;
    preparing.movies = {u"a.mkv"_s, u"-b.mkv"_s, u"--help"_s};
    const std::pair<QString, CommandLine> cases[] = {
        {u"--to tv a.mkv"_s, casting(u"tv"_s, u"a.mkv"_s)},
        {u"a.mkv --to=tv.local:36667"_s, casting(u"tv.local:36667"_s, u"a.mkv"_s)},
        {u"--to 10.0.0.5:1 a.mkv"_s, casting(u"10.0.0.5:1"_s, u"a.mkv"_s)},
        {u"--to [::1]:7001 a.mkv"_s, casting(u"[::1]:7001"_s, u"a.mkv"_s)},
        {u"--start-over --to tv --re-encode -- a.mkv"_s, everything},
        {u"--prepare-only a.mkv -- -b.mkv --help"_s, preparing},
    };
    for (const auto& [typed, expected] : cases) {
        const auto read = CommandLine::parse(typed.split(u' '));
        ASSERT_TRUE(read) << typed.toStdString() << ": " << read.error().toStdString();
        EXPECT_TRUE(parts(*read) == parts(expected)) << typed.toStdString();
    }
    const auto named = CommandLine::parse({u"--to= Living Room "_s, u"a.mkv"_s});
    EXPECT_EQ(named->television, u"Living Room"_s);
    const auto forgetting = CommandLine::parse({u"--forget"_s, u"Living Room"_s});
    EXPECT_EQ(forgetting->action, Action::forget);
    EXPECT_EQ(forgetting->television, u"Living Room"_s);
    EXPECT_EQ(CommandLine::parse({u"--list"_s})->action, Action::list);
    EXPECT_EQ(CommandLine::parse({u"--help"_s})->action, Action::help);
    EXPECT_EQ(CommandLine::parse({u"--version"_s, u"x"_s, u"y"_s})->action, Action::version);
}

TEST(CommandLine, RefusesTheRestWithAReason) {
    const std::pair<QString, QString> cases[] = {
        {u"--to tv"_s, u"which movie"_s},
        {u"a.mkv"_s, u"--list shows"_s},
        {u"--to tv a.mkv b.mkv"_s, u"one movie"_s},
        {u"--listen"_s, u"no option --listen"_s},
        {u"--list a.mkv"_s, u"leave “a.mkv” out"_s},
        {u"--forget"_s, u"wants a television"_s},
        {u"a.mkv --to"_s, u"wants a television"_s},
        {u"--to --re-encode a.mkv"_s, u"wants a television"_s},
        {u"--to= a.mkv"_s, u"name is empty"_s},
        {u"--prepare-only --to tv a.mkv"_s, u"leave --to out"_s},
        {u"--prepare-only --start-over a.mkv"_s, u"leave --start-over out"_s},
        {u"--prepare-only"_s, u"which movie"_s},
    };
    for (const auto& [typed, reason] : cases) {
        const auto read = CommandLine::parse(typed.split(u' '));
        ASSERT_FALSE(read) << typed.toStdString();
        EXPECT_TRUE(read.error().contains(reason)) << read.error().toStdString();
    }
}

}  // namespace
