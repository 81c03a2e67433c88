#include "Sender/Pairing/LegacyPairing.h"
#include "Television/Pairing/LegacyReceiver.h"
#include "Vectors.h"

#include <gtest/gtest.h>

namespace velmora::test {

using namespace Qt::StringLiterals;
using Kind = PairingError::Kind;

namespace {

const QString pin = u"4711"_s;

LegacyIdentity ours() {
    return {textVector("legacy.user"), secretVector("legacy.seed")};
}

LegacyPinSetup knownSender() {
    return LegacyPinSetup(ours(), scripted({"legacy.a"}));
}

LegacySetupReceiver knownReceiver(const QString& shown = pin) {
    return {Crypto::random(Crypto::keySize), shown, scripted({"legacy.salt", "legacy.b"})};
}

}  // namespace

TEST(LegacyPairingTest, pairsWithTheKnownMessages) {
    LegacyPinSetup sender = knownSender();
    LegacySetupReceiver receiver = knownReceiver();
    const auto [pk, salt] = receiver.challenge(sender.user());
    EXPECT_EQ(pk, vector("legacy.B"));
    const auto proof = sender.prove(pk, salt, pin);
    ASSERT_TRUE(proof);
    EXPECT_EQ(proof->pk, vector("legacy.A"));
    EXPECT_EQ(proof->proof, vector("legacy.M1"));
    const auto answer = receiver.check(*proof);
    ASSERT_TRUE(answer);
    EXPECT_EQ(*answer, vector("legacy.M2"));
    const auto sealed = sender.introduce(*answer);
    ASSERT_TRUE(sealed);
    EXPECT_EQ(sealed->epk, vector("legacy.epk"));
    EXPECT_EQ(sealed->authTag, vector("legacy.authTag"));
    EXPECT_TRUE(receiver.exchange(*sealed));
    EXPECT_EQ(receiver.paired(), vector("legacy.pk"));

    const LegacyPairing::Sealed reply{vector("legacy.resp_epk"), vector("legacy.resp_authTag")};
    for (qsizetype i = 0; i < 32; ++i) {
        EXPECT_FALSE(LegacyPinSetup(sender).finish({damaged(reply.epk, i), reply.authTag})) << i;
        EXPECT_FALSE(LegacyPinSetup(sender).finish({reply.epk, damaged(reply.authTag, i / 2)})) << i;
        EXPECT_FALSE(LegacyPinSetup(sender).finish({reply.epk.first(i), reply.authTag})) << i;
    }
    const auto credentials = sender.finish(reply);
    ASSERT_TRUE(credentials);
    EXPECT_EQ(credentials->theirPublicKey, vector("legacy.recv_pk"));
    EXPECT_EQ(sender.finish(reply).error(), PairingError{Kind::malformed}) << "one attempt";
}

TEST(LegacyPairingTest, refusesWrongPinsAndProofs) {
    LegacyPinSetup wrong = knownSender();
    LegacySetupReceiver receiver = knownReceiver(u"0711"_s);
    const auto challenge = receiver.challenge(wrong.user());
    EXPECT_FALSE(receiver.check(*wrong.prove(challenge.pk, challenge.salt, u"711"_s)));

    const QByteArray pk = vector("legacy.B");
    const QByteArray salt = vector("legacy.salt");
    EXPECT_FALSE(knownSender().prove(pk, salt.chopped(1), pin));
    EXPECT_FALSE(knownSender().prove(QByteArray(256, '\0'), salt, pin));
    EXPECT_FALSE(knownSender().prove(pk + '\0', salt, pin));
    EXPECT_FALSE(knownSender().introduce(vector("legacy.M2"))) << "out of order";
    LegacyPinSetup sender = knownSender();
    ASSERT_TRUE(sender.prove(pk, salt, pin));
    const QByteArray proof = vector("legacy.M2");
    for (qsizetype i = 0; i < proof.size(); ++i) {
        EXPECT_EQ(LegacyPinSetup(sender).introduce(damaged(proof, i)).error(), PairingError{Kind::untrusted});
        EXPECT_FALSE(LegacyPinSetup(sender).introduce(proof.first(i))) << i;
    }
}

// The nonce counts up as one number of 16 bytes.
TEST(LegacyPairingTest, carriesInTheNonce) {
    const auto half = [](QByteArrayView label, const Secret& session) {
        return Crypto::digest(Crypto::Hash::sha512, {label, session}).first(16).toByteArray();
    };
    Secret session;
    QByteArray nonce;
    for (int i = 0; !nonce.endsWith('\xFF'); ++i) {
        session = Secret(QByteArrayView(QByteArray::number(i)));
        nonce = half("Pair-Setup-AES-IV", session);
    }
    nonce[15] = 0;
    ++nonce.data()[14];
    const QByteArray key(32, 'k');
    const auto sealed = LegacyPairing::seal(session, LegacyPairing::Side::sender, key);
    EXPECT_EQ(Crypto::openAes(half("Pair-Setup-AES-Key", session), nonce, sealed.epk + sealed.authTag), key);
}

TEST(LegacyPairingTest, verifiesWithTheKnownMessages) {
    LegacyVerify sender({ours(), vector("legacy.recv_pk")}, scripted({"lverify.x_priv"}));
    EXPECT_EQ(sender.start(), vector("lverify.request1"));
    const QByteArray reply = vector("lverify.response1");
    for (qsizetype i = 0; i < reply.size(); ++i) {
        LegacyVerify cut({ours(), vector("legacy.recv_pk")}, scripted({"lverify.x_priv"}));
        EXPECT_FALSE(cut.prove(reply.first(i))) << i;
        LegacyVerify changed({ours(), vector("legacy.recv_pk")}, scripted({"lverify.x_priv"}));
        // The top bit of an X25519 key counts for nothing, but it is signed.
        EXPECT_FALSE(changed.prove(damaged(reply, i))) << i;
    }
    EXPECT_EQ(sender.prove(reply), vector("lverify.request2"));
    EXPECT_EQ(sender.prove(reply).error(), PairingError{Kind::malformed}) << "one attempt";
}

TEST(LegacyPairingTest, believesOnlyTheReceiverThatItKnows) {
    const Secret seed = Crypto::random(Crypto::keySize);
    const LegacyCredentials known = *legacyKeyExchange(ours(), Crypto::ed25519PublicKey(seed));
    for (const Secret& theirs : {seed, Crypto::random(Crypto::keySize)}) {
        LegacyVerify sender(known);
        LegacyVerifyReceiver receiver(theirs, ours().publicKey());
        const auto request = sender.prove(receiver.answer(sender.start()).value_or(QByteArray()));
        EXPECT_EQ(request.has_value(), theirs.toByteArray() == seed.toByteArray());
        EXPECT_EQ(request && receiver.answer(*request), request.has_value());
    }
    EXPECT_FALSE(legacyKeyExchange(ours(), QByteArray(31, 'k')));
}

}  // namespace velmora::test
