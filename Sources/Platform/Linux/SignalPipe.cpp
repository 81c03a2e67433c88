#include "Platform/Linux/SignalPipe.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>

namespace velmora {

namespace {

int pipeRead = -1;
int pipeWrite = -1;
SignalPipe::Handler hearsFirst = nullptr;

void passOn(int number) {
    const int error = errno;
    if (hearsFirst) hearsFirst(number);
    const auto byte = static_cast<unsigned char>(number);
    (void)!write(pipeWrite, &byte, 1);
    errno = error;
}

}  // namespace

SignalPipe::SignalPipe(QObject* parent) : QObject(parent), readable_(QSocketNotifier::Read) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) qFatal("no pipe for signals");
    pipeRead = ends[0];
    pipeWrite = ends[1];
    readable_.setSocket(pipeRead);
    connect(&readable_, &QSocketNotifier::activated, this, [this] { deliver(); });
    readable_.setEnabled(true);
    handle(SIGPIPE, SIG_IGN, 0);
}

void SignalPipe::bring(std::initializer_list<int> numbers, Handler first) {
    if (first) hearsFirst = first;
    for (const int number : numbers) handle(number, passOn, SA_RESTART);
}

void SignalPipe::handle(int number, Handler handler, int flags) {
    struct sigaction before{};
    sigaction(number, nullptr, &before);
    if (before.sa_handler != SIG_DFL && before.sa_handler != handler) return;
    struct sigaction action{};
    action.sa_handler = handler;
    action.sa_flags = flags;
    sigfillset(&action.sa_mask);
    sigaction(number, &action, nullptr);
}

void SignalPipe::deliver() {
    unsigned char number = 0;
    while (read(pipeRead, &number, 1) == 1) Q_EMIT arrived(number);
}

}  // namespace velmora
