#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QTimer>

namespace velmora::test {

/// Runs the event loop until `condition` holds: for what others do in their own time.
[[nodiscard]] bool waitFor(const auto& condition, int seconds = 20) {
    const QDeadlineTimer deadline(seconds * 1000);
    QTimer tick;  // so that waiting for events ends, where there are none
    tick.start(10);
    while (!condition()) {
        if (deadline.hasExpired()) return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

}  // namespace velmora::test
