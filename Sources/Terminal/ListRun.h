#pragma once

#include "System/Clock.h"

#include <QObject>

namespace velmora {

class Discovery;
class Terminal;

/// `velmora-cast --list`: looks for televisions for a while and prints one a line on standard output: name,
/// address and model, parted by tabs. What cannot take movies is named on standard error. Main thread.
class ListRun : public QObject {
    Q_OBJECT

  public:
    ListRun(Clock& clock, Discovery& discovery, Terminal& terminal);

    void start();
    void interrupt();
    void redraw() {}

  Q_SIGNALS:
    void finished(int exitStatus);

  private:
    void print();

    Clock& clock_;
    Discovery& discovery_;
    Terminal& terminal_;
    Clock::Timer patience_;
};

}  // namespace velmora
