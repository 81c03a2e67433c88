#include "Terminal/Signals.h"

#include "Terminal/ExitStatus.h"
#include "Terminal/Terminal.h"

#include <unistd.h>

#include <atomic>
#include <csignal>

namespace velmora {

namespace {

std::atomic<int> controlCs = 0;

void endAtTheSecond(int number) {
    if (number != SIGINT || ++controlCs < 2) return;
    Terminal::restoreAtOnce();
    _exit(interruptedStatus);
}

/// The default action follows on return: this handler is gone by then.
void crash(int number) {
    Terminal::restoreAtOnce();
    raise(number);
}

}  // namespace

Signals::Signals(QObject* parent) : QObject(parent) {
    connect(&signals_, &SignalPipe::arrived, this, &Signals::deliver);
    signals_.bring({SIGINT, SIGTERM, SIGHUP, SIGTSTP, SIGCONT, SIGWINCH}, endAtTheSecond);
    for (const int number : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGQUIT})
        SignalPipe::handle(number, crash, static_cast<int>(SA_RESETHAND));
}

void Signals::deliver(int number) {
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

void Signals::stopProcess() {
    Q_EMIT suspending();
    std::signal(SIGTSTP, SIG_DFL);
    raise(SIGTSTP);
    // Here the process goes on, or never stopped: nobody could continue an orphan, so the kernel spares it.
    signals_.bring({SIGTSTP});
    Q_EMIT resumed();
}

}  // namespace velmora
