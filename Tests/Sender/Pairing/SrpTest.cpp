#include "Sender/Pairing/Srp.h"
#include "Vectors.h"

#include <gtest/gtest.h>

namespace velmora::test {

namespace {

struct Case {
    QByteArray name;
    QByteArray salt;
    SrpVariant variant;
    const char* user;
    const char* password;
    const char* paddedProof;  // where it differs
};

SrpLogin loginOf(const Case& test) {
    return {test.user, Secret(QByteArrayView(test.password)), vector(test.salt)};
}

void check(const SrpSession& session, const Case& test) {
    EXPECT_EQ(session.key.toByteArray(), vector(test.name + ".K"));
    EXPECT_EQ(session.clientProof, vector(test.name + ".M1"));
    EXPECT_EQ(session.serverProof, vector(test.name + ".M2"));
    EXPECT_TRUE(session.isServerProof(vector(test.name + ".M2")));
    EXPECT_FALSE(session.isServerProof(vector(test.name + ".M1")));
    if (test.paddedProof) {
        EXPECT_TRUE(session.isServerProof(vector(test.paddedProof)));
    }
}

}  // namespace

// The short cases have a leading zero byte in the client's key, the server's or the shared number, at which
// implementations differ.
TEST(SrpTest, bothSidesComputeTheKnownValues) {
    constexpr SrpVariant hap = SrpVariant::hap;
    const Case cases[] = {
        {"transient", "transient.salt", hap, "Pair-Setup", "3939", nullptr},
        {"pin", "transient.salt", hap, "Pair-Setup", "1234", nullptr},
        {"shortA", "transient.salt", hap, "Pair-Setup", "3939", "shortA.M2.paddedA"},
        {"shortB", "transient.salt", hap, "Pair-Setup", "3939", nullptr},
        {"shortS", "transient.salt", hap, "Pair-Setup", "3939", nullptr},
        {"legacy", "legacy.salt", SrpVariant::legacy, "4D21F7A0C3B65E98", "4711", nullptr},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.name.constData());
        const SrpClient client(test.variant, secretVector(test.name + ".a"));
        const SrpServer server(test.variant, loginOf(test), secretVector(test.name + ".b"));
        if (test.paddedProof == nullptr && !test.name.startsWith("short")) {
            EXPECT_EQ(client.publicKey(), vector(test.name + ".A"));
            EXPECT_EQ(server.publicKey(), vector(test.name + ".B"));
        } else {
            EXPECT_EQ(sha256(client.publicKey()), vector(test.name + ".A.sha256(384 B)"));
            EXPECT_EQ(sha256(server.publicKey()), vector(test.name + ".B.sha256(384 B)"));
        }
        const auto clientSession = client.session(loginOf(test), server.publicKey());
        const auto serverSession = server.session(client.publicKey());
        ASSERT_TRUE(clientSession && serverSession);
        check(*clientSession, test);
        check(*serverSession, test);
    }
}

TEST(SrpTest, drawsAgainUntilTheKeyHasItsFullLength) {
    const SrpClient client(SrpVariant::hap, scripted({"shortA.a", "transient.a"}));
    EXPECT_EQ(client.publicKey(), vector("transient.A"));
}

TEST(SrpTest, refusesKeysOutOfRange) {
    const struct {
        SrpVariant variant;
        const char* prime;
    } cases[] = {{SrpVariant::hap, "N3072"}, {SrpVariant::legacy, "N2048"}};
    for (const auto& [variant, primeName] : cases) {
        const SrpClient client(variant, secretVector("transient.a"));
        const SrpLogin login{"user", Secret(QByteArrayView("0000")), vector("transient.salt")};
        const SrpServer server(variant, login, secretVector("transient.b"));
        const QByteArray prime = vector(primeName);
        const QByteArray bad[] = {{},
                                  QByteArray(1, '\0'),
                                  QByteArray(prime.size(), '\0'),
                                  prime,
                                  QByteArray(prime.size(), '\xFF'),
                                  prime + '\0'};
        for (const QByteArray& key : bad) {
            EXPECT_FALSE(client.session(login, key)) << key.size();
            EXPECT_FALSE(server.session(key)) << key.size();
        }
        EXPECT_TRUE(client.session(login, "\2")) << "shorter is allowed";
    }
}

}  // namespace velmora::test
