#include "Support/VirtualClock.h"

#include <QCoreApplication>

namespace velmora::test {

Clock::Timer VirtualClock::after(Duration delay, std::function<void()> callback) {
    auto entry = std::make_shared<Entry>(Entry{std::move(callback)});
    entries_.emplace(now_ + std::max(delay, Duration::zero()), entry);
    return Timer(entry);
}

void VirtualClock::advance(Duration duration) {
    const Instant end = now_ + duration;
    QCoreApplication::processEvents();
    while (!entries_.empty() && entries_.begin()->first <= end) {
        const auto first = entries_.begin();
        now_ = first->first;
        const std::shared_ptr<Entry> entry = first->second.lock();
        entries_.erase(first);
        if (entry) {
            entry->callback();
            QCoreApplication::processEvents();
        }
    }
    now_ = end;
    QCoreApplication::processEvents();
}

}  // namespace velmora::test
