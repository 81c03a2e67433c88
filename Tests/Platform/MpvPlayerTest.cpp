// The local player over real movies, with real decoding and no sound device.
#include "Platform/Linux/MpvPicture.h"
#include "Platform/Linux/MpvPlayer.h"
#include "Support/WaitFor.h"

#include <gmock/gmock.h>

#include <future>

namespace velmora {
namespace {

using namespace Qt::StringLiterals;
using test::waitFor;
using Kind = MediaGroup::Kind;
using Seek = MpvPlayer::Seek;
using testing::ElementsAre;

QString sample(const char* name) {
    return QStringLiteral(VELMORA_SAMPLE_MOVIES "/") + QString::fromLatin1(name);
}

class MpvPlayerTest : public testing::Test {
  protected:
    MpvPlayerTest() {
        QObject::connect(&player, &MpvPlayer::ready, [this] { ++readies; });
        QObject::connect(&player, &MpvPlayer::ended, [this] { ++ends; });
    }

    void load(const QString& file) {
        const int before = readies;
        player.load(file);
        ASSERT_TRUE(waitFor([&] { return readies > before; }));
    }
    /// Where it got to; below zero when the seek did not finish.
    double seek(double seconds, Seek how = Seek::exact) {
        std::optional<bool> finished;
        player.seek(seconds, how, [&](bool done) { finished = done; });
        EXPECT_TRUE(waitFor([&] { return finished.has_value(); }));
        return finished.value_or(false) ? player.position().value_or(-2) : -1;
    }

    int readies = 0;
    int ends = 0;
    MpvPlayer player{{.isMute = true, .hardwareDecoding = u"no"_s}};
};

/// Draws what a window would show.
class Canvas {
  public:
    explicit Canvas(MpvPlayer& player) : picture_(MpvPicture::inMemory(player.handle(), [] {})) {}

    QByteArray picture() {
        QByteArray pixels(640 * 90, '\0');
        EXPECT_TRUE(picture_->draw(reinterpret_cast<uchar*>(pixels.data()), {160, 90}, 640));
        return pixels;
    }

  private:
    std::unique_ptr<MpvPicture> picture_;
};

TEST_F(MpvPlayerTest, LoadsPausedSeeksPlaysAndEnds) {
    load(sample("as-is.mp4"));
    EXPECT_TRUE(player.isPaused());
    EXPECT_NEAR(player.duration().value_or(0), 4, 0.05);
    EXPECT_EQ(player.position(), 0.0);
    EXPECT_NEAR(seek(2.5), 2.5, 0.03);
    EXPECT_LT(seek(3.9, Seek::keyFrame), 3.91);
    EXPECT_TRUE(player.isPaused());

    EXPECT_NEAR(seek(3.2), 3.2, 0.03);
    player.setPaused(false);
    ASSERT_TRUE(waitFor([this] { return ends == 1; }));
    EXPECT_TRUE(player.isPaused());
    EXPECT_TRUE(player.hasEnded());
    EXPECT_NEAR(player.position().value_or(0), 4, 0.1);
    EXPECT_NEAR(seek(1), 1, 0.05);
    EXPECT_FALSE(player.hasEnded());
    EXPECT_NEAR(seek(1000), 4, 0.1) << "past the end is the last picture";
}

TEST_F(MpvPlayerTest, SeeksWaitForTheFileAndTheLastOneCounts) {
    std::vector<bool> first;
    std::vector<bool> second;
    std::vector<bool> third;
    player.load(sample("as-is.mp4"));
    player.seek(3, Seek::exact, [&](bool finished) { first.push_back(finished); });
    player.seek(1, Seek::exact, [&](bool finished) { second.push_back(finished); });
    EXPECT_EQ(player.position(), 1.0) << "the target, while it is sought";
    EXPECT_TRUE(first.empty()) << "never from inside the call";
    ASSERT_TRUE(waitFor([&] { return !second.empty(); }));
    EXPECT_THAT(first, ElementsAre(false));
    EXPECT_THAT(second, ElementsAre(true));
    // Another file ends what the one before was asked for.
    player.seek(2, Seek::exact, [&](bool finished) { third.push_back(finished); });
    load(sample("mpeg4.avi"));
    EXPECT_THAT(third, ElementsAre(false));
    EXPECT_NEAR(player.position().value_or(-1), 0, 0.05);
    player.unload();
    EXPECT_EQ(player.position(), std::nullopt);
    EXPECT_EQ(seek(1), -1);
}

// A track change just before a seek used to leave the picture grey or in pieces.
TEST_F(MpvPlayerTest, PicturesAreWholeWhenTracksChangeBetweenSeeks) {
    load(sample("hevc.mkv"));
    Canvas canvas(player);
    const double times[] = {0.5, 1.25, 2, 2.75, 3.5};
    QList<QByteArray> expected;
    QByteArray before = canvas.picture();
    for (const double time : times) {
        EXPECT_NEAR(seek(time), time, 0.03);
        ASSERT_TRUE(waitFor([&] { return canvas.picture() != before; }));
        before = canvas.picture();
        expected.append(before);
    }
    for (int round = 0; round < 12; ++round) {
        const int index = (round * 3) % 5;
        player.selectTrack(Kind::audible, 1 + round % 2);
        player.selectTrack(Kind::legible, round % 3 == 0 ? std::optional<int>() : 1 + round % 2);
        player.selectTrack(Kind::legible, std::nullopt);
        EXPECT_NEAR(seek(times[index]), times[index], 0.03);
        EXPECT_TRUE(waitFor([&] { return canvas.picture() == expected[index]; }, 5)) << round;
    }
}

TEST_F(MpvPlayerTest, OnePictureWaitsForTheEndOfAnother) {
    load(sample("as-is.mp4"));
    auto first = std::make_unique<Canvas>(player);
    player.setPaused(false);
    auto second = std::async(std::launch::async, [this] { return Canvas(player).picture(); });
    EXPECT_EQ(second.wait_for(std::chrono::milliseconds(100)), std::future_status::timeout);
    first.reset();
    EXPECT_FALSE(second.get().isEmpty());
}

TEST_F(MpvPlayerTest, GoesWhileItStarts) {
    for (int round = 0; round < 3; ++round) {
        MpvPlayer brief({.isMute = true});
        brief.load(sample("as-is.mp4"));
    }
    load(sample("as-is.mp4"));
}

}  // namespace
}  // namespace velmora
