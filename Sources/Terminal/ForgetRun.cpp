#include "Terminal/ForgetRun.h"

#include "Sender/Discovery/KnownReceivers.h"
#include "Sender/Discovery/Naming.h"
#include "Terminal/ExitStatus.h"
#include "Terminal/Terminal.h"

#include <QPointer>

namespace velmora {

using namespace Qt::StringLiterals;

ForgetRun::ForgetRun(QString television, const ReceiverMemory& memory, Terminal& terminal)
    : television_(std::move(television)), memory_(memory), terminal_(terminal) {}

void ForgetRun::interrupt() {
    Q_EMIT finished(interruptedStatus);
}

QCoro::Task<> ForgetRun::forget() {
    const QPointer<ForgetRun> alive = this;
    QList<Receiver> meant;
    for (const Receiver& receiver : memory_.known->receivers())
        if (Naming::isCalled(receiver, television_) || Naming::isAt(receiver, television_))
            meant.append(receiver);
    for (const Receiver& receiver : meant) {
        memory_.forget(receiver.identifier);
        // Answered behind the wiping: the keyring may take its time.
        const Completion<Credentials> wiped = memory_.credentials->load(receiver.identifier);
        co_await wiped;
        if (!alive) co_return;
        terminal_.print(u"%1 is forgotten."_s.arg(receiver.name));
    }
    if (meant.isEmpty()) terminal_.print(u"No television named “%1” was used before."_s.arg(television_));
    Q_EMIT finished(meant.isEmpty() ? failedStatus : doneStatus);
}

}  // namespace velmora
