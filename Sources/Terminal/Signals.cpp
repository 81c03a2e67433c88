#include "Terminal/Signals.h"

#include "Terminal/ExitStatus.h"
#include "Terminal/Terminal.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>

namespace velmora {

namespace {

int pipeRead = -1;
int pipeWrite = -1;
std::atomic<int> controlCs = 0;

void handle(int number, void (*handler)(int), int flags) {
    struct sigaction before{};
    sigaction(number, nullptr, &before);
    // Whoever started us wants it ignored (nohup, a script's background job), or a sanitizer handles it.
    if (before.sa_handler != SIG_DFL && before.sa_handler != handler) return;
    struct sigaction action{};
    action.sa_handler = handler;
    action.sa_flags = flags;
    sigfillset(&action.sa_mask);
    sigaction(number, &action, nullptr);
}

void passOn(int number) {
    const int error = errno;
    if (number == SIGINT && ++controlCs > 1) {
        Terminal::restoreAtOnce();
        _exit(interruptedStatus);
    }
    const auto byte = static_cast<unsigned char>(number);
    (void)!write(pipeWrite, &byte, 1);
    errno = error;
}

/// The default action follows on return: this handler is gone by then.
void crash(int number) {
    Terminal::restoreAtOnce();
    raise(number);
}

}  // namespace

Signals::Signals(QObject* parent) : QObject(parent), arrived_(QSocketNotifier::Read) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) qFatal("no pipe for signals");
    pipeRead = ends[0];
    pipeWrite = ends[1];
    arrived_.setSocket(pipeRead);
    connect(&arrived_, &QSocketNotifier::activated, this, [this] { deliver(); });
    arrived_.setEnabled(true);

    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGTSTP, SIGCONT, SIGWINCH})
        handle(number, passOn, SA_RESTART);
    for (const int number : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGQUIT})
        handle(number, crash, static_cast<int>(SA_RESETHAND));
    // A reader that has gone is seen as a failed write.
    handle(SIGPIPE, SIG_IGN, 0);
}

void Signals::deliver() {
    unsigned char number = 0;
    while (read(pipeRead, &number, 1) == 1) {
        switch (number) {
            case SIGTSTP:
                stopProcess();
                break;
            case SIGCONT:
                Q_EMIT resumed();
                break;
            case SIGWINCH:
                Q_EMIT resized();
                break;
            default:
                Q_EMIT interrupted();
        }
    }
}

void Signals::stopProcess() {
    Q_EMIT suspending();
    std::signal(SIGTSTP, SIG_DFL);
    raise(SIGTSTP);
    // Here the process goes on, or never stopped: nobody could continue an orphan, so the kernel spares it.
    handle(SIGTSTP, passOn, SA_RESTART);
    Q_EMIT resumed();
}

}  // namespace velmora
