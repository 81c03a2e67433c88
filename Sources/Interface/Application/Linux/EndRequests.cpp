#include "Interface/Application/Linux/EndRequests.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>

namespace velmora {

namespace {

int pipeRead = -1;
int pipeWrite = -1;

void passOn(int /*number*/) {
    const int error = errno;
    const char byte = 0;
    (void)!write(pipeWrite, &byte, 1);
    errno = error;
}

void handle(int number, void (*handler)(int)) {
    struct sigaction action{};
    action.sa_handler = handler;
    // The second time it is no longer a request.
    action.sa_flags = static_cast<int>(SA_RESTART | (handler == SIG_IGN ? 0U : SA_RESETHAND));
    sigaction(number, &action, nullptr);
}

}  // namespace

EndRequests::EndRequests(QObject* parent) : QObject(parent), arrived_(QSocketNotifier::Read) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) qFatal("no pipe for signals");
    pipeRead = ends[0];
    pipeWrite = ends[1];
    arrived_.setSocket(pipeRead);
    connect(&arrived_, &QSocketNotifier::activated, this, [this] { deliver(); });
    arrived_.setEnabled(true);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) handle(number, passOn);
    // A reader that has gone is seen as a failed write.
    handle(SIGPIPE, SIG_IGN);
}

void EndRequests::deliver() {
    char byte = 0;
    while (read(pipeRead, &byte, 1) == 1) Q_EMIT requested();
}

}  // namespace velmora
