#include "Sender/Pairing/Crypto.h"
#include "Sender/Pairing/SecureFrames.h"
#include "Vectors.h"

#include <gtest/gtest.h>

namespace velmora::test {

namespace {

Secret key() {
    return secretVector("verify.control_write");
}

QByteArray counting(qsizetype size) {
    QByteArray bytes(size, Qt::Uninitialized);
    for (qsizetype i = 0; i < size; ++i) bytes[i] = static_cast<char>(i);
    return bytes;
}

}  // namespace

TEST(SecureFramesTest, derivesTheKnownKeys) {
    const Secret shared = secretVector("verify.shared");
    const struct {
        ChannelKeys keys;
        const char* ours;
        const char* theirs;
    } cases[] = {
        {SecureChannel::control(shared), "verify.control_write", "verify.control_read"},
        {SecureChannel::events(shared), "verify.events_read", "verify.events_write"},
        {SecureChannel::data(shared, 1234567890), "verify.datastream_out", "verify.datastream_in"},
        {SecureChannel::control(secretVector("transient.K")), "transient.control_write",
         "transient.control_read"},
    };
    for (const auto& [keys, ours, theirs] : cases) {
        EXPECT_EQ(keys.encrypt.toByteArray(), vector(ours));
        EXPECT_EQ(keys.decrypt.toByteArray(), vector(theirs));
    }
}

TEST(SecureFramesTest, sealsTheKnownFramesAndOpensThemHoweverTheyAreCut) {
    FrameSealer sealer(key());
    const QByteArray first = sealer.seal(vector("frame.0.plain"));
    EXPECT_EQ(first, vector("frame.0.cipher"));
    const QByteArray both = sealer.seal(counting(1500));
    EXPECT_EQ(both.size(), 1536);
    EXPECT_EQ(sha256(both), vector("frame.1-2.sha256"));

    const QByteArray plain = vector("frame.0.plain") + counting(1500);
    for (const qsizetype step : {1, 2, 17, 49, 50, 1000, 1585}) {
        FrameOpener opener(key());
        QByteArray text;
        for (QByteArray rest = first + both; !rest.isEmpty(); rest = rest.sliced(std::min(step, rest.size())))
            text += opener.open(rest.first(std::min(step, rest.size()))).value_or("failed");
        EXPECT_EQ(text, plain) << step;
        EXPECT_TRUE(opener.isBetweenFrames());
    }
    EXPECT_TRUE(sealer.seal({}).isEmpty());
}

TEST(SecureFramesTest, opensTheLongestFrame) {
    const QByteArray plain = counting(65535);
    const QByteArray length("\xFF\xFF", 2);
    FrameOpener opener(key());
    EXPECT_EQ(opener.open(length + Crypto::seal(key(), QByteArray(12, '\0'), plain, length)), plain);
}

TEST(SecureFramesTest, waitsForTheRestAndFailsForGoodOnAForgery) {
    const QByteArray frame = vector("frame.0.cipher");
    for (qsizetype i = 0; i < frame.size(); ++i) {
        FrameOpener cut(key());
        EXPECT_EQ(cut.open(frame.first(i)), QByteArray()) << i;
        EXPECT_EQ(cut.isBetweenFrames(), i == 0);

        FrameOpener opener(key());
        // A frame that claims to be longer is incomplete until the bytes are there.
        EXPECT_FALSE(opener.open(damaged(frame, i) + QByteArray(40000, '\0'))) << i;
        EXPECT_FALSE(opener.open(frame)) << i;
    }
}

TEST(SecureFramesTest, refusesRepeatedSwappedAndMissingFrames) {
    FrameSealer sealer(key());
    const QByteArray one = sealer.seal("one");
    const QByteArray two = sealer.seal("two");
    const QByteArray sequences[] = {one + one, two, two + one, one + two + two, one + two + one};
    for (const QByteArray& frames : sequences) {
        FrameOpener opener(key());
        EXPECT_FALSE(opener.open(frames));
        EXPECT_FALSE(opener.open({})) << "not even when its turn would come";
    }
    EXPECT_FALSE(FrameOpener(secretVector("verify.control_read")).open(one)) << "the other direction";
    EXPECT_EQ(FrameOpener(key()).open(one + two), QByteArray("onetwo"));
}

}  // namespace velmora::test
