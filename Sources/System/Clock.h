#pragma once

#include <QtGlobal>  // first: without it moc stumbles over the standard headers

#include <chrono>
#include <coroutine>
#include <functional>
#include <memory>

namespace velmora {

/// The source of time for everything that waits on the main thread. The program runs on `SystemClock`; tests
/// run on a clock that they advance by hand, so a story of twenty seconds takes milliseconds.
///
/// Main thread only. Callbacks run from the event loop, never from inside `after`.
class Clock {
  public:
    using Duration = std::chrono::nanoseconds;
    using Instant = std::chrono::time_point<std::chrono::steady_clock, Duration>;

    /// A callback that has not run yet. Destroying it, or `cancel`, means that it never will.
    class Timer {
      public:
        Timer() = default;
        explicit Timer(std::shared_ptr<void> keepAlive) : keepAlive_(std::move(keepAlive)) {}
        void cancel() { keepAlive_.reset(); }

      private:
        std::shared_ptr<void> keepAlive_;
    };

    Clock() = default;
    Clock(const Clock&) = delete;
    Clock& operator=(const Clock&) = delete;
    virtual ~Clock() = default;

    /// Monotonic; unrelated to the wall clock.
    [[nodiscard]] virtual Instant now() const = 0;

    /// Runs `callback` once, `delay` from now, unless the timer is gone by then.
    [[nodiscard]] virtual Timer after(Duration delay, std::function<void()> callback) = 0;

    /// For coroutines: `co_await clock.sleep(2s)`. The coroutine resumes on the main thread; whatever it used
    /// before the wait may be gone by then, so it checks that it is still wanted.
    class Sleep {
      public:
        Sleep(Clock& clock, Duration delay) : clock_(clock), delay_(delay) {}
        [[nodiscard]] bool await_ready() const noexcept { return delay_ <= Duration::zero(); }
        void await_suspend(std::coroutine_handle<> waiter) {
            timer_ = clock_.after(delay_, [waiter] { waiter.resume(); });
        }
        void await_resume() const noexcept {}

      private:
        Clock& clock_;
        Duration delay_;
        Timer timer_;
    };
    [[nodiscard]] Sleep sleep(Duration delay) { return {*this, delay}; }
};

/// Qt's timers (millisecond resolution, rounded up) and the steady clock.
class SystemClock : public Clock {
  public:
    [[nodiscard]] Instant now() const override;
    [[nodiscard]] Timer after(Duration delay, std::function<void()> callback) override;
};

}  // namespace velmora
