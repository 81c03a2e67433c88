#include "Support/VirtualClock.h"

#include <QCoreApplication>

namespace velmora::test {

namespace {

// One pass delivers only what was posted before it, and an event may post the next one: a coroutine that goes
// on wakes the one that waits for it.
void deliverEvents() {
    constexpr int longestChain = 16;
    for (int pass = 0; pass < longestChain; ++pass) QCoreApplication::processEvents();
}

}  // namespace

Clock::Timer VirtualClock::after(Duration delay, std::function<void()> callback) {
    auto entry = std::make_shared<Entry>(Entry{std::move(callback)});
    entries_.emplace(now_ + std::max(delay, Duration::zero()), entry);
    return Timer(entry);
}

void VirtualClock::advance(Duration duration) {
    const Instant end = now_ + duration;
    deliverEvents();
    while (!entries_.empty() && entries_.begin()->first <= end) {
        const auto first = entries_.begin();
        now_ = first->first;
        const std::shared_ptr<Entry> entry = first->second.lock();
        entries_.erase(first);
        if (entry) {
            entry->callback();
            deliverEvents();
        }
    }
    now_ = end;
    deliverEvents();
}

}  // namespace velmora::test
