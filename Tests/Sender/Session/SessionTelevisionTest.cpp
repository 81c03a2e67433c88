// The encrypted session against the strict television: everything in between is real, as in
// TelevisionTest.cpp.
#include "Sender/Window.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <iterator>

namespace velmora {
namespace {

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;
using test::Misbehaviour;
using test::SimulatedPlayer;
using test::Television;
using test::TelevisionOptions;
using test::waitFor;
using testing::HasSubstr;
using testing::IsEmpty;
using Flavour = TelevisionOptions::Flavour;
using Handover = TelevisionOptions::Handover;
using Phase = RemotePlayback::Phase;

/// One window and its television, which may show a PIN.
class Pair : public test::Window {
  public:
    Pair(Clock& clock, MediaServer& server, const TelevisionOptions& options)
        : Window(clock, server), television(clock, options) {
        EXPECT_TRUE(television.listen());
        QObject::connect(&playback, &RemotePlayback::stateChanged, [this] {
            if (playback.state().phase == Phase::needsPin) playback.supply(television.pin());
        });
    }
    ~Pair() { playback.disconnect(); }
    [[nodiscard]] double shown() { return television.player().position(); }
    [[nodiscard]] bool isPlayingBehind(double seconds) {
        return phase() == Phase::playing && television.showsPicture() && shown() > seconds;
    }
    [[nodiscard]] std::string story() const {
        const QString complaints = television.complaints().join(u"; "_s);
        return (playback.state().reason + u" | "_s + complaints).toStdString();
    }

    Television television;
};

const TelevisionOptions box{.flavour = Flavour::paired, .handover = Handover::queue};
const TelevisionOptions television{.flavour = Flavour::transient, .handover = Handover::queue};
const TelevisionOptions computer{
    .flavour = Flavour::transient, .handover = Handover::queue, .model = u"MacBookPro18,3"_s};
const TelevisionOptions oldBox{.flavour = Flavour::paired, .handover = Handover::play};
const TelevisionOptions oldTelevision{.flavour = Flavour::transient, .handover = Handover::play};

TelevisionOptions with(TelevisionOptions options, test::Misbehaviours misbehaviours) {
    options.misbehaviours = std::move(misbehaviours);
    return options;
}

class SessionTelevisionTest : public test::WindowTest {};

TEST_F(SessionTelevisionTest, PlaysPausesSeeksAndEnds) {
    std::vector<std::unique_ptr<Pair>> pairs;
    const auto all = [&](const auto& holds) {
        return waitFor(
            [&] { return std::ranges::all_of(pairs, [&](const auto& pair) { return holds(*pair); }); });
    };
    const auto stories = [&] {
        std::string text;
        for (const auto& pair : pairs) text += pair->story() + '\n';
        return text;
    };
    for (const TelevisionOptions& options : {box, television, computer, oldBox, oldTelevision}) {
        pairs.push_back(std::make_unique<Pair>(clock_, *server_, options));
        pairs.back()->playback.play(pairs.back()->television.receiver(), item(20));
    }
    ASSERT_TRUE(all([](Pair& pair) { return pair.isPlayingBehind(21); })) << stories();
    for (const auto& pair : pairs) pair->playback.pause();
    ASSERT_TRUE(all([](Pair& pair) {
        return pair.phase() == Phase::paused &&
               pair.television.player().state() == SimulatedPlayer::State::paused;
    })) << stories();
    // For longer than a session lives whose events nobody answers.
    const Clock::Instant pausedAt = clock_.now();
    waitFor([&] { return clock_.now() - pausedAt > 40s; });
    for (const auto& pair : pairs) {
        EXPECT_EQ(pair->phase(), Phase::paused) << stories();
        EXPECT_NEAR(pair->playback.state().position, pair->shown(), 0.7);
        pair->playback.seek(70);
        pair->playback.resume();
    }
    ASSERT_TRUE(all([](Pair& pair) { return pair.isPlayingBehind(71); })) << stories();
    for (const auto& pair : pairs) EXPECT_NEAR(pair->playback.state().position, pair->shown(), 1.5);
    ASSERT_TRUE(all([](Pair& pair) { return pair.phase() == Phase::ended; })) << stories();
    for (const auto& pair : pairs) {
        EXPECT_THAT(pair->television.complaints(), IsEmpty()) << pair->story();
        const QString model = pair->television.receiver().model;
        const bool polls = pair == pairs[3] || pair == pairs[4];
        EXPECT_EQ(pair->television.requests().contains("GET /playback-info"), polls) << model.toStdString();
    }
}

TEST_F(SessionTelevisionTest, ComesThroughWhatReceiversAreLike) {
    const struct {
        TelevisionOptions options;
        Phase phase;
        const char* reason = "";
    } cases[] = {
        {with(box, {{Misbehaviour::refusesPtp, 0}}), Phase::playing},
        {with(box, {{Misbehaviour::sleeps, 0}}), Phase::playing},
        {with(box, {{Misbehaviour::opensEventsLate, 1}, {Misbehaviour::hidesInfo, 0}}), Phase::playing},
        {with(box, {{Misbehaviour::startsAtZero, 0}}), Phase::playing},
        {with(television, {{Misbehaviour::refusesNtp, 0}}), Phase::playing},
        {with(television, {{Misbehaviour::startsAtZero, 0}}), Phase::playing},
        {with(computer, {{Misbehaviour::asksConsent, 20}}), Phase::playing},
        {with(television, {{Misbehaviour::pausesItself, 3}}), Phase::paused},
        {with(box, {{Misbehaviour::isStoppedThere, 3}}), Phase::stopped, "at the television"},
        {with(television, {{Misbehaviour::isStoppedThere, 3}}), Phase::stopped, "at the television"},
        {with(oldBox, {{Misbehaviour::isStoppedThere, 3}}), Phase::stopped, "at the television"},
        {with(box, {{Misbehaviour::goesSilent, 5}}), Phase::dropped, "lost"},
        {with(television, {{Misbehaviour::goesSilent, 5}}), Phase::dropped, "lost"},
        {with(box, {{Misbehaviour::neverFetches, 0}, {Misbehaviour::liesInEvents, 0}}), Phase::failed,
         "never asked"},
        {with(television, {{Misbehaviour::refusesPtp, 0}, {Misbehaviour::refusesNtp, 0}}), Phase::failed},
        {with(box, {{Misbehaviour::isBusy, 0}}), Phase::failed, "busy"},
        {with(box, {{Misbehaviour::ends, 1}}), Phase::ended},
        {with(television, {{Misbehaviour::ends, 2}}), Phase::ended},
        {with(box, {{Misbehaviour::ends, 3}}), Phase::ended},
    };
    constexpr double start = 20;
    for (const auto& entry : cases) {
        SCOPED_TRACE("case " + std::to_string(&entry - cases));
        Pair pair(clock_, *server_, entry.options);
        pair.playback.play(pair.television.receiver(), item(entry.phase == Phase::ended ? 80 : start));
        waitFor([&] {
            const bool isPlaying = pair.isPlayingBehind(start + 8);
            return entry.phase == Phase::playing ? isPlaying : pair.phase() == entry.phase;
        });
        EXPECT_EQ(pair.phase(), entry.phase) << pair.story();
        EXPECT_THAT(pair.story(), HasSubstr(entry.reason));
        // One that fell silent takes no more signs of life.
        const bool isHeard = entry.phase != Phase::dropped;
        EXPECT_TRUE(!isHeard || pair.television.complaints().isEmpty()) << pair.story();
    }
}

TEST_F(SessionTelevisionTest, LeavesNothingBehind) {
    for (const TelevisionOptions& options : {box, television, oldBox}) {
        for (const bool waits : {true, false}) {
            Television tv(clock_, options);
            ASSERT_TRUE(tv.listen());
            auto window = std::make_unique<test::Window>(clock_, *server_);
            window->playback.play(tv.receiver(), item(20));
            if (options.flavour == Flavour::paired) {
                ASSERT_TRUE(window->reaches(Phase::needsPin));
                window->playback.supply(tv.pin());
            }
            ASSERT_TRUE(window->reaches(Phase::playing));
            if (waits) {
                window->playback.stop();
                ASSERT_TRUE(window->reaches(Phase::stopped));
                EXPECT_EQ(tv.player().state(), SimulatedPlayer::State::idle);
            }
            window.reset();
            const auto isOver = [&] {
                const auto ends = std::ranges::count_if(
                    tv.requests(), [](const QByteArray& request) { return request.startsWith("TEARDOWN"); });
                return ends ==
                       (options.flavour == Flavour::paired && options.handover == Handover::queue ? 2 : 1);
            };
            EXPECT_TRUE(waitFor(isOver));
            EXPECT_EQ(tv.player().state(), SimulatedPlayer::State::idle);
            EXPECT_THAT(tv.complaints(), IsEmpty()) << tv.complaints().join(u';').toStdString();
        }
    }
}

}  // namespace
}  // namespace velmora
