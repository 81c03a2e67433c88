#pragma once

#include "System/Clock.h"

#include <map>

namespace velmora::test {

/// A clock that stands still until `advance`.
class VirtualClock : public Clock {
  public:
    [[nodiscard]] Instant now() const override { return now_; }
    [[nodiscard]] Timer after(Duration delay, std::function<void()> callback) override;

    /// Runs what falls due in the next `duration`, in order of time (equal times: in order of making), with
    /// the event loop's pending events delivered before, between and after.
    void advance(Duration duration);

    [[nodiscard]] Duration elapsed() const { return now_.time_since_epoch(); }

  private:
    struct Entry {
        std::function<void()> callback;
    };
    Instant now_{};
    std::multimap<Instant, std::weak_ptr<Entry>> entries_;
};

/// The real clock made `factor` times faster, for tests over real sockets whose waits are long.
class FastClock : public Clock {
  public:
    explicit FastClock(int factor) : factor_(factor), start_(real_.now()) {}
    [[nodiscard]] Instant now() const override { return Instant{} + (real_.now() - start_) * factor_; }
    [[nodiscard]] Timer after(Duration delay, std::function<void()> callback) override {
        return real_.after(delay / factor_, std::move(callback));
    }

  private:
    SystemClock real_;
    int factor_;
    Instant start_;
};

}  // namespace velmora::test
