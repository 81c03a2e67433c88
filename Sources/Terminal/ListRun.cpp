#include "Terminal/ListRun.h"

#include "Sender/Discovery/Discovery.h"
#include "Terminal/ExitStatus.h"
#include "Terminal/Terminal.h"
#include "Terminal/TerminalText.h"

#include <cstdio>

namespace velmora {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

// Long enough for a television that lost the first question, short enough to wait for.
constexpr auto lookingTime = 2500ms;

/// HOST:PORT, as `--to` takes it.
QString place(const Receiver& receiver) {
    const QString host = receiver.address.toString();
    return (host.contains(u':') ? u"[%1]:%2"_s : u"%1:%2"_s).arg(host).arg(receiver.port);
}

QString lineOf(const Receiver& receiver) {
    QString line = receiver.name + u'\t' + place(receiver);
    if (!receiver.model.isEmpty()) line += u'\t' + receiver.model;
    return line;
}

}  // namespace

ListRun::ListRun(Clock& clock, Discovery& discovery, Terminal& terminal)
    : clock_(clock), discovery_(discovery), terminal_(terminal) {
    connect(&discovery_, &Discovery::unavailableReasonChanged, this, [this] {
        if (!discovery_.unavailableReason().isEmpty()) print();
    });
}

void ListRun::start() {
    discovery_.start();
    terminal_.showLine(TerminalText::fit(u"Looking for televisions…"_s, terminal_.look().columns));
    patience_ = clock_.after(lookingTime, [this] { print(); });
}

void ListRun::interrupt() {
    terminal_.clearLine();
    Q_EMIT finished(interruptedStatus);
}

void ListRun::print() {
    discovery_.disconnect(this);
    patience_.cancel();
    terminal_.clearLine();
    bool found = false;
    for (const Receiver& receiver : discovery_.receivers()) {
        const auto takesVideo = receiver.takesVideo();
        if (!takesVideo) {
            terminal_.print(u"%1 %2."_s.arg(receiver.name, takesVideo.error()));
            continue;
        }
        found = true;
        std::puts(qPrintable(lineOf(receiver)));
    }
    const QString reason = discovery_.unavailableReason();
    if (!reason.isEmpty()) terminal_.print(reason);
    if (reason.isEmpty() && !found) terminal_.print(u"No television was found."_s);
    const bool isWritten = std::fflush(stdout) == 0;
    Q_EMIT finished(reason.isEmpty() && isWritten ? doneStatus : failedStatus);
}

}  // namespace velmora
