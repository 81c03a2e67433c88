#pragma once

#include <QObject>
#include <QSocketNotifier>

namespace velmora {

/// The signals by which a session that ends, or a terminal, asks a program to end, brought to the event loop,
/// so that the television is told. Main thread; one object a process, and it stays until the process ends.
class EndRequests : public QObject {
    Q_OBJECT

  public:
    explicit EndRequests(QObject* parent = nullptr);

  Q_SIGNALS:
    void requested();

  private:
    void deliver();

    QSocketNotifier arrived_;
};

}  // namespace velmora
