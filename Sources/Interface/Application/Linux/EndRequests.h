#pragma once

#include "Platform/Linux/SignalPipe.h"

#include <QObject>

namespace velmora {

/// The signals by which a session that ends, or a terminal, asks a program to end, brought to the event loop,
/// so that the television is told. The second one ends the program at once. Main thread; one object a
/// process, and it stays until the process ends.
class EndRequests : public QObject {
    Q_OBJECT

  public:
    explicit EndRequests(QObject* parent = nullptr);

  Q_SIGNALS:
    void requested();

  private:
    SignalPipe signals_;
};

}  // namespace velmora
