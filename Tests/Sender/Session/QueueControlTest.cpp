#include "Sender/Session/QueueControl.h"
#include "Sender/Session/ScriptedReceiver.h"
#include "Sender/Session/SessionStory.h"

#include <QRegularExpression>

#include <gmock/gmock.h>

namespace velmora {
namespace {

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;
using test::ScriptedReceiver;
using Kind = ConnectionError::Kind;
using State = PlaybackEvent::State;
using Step = Answers::Step;

class QueueControlTest : public test::SessionStory<QueueControl> {
  protected:
    /// A movie that plays, `position` seconds after its beginning.
    void playOn(const QString& model, double position = 10) {
        ASSERT_TRUE(start(model));
        connection = model == box ? 2 : 1;
        report({{u"type"_s, u"playbackState"_s}, {u"name"_s, u"playing"_s}, {u"position"_s, position}});
        control->setRate(1);  // as whoever called `play` does
        clock.advance(50ms);
        tv().log.clear();
    }
    void report(const QVariantMap& message) {
        tv().report(connection, message);
        clock.advance(1ms);
    }
    [[nodiscard]] double position() { return run(control->playbackInfo()).value().position; }

    int connection = 1;  ///< of the session that carries the movie

    static inline const QString box = u"AppleTV14,1"_s;
    static inline const QString television = u"OLED55CX"_s;
    static inline const QStringList queueing{u"insertPlayQueueItem"_s,
                                             u"setProperty isInterestedInDateRange"_s,
                                             u"setProperty actionAtItemEnd"_s, u"setRate 1"_s};
};

TEST_F(QueueControlTest, StartsInTheOrderThatReceiversTake) {
    const auto on = [](int number, QStringList verbs) {
        for (QString& verb : verbs) verb.prepend(QString::number(number) + u' ');
        return verbs;
    };
    const QStringList remote =
        on(1, {u"SETUP None"_s, u"events"_s, u"RECORD"_s, u"SETUP remote"_s}) + QStringList(u"data"_s);
    const QStringList rest = QStringList{u"events"_s, u"RECORD"_s, u"SETUP queue"_s} + queueing;
    const struct {
        QString model;
        std::map<QString, std::deque<int>> statuses;
        QStringList log;
    } cases[] = {
        {box, {}, remote + on(2, QStringList(u"SETUP PTP"_s) + rest)},
        {box, {{u"SETUP PTP"_s, {400}}}, remote + on(2, QStringList{u"SETUP PTP"_s, u"SETUP NTP"_s} + rest)},
        {television, {}, on(1, QStringList(u"SETUP NTP"_s) + rest)},
        {u"MacBookPro18,3"_s, {}, on(1, QStringList(u"SETUP NTP"_s) + rest)},
        // One that is not known takes no remote control; and does not answer as long as its clock is wrong.
        {QString(),
         {{u"SETUP None"_s, {500}}},
         QStringList(u"1 SETUP None"_s) + on(2, QStringList(u"SETUP PTP"_s) + rest)},
        {television,
         {{u"SETUP NTP"_s, {ScriptedReceiver::silence}}},
         QStringList{u"1 SETUP NTP"_s, u"1 TEARDOWN"_s} + on(2, QStringList(u"SETUP PTP"_s) + rest)},
    };
    for (const auto& [model, statuses, log] : cases) {
        renew();
        tv().statuses = statuses;
        tv().eventRefusals = 2;
        EXPECT_TRUE(start(model));
        EXPECT_EQ(tv().log, log);
        EXPECT_EQ(tv().overlaps, 0);
        const QString queue = log.last().left(2);
        EXPECT_LE(tv().beats.filter(QRegularExpression(u"^"_s + queue)).size(), 1)
            << "no sign of life before the movie is handed over";
    }
    const Request& command = tv().requests.at(tv().requests.size() - 2);
    EXPECT_EQ(command.version, "HTTP/1.1");
    EXPECT_EQ(command.headers.value("X-Apple-StreamID"), "7");
    EXPECT_EQ(command.headers.value("X-Apple-ProtocolVersion"), "1");
}

TEST_F(QueueControlTest, EndsWhatItCouldNotFinish) {
    constexpr int silence = ScriptedReceiver::silence;
    constexpr int closing = ScriptedReceiver::closing;
    const struct {
        QString verb;
        std::deque<int> answers;
        std::optional<Step> step;
        Kind kind;
        int status;
        bool isToldOver;
        Clock::Duration atMost;
    } cases[] = {
        {u"SETUP NTP"_s, {470}, Step::session, Kind::status, 470, false, 1s},
        {u"RECORD"_s, {500}, Step::session, Kind::status, 500, true, 1s},
        {u"SETUP queue"_s, {404}, Step::session, Kind::status, 404, true, 1s},
        {u"SETUP queue"_s, {silence}, Step::session, Kind::timeout, 0, true, 8s},
        {u"insertPlayQueueItem"_s, {500}, Step::handover, Kind::status, 500, true, 1s},
        {u"insertPlayQueueItem"_s, {silence}, Step::handover, Kind::timeout, 0, true, 8s},
        {u"insertPlayQueueItem"_s, {closing}, Step::handover, Kind::closed, 0, false, 1s},
        // The item is in the queue: as if the connection were gone, so that no other way is tried.
        {u"setRate 1"_s, {500}, Step::handover, Kind::closed, 0, true, 1s},
        {u"setProperty actionAtItemEnd"_s, {silence}, Step::handover, Kind::timeout, 0, true, 8s},
    };
    for (const auto& [verb, answers, step, kind, status, isToldOver, atMost] : cases) {
        renew();
        tv().statuses[verb] = answers;
        const Clock::Duration before = clock.elapsed();
        const auto outcome = start(television);
        ASSERT_FALSE(outcome) << verb.toStdString();
        EXPECT_EQ(outcome.error().kind, kind) << verb.toStdString();
        EXPECT_EQ(outcome.error().status, status) << verb.toStdString();
        EXPECT_EQ(outcome.error().step, step) << verb.toStdString();
        EXPECT_LE(clock.elapsed() - before, atMost) << verb.toStdString();
        control->abandon();
        EXPECT_EQ(tv().log.count(u"1 TEARDOWN"_s), isToldOver ? 1 : 0) << verb.toStdString();
        EXPECT_EQ(tv().overlaps, 0) << verb.toStdString();
    }
    renew();
    tv().eventRefusals = 100;
    EXPECT_EQ(start(television).error().step, Step::session);
    EXPECT_EQ(tv().log.last(), u"1 TEARDOWN"_s);
    renew();
    tv().statuses = {{u"SETUP None"_s, {500}}, {u"SETUP PTP"_s, {400}}};
    EXPECT_FALSE(start(box)) << "without a remote control and with NTP it would show no picture";
    EXPECT_FALSE(tv().log.contains(u"2 SETUP NTP"_s));
}

TEST_F(QueueControlTest, ShowsThatItIsThereAndNeverInBetween) {
    playOn(television);
    tv().latencies[u"seek"_s] = 3s;
    EXPECT_TRUE(run(control->seek(30)));
    clock.advance(11s);
    EXPECT_GE(tv().beats.size(), 6);
    EXPECT_EQ(tv().overlaps, 0);
    tv().statuses[u"POST /feedback"_s] = {ScriptedReceiver::silence, ScriptedReceiver::silence};
    clock.advance(10s);
    const auto reported = run(control->playbackInfo());
    ASSERT_FALSE(reported);
    EXPECT_EQ(reported.error().kind, Kind::timeout);
    EXPECT_FALSE(control->isOpen());
    for (const PlaybackEvent& event : events) EXPECT_NE(event.state, State::stopped) << "nobody stopped it";
}

TEST_F(QueueControlTest, HearsWhatTheReceiverSays) {
    playOn(television);
    const QVariantMap ours{{u"uuid"_s, movie().uuid}};
    const QVariantMap theirs{{u"uuid"_s, u"SOMEBODY"_s}};
    report({{u"type"_s, u"playbackState"_s}, {u"name"_s, u"stopped"_s}, {u"item"_s, theirs}});
    EXPECT_NEAR(position(), 10, 0.1);
    report({{u"type"_s, u"playbackInfo"_s},
            {u"kind"_s, u"response"_s},
            {u"info"_s, QVariantMap{{u"position"_s, 50.0}, {u"rate"_s, 0.0}, {u"item"_s, ours}}}});
    clock.advance(3s);
    EXPECT_NEAR(position(), 50, 0.1) << "it stands";
    EXPECT_EQ(run(control->playbackInfo()).value().rate, 0.0);
    const qsizetype heard = tv().acknowledged.size();
    tv().report(connection, {{u"type"_s, u"updateInfo"_s}}, false);
    tv().reportBytes(connection, "not a property list");
    clock.advance(1ms);
    EXPECT_EQ(tv().acknowledged.size(), heard + 2);
    const Response& answer = tv().acknowledged.last();
    EXPECT_EQ(answer.version, "RTSP/1.0");
    EXPECT_EQ(answer.headers.value("CSeq"), "3");
    EXPECT_EQ(answer.headers.value("Server"), "AirTunes/960.13.1");

    report({{u"type"_s, u"notification"_s}, {u"name"_s, u"itemPlayedToEnd"_s}, {u"item"_s, ours}});
    report({{u"type"_s, u"playbackState"_s}, {u"name"_s, u"paused"_s}, {u"item"_s, ours}});
    EXPECT_FALSE(run(control->playbackInfo()).value().isReady);
    EXPECT_EQ(events.back().state, State::stopped) << "what comes behind the end does not undo it";
    EXPECT_EQ(events.back().reason, u"ended"_s);
}

TEST_F(QueueControlTest, AsksForThePositionOncePerSecondAndOnlyWhereThatIsAnswered) {
    playOn(television);
    for (int poll = 0; poll < 12; ++poll) {
        (void)position();
        clock.advance(200ms);
    }
    EXPECT_THAT(tv().log.count(u"1 playbackInfo"_s), testing::AllOf(testing::Ge(2), testing::Le(4)));
    tv().statuses[u"playbackInfo"_s] = {404};
    clock.advance(1s);
    EXPECT_GT(position(), 10);
    tv().log.clear();
    clock.advance(2s);
    EXPECT_GT(position(), 13);
    EXPECT_TRUE(tv().log.isEmpty());
}

TEST_F(QueueControlTest, TellsAViewerWhoLeftFromALostConnection) {
    playOn(television);
    tv().closeEvents(connection);
    clock.advance(1ms);
    EXPECT_EQ(events.back().state, State::stopped);
    EXPECT_EQ(run(control->playbackInfo()).error().kind, Kind::closed);
    control->close();
    EXPECT_EQ(tv().log, QStringList(u"1 TEARDOWN"_s));
}

TEST_F(QueueControlTest, SteersAnAppleTvByItsRemoteControl) {
    tv().devices = 0;
    const Clock::Duration before = clock.elapsed();
    playOn(box);
    EXPECT_GE(clock.elapsed() - before, 3500ms) << "it woke up, and stayed awake for a while";
    remote::Envelope state;
    auto& info = *state.mutable_set_state()->mutable_now_playing();
    info.set_duration(movie().duration);
    info.set_elapsed(70);
    info.set_rate(1);
    tv().tell(state);
    clock.advance(1s);
    EXPECT_NEAR(position(), 71, 0.1);
    EXPECT_TRUE(run(control->setRate(0)));
    EXPECT_TRUE(run(control->seek(90)));
    EXPECT_TRUE(run(control->setRate(1)));
    EXPECT_EQ(tv().log, QStringList({u"remote 2"_s, u"remote 45 90"_s, u"remote 1"_s}));
    EXPECT_GE(tv().acknowledgedFrames, 5);
    tv().remoteStatus = 2;
    EXPECT_TRUE(run(control->seek(20)));
    EXPECT_EQ(tv().log.mid(3), QStringList({u"remote 45 20"_s, u"2 seek"_s})) << "then the queue's own way";

    tv().log.clear();
    EXPECT_TRUE(run(control->stop()));
    control->close();
    EXPECT_EQ(tv().log, QStringList({u"2 stop"_s, u"2 TEARDOWN"_s, u"1 TEARDOWN"_s}));
    EXPECT_EQ(tv().overlaps, 0);
}

TEST_F(QueueControlTest, SteersByTheQueueWhereTheRemoteControlIsSilent) {
    tv().devices = -1;
    playOn(box);
    EXPECT_TRUE(run(control->setRate(0)));
    EXPECT_TRUE(run(control->seek(20)));
    EXPECT_EQ(tv().log, QStringList({u"2 setRate 0"_s, u"2 seek"_s}));
}

TEST_F(QueueControlTest, EndsAStartThatNobodyWantsAnyMore) {
    control = QueueControl::make(clock, tv().road(box));
    tv().statuses[u"SETUP PTP"_s] = {ScriptedReceiver::silence};
    const auto opening = control->open();
    clock.advance(1s);
    control->abandon();
    EXPECT_EQ(tv().log.last(2), QStringList({u"2 TEARDOWN"_s, u"1 TEARDOWN"_s}));
}

TEST_F(QueueControlTest, PlaysAnotherMovieInASessionOfItsOwn) {
    playOn(television);
    ASSERT_TRUE(run(control->play(movie())));
    const QStringList before{u"1 stop"_s, u"1 TEARDOWN"_s, u"2 SETUP NTP"_s, u"2 events"_s, u"2 RECORD"_s};
    EXPECT_EQ(tv().log.first(before.size()), before);
    EXPECT_EQ(tv().log.last(), u"2 setRate 1"_s);
}

}  // namespace
}  // namespace velmora
