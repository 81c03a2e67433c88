#pragma once

#include "Playback/BackgroundServices.h"
#include "Terminal/CommandLine.h"
#include "Terminal/PreparationReport.h"

#include <QObject>

#include <optional>

namespace velmora {

class Terminal;

/// `velmora-cast --prepare-only`: prepares one movie after the other and prints the path of each file to play
/// on standard output. Main thread. Destroying it waits for the last one to clean up behind itself.
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
    void take(const MoviePreparer::Outcome& outcome);
    [[nodiscard]] bool deliver(const MoviePreparer::Outcome& outcome);

    CommandLine line_;
    Terminal& terminal_;
    BackgroundWork work_;
    BackgroundPreparer preparer_{work_};
    Job job_;
    std::optional<PreparationReport> report_;
    int status_ = 0;
};

}  // namespace velmora
