#include "Playback/BackgroundServices.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>

#include <gtest/gtest.h>

#include <atomic>
#include <latch>

namespace velmora {
namespace {

using namespace Qt::StringLiterals;

TEST(BackgroundWork, tellsWhatIsStillWantedOneAfterAnotherByKey) {
    std::latch begun(1);
    std::atomic<int> running = 0;
    std::atomic<int> most = 0;
    bool heardOfFirst = false;
    QEventLoop loop;
    BackgroundWork work;
    const auto overlap = [&] { most = std::max(most.load(), ++running); };
    Job first = work.start(u"movie"_s, [&](const std::stop_token& stop, const BackgroundWork::Post& post) {
        overlap();
        post([&] { heardOfFirst = true; });
        begun.count_down();
        while (!stop.stop_requested()) std::this_thread::yield();
        --running;
    });
    begun.wait();
    first = {};
    const std::thread::id here = std::this_thread::get_id();
    const Job second = work.start(u"movie"_s, [&](const std::stop_token&, const BackgroundWork::Post& post) {
        overlap();
        EXPECT_NE(std::this_thread::get_id(), here);
        --running;
        post([&] { loop.exit(std::this_thread::get_id() == here ? 0 : 1); });
    });
    QTimer::singleShot(std::chrono::seconds(20), &loop, [&] { loop.exit(2); });
    EXPECT_EQ(loop.exec(), 0);
    EXPECT_EQ(most, 1);
    EXPECT_FALSE(heardOfFirst) << "it was let go of before its news arrived";
    const Job endless = work.start(u"other"_s, [](const std::stop_token& stop, const BackgroundWork::Post&) {
        while (!stop.stop_requested()) std::this_thread::yield();
    });
}

TEST(BackgroundWork, bringsWhatPreparerAndArtworkSayToTheMainThread) {
    BackgroundWork work;
    BackgroundPreparer preparer(work);
    BackgroundArtwork artwork(work);
    QEventLoop loop;
    QStringList heard;
    const auto hear = [&](const QString& what) {
        heard.append(what);
        if (heard.size() == 3) loop.quit();
    };
    const QUrl missing = QUrl::fromLocalFile(u"/nowhere/Film.mkv"_s);
    const Job jobs[] = {
        preparer.prepare(
            missing, false, [](const Preparer::Update&) {},
            [&](const MoviePreparer::Outcome& outcome) { hear(outcome ? u"prepared"_s : u"no movie"_s); }),
        artwork.capturePoster(missing, {},
                              [&](const QImage& poster) { hear(poster.isNull() ? u"no poster"_s : u"!"_s); }),
        artwork.makeThumbnails(missing, [&](const auto& strip) { hear(strip ? u"!"_s : u"no strip"_s); }),
    };
    QTimer::singleShot(std::chrono::seconds(20), &loop, &QEventLoop::quit);
    loop.exec();
    heard.sort();
    EXPECT_EQ(heard, (QStringList{u"no movie"_s, u"no poster"_s, u"no strip"_s}));
    EXPECT_TRUE(artwork.poster(missing).isNull() && !artwork.storedThumbnails(missing));
}

}  // namespace
}  // namespace velmora
