#include "Playback/BackgroundWork.h"

#include <QCoreApplication>

#include <atomic>
#include <utility>
#include <vector>

namespace velmora {

struct BackgroundWork::Run {
    QString key;
    bool isWanted = true;  // main thread only
    std::atomic<bool> hasEnded = false;
    std::jthread thread;
};

BackgroundWork::~BackgroundWork() {
    for (const auto& run : runs_) run->thread.request_stop();
    for (const auto& run : runs_) run->thread.join();
}

Job BackgroundWork::start(const QString& key, Work work) {
    forgetEnded();
    const auto run = std::make_shared<Run>();
    run->key = key;
    std::vector<std::shared_ptr<Run>> earlier;
    for (const auto& other : runs_)
        if (other->key == key) earlier.push_back(other);

    const Post post = [wanted = std::weak_ptr(run)](std::function<void()> news) {
        const auto deliver = [wanted, news = std::move(news)] {
            const auto wantedRun = wanted.lock();
            if (wantedRun && wantedRun->isWanted) news();
        };
        QMetaObject::invokeMethod(QCoreApplication::instance(), deliver, Qt::QueuedConnection);
    };
    // The thread holds what it touches, but not its own run: that holds the thread.
    Run* const own = run.get();
    run->thread = std::jthread(
        [own, earlier = std::move(earlier), work = std::move(work), post](const std::stop_token& stop) {
            for (const auto& other : earlier) other->hasEnded.wait(false);
            if (!stop.stop_requested()) work(stop, post);
            own->hasEnded = true;
            own->hasEnded.notify_all();
        });
    runs_.push_back(run);
    return Job(std::shared_ptr<void>(nullptr, [run](void*) {
        run->isWanted = false;
        run->thread.request_stop();
    }));
}

void BackgroundWork::forgetEnded() {
    runs_.remove_if([](const std::shared_ptr<Run>& run) {
        if (run->hasEnded) run->thread.join();
        return run->hasEnded.load();
    });
}

}  // namespace velmora
