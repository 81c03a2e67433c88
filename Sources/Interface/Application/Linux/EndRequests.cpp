#include "Interface/Application/Linux/EndRequests.h"

#include <atomic>
#include <csignal>

namespace velmora {

namespace {

std::atomic<int> requests = 0;

/// The default action follows on return.
void endAtTheSecond(int number) {
    if (++requests < 2) return;
    std::signal(number, SIG_DFL);
    raise(number);
}

}  // namespace

EndRequests::EndRequests(QObject* parent) : QObject(parent) {
    connect(&signals_, &SignalPipe::arrived, this, &EndRequests::requested);
    signals_.bring({SIGINT, SIGTERM, SIGHUP}, endAtTheSecond);
}

}  // namespace velmora
