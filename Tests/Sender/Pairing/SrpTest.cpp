#include "Sender/Pairing/Srp.h"
#include "Vectors.h"

#include <gtest/gtest.h>

namespace velmora::test {

// The usual values are pinned by the messages of the pairings. These have a leading zero byte in the client's
// key, the server's or the shared number, at which implementations differ.
TEST(SrpTest, bothSidesComputeTheKnownValuesWithLeadingZeros) {
    for (const QByteArray name : {"shortA", "shortB", "shortS"}) {
        SCOPED_TRACE(name.constData());
        const SrpLogin login{"Pair-Setup", Secret(QByteArrayView("3939")), vector("transient.salt")};
        const SrpClient client(SrpVariant::hap, secretVector(name + ".a"));
        const SrpServer server(SrpVariant::hap, login, secretVector(name + ".b"));
        EXPECT_EQ(sha256(client.publicKey()), vector(name + ".A.sha256(384 B)"));
        EXPECT_EQ(sha256(server.publicKey()), vector(name + ".B.sha256(384 B)"));
        const auto clientSession = client.session(login, server.publicKey());
        const auto serverSession = server.session(client.publicKey());
        ASSERT_TRUE(clientSession && serverSession);
        for (const SrpSession& session : {*clientSession, *serverSession}) {
            EXPECT_EQ(session.key.toByteArray(), vector(name + ".K"));
            EXPECT_EQ(session.clientProof, vector(name + ".M1"));
            EXPECT_TRUE(session.isServerProof(vector(name + ".M2")));
            EXPECT_EQ(session.isServerProof(vector("shortA.M2.paddedA")), name == "shortA");
            EXPECT_FALSE(session.isServerProof(vector(name + ".M1")));
        }
    }
}

TEST(SrpTest, drawsAgainUntilTheKeyHasItsFullLength) {
    const SrpClient client(SrpVariant::hap, scripted({"shortA.a", "transient.a"}));
    EXPECT_EQ(client.publicKey(), vector("transient.A"));
}

TEST(SrpTest, refusesKeysOutOfRange) {
    const std::pair<SrpVariant, const char*> cases[] = {{SrpVariant::hap, "N3072"},
                                                        {SrpVariant::legacy, "N2048"}};
    for (const auto& [variant, primeName] : cases) {
        const SrpClient client(variant, secretVector("transient.a"));
        const SrpLogin login{"user", Secret(QByteArrayView("0000")), vector("transient.salt")};
        const QByteArray prime = vector(primeName);
        const QByteArray bad[] = {{},
                                  QByteArray(1, '\0'),
                                  QByteArray(prime.size(), '\0'),
                                  prime,
                                  QByteArray(prime.size(), '\xFF'),
                                  prime + '\0'};
        for (const QByteArray& key : bad) EXPECT_FALSE(client.session(login, key)) << key.size();
        EXPECT_TRUE(client.session(login, "\2")) << "shorter is allowed";
    }
}

}  // namespace velmora::test
