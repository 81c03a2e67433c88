#include "Preparation/Tools.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <thread>
#include <utility>

namespace velmora {
namespace {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

const QUrl shell = QUrl::fromLocalFile(u"/bin/sh"_s);

struct Ended {
    Tools::Output output;
    QStringList lines;
};

/// Runs `script` in a shell as the tool; `react` sees each line as it arrives.
Ended runScript(const QString& script, const std::stop_token& stop = {},
                const Tools::LineCallback& react = {},
                std::chrono::milliseconds grace = Tools::terminateGrace) {
    Ended ended;
    const auto onLine = [&ended, &react](const QString& line) {
        ended.lines += line;
        if (react) react(line);
    };
    const auto output = Tools::run(shell, {u"-c"_s, script}, stop, onLine, grace);
    EXPECT_TRUE(output.has_value());
    ended.output = output.value_or(Tools::Output{-1, {}, {}});
    return ended;
}

TEST(ToolsRun, onlyLineFeedsEndLines) {
    const std::pair<QString, QStringList> cases[] = {
        {u"printf 'a\\nb'"_s, {u"a"_s, u"b"_s}},
        {u"printf 'a\\r\\n'"_s, {u"a\r"_s}},
        {u"printf '\\n\\n'"_s, {u""_s, u""_s}},
        {u"printf '1\\r2\\r'; sleep 0.01; printf 3"_s, {u"1\r2\r3"_s}},
        {u"printf 'fra'; sleep 0.01; printf 'me=1\\nfr'; sleep 0.01; printf 'ame=2\\n'"_s,
         {u"frame=1"_s, u"frame=2"_s}},
        {u"printf '\\303'; sleep 0.01; printf '\\251\\n'"_s, {u"é"_s}},
        {u"printf 'a\\377b\\n'"_s, {u"a\uFFFDb"_s}},
        {u"printf 'no line' >&2"_s, {}},
    };
    for (const auto& [script, lines] : cases) EXPECT_EQ(runScript(script).lines, lines) << qPrintable(script);
}

TEST(ToolsRun, anUnhappyEndIsAResultAndNoStartAnError) {
    const Tools::Output failed = runScript(u"printf 'a\\377'; printf 'b\\377' >&2; exit 3"_s).output;
    EXPECT_EQ(failed.status, 3);
    EXPECT_EQ(failed.standardOutput, "a\xff");
    EXPECT_EQ(failed.stderrText(), u"b\uFFFD"_s);
    EXPECT_EQ(runScript(u"kill -KILL $$"_s).output.status, 128 + SIGKILL);
    EXPECT_EQ(runScript(u"exec >&- 2>&-; sleep 0.05; exit 5"_s).output.status, 5);
    EXPECT_EQ(Tools::run(QUrl::fromLocalFile(u"/nowhere/ffmpeg"_s), {}).error(),
              std::errc::no_such_file_or_directory);
    EXPECT_EQ(Tools::run(QUrl::fromLocalFile(u"/proc/self/maps"_s), {}).error(),
              std::errc::permission_denied);
}

TEST(ToolsRun, bothPipesAreDrainedWithAndWithoutLines) {
    const QString flood = u"head -c 5000000 /dev/zero >&2 & head -c 5000000 /dev/zero; wait"_s;
    const auto output = Tools::run(shell, {u"-c"_s, flood});
    ASSERT_TRUE(output.has_value());
    EXPECT_EQ(output->standardOutput.size(), 5'000'000);
    EXPECT_EQ(output->standardError.size(), 5'000'000);
    EXPECT_EQ(runScript(flood).lines.value(0).size(), 5'000'000);
}

TEST(ToolsRun, theChildFindsCleanSurroundings) {
    const int leaking = fcntl(open("/dev/null", O_RDONLY | O_CLOEXEC), F_DUPFD, 7);  // as a library might do
    const auto pipeHandler = std::signal(SIGPIPE, SIG_IGN);
    sigset_t blocked;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGUSR1);
    pthread_sigmask(SIG_BLOCK, &blocked, nullptr);
    // Only what the shell does itself: it blocks signals for a moment when it starts a program.
    const Ended run = runScript(
        u"while read -r name value; do case $name in Sig[BI]*) echo $name $value;; esac; done "
        u"</proc/$$/status;"
        "read -r id name state parent group rest </proc/$$/stat; echo $(($$ - group));"
        "test -e /proc/$$/fd/%1; echo $?; readlink /proc/$$/fd/0; nice"_s.arg(leaking));
    pthread_sigmask(SIG_UNBLOCK, &blocked, nullptr);
    std::signal(SIGPIPE, pipeHandler);  // NOLINT(cert-err33-c)
    close(leaking);
    const int priority = std::min(getpriority(PRIO_PROCESS, 0) + 10, 19);
    const QStringList expected{
        u"SigBlk: 0000000000000000"_s, u"SigIgn: 0000000000000000"_s, u"0"_s, u"1"_s, u"/dev/null"_s,
        QString::number(priority)};
    EXPECT_EQ(run.lines, expected) << qPrintable(run.lines.join(u'\n'));
}

TEST(ToolsRun, aGrandchildCannotHoldItUp) {
    const Ended run = runScript(u"sleep 60 & echo $!"_s);
    ASSERT_EQ(run.lines.size(), 1);
    EXPECT_EQ(kill(run.lines.first().toInt(), SIGKILL), 0) << "it has not waited for the grandchild";
}

TEST(ToolsRun, aStopEndsTheChildAtOnceAndKeepsItsOutput) {
    struct Case {
        QString script;
        std::chrono::milliseconds grace;
        int status;
    };
    const Case cases[] = {{u"echo ready; exec sleep 60"_s, 60s, 128 + SIGTERM},
                          {u"trap '' TERM; echo ready; exec sleep 60"_s, 50ms, 128 + SIGKILL},
                          {u"trap 'exit 7' TERM; echo ready; while :; do sleep 0.01; done"_s, 60s, 7}};
    for (const Case& testCase : cases) {
        std::stop_source source;
        std::jthread stopper;
        const auto stopFromOutside = [&](const QString&) {
            stopper = std::jthread([&source] { source.request_stop(); });
        };
        const auto start = std::chrono::steady_clock::now();
        const Ended run = runScript(testCase.script, source.get_token(), stopFromOutside, testCase.grace);
        EXPECT_LT(std::chrono::steady_clock::now() - start, 30s);
        EXPECT_EQ(run.output.status, testCase.status);
        EXPECT_EQ(run.output.standardOutput, "ready\n");
    }
}

TEST(ToolsRun, aStopBeforeTheStartDoesNothing) {
    const std::stop_source source;
    source.request_stop();
    EXPECT_EQ(runScript(u"sleep 0.05; echo a"_s, source.get_token()).lines, QStringList(u"a"_s));
}

TEST(ToolsRun, theChildDiesWithAKilledParent) {
    int numbers[2];
    ASSERT_EQ(pipe(numbers), 0);
    const pid_t parent = fork();
    if (parent == 0) {
        runScript(u"echo $$; exec sleep 60"_s, {}, [&](const QString& line) {
            const int child = line.toInt();
            (void)!write(numbers[1], &child, sizeof(child));
        });
        _exit(0);
    }
    int child = 0;
    ASSERT_EQ(read(numbers[0], &child, sizeof(child)), ssize_t{sizeof(child)});
    pollfd ended{static_cast<int>(syscall(SYS_pidfd_open, child, 0)), POLLIN, 0};
    kill(parent, SIGKILL);
    waitpid(parent, nullptr, 0);
    EXPECT_EQ(poll(&ended, 1, 30'000), 1);
    for (const int descriptor : {ended.fd, numbers[0], numbers[1]}) close(descriptor);
}

TEST(ToolsFind, ownFolderThenPathInOrderPassingOverWhatCannotRun) {
    const QByteArray path = qgetenv("PATH");
    const QTemporaryDir folder;
    const QString name = u"velmora-test-tool"_s;
    const auto add = [&name](const QString& place, QFile::Permissions permissions) {
        QDir().mkpath(place);
        QFile file(place + u'/' + name);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.setPermissions(permissions);
        return QUrl::fromLocalFile(file.fileName());
    };
    const QString a = folder.filePath(u"a"_s);
    const QString b = folder.filePath(u"b"_s);
    qputenv("PATH", (a + u"::"_s + b).toUtf8());

    const QUrl second = add(b, QFile::ReadOwner | QFile::ExeOwner);
    const QUrl first = add(a, QFile::ReadOwner);
    EXPECT_EQ(Tools::find(name), second) << "not executable";
    QFile::remove(first.toLocalFile());
    QDir().mkpath(first.toLocalFile());
    EXPECT_EQ(Tools::find(name), second) << "a folder is no tool";
    QDir().rmdir(first.toLocalFile());
    add(a, QFile::ReadOwner | QFile::ExeOwner);
    EXPECT_EQ(Tools::find(name), first);
    const QUrl own = add(QCoreApplication::applicationDirPath(), QFile::ReadOwner | QFile::ExeOwner);
    EXPECT_EQ(Tools::find(name), own);
    QFile::remove(own.toLocalFile());
    qunsetenv("PATH");
    EXPECT_EQ(Tools::find(name), std::nullopt);
    qputenv("PATH", path);
}

}  // namespace
}  // namespace velmora
