#include "Sender/Pairing/Crypto.h"
#include "Vectors.h"

#include <gtest/gtest.h>

namespace velmora::test {

namespace {

QByteArray hex(const char* digits) {
    return QByteArray::fromHex(digits);
}

Secret secret(const char* digits) {
    return Secret(QByteArrayView(hex(digits)));
}

}  // namespace

// RFC 7748, section 6.1, and two of the points that lead to a shared secret of zero.
TEST(CryptoTest, agreesOnX25519SecretsButNotWithPointsOfSmallOrder) {
    const Secret alice = secret("77076d0a7318a57d3c16c17251b26645df4c2f87ebc0992ab177fba51db92c2a");
    EXPECT_EQ(Crypto::x25519PublicKey(alice),
              hex("8520f0098930a754748b7ddcb43ef75a0dbf3a0d26381af4eba4a98eaa9b4e6a"));
    const auto shared =
        Crypto::x25519(alice, hex("de9edb7d7b7dc1b4d35b61c2ece435373f8343c85b78674dadfc7e146f882b4f"));
    ASSERT_TRUE(shared);
    EXPECT_EQ(shared->toByteArray(), hex("4a5d9d5ba4ce2de1728e3bf480350f25e07e21c947d19e3376f09b3c1e161742"));

    EXPECT_FALSE(Crypto::x25519(alice, QByteArray(32, '\0')));
    EXPECT_FALSE(
        Crypto::x25519(alice, hex("e0eb7a7c3b41b8ae1656e3faf19fc46ada098deb9c32b1fd866205165f49b800")));
    EXPECT_FALSE(Crypto::x25519(alice, QByteArray(31, '\1')));
}

// RFC 8032, test 2.
TEST(CryptoTest, signsAndVerifies) {
    const Secret seed = secret("4ccd089b28ff96da9db6c346ec114e0f5b8a319f35aba624da8cf6ed4fb8a6fb");
    const QByteArray key = Crypto::ed25519PublicKey(seed);
    EXPECT_EQ(key, hex("3d4017c3e843895a92b70aa74d1b7ebc9c982ccf2ec4968cc0cd55f12af4660c"));
    const QByteArray signature = Crypto::sign(seed, "\x72");
    EXPECT_EQ(signature, hex("92a009a9f0d4cab8720e820b5f642540a2b27b5416503f8fb3762223ebdb69da"
                             "085ac1e43e15996e458f3613d0f11d8c387b2eaeb4302aeeb00d291612bb0c00"));
    EXPECT_TRUE(Crypto::verify(key, "\x72", signature));
    EXPECT_FALSE(Crypto::verify(key, "\x73", signature));
    EXPECT_FALSE(Crypto::verify(key, "\x72", signature.chopped(1)));
    EXPECT_FALSE(Crypto::verify(key.chopped(1), "\x72", signature));
    for (qsizetype i = 0; i < signature.size(); ++i)
        EXPECT_FALSE(Crypto::verify(key, "\x72", damaged(signature, i))) << i;
}

// RFC 8439, section 2.8.2.
TEST(CryptoTest, sealsAndOpensNothingThatWasTouched) {
    const QByteArray key = hex("808182838485868788898a8b8c8d8e8f909192939495969798999a9b9c9d9e9f");
    const QByteArray nonce = hex("070000004041424344454647");
    const QByteArray additional = hex("50515253c0c1c2c3c4c5c6c7");
    const QByteArray plain =
        "Ladies and Gentlemen of the class of '99: If I could offer you only one tip for the future, "
        "sunscreen "
        "would be it.";
    const QByteArray sealed = Crypto::seal(key, nonce, plain, additional);
    EXPECT_EQ(sealed.first(16), hex("d31a8d34648e60db7b86afbc53ef7ec2"));
    EXPECT_EQ(sealed.last(16), hex("1ae10b594f09e26a7e902ecbd0600691"));
    EXPECT_EQ(Crypto::open(key, nonce, sealed, additional), plain);
    EXPECT_FALSE(Crypto::open(key, nonce, sealed, additional.chopped(1)));
    for (qsizetype i = 0; i < sealed.size(); ++i) {
        EXPECT_FALSE(Crypto::open(key, nonce, damaged(sealed, i), additional)) << i;
        EXPECT_FALSE(Crypto::open(key, nonce, sealed.first(i), additional)) << i;
    }
}

TEST(CryptoTest, comparesLengthsToo) {
    EXPECT_TRUE(Crypto::equal("abc", "abc"));
    EXPECT_TRUE(Crypto::equal({}, ""));
    EXPECT_FALSE(Crypto::equal("abc", "abd"));
    EXPECT_FALSE(Crypto::equal("abc", "abcd"));
    EXPECT_FALSE(Crypto::equal("abc", ""));
}

}  // namespace velmora::test
