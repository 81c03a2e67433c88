#pragma once

#include "Preparation/FileDescriptor.h"

#include <QUrl>

#include <functional>
#include <optional>
#include <stop_token>
#include <string>

namespace velmora {

/// Keeps two preparations, be it of two windows or of two programs, from writing the same prepared file at
/// the same time. An advisory lock on a hidden file, which is removed with the lock; the lock of a program
/// that crashed is free. Where the file system cannot lock, nobody is kept out.
///
/// The lock is not on the partial file itself: network shares turn advisory locks into mandatory ones, which
/// would keep ffmpeg from writing.
class OutputLock {
  public:
    /// Blocks until nobody else has the lock on `file`, which is made for it; calls `onWait` once if that
    /// takes time. Absent when `stop` was requested first.
    [[nodiscard]] static std::optional<OutputLock> acquire(const QUrl& file, const std::stop_token& stop,
                                                           const std::function<void()>& onWait);

    OutputLock(OutputLock&& other) noexcept = default;
    OutputLock& operator=(OutputLock&&) = delete;
    ~OutputLock();

  private:
    OutputLock(std::string path, FileDescriptor file) : path_(std::move(path)), file_(std::move(file)) {}
    static std::optional<OutputLock> tryOnce(const std::string& path);

    std::string path_;
    FileDescriptor file_;  ///< closed where the lock file could not be made
};

}  // namespace velmora
