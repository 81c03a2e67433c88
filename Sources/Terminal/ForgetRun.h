#pragma once

#include "Sender/CredentialStore.h"

#include <QCoroTask>
#include <QObject>
#include <QString>

namespace velmora {

class Terminal;

/// `velmora-cast --forget TELEVISION`: wipes the PIN's pairing, the password and what worked on a television.
/// It need not be there. Main thread.
class ForgetRun : public QObject {
    Q_OBJECT

  public:
    /// `television`: its name, its identifier, or the address under which it was used.
    ForgetRun(QString television, const ReceiverMemory& memory, Terminal& terminal);

    void start() { forget(); }
    void interrupt();
    void redraw() {}

  Q_SIGNALS:
    void finished(int exitStatus);

  private:
    QCoro::Task<> forget();

    QString television_;
    ReceiverMemory memory_;
    Terminal& terminal_;
};

}  // namespace velmora
