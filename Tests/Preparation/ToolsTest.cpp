#include "Preparation/Tools.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <thread>
#include <vector>

namespace velmora {
namespace {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

QUrl program() {
    return QUrl::fromLocalFile(QCoreApplication::applicationDirPath() + u"/ToolsTestProgram"_s);
}

struct Ended {
    Tools::Output output;
    QStringList lines;
};

/// Runs the test program; `react` sees each line as it arrives.
Ended runProgram(const QStringList& arguments, const std::stop_token& stop = {},
                 const Tools::LineCallback& react = {},
                 std::chrono::milliseconds grace = Tools::terminateGrace) {
    Ended ended;
    const auto onLine = [&ended, &react](const QString& line) {
        ended.lines += line;
        if (react) react(line);
    };
    const auto output = Tools::run(program(), arguments, stop, onLine, grace);
    EXPECT_TRUE(output.has_value());
    ended.output = output.value_or(Tools::Output{-1, {}, {}});
    return ended;
}

TEST(ToolsRun, onlyLineFeedsEndLines) {
    struct Case {
        QStringList chunks;  // percent-encoded
        QStringList lines;
    };
    const Case cases[] = {
        {{u"a%0Ab"_s}, {u"a"_s, u"b"_s}},
        {{u"a%0D%0A"_s}, {u"a\r"_s}},
        {{u"%0A%0A"_s}, {u""_s, u""_s}},
        {{u"1%0D2%0D"_s, u"3"_s}, {u"1\r2\r3"_s}},
        {{u"fra"_s, u"me=1%0Afr"_s, u"ame=2"_s, u"%0A"_s}, {u"frame=1"_s, u"frame=2"_s}},
        {{u"%C3"_s, u"%A9%0A"_s}, {u"é"_s}},
        {{u"a%FFb%0A"_s}, {u"a\uFFFDb"_s}},
        {{}, {}},
    };
    for (const Case& testCase : cases) {
        const Ended run = runProgram(QStringList(u"chunks"_s) + testCase.chunks);
        EXPECT_EQ(run.lines, testCase.lines);
        EXPECT_EQ(run.output.standardOutput,
                  QByteArray::fromPercentEncoding(testCase.chunks.join(QString()).toUtf8()));
        EXPECT_EQ(run.output.status, 0);
    }
}

TEST(ToolsRun, anUnhappyEndIsAResult) {
    const auto failed = Tools::run(program(), {u"status"_s, u"3"_s});
    ASSERT_TRUE(failed.has_value());
    EXPECT_EQ(failed->status, 3);
    EXPECT_EQ(failed->stderrText(), u"what went wrong: \uFFFD\n"_s);
    EXPECT_EQ(runProgram({u"raise"_s, QString::number(SIGKILL)}).output.status, 128 + SIGKILL);
    EXPECT_EQ(runProgram({u"silent"_s}).output.status, 5);
}

TEST(ToolsRun, whatCannotBeStartedIsAnError) {
    EXPECT_EQ(Tools::run(QUrl::fromLocalFile(u"/nowhere/ffmpeg"_s), {}).error(),
              std::errc::no_such_file_or_directory);
    EXPECT_EQ(Tools::run(QUrl::fromLocalFile(u"/proc/self/maps"_s), {}).error(),
              std::errc::permission_denied);
}

TEST(ToolsRun, bothPipesAreDrainedWithAndWithoutLines) {
    const auto output = Tools::run(program(), {u"flood"_s});
    ASSERT_TRUE(output.has_value());
    EXPECT_EQ(output->standardOutput.size(), 5'000'000);
    EXPECT_EQ(output->standardError.size(), 5'000'000);
    EXPECT_EQ(runProgram({u"flood"_s}).lines.value(0).size(), 5'000'000);
}

TEST(ToolsRun, theChildFindsCleanSurroundings) {
    const int leaking = open("/dev/null", O_RDONLY);  // NOLINT(android-cloexec-open): a library may do this
    sigset_t blocked;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGUSR1);
    pthread_sigmask(SIG_BLOCK, &blocked, nullptr);
    const auto pipeHandler = std::signal(SIGPIPE, SIG_IGN);
    const Ended run = runProgram({u"surroundings"_s});
    std::signal(SIGPIPE, pipeHandler);
    pthread_sigmask(SIG_UNBLOCK, &blocked, nullptr);
    close(leaking);
    const QStringList expected{u"stdin /dev/null"_s, u"own group"_s, u"SigBlk: 0000000000000000"_s,
                               u"SigIgn: 0000000000000000"_s};
    EXPECT_EQ(run.lines, expected);
}

TEST(ToolsRun, aGrandchildCannotHoldItUp) {
    const auto start = std::chrono::steady_clock::now();
    const Ended run = runProgram({u"grandchild"_s});
    EXPECT_LT(std::chrono::steady_clock::now() - start, 10s);
    ASSERT_EQ(run.lines.size(), 1);
    EXPECT_EQ(kill(run.lines.first().toInt(), SIGKILL), 0);
}

TEST(ToolsRun, aStopEndsTheChildAtOnceAndKeepsItsOutput) {
    struct Case {
        QString main;
        std::chrono::milliseconds grace;
        int status;
    };
    for (const Case& testCase :
         {Case{u"wait"_s, 60s, 128 + SIGTERM}, Case{u"stubborn"_s, 50ms, 128 + SIGKILL}}) {
        std::stop_source source;
        std::jthread stopper;
        const auto stopFromOutside = [&](const QString&) {
            stopper = std::jthread([&source] { source.request_stop(); });
        };
        const auto start = std::chrono::steady_clock::now();
        const Ended run = runProgram({testCase.main}, source.get_token(), stopFromOutside, testCase.grace);
        EXPECT_LT(std::chrono::steady_clock::now() - start, 10s);
        EXPECT_EQ(run.output.status, testCase.status);
        EXPECT_EQ(run.output.standardOutput, "ready\n");
    }
}

TEST(ToolsRun, aStopBeforeTheStartDoesNothing) {
    std::stop_source source;
    source.request_stop();
    const Ended run = runProgram({u"chunks"_s, u"a"_s}, source.get_token());
    EXPECT_EQ(run.output.status, 0);
    EXPECT_EQ(run.lines, QStringList(u"a"_s));
}

TEST(ToolsRun, theChildDiesWithAKilledParent) {
    int child = -1;
    const auto killRunner = [&child](const QString& line) {
        const QStringList numbers = line.split(u' ');  // the runner's and its child's
        if (child >= 0 || numbers.size() != 2) return;
        child = static_cast<int>(syscall(SYS_pidfd_open, numbers[1].toInt(), 0));
        kill(numbers[0].toInt(), SIGKILL);
    };
    EXPECT_EQ(runProgram({u"runner"_s}, {}, killRunner).output.status, 128 + SIGKILL);
    ASSERT_GE(child, 0);
    pollfd ended{child, POLLIN, 0};
    EXPECT_EQ(poll(&ended, 1, 10'000), 1);
    close(child);
}

TEST(ToolsRun, manyAtOnce) {
    std::vector<std::jthread> threads;
    std::atomic<int> right = 0;
    for (int number = 0; number < 8; ++number) {
        threads.emplace_back([number, &right] {
            const QString text = QString::number(number);
            for (int round = 0; round < 5; ++round) {
                const Ended run = runProgram({u"chunks"_s, text + u"%0A"_s});
                if (run.output.status == 0 && run.lines == QStringList(text)) ++right;
            }
        });
    }
    threads.clear();
    EXPECT_EQ(right, 40);
}

class ToolsFind : public testing::Test {
  protected:
    ToolsFind() { EXPECT_TRUE(QDir(folder_.path()).mkpath(u"a"_s) && QDir(folder_.path()).mkpath(u"b"_s)); }
    ~ToolsFind() override { qputenv("PATH", path_); }

    QString add(const QString& path, bool executable = true) {
        QFile file(QDir(folder_.path()).absoluteFilePath(path));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.setPermissions(executable ? QFile::ReadOwner | QFile::ExeOwner : QFile::ReadOwner);
        return file.fileName();
    }
    void setPath(const QString& text) {
        qputenv("PATH", QString(text).replace(u"~"_s, folder_.path()).toUtf8());
    }

    const QByteArray path_ = qgetenv("PATH");
    const QTemporaryDir folder_;
    const QString name_ = u"velmora-test-tool"_s;
};

TEST_F(ToolsFind, searchesPathInOrderAndPassesOverWhatCannotRun) {
    const QUrl second = QUrl::fromLocalFile(add(u"b/"_s + name_));
    setPath(u"~/a::~/b"_s);
    EXPECT_EQ(Tools::find(name_), second);
    const QString blocked = add(u"a/"_s + name_, false);
    EXPECT_EQ(Tools::find(name_), second);
    QFile::remove(blocked);
    QDir(folder_.path()).mkpath(u"a/"_s + name_);
    EXPECT_EQ(Tools::find(name_), second) << "a folder is no tool";
    QDir(folder_.path()).rmpath(u"a/"_s + name_);
    QDir(folder_.path()).mkpath(u"a"_s);
    EXPECT_EQ(Tools::find(name_),
              (add(u"a/"_s + name_), QUrl::fromLocalFile(folder_.filePath(u"a/"_s + name_))));
    qunsetenv("PATH");
    EXPECT_EQ(Tools::find(name_), std::nullopt);
}

TEST_F(ToolsFind, theProgramsOwnFolderComesFirst) {
    const QString own = QCoreApplication::applicationDirPath() + u'/' + name_;
    add(u"a/"_s + name_);
    setPath(u"~/a"_s);
    add(own);
    EXPECT_EQ(Tools::find(name_), QUrl::fromLocalFile(own));
    QFile::remove(own);
    EXPECT_EQ(Tools::find(name_), QUrl::fromLocalFile(folder_.filePath(u"a/"_s + name_)));
}

}  // namespace
}  // namespace velmora
