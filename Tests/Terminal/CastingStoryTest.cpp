// What velmora-cast does over a time that no test waits for: every part is the real one, but the clock.
#include "Platform/Linux/SettingsFile.h"
#include "Sender/Discovery/Discovery.h"
#include "Sender/Discovery/KnownReceivers.h"
#include "Support/VirtualClock.h"
#include "Support/WaitFor.h"
#include "Television/Television.h"
#include "Terminal/Casting.h"
#include "Terminal/Terminal.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

using namespace Qt::StringLiterals;
using test::Misbehaviour;
using test::waitFor;
using Shown = test::SimulatedPlayer::State;

class CastingStory : public testing::Test {
  protected:
    ~CastingStory() override {
        casting->interrupt();
        EXPECT_TRUE(waitFor([this] { return status == 130; }));
        EXPECT_EQ(television->player().state(), Shown::idle);
        EXPECT_EQ(television->complaints(), QStringList());
    }

    void switchOn(test::Television::Options options = {}) {
        options.port = port;
        television = std::make_unique<test::Television>(clock, options);
        ASSERT_TRUE(television->listen());
        port = television->receiver().port;
    }
    void cast(const char* movie = "long.mp4") {
        line.television = u"127.0.0.1:%1"_s.arg(port);
        line.movies = {QStringLiteral(VELMORA_SAMPLE_MOVIES "/") + QString::fromLatin1(movie)};
        line.startOver = true;
        casting.emplace(line, Casting::World{terminal, clock, settings, discovery, {&credentials, &known}});
        QObject::connect(&*casting, &Casting::finished, [this](int exitStatus) { status = exitStatus; });
        casting->start();
    }
    [[nodiscard]] bool isPlaying() { return television->player().state() == Shown::playing; }

    test::FastClock clock{10};
    std::unique_ptr<test::Television> television;
    quint16 port = 0;
    Terminal terminal{false};
    SettingsFile settings{u"casting-story"_s};
    Discovery discovery{clock};
    KnownReceivers known{settings};
    SettingsFile secrets{u"casting-story.secrets"_s};
    CredentialStore credentials{clock, secrets};
    CommandLine line;
    std::optional<int> status;
    std::optional<Casting> casting;
};

TEST_F(CastingStory, OutwaitsATelevisionThatStartsSlowly) {
    // Longer than a session waits by itself.
    switchOn({.misbehaviours = {{Misbehaviour::asksConsent, 25}},
              .flavour = test::TelevisionOptions::Flavour::transient,
              .handover = test::TelevisionOptions::Handover::queue,
              .model = u"Mac14,3"_s});
    cast();
    EXPECT_TRUE(waitFor([this] { return isPlaying() && television->player().position() > 3; }));
}

TEST_F(CastingStory, ReturnsToATelevisionThatWasAwayForLong) {
    switchOn();
    cast();
    ASSERT_TRUE(waitFor([this] { return isPlaying() && television->player().position() > 20; }));
    television.reset();
    const Clock::Instant lost = clock.now();
    ASSERT_TRUE(waitFor([&] { return clock.now() - lost > std::chrono::seconds(15); }));
    switchOn();
    ASSERT_TRUE(waitFor([this] { return isPlaying(); }));
    const double there = television->player().position();
    EXPECT_GE(there, 18);
    EXPECT_LT(there, 40);
    EXPECT_TRUE(waitFor([&] { return television->player().position() > there + 3; })) << "and goes on";
}

TEST_F(CastingStory, GoesThroughTheTracks) {
    switchOn();
    cast("languages.mp4");
    ASSERT_TRUE(waitFor([this] { return isPlaying() && television->player().position() > 8; }));
    for (const Key key : {Key::sound, Key::subtitles}) {
        const QUrl before = television->player().movie().url;
        Q_EMIT terminal.keyPressed(key);
        ASSERT_TRUE(waitFor([&] { return isPlaying() && television->player().movie().url != before; }));
        EXPECT_GT(television->player().position(), 7);
        const double there = television->player().position();
        EXPECT_TRUE(waitFor([&] { return television->player().position() > there + 5; }));
    }
}

}  // namespace
}  // namespace velmora
