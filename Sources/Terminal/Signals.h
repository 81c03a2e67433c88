#pragma once

#include "Platform/Linux/SignalPipe.h"

#include <QObject>

namespace velmora {

/// The signals that a program in a terminal gets, brought to the event loop. Main thread; one object a
/// process, and it stays until the process ends.
///
/// A second Ctrl-C ends the process at once, whatever it is doing. A crash puts the terminal back first.
class Signals : public QObject {
    Q_OBJECT

  public:
    explicit Signals(QObject* parent = nullptr);

  Q_SIGNALS:
    /// Ctrl-C, a polite request to end, or the terminal has gone.
    void interrupted();
    /// Ctrl-Z: the process stops when every receiver has returned.
    void suspending();
    /// The process goes on, perhaps in the background or after a stop that nothing announced.
    void resumed();
    /// The terminal has another size.
    void resized();

  private:
    void deliver(int number);
    void stopProcess();

    SignalPipe signals_;
};

}  // namespace velmora
