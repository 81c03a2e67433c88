#pragma once

#include "Desk/Application.h"
#include "Desk/Movies.h"
#include "Desk/TelevisionProcess.h"
#include "Support/WaitFor.h"

#include <gtest/gtest.h>

#include <cmath>

namespace velmora::test {

/// The program on a desktop of its own, and its user.
class Story : public testing::Test {
  protected:
    void SetUp() override {
        if (Desk::whatIsMissing() == u"Xvfb") GTEST_SKIP() << "There is no Xvfb.";
        desk = std::make_unique<Desk>();
        ASSERT_EQ(desk->problem(), QString());
    }

    /// Makes a movie among the user's; its path.
    [[nodiscard]] QString movie(const QString& name, const MovieKind& kind = {.seconds = 5}) const {
        const QString path = desk->path(QStringLiteral("movies/") + name);
        EXPECT_TRUE(makeMovie(path, kind));
        return path;
    }
    [[nodiscard]] static MovieKind lastingTenMinutes() {
        return {
            .seconds = 600, .size = {160, 90}, .picture = QStringLiteral("color=navy"), .hasSound = false};
    }

    /// From the picker until the window shows that the movie is there.
    [[nodiscard]] static bool playOn(const Application& velmora, TelevisionProcess& television) {
        return velmora.chooseTelevision(television.name()) && television.says(QStringLiteral("playing")) &&
               velmora.find(QStringLiteral("alert message"),
                            QStringLiteral("Playing on %1").arg(television.name()));
    }

    /// Seconds, as the desktop is told.
    [[nodiscard]] static double position(const BusPlayer& player) {
        return player.property(QStringLiteral("Position")).toDouble() / 1e6;
    }
    [[nodiscard]] static bool isNear(const BusPlayer& player, double seconds, double tolerance = 1) {
        return waitFor([&] { return std::abs(position(player) - seconds) < tolerance; });
    }
    /// The one for a window.
    [[nodiscard]] static std::optional<BusPlayer> playerOf(const Application& velmora, const QString& title) {
        for (const BusPlayer& player : velmora.players())
            if (player.metadata()[QStringLiteral("xesam:title")] == title) return player;
        return std::nullopt;
    }
    /// What a screen reader sees, for a failed test's message.
    [[nodiscard]] static const char* seen(const Application& velmora) {
        static QByteArray text;
        const auto tree = velmora.tree();
        return (text = (tree ? tree->toText() : QStringLiteral("nothing")).toUtf8() + velmora.log().toUtf8())
            .constData();
    }

    std::unique_ptr<Desk> desk;
};

}  // namespace velmora::test
