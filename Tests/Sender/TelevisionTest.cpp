// The sender against televisions that are strict, and against ones that misbehave: everything in between is
// real, sockets and media server included. Time runs faster than it does for a viewer.
#include "Sender/Window.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <map>
#include <span>

namespace velmora {
namespace {

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;
using test::Misbehaviour;
using test::Misbehaviours;
using test::movieSeconds;
using test::Pair;
using test::SimulatedPlayer;
using test::TelevisionOptions;
using test::waitFor;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Flavour = TelevisionOptions::Flavour;
using Handover = TelevisionOptions::Handover;
using Phase = RemotePlayback::Phase;

const TelevisionOptions plain{};
const TelevisionOptions box{.flavour = Flavour::paired, .handover = Handover::queue};
const TelevisionOptions television{.flavour = Flavour::transient, .handover = Handover::queue};
const TelevisionOptions computer{
    .flavour = Flavour::transient, .handover = Handover::queue, .model = u"MacBookPro18,3"_s};
const TelevisionOptions oldBox{.flavour = Flavour::paired};
const TelevisionOptions oldTelevision{.flavour = Flavour::transient};

class TelevisionTest : public test::WindowTest {
  protected:
    Pair& add(const TelevisionOptions& options, double start = 0, const QString& file = u"movie.mp4"_s) {
        pairs_.push_back(std::make_unique<Pair>(clock_, *server_, options));
        pairs_.back()->playback.play(pairs_.back()->television.receiver(), item(start, file));
        return *pairs_.back();
    }
    [[nodiscard]] bool all(const std::function<bool(Pair& pair)>& holds) {
        return waitFor(
            [&] { return std::ranges::all_of(pairs_, [&](const auto& pair) { return holds(*pair); }); });
    }
    [[nodiscard]] std::string stories() const {
        std::string text;
        for (const auto& pair : pairs_) text += pair->story() + '\n';
        return text;
    }
    [[nodiscard]] static auto requests(const Pair& pair, const char* start) {
        return std::ranges::count_if(pair.television.requests(),
                                     [=](const QByteArray& request) { return request.startsWith(start); });
    }

    std::vector<std::unique_ptr<Pair>> pairs_;
};

TEST_F(TelevisionTest, PlaysPausesSeeksAndEnds) {
    for (const auto& options : {plain, box, television, computer, oldBox, oldTelevision}) add(options, 20);
    ASSERT_TRUE(all([](Pair& pair) { return pair.isPlayingBehind(21); })) << stories();
    for (const auto& pair : pairs_) {
        EXPECT_GE(pair->playback.state().position, 20);
        EXPECT_DOUBLE_EQ(pair->playback.state().duration, movieSeconds);
        pair->playback.pause();
    }
    ASSERT_TRUE(all([](Pair& pair) {
        return pair.phase() == Phase::paused &&
               pair.television.player().state() == SimulatedPlayer::State::paused;
    })) << stories();
    // For longer than a television bears silence, and than a session lives whose events nobody answers.
    const Clock::Instant pausedAt = clock_.now();
    EXPECT_TRUE(waitFor([&] { return clock_.now() - pausedAt > 60s; }));
    for (const auto& pair : pairs_) {
        EXPECT_EQ(pair->phase(), Phase::paused) << stories();
        EXPECT_NEAR(pair->playback.state().position, pair->shown(), 0.7);
        pair->playback.seek(70);
        pair->playback.resume();
    }
    ASSERT_TRUE(all([](Pair& pair) { return pair.isPlayingBehind(71); })) << stories();
    for (const auto& pair : pairs_) EXPECT_NEAR(pair->playback.state().position, pair->shown(), 1.5);
    ASSERT_TRUE(all([](Pair& pair) { return pair.phase() == Phase::ended; })) << stories();
    for (const auto& pair : pairs_) {
        EXPECT_THAT(pair->television.complaints(), IsEmpty()) << pair->story();
        EXPECT_EQ(pair->television.unansweredEvents(), 0);
        const bool hasQueue = requests(*pair, "POST /command") > 0;
        EXPECT_EQ(requests(*pair, "GET /playback-info") > 0, !hasQueue) << pair->story();
    }
    std::vector<Phase> phases = pairs_[0]->window->phases;
    std::erase(phases, Phase::waking);  // so many at once take their time to connect
    EXPECT_THAT(phases, ElementsAre(Phase::connecting, Phase::loading, Phase::playing, Phase::paused,
                                    Phase::playing, Phase::ended));
}

TEST_F(TelevisionTest, ReplacesAMovieAndLeavesNothingBehind) {
    const struct {
        TelevisionOptions options;
        std::ptrdiff_t farewells;  // one for each movie in a queue, and the remote control's
    } cases[] = {{plain, 0}, {box, 3}, {television, 2}, {oldBox, 1}};
    for (const auto& [options, farewells] : cases) {
        for (const bool waits : {true, false}) {
            Pair& pair = add(options);
            ASSERT_TRUE(waitFor([&] { return pair.isPlayingBehind(1); })) << pair.story();
            const QUrl first = pair.television.player().movie().url;
            pair.playback.play(pair.television.receiver(), item(30, u"late.mp4"_s));
            ASSERT_TRUE(waitFor([&] { return pair.isPlayingBehind(30); })) << pair.story();
            EXPECT_NE(pair.television.player().movie().url, first);
            if (waits) {
                pair.playback.stop();
                EXPECT_TRUE(pair.window->reaches(Phase::stopped));
            }
            pair.window.reset();
            EXPECT_TRUE(waitFor([&] { return requests(pair, "TEARDOWN") == farewells; })) << pair.story();
            EXPECT_TRUE(
                waitFor([&] { return pair.television.player().state() == SimulatedPlayer::State::idle; }));
            EXPECT_THAT(pair.television.complaints(), IsEmpty()) << pair.story();
            pairs_.clear();
        }
    }
}

// Some versions answer that way for as long as they play.
TEST_F(TelevisionTest, BelievesEventsWhereReportsAreWithheld) {
    Pair& pair = add(oldTelevision, 20);
    pair.television.onRequest([](const Request& request) -> std::optional<int> {
        return request.path() == "/playback-info" ? std::optional(500) : std::nullopt;
    });
    ASSERT_TRUE(waitFor([&] { return pair.isPlayingBehind(25); })) << pair.story();
    EXPECT_NEAR(pair.playback.state().position, pair.shown(), 1.5);
}

TEST_F(TelevisionTest, SeesEveryFaultForWhatItIs) {
    struct Case {
        TelevisionOptions options;
        Misbehaviours misbehaviours;
        Phase phase;
        const char* reason = "";
        QString file = u"movie.mp4"_s;
    };
    const Case cases[] = {
        {plain, {{Misbehaviour::neverFetches, 0}}, Phase::failed, "never asked"},
        {plain, {{Misbehaviour::ignoresPlay, 0}}, Phase::failed, "never asked"},
        {plain,
         {{Misbehaviour::neverFetches, 0}, {Misbehaviour::liesInEvents, 0}},
         Phase::failed,
         "never asked"},
        {plain, {{Misbehaviour::failsPlay, 2}}, Phase::playing},
        {plain, {{Misbehaviour::failsPlay, 20}}, Phase::failed, "500"},
        {plain, {{Misbehaviour::drops, 10}}, Phase::dropped, "lost"},
        {plain, {{Misbehaviour::goesSilent, 10}}, Phase::dropped, "lost"},
        {plain, {{Misbehaviour::startsAtZero, 0}}, Phase::playing},
        {plain, {{Misbehaviour::pausesItself, 3}}, Phase::paused},
        {plain, {{Misbehaviour::isStoppedThere, 3}}, Phase::stopped, "at the television"},
        {plain, {{Misbehaviour::isTakenOver, 3}}, Phase::takenOver},
        {plain, {{Misbehaviour::jumpsBack, 0}}, Phase::playing},
        {plain, {{Misbehaviour::endsLinesBare, 0}, {Misbehaviour::omitsLengths, 0}}, Phase::playing},
        {plain, {{Misbehaviour::hidesDuration, 0}}, Phase::failed, "television fetched the"},
        {plain, {}, Phase::failed, "fetched the movie and gave up", u"garbage.mp4"_s},
        {box, {{Misbehaviour::refusesPtp, 0}}, Phase::playing},
        {box, {{Misbehaviour::sleeps, 0}}, Phase::playing},
        {box, {{Misbehaviour::opensEventsLate, 1}, {Misbehaviour::hidesInfo, 0}}, Phase::playing},
        {box, {{Misbehaviour::startsAtZero, 0}}, Phase::playing},
        {television, {{Misbehaviour::refusesNtp, 0}}, Phase::playing},
        {television, {{Misbehaviour::startsAtZero, 0}}, Phase::playing},
        {computer, {{Misbehaviour::asksConsent, 20}}, Phase::playing},
        {television, {{Misbehaviour::pausesItself, 3}}, Phase::paused},
        {box, {{Misbehaviour::isStoppedThere, 3}}, Phase::stopped, "at the television"},
        {television, {{Misbehaviour::isStoppedThere, 3}}, Phase::stopped, "at the television"},
        {oldBox, {{Misbehaviour::isStoppedThere, 3}}, Phase::stopped, "at the television"},
        {box, {{Misbehaviour::goesSilent, 10}}, Phase::dropped, "lost"},
        {television, {{Misbehaviour::goesSilent, 10}}, Phase::dropped, "lost"},
        {box,
         {{Misbehaviour::neverFetches, 0}, {Misbehaviour::liesInEvents, 0}},
         Phase::failed,
         "never asked"},
        {television, {{Misbehaviour::refusesPtp, 0}, {Misbehaviour::refusesNtp, 0}}, Phase::failed},
        {box, {{Misbehaviour::isBusy, 0}}, Phase::failed, "busy"},
        {box, {{Misbehaviour::ends, 1}}, Phase::ended},
        {television, {{Misbehaviour::ends, 2}}, Phase::ended},
        {box, {{Misbehaviour::ends, 3}}, Phase::ended},
    };
    constexpr double start = 20;
    const auto isSeen = [&](Pair& pair, const Case& c) {
        const bool isThere =
            c.phase == Phase::playing ? pair.isPlayingBehind(start + 8) : pair.phase() == c.phase;
        if (!isThere) return false;
        SCOPED_TRACE("case " + std::to_string(&c - cases) + ": " + pair.story());
        EXPECT_THAT(pair.story(), HasSubstr(c.reason));
        EXPECT_TRUE(c.phase != Phase::playing || pair.playback.state().position > start);
        // One that fell silent takes no more signs of life.
        const bool isHeard = c.phase != Phase::dropped;
        EXPECT_TRUE(!isHeard || pair.television.complaints().isEmpty() == (c.file == "movie.mp4"_L1));
        return true;
    };
    // Pairing keeps this thread busy, so that only the others go several at once.
    for (const Case* first = cases; first != std::end(cases);) {
        const std::ptrdiff_t count = first->options.isEncrypted() ? 1 : 5;
        const Case* end = first + std::min(count, std::end(cases) - first);
        std::map<Pair*, const Case*> left;
        for (const Case& c : std::span(std::exchange(first, end), end)) {
            TelevisionOptions options = c.options;
            options.misbehaviours = c.misbehaviours;
            left.emplace(&add(options, c.phase == Phase::ended ? 80 : start, c.file), &c);
        }
        (void)waitFor([&] {
            std::erase_if(left, [&](const auto& entry) { return isSeen(*entry.first, *entry.second); });
            return left.empty();
        });
        for (const auto& [pair, c] : left) ADD_FAILURE() << "case " << c - cases << ": " << pair->story();
        pairs_.clear();
    }
}

}  // namespace
}  // namespace velmora
