// benchmark-open-movie [--minutes N] [--hidden] MOVIE TELEVISION: the whole program and one of its windows,
// without hands. Opens the movie, lets its poster and its strip be made, plays it on the television, seeks,
// pauses, goes on, closes, and opens it again.
//
// Prints a line for each of these, about the stretches from one look for what is to be done to the next, for
// so long a user's hand may have to wait. In milliseconds: the longest stretch, the longest without the time
// that others took, and the most processor time in one; then how many stretches took more than 10 ms in the
// second sense, out of how many, the name of the phase, and what took longest during the second and the
// third. What others took is the time in which the thread was ready to run and other programs had the
// processor; and for a stretch in which it never gave the processor away, all but its processor time: what
// else passed was another machine's on the same hardware.
//
// With --minutes the movie plays on for so long, unwatched, and a line for each minute tells the processor
// time of the process as a share of one core and its proportional memory in KiB; --hidden hides the window
// meanwhile.
#include "Diagnostics/Log.h"
#include "Interface/Application/Linux/LinuxWorld.h"
#include "Interface/Application/VelmoraApp.h"
#include "Interface/Updater/HttpsUpdateSource.h"

#include <QCommandLineParser>
#include <QDBusConnection>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QTextStream>
#include <QTimer>
#include <QtPlugin>
#include <QtQml/qqmlextensionplugin.h>

#include <dlfcn.h>
#include <poll.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <clocale>
#include <ctime>
#include <functional>
#include <optional>
#include <utility>

Q_IMPORT_QML_PLUGIN(Velmora_ApplicationPlugin)
Q_IMPORT_QML_PLUGIN(Velmora_ViewsPlugin)

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace velmora;

namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr double tooLate = 10;  // milliseconds
constexpr auto patience = 10min;

double milliseconds(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

/// How long the main thread has been ready to run and was not let, as the kernel counts it.
class Queueing {
  public:
    Queueing() : file_(u"/proc/self/task/%1/schedstat"_s.arg(getpid())) { file_.open(QIODevice::ReadOnly); }
    [[nodiscard]] double milliseconds() const {
        std::array<char, 128> text{};
        const auto length = pread(file_.handle(), text.data(), text.size() - 1, 0);
        return QByteArrayView(text.data(), std::max<qsizetype>(length, 0))
                   .toByteArray()
                   .split(' ')
                   .value(1)
                   .toDouble() /
               1e6;
    }

  private:
    QFile file_;
};

/// How often the calling thread gave the processor away, as it does to wait for something.
long timesWaited() {
    rusage usage{};
    getrusage(RUSAGE_THREAD, &usage);
    return usage.ru_nvcsw;
}

/// Measures the stretches between two looks of the event loop at what there is to do.
class WatchedApplication : public QGuiApplication {
  public:
    /// Milliseconds.
    struct Stretch {
        double whole = 0;
        double own = 0;   ///< without what others took
        double work = 0;  ///< processor time alone
        QString cause;    ///< the event that took longest meanwhile: whose, and of which type
    };
    struct Phase {
        Stretch latest;
        Stretch longest;
        Stretch busiest;
        int tooLate = 0;
        int stretches = 0;
    };

    WatchedApplication(int& argc, char** argv) : QGuiApplication(argc, argv) {
        using Poll = int (*)(pollfd*, unsigned, int);
        using SetPoll = void (*)(void*, Poll);
        void* const found = dlsym(RTLD_DEFAULT, "g_main_context_set_poll_func");
        if (!found) qFatal("Qt's event loop is not GLib's here, which is the one that can be watched.");
        watching = this;
        reinterpret_cast<SetPoll>(found)(nullptr, [](pollfd* files, unsigned count, int timeout) {
            watching->end();
            const int ready = poll(files, count, timeout);
            watching->begin();
            return ready;
        });
    }

    void watch() { phase_.emplace(); }
    [[nodiscard]] Phase endWatch() { return std::exchange(phase_, {}).value_or(Phase()); }

    bool notify(QObject* receiver, QEvent* event) override {
        if (depth_ > 0) return QGuiApplication::notify(receiver, event);
        const QByteArray name = receiver->metaObject()->className();  // it may be gone afterwards
        const QEvent::Type type = event->type();
        const double before = milliseconds(CLOCK_MONOTONIC);
        ++depth_;
        const bool isTaken = QGuiApplication::notify(receiver, event);
        --depth_;
        const double took = milliseconds(CLOCK_MONOTONIC) - before;
        if (took > longest_.second)
            longest_ = {QString::fromLatin1(name) + u' ' +
                            QString::fromLatin1(QMetaEnum::fromType<QEvent::Type>().valueToKey(type)),
                        took};
        return isTaken;
    }

  private:
    void begin() {
        begun_ = milliseconds(CLOCK_MONOTONIC);
        worked_ = milliseconds(CLOCK_THREAD_CPUTIME_ID);
        queued_ = queueing_.milliseconds();
        waited_ = timesWaited();
        longest_ = {};
    }
    void end() {
        if (!phase_ || begun_ <= 0) return;
        const double whole = milliseconds(CLOCK_MONOTONIC) - begun_;
        const double work = milliseconds(CLOCK_THREAD_CPUTIME_ID) - worked_;
        const double own = timesWaited() == waited_ ? work : whole - (queueing_.milliseconds() - queued_);
        const Stretch stretch{whole, own, work, longest_.first};
        ++phase_->stretches;
        phase_->tooLate += own > tooLate ? 1 : 0;
        if (whole > phase_->latest.whole) phase_->latest = stretch;
        if (own > phase_->longest.own) phase_->longest = stretch;
        if (work > phase_->busiest.work) phase_->busiest = stretch;
    }

    static inline WatchedApplication* watching = nullptr;
    Queueing queueing_;
    std::optional<Phase> phase_;
    std::pair<QString, double> longest_;
    int depth_ = 0;
    double begun_ = 0;
    double worked_ = 0;
    double queued_ = 0;
    long waited_ = 0;
};

/// Handles events until it is so; false when that takes too long.
bool waitUntil(const std::function<bool()>& isSo, SteadyClock::duration limit = patience) {
    QTimer look;
    look.start(20);
    const auto end = SteadyClock::now() + limit;
    while (!isSo() && SteadyClock::now() < end)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return isSo();
}

void waitFor(SteadyClock::duration time) {
    waitUntil([] { return false; }, time);
}

struct Step {
    const char* name;
    std::function<void()> act;
    std::function<bool()> isDone;
};

/// Prints how long the main thread was at things during the step. False when it did not come to its end.
bool perform(WatchedApplication& application, const Step& step) {
    application.watch();
    QMetaObject::invokeMethod(&application, step.act, Qt::QueuedConnection);
    const bool isDone = waitUntil(step.isDone);
    waitFor(1s);  // what follows from it
    const WatchedApplication::Phase phase = application.endWatch();
    const auto number = [](double milliseconds) { return QString::number(milliseconds, 'f', 1); };
    QTextStream(stdout) << number(phase.latest.whole) << '\t' << number(phase.longest.own) << '\t'
                        << number(phase.busiest.work) << '\t' << phase.tooLate << '\t' << phase.stretches
                        << '\t' << step.name << '\t' << phase.longest.cause << '\t' << phase.busiest.cause
                        << Qt::endl;
    return isDone;
}

qint64 proportionalMemory() {
    QFile file(u"/proc/self/smaps_rollup"_s);
    if (!file.open(QIODevice::ReadOnly)) return 0;
    const QList<QByteArray> lines = file.readAll().split('\n');
    for (const QByteArray& line : lines)
        if (line.startsWith("Pss:")) return line.simplified().split(' ').at(1).toLongLong();
    return 0;
}

void countMinutes(int minutes) {
    waitFor(5s);
    for (int minute = 1; minute <= minutes; ++minute) {
        const double before = milliseconds(CLOCK_PROCESS_CPUTIME_ID);
        QEventLoop quiet;
        QTimer::singleShot(1min, &quiet, &QEventLoop::quit);
        quiet.exec();
        const double share = (milliseconds(CLOCK_PROCESS_CPUTIME_ID) - before) / 60'000;
        QTextStream(stdout) << "minute\t" << QString::number(share * 100, 'f', 2) << '\t'
                            << proportionalMemory() << Qt::endl;
    }
}

bool run(WatchedApplication& application, const QCommandLineParser& parser) {
    const QUrl movie = QUrl::fromLocalFile(QFileInfo(parser.positionalArguments().at(0)).absoluteFilePath());
    const QString television = parser.positionalArguments().at(1);
    LinuxWorld world;
    HttpsUpdateSource source;
    Updater updater({.version = u"0.0.0"_s}, source, world.preferences());
    VelmoraApp app(world, updater, QDBusConnection::sessionBus());
    app.openWindow(std::nullopt);
    MovieWindow& window = *app.windows().front();
    Session& session = window.session();
    waitFor(1s);

    const auto playsThere = [&session] { return session.canControlPlayback() && session.isPlaying(); };
    const auto isPast = [&session](double seconds) {
        return [&session, seconds] { return session.currentTime() > seconds; };
    };
    const Step beginning[] = {
        {"opening it", [&] { session.open(movie, false); },
         [&] { return session.phase().ready() != nullptr; }},
        {"poster and strip", [] {}, [&] { return session.thumbnails() && !session.poster().isNull(); }},
        {"giving it to the television", [&] { (void)window.world()->televisions().add(television); },
         playsThere},
        {"playing", [] {}, isPast(10)},
        {"a hand on the timeline",
         [&] {
             // As often as a hand's movements are told of.
             for (int place = 1; place <= 30; ++place)
                 QTimer::singleShot(place * 16, &application,
                                    [&, place] { window.movie()->drag(place * 60); });
             QTimer::singleShot(500, &application, [&] { window.movie()->release(); });
         },
         isPast(1801)},
        {"pause and a new poster", [&] { session.togglePlayPause(); }, [&] { return !session.isPlaying(); }},
        {"going on", [&] { session.togglePlayPause(); }, playsThere},
    };
    for (const Step& step : beginning) {
        if (perform(application, step)) continue;
        qCritical().noquote() << "It came to nothing:" << step.name << session.title();
        return false;
    }
    if (parser.isSet(u"minutes"_s)) {
        if (parser.isSet(u"hidden"_s)) window.window().hide();
        countMinutes(parser.value(u"minutes"_s).toInt());
    }
    const auto showsPoster = [&app] {
        return !app.windows().empty() && !app.windows().front()->session().poster().isNull();
    };
    return perform(application,
                   {"closing it", [&] { window.close(); }, [&] { return app.windows().empty(); }}) &&
           perform(application,
                   {"another window", [&] { app.openWindow(std::nullopt); }, [] { return true; }}) &&
           perform(application, {"opening it again",
                                 [&] { app.windows().front()->session().open(movie, false); }, showsPoster});
}

}  // namespace

int main(int argc, char** argv) {
    LinuxWorld::chooseGraphics();
    WatchedApplication application(argc, argv);
    std::setlocale(LC_NUMERIC, "C");
    Diagnostics::setStandardErrorFallback(false);
    QGuiApplication::setQuitOnLastWindowClosed(false);
    QCommandLineParser parser;
    parser.addOptions(
        {{u"minutes"_s, u"Play on for so long."_s, u"N"_s, u"0"_s}, {u"hidden"_s, u"Without the window."_s}});
    parser.addPositionalArgument(u"movie"_s, u"an hour at least"_s);
    parser.addPositionalArgument(u"television"_s, u"HOST:PORT"_s);
    parser.process(application);
    if (parser.positionalArguments().size() != 2) parser.showHelp(2);
    return run(application, parser) ? 0 : 1;
}
