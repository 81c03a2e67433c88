#include "System/Clock.h"

#include <QTimer>

#include <algorithm>

namespace velmora {

Clock::Instant SystemClock::now() const {
    return std::chrono::steady_clock::now();
}

Clock::Timer SystemClock::after(Duration delay, std::function<void()> callback) {
    // The callback may drop its own timer, so the QTimer is never deleted inside its own signal.
    const std::shared_ptr<QTimer> timer(new QTimer, [](QTimer* finished) {
        finished->stop();
        finished->deleteLater();
    });
    timer->setSingleShot(true);
    timer->setTimerType(Qt::PreciseTimer);
    QObject::connect(timer.get(), &QTimer::timeout, timer.get(), std::move(callback));
    // QTimer refuses a time that has passed.
    timer->start(std::chrono::ceil<std::chrono::milliseconds>(std::max(delay, Duration::zero())));
    return Timer(timer);
}

}  // namespace velmora
