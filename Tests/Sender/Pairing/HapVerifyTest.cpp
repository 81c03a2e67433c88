#include "Sender/Pairing/HapPairing.h"
#include "Television/Pairing/HapReceiver.h"
#include "Vectors.h"

#include <gtest/gtest.h>

namespace velmora::test {

using Kind = PairingError::Kind;

namespace {

HapIdentity ours() {
    return {textVector("pin.controller_id"), secretVector("pin.ltsk")};
}

HapIdentity theirs() {
    return {textVector("pin.accessory_id"), secretVector("pin.acc_ltsk")};
}

HapPeer peerOf(const HapIdentity& identity) {
    return {identity.identifier, identity.publicKey()};
}

HapVerify knownSender() {
    return HapVerify({ours(), peerOf(theirs())}, scripted({"verify.c_priv"}));
}

HapVerifyReceiver knownReceiver() {
    return {theirs(), peerOf(ours()), scripted({"verify.a_priv"})};
}

}  // namespace

TEST(HapVerifyTest, agreesWithTheKnownMessages) {
    HapVerify sender = knownSender();
    HapVerifyReceiver receiver = knownReceiver();
    EXPECT_EQ(sender.start(), vector("verify.M1msg"));
    const QByteArray m2 = receiver.answer(sender.start());
    EXPECT_EQ(m2, vector("verify.M2msg"));
    const auto m3 = sender.prove(m2);
    ASSERT_TRUE(m3);
    EXPECT_EQ(*m3, vector("verify.M3msg"));
    const QByteArray m4 = receiver.answer(*m3);
    EXPECT_EQ(m4, vector("verify.M4msg"));
    const auto shared = sender.finish(m4);
    ASSERT_TRUE(shared && receiver.shared());
    EXPECT_EQ(shared->toByteArray(), vector("verify.shared"));
    EXPECT_EQ(receiver.shared()->toByteArray(), vector("verify.shared"));
}

TEST(HapVerifyTest, refusesEveryCutOrChangedMessage) {
    const QByteArray m2 = vector("verify.M2msg");
    for (qsizetype i = 0; i < m2.size(); ++i) {
        EXPECT_FALSE(knownSender().prove(m2.first(i))) << i;
        EXPECT_FALSE(knownSender().prove(damaged(m2, i))) << i;
    }
    HapVerify sender = knownSender();
    HapVerifyReceiver receiver = knownReceiver();
    ASSERT_TRUE(sender.prove(receiver.answer(sender.start())));
    for (const char* m4 : {"", "06", "0601", "060102", "06010400", "060104060104", "0701"})
        EXPECT_EQ(HapVerify(sender).finish(QByteArray::fromHex(m4)).error(), PairingError{Kind::malformed})
            << m4;
}

TEST(HapVerifyTest, tellsAStrangerFromAForgetfulReceiver) {
    HapIdentity otherKey = theirs();
    otherKey.seed = ours().seed;
    HapIdentity otherName = theirs();
    otherName.identifier = "11:22:33:44:55:66";
    for (const HapIdentity& impostor : {otherKey, otherName}) {
        HapVerify sender = knownSender();
        HapVerifyReceiver receiver(impostor, peerOf(ours()));
        EXPECT_EQ(sender.prove(receiver.answer(sender.start())).error(), PairingError{Kind::untrusted});
    }

    HapVerify sender = knownSender();
    HapVerifyReceiver forgetful(theirs(), {});
    const auto m3 = sender.prove(forgetful.answer(sender.start()));
    ASSERT_TRUE(m3);
    EXPECT_EQ(sender.finish(forgetful.answer(*m3)).error(), PairingError{Kind::forgotten});
    EXPECT_EQ(knownSender().prove(QByteArray::fromHex("060102070102")).error(),
              PairingError{Kind::forgotten});
}

TEST(HapVerifyTest, oldAnswersDoNotFitNewKeys) {
    HapVerify fresh({ours(), peerOf(theirs())});
    EXPECT_EQ(fresh.prove(vector("verify.M2msg")).error(), PairingError{Kind::untrusted});
    EXPECT_EQ(fresh.prove(vector("verify.M2msg")).error(), PairingError{Kind::malformed}) << "one attempt";
    HapVerify sender = knownSender();
    EXPECT_FALSE(sender.finish(vector("verify.M4msg"))) << "no M4 before M3";
}

TEST(HapVerifyTest, madeIdentitiesAreUuids) {
    const HapIdentity identity = makeHapIdentity();
    EXPECT_EQ(identity.identifier.size(), 36);
    EXPECT_EQ(identity.identifier, identity.identifier.toUpper());
    EXPECT_NE(identity.identifier, makeHapIdentity().identifier);
}

}  // namespace velmora::test
