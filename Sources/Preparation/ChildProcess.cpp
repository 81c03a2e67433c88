#include "Preparation/ChildProcess.h"

#include <fcntl.h>
#include <linux/close_range.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <optional>
#include <vector>

namespace velmora {
namespace {

constexpr int cannotExecute = 127;  // the shells' exit status for it
constexpr int signalBase = 128;     // likewise for an end by a signal

std::unexpected<std::error_code> lastError() {
    return std::unexpected(std::error_code(errno, std::system_category()));
}

struct Pipe {
    FileDescriptor reading;
    FileDescriptor writing;
};

std::optional<Pipe> makePipe() {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return {};
    return Pipe{FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

/// No signal handler of this process may run in the child before `exec`.
class SignalsBlocked {
  public:
    SignalsBlocked() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;

  private:
    sigset_t before_;
};

/// As of `nice`. A window must not stand still for a tool, which takes all processors there are; where nobody
/// else wants them it is as fast as ever.
constexpr int lowerPriority = 10;

struct Launch {
    const char* program;
    char* const* arguments;
    int input;
    int output;
    int error;
    int report;  ///< where the child writes why it could not start
    pid_t parent;
};

// From here to exec only calls that are safe after a fork of a process with threads.

bool followParent(pid_t parent) {
    // The second test catches a parent that went before the first call.
    return prctl(PR_SET_PDEATHSIG, SIGKILL) == 0 && getppid() == parent;
}

void resetSignals() {
    struct sigaction standard = {};
    standard.sa_handler = SIG_DFL;  // NOLINT(cppcoreguidelines-pro-type-union-access): that is its interface
    for (int number = 1; number < NSIG; ++number) sigaction(number, &standard, nullptr);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
}

bool connectStreams(Launch& launch) {
    // Copies above the standard numbers: this process may itself have been started without some of them.
    for (int* descriptor : {&launch.input, &launch.output, &launch.error, &launch.report}) {
        *descriptor = fcntl(*descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
        if (*descriptor < 0) return false;
    }
    if (dup2(launch.input, STDIN_FILENO) < 0 || dup2(launch.output, STDOUT_FILENO) < 0 ||
        dup2(launch.error, STDERR_FILENO) < 0) {
        return false;
    }
    // A library's descriptor may lack the flag. Kernels before 5.11 refuse; ours carry it anyway.
    close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC);
    return true;
}

[[noreturn]] void becomeTool(Launch launch) {
    const int report = launch.report;
    setpgid(0, 0);
    if (followParent(launch.parent) && connectStreams(launch)) {
        resetSignals();
        (void)!nice(lowerPriority);
        execv(launch.program, launch.arguments);
    }
    const int reason = errno;
    (void)!write(launch.report < 0 ? report : launch.report, &reason, sizeof(reason));
    _exit(cannotExecute);
}

/// 0 when the pipe closed without a word: the program is running.
int readReport(int report) {
    int reason = 0;
    ssize_t count = 0;
    do {
        count = read(report, &reason, sizeof(reason));
    } while (count < 0 && errno == EINTR);
    return count == sizeof(reason) ? reason : 0;
}

std::vector<char*> argumentVector(const QByteArray& program, const QList<QByteArray>& arguments) {
    std::vector<char*> vector;
    vector.reserve(static_cast<std::size_t>(arguments.size()) + 2);
    // exec takes them writable for history's sake and does not write.
    const auto add = [&vector](const QByteArray& text) {
        vector.push_back(
            const_cast<char*>(text.constData()));  // NOLINT(cppcoreguidelines-pro-type-const-cast)
    };
    add(program);
    for (const QByteArray& argument : arguments) add(argument);
    vector.push_back(nullptr);
    return vector;
}

}  // namespace

std::expected<ChildProcess, std::error_code> ChildProcess::start(const QByteArray& program,
                                                                 const QList<QByteArray>& arguments) {
    std::optional<Pipe> output = makePipe();
    std::optional<Pipe> error = makePipe();
    std::optional<Pipe> report = makePipe();
    const FileDescriptor input(open("/dev/null", O_RDONLY | O_CLOEXEC));
    if (!output || !error || !report || !input.isOpen()) return lastError();
    fcntl(output->reading.number(), F_SETFL, O_NONBLOCK);
    fcntl(error->reading.number(), F_SETFL, O_NONBLOCK);

    const std::vector<char*> vector = argumentVector(program, arguments);
    const Launch launch{program.constData(),
                        vector.data(),
                        input.number(),
                        output->writing.number(),
                        error->writing.number(),
                        report->writing.number(),
                        getpid()};
    pid_t id = 0;
    {
        const SignalsBlocked guard;
        id = fork();
        if (id == 0) becomeTool(launch);
    }
    if (id < 0) return lastError();

    ChildProcess child(id);
    report->writing.close();
    if (const int reason = readReport(report->reading.number()); reason != 0) {
        child.wait();
        return std::unexpected(std::error_code(reason, std::system_category()));
    }
    // The C library declares a function for it without C linkage.
    child.ended = FileDescriptor(static_cast<int>(syscall(SYS_pidfd_open, id, 0)));
    if (!child.ended.isOpen()) return lastError();
    child.standardOutput = std::move(output->reading);
    child.standardError = std::move(error->reading);
    return child;
}

ChildProcess::ChildProcess(ChildProcess&& other) noexcept
    : standardOutput(std::move(other.standardOutput)),
      standardError(std::move(other.standardError)),
      ended(std::move(other.ended)),
      id_(std::exchange(other.id_, 0)) {}

ChildProcess::~ChildProcess() {
    if (id_ == 0) return;
    signal(SIGKILL);
    wait();
}

void ChildProcess::signal(int number) const {
    if (id_ != 0) kill(-id_, number);
}

int ChildProcess::wait() {
    int status = 0;
    while (waitpid(id_, &status, 0) < 0) {
        if (errno != EINTR) break;
    }
    id_ = 0;
    return WIFSIGNALED(status) ? signalBase + WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace velmora
