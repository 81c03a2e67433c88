#pragma once

#include "Preparation/Preparer.h"
#include "Terminal/ProgressLine.h"

#include <QUrl>

#include <optional>

namespace velmora {

class Terminal;

/// Tells the user how the preparation of one movie goes. Main thread.
class PreparationReport {
  public:
    PreparationReport(Terminal& terminal, const QUrl& movie);

    void show(const Preparer::Update& update);
    /// The terminal's width has changed.
    void redraw();
    void succeed(const QString& note);
    void fail(const QString& reason);
    /// Nobody wants to know any more.
    void stop();

  private:
    Terminal& terminal_;
    QUrl movie_;
    ProgressLine::Plain plain_;
    std::optional<Preparer::Update> shown_;
};

}  // namespace velmora
