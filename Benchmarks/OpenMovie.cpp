// benchmark-open-movie [--minutes N] [--hidden] MOVIE TELEVISION: the whole program and one of its windows,
// without hands. Opens the movie, lets its poster and its strip be made, plays it on the television, seeks,
// pauses, goes on and closes.
//
// Prints a line for each of these, in milliseconds: the longest that the main thread took to answer, the
// longest without the time in which it was ready to run and others had the processor, and the most processor
// time that it spent before an answer; then how many answers took more than 10 ms in the second sense, out of
// how many, the name of the phase, and what took longest during the second and the third.
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

#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <clocale>
#include <ctime>
#include <functional>
#include <thread>
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
    /// From any thread.
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

/// While it watches, another thread puts a question to the main thread every millisecond, as an impatient
/// hand would, unless the one before has not been answered.
class WatchedApplication : public QGuiApplication {
  public:
    /// What went by between a question and its answer. Milliseconds.
    struct Wait {
        double late = 0;
        double own = 0;   ///< without the queueing for a processor
        double work = 0;  ///< processor time alone
        QString cause;    ///< the event that took longest meanwhile: whose, and of which type
    };
    struct Phase {
        Wait latest;
        Wait longest;
        Wait busiest;
        int tooLate = 0;
        int answers = 0;
    };

    WatchedApplication(int& argc, char** argv) : QGuiApplication(argc, argv) {
        pthread_getcpuclockid(pthread_self(), &mainThread_);
    }

    void watch() {
        phase_ = {};
        asker_ = std::jthread([this](const std::stop_token& stop) { ask(stop); });
    }
    [[nodiscard]] Phase endWatch() {
        asker_ = {};
        QCoreApplication::sendPostedEvents(this, QEvent::MetaCall);
        return std::exchange(phase_, {});
    }

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
    void ask(const std::stop_token& stop) {
        while (!stop.stop_requested()) {
            std::this_thread::sleep_for(1ms);
            if (isAsking_.exchange(true)) continue;
            const double asked = milliseconds(CLOCK_MONOTONIC);
            const double queued = queueing_.milliseconds();
            const double worked = milliseconds(mainThread_);
            const auto answer = [this, asked, queued, worked] {
                const double late = milliseconds(CLOCK_MONOTONIC) - asked;
                note({late, late - (queueing_.milliseconds() - queued), milliseconds(mainThread_) - worked,
                      longest_.first});
                longest_ = {};
                isAsking_ = false;
            };
            QMetaObject::invokeMethod(this, answer, Qt::QueuedConnection);
        }
    }
    void note(const Wait& wait) {
        ++phase_.answers;
        phase_.tooLate += wait.own > tooLate ? 1 : 0;
        if (wait.late > phase_.latest.late) phase_.latest = wait;
        if (wait.own > phase_.longest.own) phase_.longest = wait;
        if (wait.work > phase_.busiest.work) phase_.busiest = wait;
    }

    clockid_t mainThread_{};
    Queueing queueing_;
    Phase phase_;
    std::pair<QString, double> longest_;
    int depth_ = 0;
    std::atomic<bool> isAsking_ = false;
    std::jthread asker_;
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

/// Prints how the main thread answered during the step. False when it did not come to its end.
bool perform(WatchedApplication& application, const Step& step) {
    application.watch();
    QMetaObject::invokeMethod(&application, step.act, Qt::QueuedConnection);
    const bool isDone = waitUntil(step.isDone);
    waitFor(1s);  // what follows from it
    const WatchedApplication::Phase phase = application.endWatch();
    const auto number = [](double milliseconds) { return QString::number(milliseconds, 'f', 1); };
    QTextStream(stdout) << number(phase.latest.late) << '\t' << number(phase.longest.own) << '\t'
                        << number(phase.busiest.work) << '\t' << phase.tooLate << '\t' << phase.answers
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
    return perform(application,
                   {"closing it", [&] { window.close(); }, [&] { return app.windows().empty(); }});
}

}  // namespace

int main(int argc, char** argv) {
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
