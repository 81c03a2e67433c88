#include "Sender/Pairing/Digest.h"

#include <gtest/gtest.h>

namespace velmora {

using namespace Qt::StringLiterals;

namespace {

const QByteArray nonce = "0123456789abcdef0123456789abcdef";
const QByteArray mufasa =
    "Digest realm=\"testrealm@host.com\", qop=\"auth,auth-int\", "
    "nonce=\"dcd98b7102dd2f0e8b11d0f600bfb0c093\", opaque=\"5ccc069c403ebaf9f0171e9517f40e41\"";

Secret fixed(qsizetype) {
    return Secret(QByteArrayView("\x0a\x4f\x11\x3b"));
}

}  // namespace

TEST(DigestTest, answersAsReceiversExpect) {
    const struct {
        const char* user;
        const char* realm;
        const char* method;
        const char* target;
        const char* uri;
        const char* response;
    } cases[] = {
        {"AirPlay", "AirPlay", "POST", "/play", "/play", "3496db91701248d03feb88d89f205c53"},
        {"AirPlay", "AirPlay", "POST", "/play?x=1", "/play", "3496db91701248d03feb88d89f205c53"},
        {"iTunes", "raop", "SETUP", "rtsp://192.0.2.10/3413821438", "rtsp://192.0.2.10/3413821438",
         "aee2272e787181288b0a9be534058c1a"},
    };
    for (const auto& [user, realm, method, target, uri, response] : cases) {
        const QByteArray header = "Digest realm=\"" + QByteArray(realm) + "\", nonce=\"" + nonce + '"';
        const auto challenge = DigestChallenge::parse(header);
        ASSERT_TRUE(challenge);
        EXPECT_EQ(DigestAnswer(*challenge, u"1234"_s, user).authorization(method, target),
                  "Digest username=\"" + QByteArray(user) + "\", realm=\"" + realm + "\", nonce=\"" + nonce +
                      "\", uri=\"" + uri + "\", response=\"" + response + '"');
    }
}

// The example of RFC 2617.
TEST(DigestTest, answersWithQualityWhereItIsOffered) {
    auto challenge = DigestChallenge::parse(mufasa);
    ASSERT_TRUE(challenge);
    DigestAnswer answer(*challenge, u"Circle Of Life"_s, "Mufasa", fixed);
    const QByteArray first = answer.authorization("GET", "/dir/index.html");
    EXPECT_TRUE(
        first.contains("response=\"6629fae49393a05397450978507c4ef1\", qop=auth, nc=00000001, "
                       "cnonce=\"0a4f113b\", opaque=\"5ccc069c403ebaf9f0171e9517f40e41\""))
        << first.constData();
    EXPECT_TRUE(answer.authorization("GET", "/dir/index.html").contains("nc=00000002"));

    challenge->authQuality = false;
    DigestAnswer plain(*challenge, u"Circle Of Life"_s, "Mufasa");
    EXPECT_TRUE(
        plain.authorization("GET", "/dir/index.html").contains("\"670fd8c2df070c60b045671b8b24ff02\""));
}

TEST(DigestTest, readsChallengesInAnyClothes) {
    const QByteArray same[] = {
        "digest nonce=\"n\",realm=\"r\"",
        "  Digest   realm=r , nonce = n ",
        "DIGEST REALM=\"r\",NONCE=\"n\",stale=true,Algorithm=md5,unknown=\"a, b=c\"",
        "Digest realm=\"r\", nonce=n, qop=auth-int,auth",
    };
    for (const QByteArray& header : same) {
        const auto challenge = DigestChallenge::parse(header);
        // The last one's list is not quoted and falls apart.
        ASSERT_EQ(challenge.has_value(), !header.contains("qop")) << header.constData();
        if (!challenge) continue;
        EXPECT_EQ(challenge->realm, "r") << header.constData();
        EXPECT_EQ(challenge->nonce, "n") << header.constData();
    }
    EXPECT_EQ(DigestChallenge::parse("Digest realm=\"a, b=c\", nonce=\"\"")->realm, "a, b=c");
    EXPECT_EQ(DigestChallenge::parse("Digest realm=, nonce=n")->nonce, "n");
}

TEST(DigestTest, refusesWhatItCannotAnswer) {
    const QByteArray headers[] = {
        "",
        "Digest",
        "Basic realm=\"r\", nonce=\"n\"",
        "Digest realm=\"r\"",
        "Digest nonce=\"n\"",
        "Digest realm=\"r\", nonce=\"n",
        "Digest realm=\"r\" nonce=\"n\"",
        "Digest realm=\"r\", nonce=\"n\", nonce=\"m\"",
        "Digest realm=\"r\", nonce=\"n\", =\"m\"",
        "Digest realm=\"r\", nonce=\"n\", stray",
        "Digest realm=\"r\", nonce=\"n\", algorithm=SHA-256",
        "Digest realm=\"r\", nonce=\"n\", qop=\"auth-int\"",
        "Digest realm=\"r\r\nX-Evil: 1\", nonce=\"n\"",
        "Digest realm=\"" + QByteArray(5000, 'r') + "\", nonce=\"n\"",
    };
    for (const QByteArray& header : headers)
        EXPECT_FALSE(DigestChallenge::parse(header)) << header.constData();
}

}  // namespace velmora
