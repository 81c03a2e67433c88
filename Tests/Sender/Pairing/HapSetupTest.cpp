#include "Sender/Pairing/HapPairing.h"
#include "Television/Pairing/HapReceiver.h"
#include "Vectors.h"

#include <gtest/gtest.h>

#include <functional>

namespace velmora::test {

using namespace Qt::StringLiterals;
using Kind = PairingError::Kind;

namespace {

const QString pin = u"1234"_s;

HapIdentity ours() {
    return {textVector("pin.controller_id"), secretVector("pin.ltsk")};
}

HapIdentity theirs() {
    return {textVector("pin.accessory_id"), secretVector("pin.acc_ltsk")};
}

HapSetupReceiver knownReceiver(const QString& expected = pin) {
    return {theirs(), expected, scripted({"transient.salt", "transient.b"})};
}

HapPinSetup knownSender(const QString& name = {}) {
    return {ours(), name, scripted({"transient.a"})};
}

/// Sees and may change messages 1 to 6 on their way.
using Wire = std::function<QByteArray(int number, QByteArray message)>;

QByteArray untouched(int, QByteArray message) {
    return message;
}

PairingResult<HapCredentials> pair(HapPinSetup& sender, HapSetupReceiver& receiver,
                                   const Wire& wire = untouched, const QString& typed = pin) {
    const QByteArray m2 = wire(2, receiver.answer(wire(1, sender.start())));
    if (const auto taken = sender.takeChallenge(m2); !taken) return std::unexpected(taken.error());
    const auto m3 = sender.prove(typed);
    if (!m3) return std::unexpected(m3.error());
    const auto m5 = sender.introduce(wire(4, receiver.answer(wire(3, *m3))));
    if (!m5) return std::unexpected(m5.error());
    return sender.finish(wire(6, receiver.answer(wire(5, *m5))));
}

PairingError errorFor(const char* m2) {
    HapPinSetup sender = knownSender();
    const auto taken = sender.takeChallenge(QByteArray::fromHex(m2));
    return taken ? PairingError{} : taken.error();
}

}  // namespace

TEST(HapSetupTest, pairsWithTheKnownMessages) {
    for (const bool named : {false, true}) {
        const QByteArray sealed = vector(named ? "pin.M5.sealed_with_name" : "pin.M5.sealed");
        HapPinSetup sender = knownSender(named ? u"Velmora"_s : QString());
        HapSetupReceiver receiver = knownReceiver();
        const auto credentials = pair(sender, receiver, [&](int number, const QByteArray& message) {
            const bool isKnown[] = {message == vector("pin.M1msg"),
                                    sha256(message) == vector("pin.M2msg.sha256"),
                                    sha256(message) == vector("pin.M3msg.sha256"),
                                    message.startsWith(vector("pin.M4msg.head")),
                                    message.endsWith(sealed),
                                    message.endsWith(vector("pin.M6.sealed"))};
            EXPECT_TRUE(isKnown[number - 1]) << number;
            return message;
        });
        ASSERT_TRUE(credentials);
        EXPECT_EQ(credentials->theirs, (HapPeer{theirs().identifier, vector("pin.acc_ltpk")}));
        EXPECT_EQ(receiver.paired(), (HapPeer{ours().identifier, vector("pin.ltpk")}));
    }
}

TEST(HapSetupTest, pairsWithoutPin) {
    HapTransientSetup sender(scripted({"transient.a"}));
    HapSetupReceiver receiver = knownReceiver();
    EXPECT_EQ(sender.start(), vector("transient.M1msg"));
    const auto m3 = sender.prove(receiver.answer(sender.start()));
    ASSERT_TRUE(m3);
    EXPECT_EQ(sha256(*m3), vector("transient.M3msg.sha256"));
    const auto key = sender.finish(receiver.answer(*m3));
    ASSERT_TRUE(key && receiver.transientKey());
    EXPECT_EQ(key->toByteArray(), vector("transient.K"));
    EXPECT_EQ(receiver.transientKey()->toByteArray(), vector("transient.K"));

    HapTransientSetup refused;
    HapSetupReceiver strict = knownReceiver();
    strict.refuseTransient();
    EXPECT_EQ(refused.prove(strict.answer(refused.start())).error(), PairingError{Kind::pinNeeded});
}

TEST(HapSetupTest, aPinIsTextWithItsZeros) {
    const struct {
        QString shown;
        QString typed;
        bool pairs;
    } cases[] = {{u"0042"_s, u"0042"_s, true},
                 {u"0042"_s, u" 0042\n"_s, true},
                 {u"0042"_s, u"42"_s, false},
                 {u"1234"_s, u"1235"_s, false},
                 {u"1234"_s, {}, false}};
    for (const auto& [shown, typed, pairs] : cases) {
        HapPinSetup sender(ours(), {});
        HapSetupReceiver receiver(theirs(), shown);
        const auto result = pair(sender, receiver, untouched, typed);
        EXPECT_EQ(result.has_value(), pairs) << typed.toStdString();
        if (!pairs) {
            EXPECT_EQ(result.error(), PairingError{Kind::wrongPin});
        }
        EXPECT_EQ(receiver.paired().has_value(), pairs);
    }
}

// The receiver's answers, cut at every length and with every byte changed.
TEST(HapSetupTest, refusesEveryCutOrChangedAnswer) {
    HapPinSetup sender = knownSender();
    HapSetupReceiver receiver = knownReceiver();
    const QByteArray m2 = receiver.answer(sender.start());
    for (qsizetype i = 0; i < m2.size(); ++i) {
        // A key that is cut where a fragment ends is still a key; the proof of it fails later.
        const bool taken = HapPinSetup(sender).takeChallenge(m2.first(i)).has_value();
        EXPECT_EQ(taken, i == m2.size() - 131) << i;
    }
    for (const qsizetype position : {qsizetype(0), m2.size() / 2, m2.size() - 1}) {
        HapPinSetup misled = sender;
        const bool taken = misled.takeChallenge(damaged(m2, position)).has_value();
        const auto m3 = taken ? misled.prove(pin) : std::unexpected(PairingError());
        EXPECT_FALSE(m3 && misled.introduce(HapSetupReceiver(receiver).answer(*m3))) << position;
    }
    ASSERT_TRUE(sender.takeChallenge(m2));
    const QByteArray m4 = receiver.answer(*sender.prove(pin));
    for (qsizetype i = 0; i < m4.size(); ++i) {
        EXPECT_FALSE(HapPinSetup(sender).introduce(m4.first(i))) << i;
        EXPECT_FALSE(HapPinSetup(sender).introduce(damaged(m4, i))) << i;
    }
    const QByteArray m6 = receiver.answer(*sender.introduce(m4));
    for (qsizetype i = 0; i < m6.size(); ++i) {
        EXPECT_FALSE(HapPinSetup(sender).finish(m6.first(i))) << i;
        EXPECT_FALSE(HapPinSetup(sender).finish(damaged(m6, i))) << i;
    }
    EXPECT_TRUE(sender.finish(m6));
}

// Sealed under the right key, but not signed with the long-term key that it shows.
TEST(HapSetupTest, refusesIdentitiesThatAreNotSigned) {
    HapPinSetup sender = knownSender();
    HapSetupReceiver receiver = knownReceiver();
    ASSERT_TRUE(sender.takeChallenge(receiver.answer(sender.start())));
    ASSERT_TRUE(sender.introduce(receiver.answer(*sender.prove(pin))));
    const QByteArray plain = vector("pin.M6.plain");
    const auto finish = [&](const QByteArray& identity) {
        const Secret key = HapMessages::setupKey(secretVector("pin.K"));
        const QByteArray sealed = HapMessages::seal(key, "PS-Msg06", identity);
        return HapPinSetup(sender).finish(HapMessages::message(6, {{Tlv8::Tag::encryptedData, sealed}}));
    };
    for (qsizetype i = 0; i < plain.size(); ++i)
        EXPECT_EQ(finish(damaged(plain, i)).error(), PairingError{Kind::untrusted}) << i;
    EXPECT_TRUE(finish(plain));
}

TEST(HapSetupTest, nothingWorksTwiceOrOutOfOrder) {
    HapPinSetup sender = knownSender();
    HapSetupReceiver receiver = knownReceiver();
    EXPECT_FALSE(HapPinSetup(sender).prove(pin));
    EXPECT_FALSE(HapPinSetup(sender).introduce(vector("pin.M4msg.head")));
    EXPECT_FALSE(HapPinSetup(sender).finish({}));
    const QByteArray m2 = receiver.answer(sender.start());
    ASSERT_TRUE(sender.takeChallenge(m2));
    EXPECT_FALSE(HapPinSetup(sender).takeChallenge(m2));
    const QByteArray m4 = receiver.answer(*sender.prove(pin));
    ASSERT_TRUE(sender.introduce(m4));
    EXPECT_EQ(HapPinSetup(sender).introduce(m4).error(), PairingError{Kind::malformed});
    EXPECT_FALSE(sender.finish("\6\1\6"));
    EXPECT_FALSE(sender.finish("\6\1\6")) << "one attempt";
}

TEST(HapSetupTest, tellsErrorsApart) {
    using std::chrono::seconds;
    const struct {
        const char* m2;
        PairingError error;
    } cases[] = {
        {"060102070101", {Kind::refused}},
        {"060102070102", {Kind::refused}},
        {"060102070103080110", {Kind::wait, seconds(16)}},
        {"06010207010308021 52a", {Kind::wait, seconds(0x2A15)}},
        {"060102070103", {Kind::wait}},
        {"06010207010308 08ffffffffffffffff", {Kind::wait, std::chrono::hours(24)}},
        {"060102070104", {Kind::tooManyPeers}},
        {"060102070105", {Kind::tooManyTries}},
        {"060102070106", {Kind::unavailable}},
        {"060102070107", {Kind::busy}},
        {"0601020701ee", {Kind::refused}},
        {"070107", {Kind::busy}},
        {"06010207020100", {Kind::malformed}},
        {"060104", {Kind::malformed}},
        {"060102020f000000000000000000000000000000030102", {Kind::malformed}},
        {"0601020210"
         "00000000000000000000000000000000",
         {Kind::malformed}},
    };
    for (const auto& [m2, error] : cases) EXPECT_EQ(errorFor(m2), error) << m2;

    HapPinSetup sender = knownSender();
    HapSetupReceiver receiver = knownReceiver();
    receiver.refuse(HapMessages::ErrorCode::backOff, seconds(64));
    EXPECT_EQ(pair(sender, receiver).error(), (PairingError{Kind::wait, seconds(64)}));
}

TEST(HapSetupTest, cutsLongNamesBetweenCharacters) {
    const struct {
        QString name;
        QByteArray packed;
    } cases[] = {
        {QString(40, u'n'), QByteArray("\xE1\x44name\x60") + QByteArray(32, 'n')},
        {QString(31, u'n') + u"ü"_s, QByteArray("\xE1\x44name\x5F") + QByteArray(31, 'n')},
        {QString(30, u'n') + u"🎬"_s, QByteArray("\xE1\x44name\x5E") + QByteArray(30, 'n')},
    };
    const Secret session = secretVector("pin.K");
    for (const auto& [name, packed] : cases) {
        HapPinSetup sender = knownSender(name);
        HapSetupReceiver receiver = knownReceiver();
        QByteArray plain;
        const auto credentials = pair(sender, receiver, [&](int number, const QByteArray& message) {
            if (number == 5)
                plain = *HapMessages::open(HapMessages::setupKey(session), "PS-Msg05", message.sliced(5));
            return message;
        });
        EXPECT_TRUE(credentials);
        EXPECT_TRUE(plain.endsWith(packed)) << plain.toHex().constData();
    }
}

}  // namespace velmora::test
