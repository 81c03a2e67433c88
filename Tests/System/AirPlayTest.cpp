#include "Support/LoggedLines.h"
#include "Support/ScriptedSystem.h"
#include "Support/VirtualClock.h"
#include "System/AirPlay.h"
#include "System/SleepGuard.h"

#include <gtest/gtest.h>

namespace velmora::test {
namespace {

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

TEST(AirPlay, FollowsTheRouteByTheDevicesIdentifier) {
    using Name = std::optional<QString>;
    struct Step {
        std::optional<OutputContext::Device> device;
        std::optional<quint64> features;
        QStringList logged;
        QList<Name> told;
        Name name;
    };
    const Step story[] = {
        {{}, {}, {}, {}, {}},
        {{{u"Den"_s, u"1"_s}}, 7, {u"AirPlay route → Den (features 7)"_s}, {u"Den"_s}, u"Den"_s},
        {{{u"Renamed"_s, u"1"_s}}, 7, {}, {}, u"Den"_s},
        {{{u"Den"_s, u"2"_s}},
         1,
         {u"AirPlay route → Den (features 1)"_s, u"re-attached for all features → 7"_s},
         {u"Den"_s},
         u"Den"_s},
        {{{u"Attic"_s, {}}}, {}, {u"AirPlay route → Attic (features -1)"_s}, {u"Attic"_s}, u"Attic"_s},
        {{{u"Loft"_s, {}}}, 4, {u"AirPlay route → Loft (features 4)"_s}, {u"Loft"_s}, u"Loft"_s},
        {{{{}, u"3"_s}}, 6, {u"AirPlay route → ? (features 6)"_s}, {Name()}, {}},
        {{}, {}, {u"AirPlay route → this Mac"_s}, {Name()}, {}},
    };
    VirtualClock clock;
    ScriptedContext context;
    AirPlay airPlay(clock, &context);
    QList<Name> told;
    airPlay.onRouteChange([&](const Name& name) { told.append(name); });
    LoggedLines log;
    for (const Step& step : story) {
        context.device = step.device;
        context.features = step.features;
        clock.advance(499ms);
        EXPECT_EQ(told.size(), 0) << "between two looks";
        clock.advance(1ms);
        EXPECT_EQ(log.take(), step.logged);
        EXPECT_EQ(std::exchange(told, {}), step.told);
        EXPECT_EQ(airPlay.deviceName(), step.name);
    }
    EXPECT_EQ(context.timesSet, 1);
}

TEST(AirPlay, BindsPickersOnceAndOpensTheNearest) {
    VirtualClock clock;
    ScriptedContext context;
    const AirPlay without(clock, nullptr);
    AirPlay airPlay(clock, &context);
    ScriptedPicker own;
    {
        ScriptedPicker anchor;
        without.bind(own);
        without.presentPicker(&own);
        airPlay.presentPicker();
        airPlay.bind(own);
        airPlay.bind(own);
        EXPECT_TRUE(own.prefersVideo && own.bound == context.identifier);
        EXPECT_EQ(own.timesBound, 1);
        airPlay.setPickerAnchor(&anchor);
        airPlay.presentPicker();
        airPlay.presentPicker(&own);
        EXPECT_EQ(anchor.timesShown, 1);
        EXPECT_EQ(own.timesShown, 1);
    }
    airPlay.presentPicker();
    context.identifier.reset();
    ScriptedPicker unbound;
    airPlay.bind(unbound);
    EXPECT_EQ(unbound.timesBound, 0);
}

TEST(SleepGuard, HoldsOneAssertionAtATime) {
    ScriptedPower power;
    SleepGuard guard(power);
    guard.setActive(false);
    guard.setActive(true);
    guard.setActive(true);
    EXPECT_EQ(power.held.values(), QStringList{u"Velmora is streaming a movie"_s});
    guard.setActive(false);
    guard.setActive(false);
    power.refuses = true;
    guard.setActive(true);
    guard.setActive(false);
    EXPECT_EQ(power.released, QList<PowerManager::Assertion>{1}) << "each once, and none that was refused";
}

}  // namespace
}  // namespace velmora::test
