// Ways into televisions that want to be asked first: everything in between is real, as in TelevisionTest.cpp.
#include "Sender/Discovery/KnownReceivers.h"
#include "Sender/PlaybackFailure.h"
#include "Sender/SettingsVault.h"
#include "Sender/Window.h"
#include "Support/ScriptedSystem.h"

#include <gmock/gmock.h>

namespace velmora {
namespace {

using namespace Qt::StringLiterals;
using test::Misbehaviour;
using test::Television;
using test::TelevisionOptions;
using test::waitFor;
using test::Window;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Phase = RemotePlayback::Phase;
using Tv = TelevisionOptions::Flavour;
using TvHandover = TelevisionOptions::Handover;

std::string text(const QStringList& list) {
    return list.join(u", "_s).toStdString();
}

class AccessTest : public test::WindowTest {
  protected:
    ReceiverMemory memory() { return {&credentials_, &known_}; }
    void start(Window& window, const Television& television) {
        window.playback.play(television.receiver(), item(20));
    }
    /// As the user does it, until the picture moves or all is over.
    bool plays(Window& window, const QString& pin, const QString& password) {
        std::optional<Phase> answered;
        return waitFor([&] {
                   const RemotePlayback::State state = window.playback.state();
                   if (state.phase == answered) return false;
                   answered.reset();
                   if (state.reason.contains(u"pause"_s)) return false;
                   if (state.phase == Phase::needsPin || state.phase == Phase::needsPassword) {
                       asked_.append(state.phase == Phase::needsPin ? u"pin"_s : u"password"_s);
                       reasons_.append(state.reason);
                       answered = state.phase;
                       window.playback.supply(state.phase == Phase::needsPin ? pin : password);
                   }
                   return state.phase == Phase::playing || state.isOver();
               }) &&
               window.playback.state().phase == Phase::playing;
    }
    QStringList asked() { return std::exchange(asked_, {}); }

    test::MapPreferences secrets_;
    test::MapPreferences values_;
    KnownReceivers known_{values_};
    CredentialStore credentials_{clock_, nullptr, std::make_unique<SettingsVault>(secrets_)};
    QStringList asked_;
    QStringList reasons_;
};

TEST_F(AccessTest, AsksOnceAndRemembersUntilTheTelevisionForgets) {
    const QStringList pin{u"pin"_s};
    const QStringList password{u"password"_s};
    const struct {
        const char* name;
        TelevisionOptions options;
        QStringList first;
        QStringList afterForgetting;
    } cases[] = {
        {"plain", {}, {}, {}},
        {"password", {.flavour = Tv::password, .password = u"secret"_s}, password, {}},
        {"legacy keys", {.flavour = Tv::legacyKeys}, {}, {}},
        {"legacy PIN", {.flavour = Tv::legacyPin}, pin, pin},
        {"transient", {.flavour = Tv::transient}, {}, {}},
        {"transient queue", {.flavour = Tv::transient, .handover = TvHandover::queue}, {}, {}},
        {"transient password", {.flavour = Tv::transient, .password = u"secret"_s}, password, {}},
        {"paired", {.flavour = Tv::paired}, pin, pin},
        {"paired queue", {.flavour = Tv::paired, .handover = TvHandover::queue}, pin, pin},
        {"paired password", {.flavour = Tv::paired, .password = u"secret"_s}, password + pin, pin},
    };
    for (const auto& entry : cases) {
        SCOPED_TRACE(entry.name);
        TelevisionOptions options = entry.options;
        options.name = QString::fromLatin1(entry.name);
        Television television(clock_, options);
        ASSERT_TRUE(television.listen());
        for (const bool isFirst : {true, false}) {
            Window window(clock_, *server_, memory());
            start(window, television);
            EXPECT_TRUE(plays(window, television.pin(), u"secret"_s))
                << window.playback.state().reason.toStdString();
            EXPECT_EQ(text(asked()), text(isFirst ? entry.first : QStringList()));
            window.playback.stop();
            EXPECT_TRUE(window.reaches(Phase::stopped));
        }
        television.forgetPairings();
        reasons_.clear();
        Window window(clock_, *server_, memory());
        start(window, television);
        EXPECT_TRUE(plays(window, television.pin(), u"secret"_s));
        EXPECT_EQ(text(asked()), text(entry.afterForgetting));
        for (const QString& reason : reasons_)
            EXPECT_EQ(reason, explanation(PairingError{PairingError::Kind::forgotten}));
        EXPECT_EQ(text(television.complaints()), "");

        memory().forget(television.receiver().identifier);
        EXPECT_TRUE(secrets_.values.isEmpty());
        EXPECT_THAT(known_.receivers(), IsEmpty());
    }
}

TEST_F(AccessTest, BearsWrongPinsAndThePausesAfterThem) {
    for (const Tv flavour : {Tv::legacyPin, Tv::paired}) {
        Television television(clock_, {.flavour = flavour});
        ASSERT_TRUE(television.listen());
        Window window(clock_, *server_, memory());
        start(window, television);
        ASSERT_TRUE(window.reaches(Phase::needsPin));
        EXPECT_TRUE(window.playback.state().reason.isEmpty());
        double longestPause = 0;
        for (const char* guess : {"0000", "9999"}) {
            window.playback.supply(QString::fromLatin1(guess));
            ASSERT_TRUE(waitFor([&] { return window.phase() == Phase::connecting; }));
            ASSERT_TRUE(waitFor([&] {
                const RemotePlayback::State state = window.playback.state();
                longestPause = std::max(longestPause, state.retryIn);
                return state.phase == Phase::needsPin && !state.reason.contains(u"pause"_s);
            }));
            EXPECT_FALSE(window.playback.state().reason.isEmpty());
        }
        EXPECT_EQ(longestPause > 10, flavour == Tv::paired) << longestPause;
        EXPECT_TRUE(plays(window, television.pin(), {})) << window.playback.state().reason.toStdString();
        EXPECT_EQ(text(television.complaints()), "");
    }
}

TEST_F(AccessTest, ComesThroughWhatReceiversGetWrong) {
    const struct {
        TelevisionOptions options;
        QStringList asked;
        const char* failure;  // null: plays
    } cases[] = {
        // A right PIN is refused now and then, and so is the proof of a pairing.
        {{.misbehaviours = {{Misbehaviour::doubtsPin, 1}}, .flavour = Tv::legacyPin},
         {u"pin"_s, u"pin"_s},
         nullptr},
        {{.misbehaviours = {{Misbehaviour::doubtsPin, 1}}, .flavour = Tv::paired},
         {u"pin"_s, u"pin"_s},
         nullptr},
        {{.misbehaviours = {{Misbehaviour::wantsPin, 1}}, .flavour = Tv::transient}, {u"pin"_s}, nullptr},
        {{.misbehaviours = {{Misbehaviour::restricted, 1}}, .flavour = Tv::paired}, {}, "Allow Access"},
    };
    for (const auto& entry : cases) {
        SCOPED_TRACE(&entry - cases);
        Television television(clock_, entry.options);
        ASSERT_TRUE(television.listen());
        Window window(clock_, *server_);
        start(window, television);
        EXPECT_EQ(plays(window, television.pin(), {}), entry.failure == nullptr);
        if (entry.failure) {
            EXPECT_THAT(window.playback.state().reason.toStdString(), HasSubstr(entry.failure));
        }
        EXPECT_EQ(text(asked()), text(entry.asked));
    }
}

// Nothing is announced where only the address is typed: the television's answers have to tell.
TEST_F(AccessTest, FindsTheWayInByAnswersAlone) {
    const struct {
        TelevisionOptions options;
        QStringList asked;
    } cases[] = {
        {{.flavour = Tv::password, .password = u"secret"_s}, {u"password"_s}},
        {{.flavour = Tv::legacyKeys}, {}},
        {{.flavour = Tv::transient}, {}},
        {{.flavour = Tv::transient, .handover = TvHandover::queue}, {}},
        {{.flavour = Tv::paired}, {u"pin"_s}},
    };
    for (const auto& entry : cases) {
        SCOPED_TRACE(&entry - cases);
        Television television(clock_, entry.options);
        ASSERT_TRUE(television.listen());
        const auto typed = Receiver::fromText(u"127.0.0.1:%1"_s.arg(television.receiver().port));
        for (const bool isFirst : {true, false}) {
            Window window(clock_, *server_, memory());
            window.playback.play(typed.value(), item(20));
            EXPECT_TRUE(plays(window, television.pin(), u"secret"_s))
                << window.playback.state().reason.toStdString();
            EXPECT_EQ(text(asked()), text(isFirst ? entry.asked : QStringList()));
            window.playback.stop();
            EXPECT_TRUE(window.reaches(Phase::stopped));
        }
    }
}

TEST_F(AccessTest, TellsAWrongPasswordAndEndsWhenAsked) {
    TelevisionOptions options{.flavour = Tv::password, .password = u"secret"_s};
    auto television = std::make_unique<Television>(clock_, options);
    ASSERT_TRUE(television->listen());
    Window window(clock_, *server_, memory());
    start(window, *television);
    ASSERT_TRUE(window.reaches(Phase::needsPassword));
    window.playback.supply(u"guess"_s);
    ASSERT_TRUE(waitFor([&] { return window.phase() != Phase::needsPassword; }));
    ASSERT_TRUE(window.reaches(Phase::needsPassword));
    EXPECT_EQ(window.playback.state().reason, PlaybackFailure::wrongPassword());
    EXPECT_TRUE(secrets_.values.isEmpty());
    ASSERT_TRUE(plays(window, {}, u"secret"_s));
    window.playback.stop();
    ASSERT_TRUE(window.reaches(Phase::stopped));

    options.port = television->receiver().port;
    options.password = u"another"_s;
    television.reset();
    television = std::make_unique<Television>(clock_, options);
    ASSERT_TRUE(television->listen());
    start(window, *television);
    ASSERT_TRUE(window.reaches(Phase::needsPassword));
    EXPECT_TRUE(secrets_.values.isEmpty()) << "the old one is of no more use";
    window.playback.stop();
    EXPECT_TRUE(window.reaches(Phase::stopped));
}

// Two windows, each on its own television, at the same time; one is steered, the other goes on.
TEST_F(AccessTest, PlaysOnTwoTelevisionsAtOnce) {
    Television one(clock_, {.name = u"one"_s, .flavour = Tv::legacyPin});
    Television other(clock_, {.name = u"other"_s, .flavour = Tv::paired});
    ASSERT_TRUE(one.listen() && other.listen());
    Window first(clock_, *server_, memory());
    Window second(clock_, *server_, memory());
    start(first, one);
    start(second, other);
    ASSERT_TRUE(first.reaches(Phase::needsPin));
    ASSERT_TRUE(plays(second, other.pin(), {}));
    ASSERT_TRUE(plays(first, one.pin(), {}));
    first.playback.stop();
    ASSERT_TRUE(first.reaches(Phase::stopped));
    EXPECT_EQ(second.phase(), Phase::playing);
    EXPECT_EQ(other.player().state(), test::SimulatedPlayer::State::playing);
    EXPECT_EQ(secrets_.values.size(), 2);
}

}  // namespace
}  // namespace velmora
