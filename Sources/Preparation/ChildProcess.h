#pragma once

#include "Preparation/FileDescriptor.h"

#include <QByteArray>
#include <QList>

#include <sys/types.h>

#include <expected>
#include <system_error>

namespace velmora {

/// A running program with standard input on the null device and its two outputs on pipes, which gives way to
/// others where processors are short.
///
/// It leads a process group of its own, so the terminal's interrupt key reaches only this process, which then
/// ends the child in its own way. It inherits no other descriptor, no blocked and no ignored signal. The
/// kernel kills it when the thread that started it ends: that thread has to wait for it.
class ChildProcess {
  public:
    /// `program` is a path. Fails with the platform's error when the child cannot be started.
    [[nodiscard]] static std::expected<ChildProcess, std::error_code> start(
        const QByteArray& program, const QList<QByteArray>& arguments);

    ChildProcess(ChildProcess&& other) noexcept;
    ChildProcess& operator=(ChildProcess&&) = delete;
    /// A child that nobody waited for is killed.
    ~ChildProcess();

    /// The reading ends of the two pipes; they do not block.
    FileDescriptor standardOutput;
    FileDescriptor standardError;
    /// Becomes readable when the child has ended.
    FileDescriptor ended;

    /// Sends `number` to the child's process group: a tool may be a script around the real program.
    void signal(int number) const;

    /// Waits for the end. The exit status, or 128 + the signal's number.
    int wait();

  private:
    explicit ChildProcess(pid_t id) : id_(id) {}

    pid_t id_;  ///< 0 once waited for
};

}  // namespace velmora
