#include "Sender/Pairing/Crypto.h"
#include "Vectors.h"

#include <gtest/gtest.h>

namespace velmora::test {

// The known messages of the pairings pin the values; here are the ones that no honest receiver sends. The
// second is one of the points that lead to a shared secret of zero.
TEST(CryptoTest, agreesOnNoSecretWithPointsOfSmallOrder) {
    const Secret ours = secretVector("verify.c_priv");
    const auto smallOrder =
        QByteArray::fromHex("e0eb7a7c3b41b8ae1656e3faf19fc46ada098deb9c32b1fd866205165f49b800");
    for (const QByteArray& theirs : {QByteArray(32, '\0'), smallOrder, QByteArray(31, '\1')})
        EXPECT_FALSE(Crypto::x25519(ours, theirs)) << theirs.toHex().constData();
    EXPECT_TRUE(Crypto::x25519(ours, vector("verify.a_pub")));
}

TEST(CryptoTest, believesNoSignatureThatWasTouched) {
    const Secret seed = secretVector("pin.ltsk");
    const QByteArray key = vector("pin.ltpk");
    const QByteArray signature = Crypto::sign(seed, "text");
    EXPECT_TRUE(Crypto::verify(key, "text", signature));
    EXPECT_FALSE(Crypto::verify(key, "next", signature));
    EXPECT_FALSE(Crypto::verify(key.chopped(1), "text", signature));
    for (qsizetype i = 0; i < signature.size(); ++i) {
        EXPECT_FALSE(Crypto::verify(key, "text", damaged(signature, i))) << i;
        EXPECT_FALSE(Crypto::verify(key, "text", signature.first(i))) << i;
    }
}

TEST(CryptoTest, comparesLengthsToo) {
    EXPECT_TRUE(Crypto::equal("abc", "abc"));
    for (const char* other : {"abd", "abcd", "ab", ""}) EXPECT_FALSE(Crypto::equal("abc", other)) << other;
}

}  // namespace velmora::test
