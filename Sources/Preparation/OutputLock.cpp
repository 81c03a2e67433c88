#include "Preparation/OutputLock.h"

#include <QFile>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <mutex>

namespace velmora {
namespace {

/// How soon a waiting preparation notices that the other one is done. flock() itself could wait, but not be
/// interrupted by a stop request.
constexpr std::chrono::milliseconds retryInterval{100};

/// Whether the open file is still the one with this name: its last owner may have removed it between our
/// opening and our locking it, and then the next one to come would lock another file.
bool isStill(const std::string& path, const FileDescriptor& file) {
    struct stat named = {};
    struct stat opened = {};
    return ::lstat(path.c_str(), &named) == 0 && ::fstat(file.number(), &opened) == 0 &&
           named.st_dev == opened.st_dev && named.st_ino == opened.st_ino;
}

/// False when a stop was requested before the time was over.
bool sleep(const std::stop_token& stop) {
    std::mutex mutex;
    std::condition_variable_any condition;
    std::unique_lock lock(mutex);
    condition.wait_for(lock, stop, retryInterval, [] { return false; });
    return !stop.stop_requested();
}

}  // namespace

std::optional<OutputLock> OutputLock::tryOnce(const std::string& path) {
    FileDescriptor file(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0666));
    if (!file.isOpen()) return OutputLock(path, {});
    const bool locked = ::flock(file.number(), LOCK_EX | LOCK_NB) == 0;
    if (!locked && errno == EWOULDBLOCK) return {};
    if (locked && !isStill(path, file)) return {};
    return OutputLock(path, std::move(file));
}

std::optional<OutputLock> OutputLock::acquire(const QUrl& file, const std::stop_token& stop,
                                              const std::function<void()>& onWait) {
    const std::string path = QFile::encodeName(file.toLocalFile()).toStdString();
    if (stop.stop_requested()) return {};
    if (auto lock = tryOnce(path)) return lock;
    onWait();
    while (sleep(stop)) {
        if (auto lock = tryOnce(path)) return lock;
    }
    return {};
}

OutputLock::~OutputLock() {
    // Removed before it is unlocked, so that nobody else's lock file is ever removed.
    if (file_.isOpen()) ::unlink(path_.c_str());
}

}  // namespace velmora
