#include "Sender/RemotePlayback.h"
#include "Sender/ScriptedControl.h"

#include <QCoreApplication>

#include <gmock/gmock.h>

namespace velmora {
namespace {

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;
using test::ScriptedControl;
using testing::ElementsAre;
using testing::HasSubstr;
using Event = PlaybackEvent::State;
using Phase = RemotePlayback::Phase;
using Kind = ConnectionError::Kind;

constexpr double duration = 120;

class FakePublication : public MediaServer::Publication {
  public:
    FakePublication(const MediaServer::Activity& activity, bool hasChosenTracks)
        : activity_(activity), hasChosenTracks_(hasChosenTracks) {}
    QUrl url(const QHostAddress& local) const override {
        return QUrl(u"http://%1:1/t/movie.mp4"_s.arg(local.toString()));
    }
    MediaServer::Activity activity() const override { return activity_; }
    bool hasChosenTracks() const override { return hasChosenTracks_; }

  private:
    const MediaServer::Activity& activity_;
    bool hasChosenTracks_;
};

MediaServer::Activity fetched(bool readPastIndex = true) {
    MediaServer::Activity activity;
    activity.requests = activity.mediaRequests = 2;
    activity.readPastIndex = readPastIndex;
    return activity;
}

PlaybackReport at(double position, double rate = 1, double length = duration) {
    return {.isReady = true, .position = position, .duration = length, .rate = rate};
}

Receiver television(const QString& address = u"192.0.2.2"_s) {
    return {.name = u"tv"_s, .identifier = {}, .address = QHostAddress(address), .port = 7000};
}

/// How a scripted television behaves that reports the same for ever.
auto always(const VideoControl::Reported& report) {
    return [report](ScriptedControl& tv) { tv.report = [report](double) { return report; }; };
}

/// One window with its television, in virtual time.
class RemotePlaybackTest : public testing::Test {
  protected:
    RemotePlaybackTest() {
        QObject::connect(&*playback, &RemotePlayback::stateChanged, [this] { note(); });
    }
    ~RemotePlaybackTest() override { leave(); }

    void play(double start = 0, const Receiver& receiver = television()) {
        playback->play(receiver, {.file = u"/movie.mp4"_s, .duration = duration, .startPosition = start});
    }
    /// A movie that runs, `seconds` after its beginning.
    void playUntil(double seconds, double start = 0) {
        play(start);
        clock.advance(std::chrono::milliseconds(int(seconds * 1000)));
        ASSERT_EQ(phase(), Phase::playing);
    }
    [[nodiscard]] Phase phase() const { return playback->state().phase; }
    [[nodiscard]] std::string reason() const { return playback->state().reason.toStdString(); }
    [[nodiscard]] ScriptedControl& tv() const { return *controls.back(); }
    void leave() {
        playback.reset();
        QCoreApplication::processEvents();
    }
    void note() {
        if (phases.empty() || phases.back() != phase()) phases.push_back(phase());
    }

    test::VirtualClock clock;
    MediaServer::Activity activity = fetched();
    std::vector<TrackChoice> published;
    bool hasChosenTracks = true;
    std::vector<std::shared_ptr<ScriptedControl>> controls;
    std::function<void(ScriptedControl&)> direct;  // how the next television behaves
    RemotePlayback::World world{
        .control = [this](const Receiver&) -> std::shared_ptr<VideoControl> {
            controls.push_back(std::make_shared<ScriptedControl>(clock));
            if (direct) direct(*controls.back());
            return controls.back();
        },
        .publish = [this](const QString&, const QHostAddress&,
                          const TrackChoice& tracks) -> RemotePlayback::World::Published {
            published.push_back(tracks);
            return std::make_unique<FakePublication>(activity, hasChosenTracks);
        },
        .mediaPort = 47110};
    std::optional<RemotePlayback> playback{std::in_place, clock, world};
    std::vector<Phase> phases;
};

TEST_F(RemotePlaybackTest, PlaysFromTheStartPositionAndInterpolates) {
    play(18);
    clock.advance(650ms);
    EXPECT_EQ(phase(), Phase::loading);
    clock.advance(2s);
    EXPECT_THAT(phases, ElementsAre(Phase::connecting, Phase::loading, Phase::playing));
    EXPECT_EQ(tv().verbs, QStringList({u"open"_s, u"play 18"_s, u"rate 1"_s}));
    EXPECT_EQ(tv().movies.front().url.toString(), u"http://192.0.2.1:1/t/movie.mp4"_s);
    EXPECT_EQ(tv().movies.front().uuid.size(), 36);
    for (int step = 0; step < 40; ++step) {
        const double before = playback->state().position;
        clock.advance(100ms);
        EXPECT_NEAR(playback->state().position - before, 0.1, 0.03);
    }
    EXPECT_NEAR(playback->state().position, 18 + 6.65 - 0.72, 0.15);
}

// As one receiver really reports: the last movie first, ready without a length, below zero, back again, and
// "playing" long before anything moves.
TEST_F(RemotePlaybackTest, BelievesOnlyAPositionThatAdvances) {
    const struct {
        double until;
        PlaybackReport report;
    } story[] = {
        {0.05, at(812, 1, 5400)}, {0.3, at(0, 0, 0)}, {0.6, at(0)}, {1.4, at(-0.32)}, {2.9, at(0.04)},
    };
    direct = [&](ScriptedControl& television) {
        television.report = [&](double seconds) -> VideoControl::Reported {
            for (const auto& [until, report] : story)
                if (seconds < until) return report;
            return at(std::floor((seconds - 2.9) * 5) / 5);
        };
    };
    play();
    clock.advance(100ms);
    tv().say(Event::loading);
    tv().say(Event::playing);
    for (int step = 0; step < 28; ++step) {
        clock.advance(100ms);
        EXPECT_EQ(phase(), Phase::loading) << step;
        EXPECT_GE(playback->state().position, 0);
    }
    clock.advance(1s);
    EXPECT_EQ(phase(), Phase::playing);
    EXPECT_EQ(tv().verbs.count(u"play 0"_s), 1);
}

TEST_F(RemotePlaybackTest, TellsWhyThereIsNoPicture) {
    const PlaybackReport never;
    MediaServer::Activity nothing;
    MediaServer::Activity elsewhere;
    elsewhere.refused = 2;
    PlaybackReport faulty;
    faulty.fault = PlaybackFault{-11848, u"AVFoundationErrorDomain"_s};
    const struct {
        MediaServer::Activity activity;
        PlaybackReport report;
        double seconds;  // when it is told
        const char* reason;
    } cases[] = {
        {nothing, never, 12, "blocking port 47110"},
        {elsewhere, never, 12, "another address"},
        {nothing, at(50), 12, "blocking port 47110"},  // somebody else's movie moves or stands there
        {fetched(false), never, 30, "does not take this video"},
        {fetched(), never, 30, "showed no picture"},
        {fetched(), at(0, 0), 30, "showed no picture"},
        {fetched(), {.isReady = true, .position = 3, .duration = 0, .rate = 1.0}, 30, "showed no picture"},
        {fetched(), faulty, 0, "(-11848)"},
    };
    for (const auto& entry : cases) {
        activity = entry.activity;
        direct = always(entry.report);
        play();
        const auto limit = std::chrono::milliseconds(int(entry.seconds * 1000));
        clock.advance(limit);
        EXPECT_EQ(phase() == Phase::loading, entry.seconds > 0) << entry.reason;
        clock.advance(2s);
        EXPECT_EQ(phase(), Phase::failed) << entry.reason;
        EXPECT_THAT(reason(), HasSubstr(entry.reason));
        EXPECT_EQ(tv().verbs.last(), u"stop"_s);
        EXPECT_FALSE(tv().isOpen());
    }
}

TEST_F(RemotePlaybackTest, RecognisesAMovieThatTheTelevisionCannotOpen) {
    direct = always(PlaybackReport());
    play();
    clock.advance(100ms);
    for (const Event state : {Event::loading, Event::stopped, Event::playing}) tv().say(state);
    clock.advance(3500ms);
    EXPECT_EQ(phase(), Phase::failed);
    EXPECT_THAT(reason(), HasSubstr("gave up"));
}

TEST_F(RemotePlaybackTest, TellsWhyTheTelevisionRefuses) {
    const struct {
        QString verb;
        ConnectionError error;
        const char* reason;
    } cases[] = {
        {u"open"_s, {.kind = Kind::timeout}, "192.0.2.2:7000 does not answer"},
        {u"open"_s, {.kind = Kind::refused}, "Is AirPlay switched on"},
        {u"open"_s, {.kind = Kind::unreachable}, "no way to 192.0.2.2:7000"},
        {u"open"_s, {.kind = Kind::malformed}, "does not speak AirPlay"},
        {u"open"_s, {.kind = Kind::status, .status = 470}, "allow access"},
        {u"open"_s, {.kind = Kind::pairing, .pairing = {PairingError::Kind::tooManyTries}}, "Restart it"},
        {u"play 0"_s, {.kind = Kind::status, .status = 401}, "password"},
        {u"play 0"_s, {.kind = Kind::status, .status = 404}, "only take mirroring"},
        {u"play 0"_s, {.kind = Kind::status, .status = 453}, "busy"},
        {u"play 0"_s, {.kind = Kind::status, .status = 500}, "(500)"},
        {u"play 0"_s, {.kind = Kind::closed}, "broke off"},
    };
    for (const auto& [verb, error, expected] : cases) {
        direct = [&](ScriptedControl& television) {
            television.outcome = [&](const QString& name) -> VideoControl::Outcome {
                if (name == verb) return std::unexpected(error);
                return {};
            };
        };
        play();
        clock.advance(1s);
        EXPECT_EQ(phase(), Phase::failed);
        EXPECT_THAT(reason(), HasSubstr(expected));
    }
}

TEST_F(RemotePlaybackTest, SeeksOnceWhenTheStartWasIgnored) {
    direct = [](ScriptedControl& television) {
        television.report = [&television](double seconds) -> VideoControl::Reported {
            const bool isCorrected = television.verbs.contains(u"seek 60"_s);
            const PlaybackReport usual = television.usual(seconds);
            return isCorrected ? usual : at(usual.position - 60);
        };
    };
    play(60);
    clock.advance(8s);
    EXPECT_EQ(phase(), Phase::playing);
    EXPECT_EQ(tv().verbs.count(u"seek 60"_s), 1);
    EXPECT_NEAR(playback->state().position, 65, 2);
}

TEST_F(RemotePlaybackTest, StartsAgainOnceWhenLoadedAndNeverMoving) {
    direct = [](ScriptedControl& television) {
        television.report = [&television](double seconds) -> VideoControl::Reported {
            return television.movies.size() < 2 ? at(0) : television.usual(seconds);
        };
    };
    play();
    clock.advance(9s);
    EXPECT_EQ(tv().movies.size(), 1U);
    clock.advance(4s);
    ASSERT_EQ(tv().movies.size(), 2U);
    EXPECT_NE(tv().movies[0].uuid, tv().movies[1].uuid);
    EXPECT_EQ(phase(), Phase::playing);
}

TEST_F(RemotePlaybackTest, TellsTheEndFromAStopAndFromADrop) {
    const auto gone = always(PlaybackReport());
    const auto silent = always(std::unexpected(ConnectionError{.kind = Kind::timeout}));
    const auto other = always(at(5, 1, 47));
    const auto say = [](const QString& reason) {
        return [reason](ScriptedControl& television) { television.say(Event::stopped, reason); };
    };
    const auto cut = [](ScriptedControl& television) { television.close(); };
    const struct {
        const char* name;
        double position;
        std::vector<std::function<void(ScriptedControl&)>> happenings;
        Phase expected;
        bool isStopSent;
    } cases[] = {
        {"reports nothing more at the end", 118, {gone}, Phase::ended, true},
        {"reports nothing more before", 60, {gone}, Phase::stopped, false},
        {"says stopped at the end", 118.5, {say({}), gone}, Phase::ended, true},
        {"says stopped before", 60, {say({}), gone}, Phase::stopped, false},
        {"says ended", 100, {say(u"ended"_s), gone}, Phase::ended, true},
        {"says stopped of another movie", 60, {say({})}, Phase::playing, false},
        {"closes at the end", 118, {cut}, Phase::ended, true},
        {"closes before", 60, {cut}, Phase::dropped, false},
        {"says stopped and closes", 60, {say({}), cut}, Phase::stopped, false},
        {"falls silent", 60, {silent}, Phase::dropped, false},
        {"plays another movie", 60, {other}, Phase::takenOver, false},
    };
    for (const auto& entry : cases) {
        play(entry.position - 3);
        clock.advance(3700ms);
        ASSERT_EQ(phase(), Phase::playing) << entry.name;
        for (const auto& happen : entry.happenings) happen(tv());
        clock.advance(2500ms);
        EXPECT_EQ(phase(), entry.expected) << entry.name;
        EXPECT_EQ(tv().verbs.contains(u"stop"_s), entry.isStopSent) << entry.name;
        EXPECT_NEAR(playback->state().position, entry.position, 3) << entry.name;
    }
}

TEST_F(RemotePlaybackTest, CollapsesSeeksWhileOneIsUnderWay) {
    direct = [](ScriptedControl& television) {
        television.latency = [](const QString& verb) -> Clock::Duration {
            return verb.startsWith(u"seek"_s) ? 300ms : 10ms;
        };
    };
    playUntil(3);
    for (const double target : {20.0, 30.0, 40.0, 50.0}) {
        playback->seek(target);
        EXPECT_EQ(playback->state().position, target);
        clock.advance(50ms);
    }
    clock.advance(2s);
    EXPECT_EQ(tv().verbs.mid(3), QStringList({u"seek 20"_s, u"seek 50"_s}));
    EXPECT_NEAR(playback->state().position, 52, 0.7);
    EXPECT_EQ(phase(), Phase::playing);
    playback->seek(500);
    clock.advance(100ms);
    EXPECT_EQ(tv().verbs.last(), u"seek 119"_s);
}

TEST_F(RemotePlaybackTest, FollowsPausesFromBothSides) {
    playUntil(3);
    tv().turn(0);  // with the television's remote
    tv().say(Event::paused);
    clock.advance(100ms);
    EXPECT_EQ(phase(), Phase::paused);
    tv().turn(1);
    tv().say(Event::playing);
    clock.advance(1s);
    EXPECT_EQ(phase(), Phase::playing);
    tv().turn(0);  // of a television that reports no events
    clock.advance(3s);
    EXPECT_EQ(phase(), Phase::paused);
    const double position = playback->state().position;
    playback->resume();
    clock.advance(1s);
    EXPECT_EQ(phase(), Phase::playing);
    EXPECT_NEAR(playback->state().position, position + 1, 0.3);
    EXPECT_EQ(tv().verbs.mid(3), QStringList({u"rate 1"_s}));
}

// One receiver says rate 1 while it is paused, and another goes on only after a seek.
TEST_F(RemotePlaybackTest, PausesAndGoesOnWhateverTheRateSays) {
    playUntil(3);
    tv().report = [this](double seconds) -> VideoControl::Reported {
        PlaybackReport report = tv().usual(seconds);
        report.rate = 1;
        return report;
    };
    playback->pause();
    clock.advance(20s);
    EXPECT_EQ(phase(), Phase::paused);
    const double position = playback->state().position;
    tv().report = [this, position](double seconds) -> VideoControl::Reported {
        const bool isStuck = !tv().verbs.last().startsWith(u"seek"_s);
        return isStuck ? at(position) : tv().usual(seconds);
    };
    playback->resume();
    clock.advance(5s);
    EXPECT_EQ(phase(), Phase::playing);
    EXPECT_EQ(tv().verbs.filter(u"seek"_s).size(), 1);
    playback->pause();
    clock.advance(100ms);
    EXPECT_EQ(phase(), Phase::paused);
    tv().report = [](double seconds) -> VideoControl::Reported { return at(seconds); };  // did not obey
    clock.advance(5s);
    EXPECT_EQ(phase(), Phase::playing);
}

TEST_F(RemotePlaybackTest, StopsWithinABoundedTime) {
    play();
    clock.advance(5ms);
    playback->stop();  // nothing plays there yet
    clock.advance(0s);
    EXPECT_EQ(phase(), Phase::stopped);
    EXPECT_FALSE(tv().verbs.contains(u"stop"_s));

    for (const Clock::Duration answers : {300ms, 60'000ms}) {
        direct = [&](ScriptedControl& television) {
            television.latency = [&](const QString& verb) -> Clock::Duration {
                return verb == u"stop"_s ? answers : 10ms;
            };
        };
        playUntil(3);
        playback->stop();
        clock.advance(200ms);
        EXPECT_EQ(phase(), Phase::playing);
        clock.advance(5s);
        EXPECT_EQ(phase(), Phase::stopped);
        EXPECT_FALSE(tv().isOpen());
        EXPECT_EQ(tv().verbs.last() == u"abandon"_s, answers > 5s);
    }
}

TEST_F(RemotePlaybackTest, ReplacesAMovieOnTheSameConnection) {
    playUntil(5, 50);
    play();
    clock.advance(200ms);
    EXPECT_EQ(controls.size(), 1U);
    EXPECT_EQ(tv().verbs, QStringList({u"open"_s, u"play 50"_s, u"rate 1"_s, u"play 0"_s, u"rate 1"_s}));
    EXPECT_EQ(phase(), Phase::loading);
    clock.advance(4s);
    EXPECT_EQ(phase(), Phase::playing);
    EXPECT_LT(playback->state().position, 10);

    play(0, television(u"192.0.2.9"_s));
    clock.advance(4s);
    ASSERT_EQ(controls.size(), 2U);
    EXPECT_EQ(controls.front()->verbs.last(), u"stop"_s);
    EXPECT_EQ(phase(), Phase::playing);
}

// A stop that is heard behind our /play is the last movie's, ours or another sender's.
TEST_F(RemotePlaybackTest, DoesNotTakeTheEndOfTheLastMovieForItsOwn) {
    for (const bool isOurs : {true, false}) {
        if (isOurs) playUntil(5, 50);
        direct = [](ScriptedControl& television) {
            television.report = [&television](double seconds) -> VideoControl::Reported {
                return seconds < 5 ? PlaybackReport() : television.usual(seconds);
            };
        };
        if (isOurs) direct(tv());
        play();
        clock.advance(500ms);
        tv().say(Event::stopped);
        if (!isOurs) tv().say(Event::loading);
        clock.advance(5s);
        EXPECT_EQ(phase(), Phase::loading) << isOurs;
        clock.advance(3s);
        EXPECT_EQ(phase(), Phase::playing) << isOurs;
        playback->stop();
        clock.advance(1s);
    }
}

TEST_F(RemotePlaybackTest, KnowsWhichReceiverIsTheSame) {
    Receiver named = television({});
    named.host = u"living-room.example"_s;
    Receiver other = named;
    other.host = u"bedroom.example"_s;
    for (const Receiver& receiver : {named, other, named, named}) {
        play(0, receiver);
        clock.advance(4s);
        EXPECT_EQ(phase(), Phase::playing);
    }
    EXPECT_EQ(controls.size(), 3U);
}

TEST_F(RemotePlaybackTest, ShowsWhatIsWaitedForAndHandsOnTheAnswer) {
    using Hold = VideoControl::Hold::Kind;
    direct = [](ScriptedControl& television) {
        television.latency = [](const QString&) -> Clock::Duration { return 60s; };
    };
    play(18);
    clock.advance(1s);
    const struct {
        VideoControl::Hold hold;
        Phase phase;
        double retryIn;
    } cases[] = {
        {{.kind = Hold::waking}, Phase::waking, 0},
        {{.kind = Hold::pin}, Phase::needsPin, 0},
        {{.kind = Hold::pin, .message = u"Wait."_s, .notBefore = clock.now() + 10s}, Phase::needsPin, 10},
        {{.kind = Hold::password}, Phase::needsPassword, 0},
    };
    for (const auto& entry : cases) {
        tv().setHold(entry.hold);
        clock.advance(0s);
        EXPECT_EQ(phases.back(), entry.phase);
        EXPECT_EQ(playback->state().reason, entry.hold.message);
        EXPECT_EQ(playback->state().retryIn, entry.retryIn);
    }
    playback->supply(u"1234"_s);
    EXPECT_EQ(tv().verbs.last(), u"supply 1234"_s);
    tv().setHold({});
    clock.advance(1s);
    EXPECT_EQ(phase(), Phase::connecting);
    tv().setHold(cases[1].hold);
    playback->stop();  // the user has thought better of it
    clock.advance(0s);
    EXPECT_EQ(phase(), Phase::stopped);
    EXPECT_FALSE(tv().isOpen());
}

TEST_F(RemotePlaybackTest, ConnectsAgainWhereItWas) {
    playUntil(5, 50);
    playback->pause();
    clock.advance(1s);
    tv().close();
    clock.advance(1s);
    ASSERT_EQ(phase(), Phase::dropped);
    int refusals = 4;
    direct = [&](ScriptedControl& television) {
        television.outcome = [&](const QString& verb) -> VideoControl::Outcome {
            if (verb != u"open"_s || refusals-- <= 0) return {};
            return std::unexpected(ConnectionError{.kind = Kind::refused});
        };
    };
    playback->reattach();
    clock.advance(2s);
    EXPECT_EQ(phase(), Phase::connecting);
    clock.advance(12s);
    EXPECT_EQ(phase(), Phase::paused);
    EXPECT_NEAR(playback->state().position, 54.5, 1.5);
    EXPECT_NEAR(tv().movies.front().start, 54.5, 1);

    tv().close();
    clock.advance(2s);
    refusals = 1000;
    playback->reattach();
    clock.advance(70s);
    EXPECT_EQ(phase(), Phase::failed);
    EXPECT_NEAR(playback->state().position, 54.5, 1.5);
    refusals = 0;
    playback->reattach();
    clock.advance(5s);
    EXPECT_EQ(phase(), Phase::playing);
}

TrackChoice sound(int number) {
    return {.audio = TrackChoice::Track{number, 9}, .subtitle = {}};
}

TEST_F(RemotePlaybackTest, LoadsTheMovieAgainForOtherTracks) {
    play(50);
    playback->chooseTracks(sound(1));
    clock.advance(5s);
    ASSERT_EQ(phase(), Phase::playing);
    ASSERT_THAT(published, ElementsAre(sound(1))) << "what is known in time needs no second start";
    phases.clear();
    const double before = playback->state().position;
    playback->chooseTracks(sound(1));
    playback->chooseTracks(sound(2));
    clock.advance(300ms);
    EXPECT_EQ(phase(), Phase::loading);
    EXPECT_NEAR(playback->state().position, before, 0.3);
    tv().say(Event::stopped);  // the old one
    playback->chooseTracks(sound(3));
    playback->chooseTracks(sound(4));
    clock.advance(10s);
    EXPECT_THAT(published, ElementsAre(sound(1), sound(2), sound(4))) << "once it shows a picture";
    EXPECT_THAT(phases, ElementsAre(Phase::loading, Phase::playing));
    ASSERT_EQ(tv().movies.size(), 3U);
    EXPECT_NEAR(tv().movies[1].start, before, 0.3);
    EXPECT_NE(tv().movies[1].uuid, tv().movies[0].uuid);
    EXPECT_NEAR(playback->state().position, before + 10.3 - 2 * 0.7, 1);
    EXPECT_EQ(controls.size(), 1U);
    EXPECT_FALSE(tv().verbs.contains(u"stop"_s)) << qPrintable(tv().verbs.join(u','));

    playback->pause();
    clock.advance(2s);
    ASSERT_EQ(phase(), Phase::paused);
    const double paused = playback->state().position;
    playback->chooseTracks(sound(5));
    clock.advance(8s);
    EXPECT_EQ(phase(), Phase::paused);
    EXPECT_EQ(tv().verbs.last(), u"rate 0"_s);
    EXPECT_NEAR(playback->state().position, paused, 2);
    playback->chooseTracks(sound(6));
    clock.advance(1s);
    playback->seek(80);
    playback->resume();
    clock.advance(8s);
    EXPECT_EQ(phase(), Phase::playing) << "told meanwhile";
    EXPECT_NEAR(playback->state().position, 85, 3);

    // A file whose tracks cannot be chosen is not interrupted for nothing.
    hasChosenTracks = false;
    playback->chooseTracks(sound(7));
    clock.advance(3s);
    EXPECT_EQ(tv().movies.size(), 5U);
    EXPECT_EQ(phase(), Phase::playing);
}

TEST_F(RemotePlaybackTest, KnowsALostConnectionAlsoWhileOtherTracksLoad) {
    for (const bool isAnswered : {false, true}) {
        direct = {};
        playUntil(5, 50);
        playback->pause();
        clock.advance(1s);
        tv().latency = [](const QString& verb) { return verb.startsWith(u"play") ? 2s : 10ms; };
        playback->chooseTracks(sound(2));
        clock.advance(isAnswered ? 2300ms : 1s);
        ASSERT_EQ(phase(), Phase::loading);
        tv().close();
        clock.advance(1s);
        EXPECT_EQ(phase(), Phase::dropped);
        EXPECT_NEAR(playback->state().position, 54.5, 1);
        published.clear();
        playback->reattach();
        clock.advance(8s);
        EXPECT_EQ(phase(), Phase::paused);
        EXPECT_THAT(published, ElementsAre(sound(2)));
    }
    playback->chooseTracks(sound(3));
    activity = {};
    tv().report = [](double) { return PlaybackReport(); };
    clock.advance(20s);
    EXPECT_EQ(phase(), Phase::failed);
}

TEST_F(RemotePlaybackTest, HandsOverAgainWhatWasNeverFetched) {
    activity = {};
    direct = [this](ScriptedControl& television) {
        television.report = [&](double seconds) -> VideoControl::Reported {
            if (television.movies.size() < 2) return PlaybackReport();
            activity = fetched();
            return television.usual(seconds);
        };
        television.otherWays = 1;
    };
    play(18);
    clock.advance(20s);
    EXPECT_EQ(phase(), Phase::playing);
    ASSERT_EQ(tv().movies.size(), 2U);
    EXPECT_EQ(tv().movies[1].start, 18);
    EXPECT_NE(tv().movies[0].uuid, tv().movies[1].uuid);
    EXPECT_TRUE(tv().isFetchNoted);
}

TEST_F(RemotePlaybackTest, MaybeDestroyedAtAnyPoint) {
    for (int step = 0; step < 160; ++step) {
        play(step % 2 == 0 ? 0 : 30);
        if (step % 3 == 0) playback->seek(20);
        clock.advance(std::chrono::milliseconds(step * 5));
        if (step % 3 == 1) playback->pause();
        if (step % 5 == 1) playback->stop();
        if (step % 7 == 1) play(3);
        clock.advance(std::chrono::milliseconds(step % 20));
        const QStringList verbs = tv().verbs;
        const bool owesStop = tv().isOpen() && !tv().movies.empty() && verbs.last() != u"stop"_s;
        leave();
        EXPECT_EQ(tv().verbs.last() == u"abandon"_s, owesStop) << step << verbs.join(u", "_s).toStdString();
        EXPECT_FALSE(tv().isOpen());
        clock.advance(20s);
        playback.emplace(clock, world);
    }
}

}  // namespace
}  // namespace velmora
