// The sender against a television that is strict, and against ones that misbehave: everything in between is
// real, sockets and media server included. Time runs faster than it does for a viewer.
#include "Sender/Window.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace velmora {
namespace {

using namespace Qt::StringLiterals;
using test::Misbehaviour;
using test::Misbehaviours;
using test::movieSeconds;
using test::SimulatedPlayer;
using test::Television;
using test::waitFor;
using test::Window;
using test::WindowTest;
using Phase = RemotePlayback::Phase;
using testing::ElementsAre;
using testing::IsEmpty;

/// One window and its television.
class Pair : public Window {
  public:
    Pair(Clock& clock, MediaServer& server, const Misbehaviours& misbehaviours = {})
        : Window(clock, server), television(clock, {.misbehaviours = misbehaviours}) {
        EXPECT_TRUE(television.listen());
    }
    ~Pair() { playback.disconnect(); }
    [[nodiscard]] double shown() { return television.player().position(); }

    Television television;
};

class TelevisionTest : public WindowTest {
  protected:
    void play(Pair& pair, double start = 0, const QString& name = u"movie.mp4"_s) const {
        pair.playback.play(pair.television.receiver(), item(start, name));
    }
};

TEST_F(TelevisionTest, PlaysPausesSeeksAndEnds) {
    Pair pair(clock_, *server_);
    RemotePlayback& playback = pair.playback;
    play(pair, 20);
    ASSERT_TRUE(waitFor([&] { return pair.phase() == Phase::playing; }));
    EXPECT_GE(playback.state().position, 20);
    EXPECT_DOUBLE_EQ(playback.state().duration, movieSeconds);

    playback.pause();
    ASSERT_TRUE(waitFor([&] { return pair.phase() == Phase::paused; }));
    ASSERT_TRUE(waitFor([&] { return pair.television.player().state() == SimulatedPlayer::State::paused; }));
    // For longer than a television bears silence.
    const Clock::Instant pausedAt = clock_.now();
    waitFor([&] { return clock_.now() - pausedAt > std::chrono::seconds(60); });
    EXPECT_EQ(pair.phase(), Phase::paused);
    EXPECT_NEAR(playback.state().position, pair.shown(), 0.5);

    playback.seek(70);
    playback.resume();
    ASSERT_TRUE(waitFor([&] { return pair.phase() == Phase::playing && pair.shown() > 71; }));
    EXPECT_NEAR(playback.state().position, pair.shown(), 1.5);
    ASSERT_TRUE(waitFor([&] { return pair.phase() == Phase::ended; }));
    EXPECT_THAT(pair.phases, ElementsAre(Phase::connecting, Phase::loading, Phase::playing, Phase::paused,
                                         Phase::playing, Phase::ended));
    EXPECT_THAT(pair.television.complaints(), IsEmpty());
    EXPECT_EQ(pair.television.unansweredEvents(), 0);
}

TEST_F(TelevisionTest, ReplacesAMovieAndStops) {
    Pair pair(clock_, *server_);
    play(pair);
    ASSERT_TRUE(waitFor([&] { return pair.phase() == Phase::playing; }));
    const QUrl first = pair.television.player().movie().url;
    play(pair, 30, u"late.mp4"_s);
    ASSERT_TRUE(waitFor([&] { return pair.phase() == Phase::playing && pair.shown() > 30; }));
    EXPECT_NE(pair.television.player().movie().url, first);
    pair.playback.stop();
    ASSERT_TRUE(waitFor([&] { return pair.phase() == Phase::stopped; }));
    EXPECT_EQ(pair.television.player().state(), SimulatedPlayer::State::idle);
    EXPECT_THAT(pair.television.complaints(), IsEmpty());
}

TEST_F(TelevisionTest, SeesEveryFaultForWhatItIs) {
    struct Case {
        Misbehaviours misbehaviours;
        Phase phase;
        const char* reason;
        QString file = u"movie.mp4"_s;
    };
    const Case cases[] = {
        {{{Misbehaviour::neverFetches, 0}}, Phase::failed, "never asked"},
        {{{Misbehaviour::ignoresPlay, 0}}, Phase::failed, "never asked"},
        {{{Misbehaviour::neverFetches, 0}, {Misbehaviour::liesInEvents, 0}}, Phase::failed, "never asked"},
        {{{Misbehaviour::failsPlay, 2}}, Phase::playing, ""},
        {{{Misbehaviour::failsPlay, 20}}, Phase::failed, "500"},
        {{{Misbehaviour::drops, 5}}, Phase::dropped, "lost"},
        {{{Misbehaviour::goesSilent, 5}}, Phase::dropped, "lost"},
        {{{Misbehaviour::startsAtZero, 0}}, Phase::playing, ""},
        {{{Misbehaviour::pausesItself, 3}}, Phase::paused, ""},
        {{{Misbehaviour::isStoppedThere, 3}}, Phase::stopped, "at the television"},
        {{{Misbehaviour::jumpsBack, 0}}, Phase::playing, ""},
        {{{Misbehaviour::endsLinesBare, 0}, {Misbehaviour::omitsLengths, 0}}, Phase::playing, ""},
        {{{Misbehaviour::hidesDuration, 0}}, Phase::failed, "television fetched the"},
        {{}, Phase::failed, "fetched the movie and gave up", u"garbage.mp4"_s},
    };
    constexpr double start = 20;
    std::vector<std::unique_ptr<Pair>> pairs;
    for (const Case& c : cases) {
        pairs.push_back(std::make_unique<Pair>(clock_, *server_, c.misbehaviours));
        play(*pairs.back(), start, c.file);
    }
    const auto count = std::ssize(pairs);
    waitFor([&] {
        return std::all_of(pairs.begin(), pairs.end(), [&](const auto& pair) {
            const Case& c = cases[&pair - pairs.data()];
            return pair->phase() == c.phase && (c.phase != Phase::playing || pair->shown() > start + 5);
        });
    });
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        SCOPED_TRACE("case " + std::to_string(i));
        const RemotePlayback::State state = pairs[i]->playback.state();
        EXPECT_EQ(state.phase, cases[i].phase);
        EXPECT_TRUE(state.reason.contains(QLatin1StringView(cases[i].reason))) << qPrintable(state.reason);
        EXPECT_TRUE(state.phase != Phase::playing || state.position > start) << state.position;
        EXPECT_EQ(pairs[i]->television.complaints().isEmpty(), cases[i].file == "movie.mp4"_L1);
    }
}

TEST_F(TelevisionTest, WaitsForASlowStopOnlySoLong) {
    Pair slow(clock_, *server_, {{Misbehaviour::stopsSlowly, 600}});
    play(slow);
    ASSERT_TRUE(waitFor([&] { return slow.phase() == Phase::playing; }));
    const Clock::Instant before = clock_.now();
    slow.playback.stop();
    ASSERT_TRUE(waitFor([&] { return slow.phase() == Phase::stopped; }));
    EXPECT_LT(clock_.now() - before, std::chrono::seconds(10));
}

// That nobody complains above means something only if the television does complain.
TEST_F(TelevisionTest, IsStrict) {
    const QByteArray session = "X-Apple-Session-ID: 3c0f4a5e-54f2-4e0b-8f9e-0a8d3f4b9d11\r\n";
    const QByteArray text =
        "Content-Type: text/parameters\r\nContent-Length: 37\r\n\r\nContent-Location: http://127.0.0.1/a.";
    const QByteArray info = "GET /playback-info HTTP/1.1\r\n" + session + "\r\n";
    struct Case {
        QByteArray request;
        const char* status;
    };
    const Case cases[] = {
        {info, "200"},
        {"POST /rate?value=1.0 HTTP/1.1\r\n" + session + "Content-Length: 0\r\n\r\n", "200"},
        {"POST /play HTTP/1.1\r\n" + session + text, "200"},
        {"POST /rate?value=1.0 HTTP/1.1\r\n" + session + "\r\n", "400"},
        {"POST /rate?value=1,0 HTTP/1.1\r\n" + session + "Content-Length: 0\r\n\r\n", "400"},
        {"GET /playback-info HTTP/1.1\r\n\r\n", "400"},
        {"GET /playback-info HTTP/1.1\r\n" + session + "User-Agent: \r\n\r\n", "400"},
        {"GET /playback-info HTTP/1.1\r\n" + session + "Expect: 100-continue\r\n\r\n", "400"},
        {info + info, "400"},
        {"POST /play HTTP/1.1\r\nContent-Type: application/x-apple-binary-plist\r\nContent-Length: 0\r\n" +
             session + "\r\n",
         "400"},
        {"GET /info HTTP/1.1\r\n" + session + "\r\n", "501"},
    };
    Television television(clock_, {});
    ASSERT_TRUE(television.listen());
    for (const Case& c : cases) {
        QTcpSocket socket;
        socket.connectToHost(QHostAddress(QHostAddress::LocalHost), television.receiver().port);
        socket.write(c.request);
        ASSERT_TRUE(waitFor([&] { return socket.bytesAvailable() > 12; })) << c.request.constData();
        EXPECT_EQ(socket.readAll().mid(9, 3), c.status) << c.request.constData();
    }
}

}  // namespace
}  // namespace velmora
