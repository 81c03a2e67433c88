#pragma once

#include "System/Clock.h"
#include "System/Completion.h"

#include <list>

namespace velmora {

/// What the coroutines of one object wait for. Whoever owns them lets no coroutine wait for it when it is
/// gone: `end`, and the destructor, end every wait with false, and the coroutines go on from the event loop
/// to find out that they are no longer wanted. The clock must outlive it.
class Waits {
  public:
    explicit Waits(Clock& clock) : clock_(clock) {}
    Waits(const Waits&) = delete;
    Waits& operator=(const Waits&) = delete;
    ~Waits() { end(); }

    [[nodiscard]] Completion<bool> sleep(Clock::Duration duration) {
        const Completion<bool> over = answer();
        waits_.back().timer = clock_.after(duration, [over] { over.complete(true); });
        return over;
    }

    /// Something that somebody else completes.
    [[nodiscard]] Completion<bool> answer() {
        waits_.remove_if([](const Wait& wait) { return wait.over.isComplete(); });
        return waits_.emplace_back().over;
    }

    void end() {
        for (const Wait& wait : waits_) wait.over.complete(false);
        waits_.clear();
    }

  private:
    struct Wait {
        Completion<bool> over;
        Clock::Timer timer;
    };

    Clock& clock_;
    std::list<Wait> waits_;
};

}  // namespace velmora
