#pragma once

#include "Terminal/CommandLine.h"
#include "Terminal/PreparationJob.h"
#include "Terminal/PreparationReport.h"

#include <QObject>

#include <optional>

namespace velmora {

class Terminal;

/// `velmora-cast --prepare-only`: prepares one movie after the other and prints the path of each file to play
/// on standard output. Main thread.
class PrepareRun : public QObject {
    Q_OBJECT

  public:
    PrepareRun(const CommandLine& line, Terminal& terminal);

    void start();
    void interrupt();
    void redraw();

  Q_SIGNALS:
    void finished(int exitStatus);

  private:
    void prepareNext();
    void take();

    CommandLine line_;
    Terminal& terminal_;
    PreparationJob job_;
    std::optional<PreparationReport> report_;
    bool interrupted_ = false;
    int status_ = 0;
};

}  // namespace velmora
