#include "Sender/Plist.h"
#include "Sender/Session/SessionPlayControl.h"
#include "Sender/Session/SessionStory.h"

#include <gmock/gmock.h>

namespace velmora {
namespace {

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;
using test::ScriptedReceiver;
using Step = Answers::Step;

class SessionPlayControlTest : public test::SessionStory<SessionPlayControl> {
  protected:
    static inline const QString box = u"AppleTV6,2"_s;
};

TEST_F(SessionPlayControlTest, PlaysSteersAndLeaves) {
    ASSERT_TRUE(start(box));
    EXPECT_TRUE(run(control->setRate(1))) << "as whoever called `play` does";
    EXPECT_TRUE(run(control->seek(12.5)));
    EXPECT_TRUE(run(control->setRate(0)));
    EXPECT_TRUE(run(control->stop()));
    control->close();
    EXPECT_EQ(
        tv().log,
        QStringList({u"1 SETUP NTP"_s, u"1 events"_s, u"1 RECORD"_s, u"1 POST /play"_s,
                     u"1 PUT /setProperty?isInterestedInDateRange"_s, u"1 PUT /setProperty?actionAtItemEnd"_s,
                     u"1 POST /rate?value=1.000000"_s, u"1 PUT /setProperty?forwardEndTime"_s,
                     u"1 PUT /setProperty?reverseEndTime"_s, u"1 POST /scrub?position=12.500000"_s,
                     u"1 POST /rate?value=0.000000"_s, u"1 POST /stop"_s, u"1 TEARDOWN"_s}));
    EXPECT_FALSE(tv().beats.isEmpty());
    EXPECT_EQ(tv().overlaps, 0);
    const auto play =
        std::ranges::find_if(tv().requests, [](const Request& r) { return r.target == "/play"; });
    EXPECT_EQ(play->version, "HTTP/1.1");
    EXPECT_EQ(play->headers.value("X-Apple-Stream-ID"), "1");
    EXPECT_EQ(Plist::decode(play->body).value().toMap().value(u"uuid"_s), movie().uuid);
}

TEST_F(SessionPlayControlTest, EndsWhatItCouldNotFinish) {
    const struct {
        QString verb;
        std::deque<int> answers;
        std::optional<Step> failsIn;
        bool isToldOver;
    } cases[] = {
        {u"SETUP NTP"_s, {400}, std::nullopt, false},
        {u"RECORD"_s, {500}, Step::session, true},
        {u"POST /play"_s, {500, 500, 500}, std::nullopt, false},
        {u"POST /play"_s, {500, 500, 500, 500}, Step::handover, true},
        {u"POST /play"_s, {404}, Step::handover, true},
        {u"POST /play"_s, {ScriptedReceiver::silence}, Step::handover, true},
        {u"PUT /setProperty?actionAtItemEnd"_s, {404}, std::nullopt, false},
        {u"POST /rate?value=1.000000"_s, {ScriptedReceiver::closing}, Step::handover, false},
    };
    for (const auto& [verb, answers, failsIn, isToldOver] : cases) {
        renew();
        tv().statuses[verb] = answers;
        const auto outcome = start(box);
        EXPECT_EQ(outcome.has_value(), !failsIn) << verb.toStdString();
        EXPECT_EQ(outcome ? std::nullopt : outcome.error().step, failsIn) << verb.toStdString();
        EXPECT_EQ(tv().log.count(u"1 TEARDOWN"_s), isToldOver ? 1 : 0) << verb.toStdString();
        control->abandon();
    }
}

TEST_F(SessionPlayControlTest, BelievesEventsWhereReportsAreWithheld) {
    tv().bodies[u"GET /playback-info"_s] = Plist::encodeBinary(
        QVariantMap{{u"readyToPlay"_s, true}, {u"duration"_s, 120.0}, {u"position"_s, 3.0}});
    ASSERT_TRUE(start(box));
    EXPECT_EQ(run(control->playbackInfo()).value().position, 3);
    tv().statuses[u"GET /playback-info"_s] = {500, 500};
    EXPECT_FALSE(run(control->playbackInfo()).value().isReady);
    tv().report(1, {{u"type"_s, u"playbackState"_s}, {u"name"_s, u"playing"_s}, {u"position"_s, 20.0}});
    clock.advance(5s);
    EXPECT_NEAR(run(control->playbackInfo()).value().position, 25, 0.1);
}

}  // namespace
}  // namespace velmora
