#include "Diagnostics/LogWriter.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <utility>

namespace velmora {
namespace {

/// Appending makes one call one piece, even where a second process writes the same file.
int openForAppending(const QString& path) {
    QDir().mkpath(QFileInfo(path).path());
    constexpr mode_t readableByAll = 0666;  // less what the user's mask takes away
    return open(QFile::encodeName(path).constData(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC,
                readableByAll);
}

void writeAll(int descriptor, QByteArrayView bytes) {
    while (!bytes.isEmpty()) {
        const ssize_t count = ::write(descriptor, bytes.data(), static_cast<std::size_t>(bytes.size()));
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return;
        bytes = bytes.sliced(count);
    }
}

/// Runs `start` with every signal blocked, which the threads that it makes inherit.
template <typename Start>
void withSignalsBlocked(const Start& start) {
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    start();
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

}  // namespace

LogWriter::LogWriter(const QString& file) : file_(openForAppending(file)) {
    // The process's signals are for its other threads, and a broken standard error must not end it.
    withSignalsBlocked([this] { thread_ = std::thread(&LogWriter::run, this); });
}

LogWriter::~LogWriter() {
    finish();
    if (file_ >= 0) close(file_);
}

void LogWriter::add(Line line) {
    const std::lock_guard guard(lock_);
    if (ended_) {
        write(line);
        return;
    }
    queue_.push_back(std::move(line));
    changed_.notify_one();
}

void LogWriter::finish() {
    {
        const std::lock_guard guard(lock_);
        if (std::exchange(finishing_, true)) return;
        changed_.notify_one();
    }
    thread_.join();
}

void LogWriter::run() {
    std::unique_lock guard(lock_);
    while (true) {
        changed_.wait(guard, [this] { return finishing_ || !queue_.empty(); });
        if (queue_.empty()) {
            ended_ = true;
            return;
        }
        const std::vector<Line> lines = std::exchange(queue_, {});
        guard.unlock();
        for (const Line& line : lines) write(line);
        guard.lock();
    }
}

void LogWriter::write(const Line& line) const {
    if (file_ >= 0) writeAll(file_, line.forFile);
    writeAll(STDERR_FILENO, line.forStandardError);
}

}  // namespace velmora
