// benchmark-mode-changes [WIDTH HEIGHT]: takes a window's real views through every change of mode, drawing
// without a pause, and prints a line for each change: the longest time between two pictures, the longest
// processor time that the main thread took for one, both in milliseconds, how many pictures came more than 32
// ms after the one before, out of how many, and the change's name.
#include "Interface/Views/Appearance.h"
#include "Interface/Views/Scenery.h"
#include "Interface/Views/Showcase.h"

#include <QGuiApplication>
#include <QQuickItem>
#include <QTest>

#include <pthread.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <functional>
#include <mutex>
#include <utility>

using namespace Qt::StringLiterals;
using namespace velmora;
using namespace velmora::test;

namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr int longestMotion = 800;  // milliseconds, and some
constexpr double twoFrames = 32;    // milliseconds

/// Keeps a window drawing, and measures from picture to picture.
class Frames {
  public:
    struct Result {
        double longest = 0;  ///< milliseconds, as `work`
        double work = 0;
        int late = 0;
        int count = 0;
    };

    explicit Frames(QQuickWindow& window) : window_(window) {
        pthread_getcpuclockid(pthread_self(), &mainThread_);
        // On the thread that draws, which with OpenGL is not the main one.
        QObject::connect(
            &window, &QQuickWindow::frameSwapped, &window, [this] { note(); }, Qt::DirectConnection);
        QObject::connect(&window, &QQuickWindow::frameSwapped, &window, &QQuickWindow::update);
    }

    Result during(const std::function<void()>& change) {
        {
            const std::scoped_lock guard(lock_);
            result_ = {};
            last_ = SteadyClock::now();
            workBefore_ = work();
        }
        change();
        window_.update();
        QTest::qWait(longestMotion);
        const std::scoped_lock guard(lock_);
        return result_;
    }

  private:
    [[nodiscard]] double work() const {
        timespec time{};
        clock_gettime(mainThread_, &time);
        return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
    }
    void note() {
        const std::scoped_lock guard(lock_);
        const auto now = SteadyClock::now();
        const std::chrono::duration<double, std::milli> interval = now - std::exchange(last_, now);
        const double workNow = work();
        result_.longest = std::max(result_.longest, interval.count());
        result_.work = std::max(result_.work, workNow - std::exchange(workBefore_, workNow));
        result_.late += interval.count() > twoFrames ? 1 : 0;
        ++result_.count;
    }

    QQuickWindow& window_;
    clockid_t mainThread_{};
    std::mutex lock_;
    SteadyClock::time_point last_;
    double workBefore_ = 0;
    Result result_;
};

struct Change {
    const char* name;
    std::function<void(Showcase&)> make;
};

std::function<void(Showcase&)> show(const MovieState& state) {
    return [state](Showcase& showcase) { showcase.movie.show(state); };
}

std::function<void(Showcase&)> showPoster(const QImage& poster) {
    MovieArtwork artwork;
    artwork.poster = poster;
    artwork.thumbnailAt = [](double time) {
        static const QImage pictures[] = {Scenery::night({480, 270}), Scenery::snow({480, 270})};
        return pictures[static_cast<int>(time / 60) % 2];
    };
    return [artwork](Showcase& showcase) { showcase.movie.show(artwork); };
}

void drag(Showcase& showcase) {
    for (int step = 0; step < 20; ++step) {
        showcase.movie.drag(600 + step * 60);
        QTest::qWait(16);
    }
}

void openMenu(Showcase& showcase, QObject* owner, const char* function) {
    QMetaObject::invokeMethod(owner, function);
    QTest::qWait(longestMotion / 2);
    QTest::keyClick(&showcase.view, Qt::Key_Escape);
}

std::vector<Change> allChanges() {
    const QString den = u"Den"_s;
    MovieState paused = States::playing(den);
    paused.isPlaying = false;
    MovieState stalled = States::waiting();
    stalled.deviceName = den;
    const QImage dusk = Scenery::dusk({1280, 720});
    const QImage snow = Scenery::snow({1280, 720});
    const auto setDrop = [](bool on) {
        return [on](Showcase& showcase) { showcase.content()->setProperty("showsDrop", on); };
    };
    return {{"a movie is opened", show(States::preparing())},
            {"its poster comes", showPoster(dusk)},
            {"it is ready", show(States::waiting())},
            {"it is sent", show(States::handover(den))},
            {"it plays there", show(States::playing(den))},
            {"it is paused", show(paused)},
            {"another poster", showPoster(snow)},
            {"a hand on the timeline", drag},
            {"the hand lets go", [](Showcase& showcase) { showcase.movie.release(); }},
            {"the menu of tracks",
             [](Showcase& showcase) { openMenu(showcase, showcase.screen(), "openMediaMenu"); }},
            {"the televisions",
             [](Showcase& showcase) {
                 showcase.routes.open(showcase.context);
                 QTest::qWait(longestMotion / 2);
                 QTest::keyClick(&showcase.view, Qt::Key_Escape);
             }},
            {"something is dragged over it", setDrop(true)},
            {"and away", setDrop(false)},
            {"the television is lost", show(stalled)},
            {"it fails", show(States::failed(u"The movie stopped unexpectedly."_s, true))},
            {"the last movie is offered", show(States::resume())},
            {"the window is empty", show(MovieState())},
            {"and without a poster", showPoster({})}};
}

}  // namespace

int main(int argc, char** argv) {
    const QGuiApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const QSize size =
        arguments.size() == 3 ? QSize(arguments[1].toInt(), arguments[2].toInt()) : QSize(640, 460);
    Appearance::instance().setLook({});
    SystemClock clock;
    Showcase showcase(clock, size);
    showcase.televisions.show(
        {{.identifier = u"den"_s, .name = u"Den"_s}, {.identifier = u"attic"_s, .name = u"Attic"_s}});
    showcase.movie.show(MovieTracks{.audio = {{u"1"_s, u"English"_s}, {u"2"_s, u"Commentary"_s}},
                                    .subtitles = {{u"3"_s, u"Dutch"_s}},
                                    .chosenAudio = u"1"_s,
                                    .chosenSubtitle = {}});
    if (!showcase.open()) return 1;
    Frames frames(showcase.view);
    frames.during([] {});
    for (const Change& change : allChanges()) {
        const Frames::Result result = frames.during([&] { change.make(showcase); });
        std::printf("%.1f %.1f %d %d %s\n", result.longest, result.work, result.late, result.count,
                    change.name);
        std::fflush(stdout);
    }
    return 0;
}
