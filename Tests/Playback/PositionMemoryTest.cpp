#include "Playback/PositionMemory.h"
#include "Support/ScriptedSystem.h"

#include <gtest/gtest.h>

#include <limits>

using namespace Qt::StringLiterals;
using velmora::PositionMemory;
using velmora::test::MapPreferences;

namespace {

TEST(PositionMemory, RemembersByHowFarTheMovieIs) {
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    struct Case {
        double position, duration;
        std::optional<double> saved;
        bool finished;
    };
    // Each begins with a position of 300 s noted earlier.
    const Case cases[] = {
        {2232, 5400, 2232, false}, {5340, 5400, 5340, false}, {5340.1, 5400, {}, true},
        {5400, 5400, {}, true},    {10, 5400, 300, false},    {10.5, 5400, 10.5, false},
        {2232, 0, 2232, false},    {2232, nan, 2232, false},  {nan, 5400, 300, false},
        {30, 40, {}, true},
    };
    for (const Case& expected : cases) {
        MapPreferences preferences;
        PositionMemory memory(preferences);
        const QUrl movie = QUrl::fromLocalFile(u"/films/Movie.mkv"_s);
        memory.remember(movie, 300, 0);
        memory.remember(movie, expected.position, expected.duration);
        EXPECT_EQ(memory.savedPosition(movie), expected.saved) << expected.position;
        EXPECT_EQ(preferences.values.contains(u"finished:/films/Movie.mkv"_s), expected.finished)
            << expected.position;
        memory.remember(movie, 20, 5400);
        EXPECT_EQ(memory.savedPosition(movie), 20) << "Seen again, it is no longer finished";
        EXPECT_FALSE(preferences.values.contains(u"finished:/films/Movie.mkv"_s));
    }
}

TEST(PositionMemory, KnowsAMovieByItsStandardizedPath) {
    MapPreferences preferences;
    PositionMemory memory(preferences);
    memory.remember(QUrl::fromLocalFile(u"/films/x/../A%20 ü.mkv"_s), 100, 200);
    EXPECT_EQ(preferences.values.keys(),
              (QStringList{u"duration:/films/A%20 ü.mkv"_s, u"position:/films/A%20 ü.mkv"_s}));
    const QUrl plain = QUrl::fromLocalFile(u"/films/A%20 ü.mkv"_s);
    EXPECT_EQ(memory.savedDuration(plain), 200);
    memory.forget(plain);
    EXPECT_EQ(memory.savedPosition(plain), std::nullopt);
    // Ten seconds sharp, as an older version may have stored them, are not worth resuming.
    preferences.set(u"position:/films/A%20 ü.mkv"_s, 10.0);
    EXPECT_EQ(memory.savedPosition(plain), std::nullopt);
}

}  // namespace
