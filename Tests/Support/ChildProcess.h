#pragma once

#include <QProcess>

#include <sys/prctl.h>
#include <unistd.h>

#include <csignal>

namespace velmora::test {

/// A process that ends with the object, and with this process, whatever kills that. Start it on the main
/// thread.
class ChildProcess : public QProcess {
  public:
    ChildProcess() {
        setChildProcessModifier([parent = ::getpid()] {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            if (::getppid() != parent) ::_exit(1);  // it was killed before we could ask
        });
    }
    ~ChildProcess() override {
        kill();
        waitForFinished();
    }
};

}  // namespace velmora::test
