#include "Sender/Discovery/KnownReceivers.h"
#include "Sender/NegotiatedControl.h"
#include "Sender/PlaybackFailure.h"
#include "Sender/ScriptedControl.h"
#include "Sender/SettingsVault.h"
#include "Support/ScriptedSystem.h"

#include <QCoreApplication>

#include <gmock/gmock.h>

namespace velmora {
namespace {

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;
using enum Flavour;
using enum Handover;
using test::ScriptedControl;
using testing::HasSubstr;
using Kind = ConnectionError::Kind;
using Outcome = VideoControl::Outcome;
using Step = Answers::Step;

Outcome refusal(int status, std::optional<Step> step = {}) {
    return std::unexpected(ConnectionError{.kind = Kind::status, .status = status, .step = step});
}

/// A receiver as its announcement tells it.
Receiver announced(const char* features, const QByteArray& model = "TV") {
    Receiver receiver{.name = u"tv"_s,
                      .identifier = u"02:00:00:00:00:01"_s,
                      .address = QHostAddress(u"192.0.2.2"_s),
                      .port = 7000};
    receiver.announced = TxtRecord::parse(
        {QByteArray("features=") + features, "model=" + model, "srcvers=377.25", "flags=0x4"});
    return receiver;
}
const Receiver plainTv = announced("0x77");
const Receiver legacyTv = announced("0x8000001");
const Receiver sealedTv = announced("0x1,0x10840");  // transient

/// One control over scripted ones, in virtual time.
class NegotiatedControlTest : public testing::Test {
  protected:
    void make(const Receiver& receiver) {
        tried.clear();
        controls.clear();
        control = NegotiatedControl::make(
            clock, receiver, {&credentials, &known}, [this](const Approach& approach, const auto&) {
                tried.push_back(approach);
                controls.push_back(std::make_shared<ScriptedControl>(clock));
                controls.back()->latency = [this](const QString& verb) -> Clock::Duration {
                    return verb == u"open" ? openTakes : 10ms;
                };
                controls.back()->outcome = [this, approach](const QString& verb) {
                    return script ? script(approach, verb.section(u' ', 0, 0)) : Outcome();
                };
                return controls.back();
            });
    }
    std::optional<Outcome> finished(QCoro::Task<Outcome> task) {
        std::optional<Outcome> outcome;
        task.then([&](const Outcome& result) { outcome = result; });
        clock.advance(5s);
        return outcome;
    }
    Outcome open() { return finished(control->open()).value_or(refusal(-1)); }
    Outcome play() { return finished(control->play({})).value_or(refusal(-1)); }
    Outcome openAndPlay() {
        const Outcome opened = open();
        return opened ? play() : opened;
    }
    ~NegotiatedControlTest() override {
        control.reset();
        QCoreApplication::processEvents();
    }

    test::VirtualClock clock;
    test::MapPreferences values;
    test::MapPreferences secrets;
    KnownReceivers known{values};
    CredentialStore credentials{clock, nullptr, std::make_unique<SettingsVault>(secrets)};
    std::function<Outcome(const Approach&, const QString& verb)> script;
    Clock::Duration openTakes = 10ms;
    std::vector<Approach> tried;
    std::vector<std::shared_ptr<ScriptedControl>> controls;
    std::shared_ptr<NegotiatedControl> control;
};

TEST_F(NegotiatedControlTest, TriesWhatTheAnswersLeaveToTry) {
    const Outcome ignored = std::unexpected(ConnectionError{.kind = Kind::timeout, .step = Step::handover});
    const Outcome closed = std::unexpected(ConnectionError{.kind = Kind::closed, .step = Step::session});
    const Outcome unreachable = std::unexpected(ConnectionError{.kind = Kind::unreachable});
    const Approach pP{plain, Handover::play}, pT{plain, playText}, kP{legacyKeys, Handover::play};
    const Approach tP{transient, Handover::play}, tQ{transient, playQueue};
    const struct {
        Receiver receiver;
        std::optional<Outcome> answer;  // to this verb in the first way; all others are kind
        const char* verb;
        std::vector<Approach> tried;
        const char* failure;  // null: plays
    } cases[] = {
        {plainTv, {}, "", {pP}, nullptr},
        {plainTv, refusal(501), "play", {pP, pT}, nullptr},
        {plainTv, refusal(404), "play", {pP}, "only take mirroring"},
        {legacyTv, refusal(403), "open", {pP, kP}, nullptr},
        {sealedTv, refusal(501, Step::handover), "play", {tP, tQ}, nullptr},
        {sealedTv, closed, "open", {tP, tQ}, nullptr},
        // It may have taken the movie; or nobody knows how far it came.
        {sealedTv, ignored, "play", {tP}, "stopped answering"},
        {sealedTv, refusal(501), "play", {tP}, "(501)"},
        {plainTv, refusal(453), "play", {pP, pP}, "busy with something else"},
        {sealedTv, unreachable, "open", {tP}, ""},
    };
    for (const auto& entry : cases) {
        script = [&](const Approach& approach, const QString& verb) -> Outcome {
            const bool isMeant = approach == entry.tried.front() && verb == QLatin1StringView(entry.verb);
            return isMeant ? entry.answer.value() : Outcome();
        };
        SCOPED_TRACE(&entry - cases);
        make(entry.receiver);
        const Outcome outcome = openAndPlay();
        EXPECT_EQ(outcome.has_value(), entry.failure == nullptr);
        if (!outcome && entry.failure) {
            EXPECT_THAT(PlaybackFailure::refused(outcome.error()).toStdString(), HasSubstr(entry.failure));
        }
        EXPECT_EQ(tried, entry.tried);
        for (std::size_t i = 0; i + 1 < controls.size(); ++i) EXPECT_FALSE(controls[i]->isOpen());
    }
}

TEST_F(NegotiatedControlTest, FindsAnotherWayForWhatWasTakenAndNeverFetched) {
    make(sealedTv);
    ASSERT_TRUE(openAndPlay());
    ASSERT_TRUE(control->tryAnotherWay());
    ASSERT_TRUE(play());
    EXPECT_EQ(tried, (std::vector<Approach>{{transient, Handover::play}, {transient, playQueue}}));
    EXPECT_EQ(controls.front()->verbs.last(), u"stop"_s);
    EXPECT_FALSE(controls.front()->isOpen());
    EXPECT_FALSE(control->tryAnotherWay());  // an item of the queue may yet play

    control->noteFetched();
    make(sealedTv);
    ASSERT_TRUE(open());
    EXPECT_EQ(tried.front(), (Approach{transient, playQueue})) << "what worked comes first";
    Receiver updated = sealedTv;
    updated.announced->sourceVersion = u"400.1"_s;
    make(updated);
    ASSERT_TRUE(open());
    EXPECT_EQ(tried.front(), (Approach{transient, Handover::play})) << "and not after an update";
}

TEST_F(NegotiatedControlTest, NeverOffersTwiceWhatWasTaken) {
    for (const bool isFetched : {false, true}) {
        make(sealedTv);
        script = {};
        ASSERT_TRUE(openAndPlay());
        if (isFetched) control->noteFetched();
        script = [](const Approach&, const QString&) { return refusal(500, Step::handover); };
        EXPECT_FALSE(play());
        EXPECT_EQ(tried.size(), 1U);
    }
    EXPECT_FALSE(control->tryAnotherWay());
    make(plainTv);  // whose silence is a firewall's
    script = {};
    ASSERT_TRUE(openAndPlay());
    EXPECT_FALSE(control->tryAnotherWay());
}

TEST_F(NegotiatedControlTest, TellsThatAReceiverTakesItsTime) {
    openTakes = 20s;
    make(plainTv);
    int changes = 0;
    control->onHold([&] { ++changes; });
    const auto opening = control->open();
    clock.advance(2s);
    EXPECT_EQ(changes, 0);
    clock.advance(2s);
    EXPECT_EQ(control->hold(), VideoControl::Hold{});
    clock.advance(20s);
    EXPECT_TRUE(control->isOpen());
    EXPECT_FALSE(control->hold());
    EXPECT_EQ(changes, 2);
}

}  // namespace
}  // namespace velmora
