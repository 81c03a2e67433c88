// The tool that the runner's tests run: the first argument names what it does.
#include "Preparation/Tools.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QFile>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <map>

namespace {

using Arguments = QStringList;

QByteArray inherited;  // descriptors beyond the standard ones that were open at the start

void put(int descriptor, QByteArrayView bytes) {
    while (!bytes.isEmpty()) {
        const ssize_t count = write(descriptor, bytes.data(), static_cast<std::size_t>(bytes.size()));
        if (count < 0 && errno != EINTR) _exit(99);
        bytes = bytes.sliced(std::max<ssize_t>(count, 0));
    }
}

/// Writes each argument (percent-encoded) at once and lets the reader catch up before the next.
int chunks(const Arguments& arguments) {
    for (const QString& argument : arguments) {
        put(STDOUT_FILENO, QByteArray::fromPercentEncoding(argument.toUtf8()));
        usleep(5000);
    }
    return 0;
}

int status(const Arguments& arguments) {
    put(STDERR_FILENO, "what went wrong: \xff\n");
    return arguments.value(0).toInt();
}

int raiseSignal(const Arguments& arguments) {
    return raise(arguments.value(0).toInt());
}

int waitForever(const Arguments&) {
    put(STDOUT_FILENO, "ready\n");
    while (true) pause();
}

int stubborn(const Arguments&) {
    std::signal(SIGTERM, SIG_IGN);  // NOLINT(cert-err33-c): it cannot fail for this signal
    return waitForever({});
}

/// Both outputs gone long before the end.
int silent(const Arguments&) {
    close(STDOUT_FILENO);
    close(STDERR_FILENO);
    usleep(50'000);
    return 5;
}

/// Ends at once and leaves a child behind that keeps both pipes open.
int grandchild(const Arguments&) {
    if (const pid_t child = fork(); child != 0) {
        put(STDOUT_FILENO, QByteArray::number(child) + '\n');
        return 0;
    }
    alarm(30);
    while (true) pause();
}

int flood(const Arguments&) {
    const QByteArray block(100'000, 'x');
    for (int round = 0; round < 50; ++round) {
        put(STDOUT_FILENO, block);
        put(STDERR_FILENO, block);
    }
    return 0;
}

/// What a fresh program should find in good order, one line each.
int surroundings(const Arguments&) {
    const QByteArray process = QByteArray::number(getpid());
    put(STDOUT_FILENO, "stdin " + QFile::symLinkTarget(QStringLiteral("/proc/self/fd/0")).toUtf8() + '\n');
    put(STDOUT_FILENO, getpgrp() == getpid() ? "own group\n" : "shared group\n");
    QFile state(QStringLiteral("/proc/self/status"));
    (void)state.open(QIODevice::ReadOnly);
    for (const QByteArray& line : state.readAll().split('\n')) {
        if (line.startsWith("SigBlk") || line.startsWith("SigIgn"))
            put(STDOUT_FILENO, line.simplified() + '\n');
    }
    put(STDOUT_FILENO, inherited);
    return 0;
}

/// Runs this program's `waitForever` through the runner and tells both process numbers.
int runner(const Arguments&) {
    const QUrl self = QUrl::fromLocalFile(QCoreApplication::applicationFilePath());
    const auto told = [](const QString& line) {
        put(STDOUT_FILENO, QByteArray::number(getpid()) + ' ' + line.toUtf8() + '\n');
    };
    return velmora::Tools::run(self, {QStringLiteral("number")}, {}, told) ? 0 : 1;
}

int number(const Arguments&) {
    put(STDOUT_FILENO, QByteArray::number(getpid()) + '\n');
    return waitForever({});
}

}  // namespace

int main(int argc, char** argv) {
    for (int descriptor = 3; descriptor < 256; ++descriptor) {
        if (fcntl(descriptor, F_GETFD) >= 0)
            inherited += "descriptor " + QByteArray::number(descriptor) + '\n';
    }
    const QCoreApplication application(argc, argv);
    const std::map<QString, int (*)(const Arguments&)> mains{
        {QStringLiteral("chunks"), chunks},         {QStringLiteral("status"), status},
        {QStringLiteral("raise"), raiseSignal},     {QStringLiteral("wait"), waitForever},
        {QStringLiteral("stubborn"), stubborn},     {QStringLiteral("silent"), silent},
        {QStringLiteral("grandchild"), grandchild}, {QStringLiteral("flood"), flood},
        {QStringLiteral("runner"), runner},         {QStringLiteral("surroundings"), surroundings},
        {QStringLiteral("number"), number},
    };
    const QStringList arguments = QCoreApplication::arguments();
    const auto main = mains.find(arguments.value(1));
    return main == mains.end() ? 98 : main->second(arguments.sliced(2));
}
