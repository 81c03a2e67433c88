#pragma once

#include "System/Clock.h"

#include <QCoreApplication>

#include <coroutine>
#include <memory>
#include <optional>

namespace velmora {

/// A value that arrives later, once, for one coroutine that waits for it: `co_await completion`. Copies are
/// the same completion. Main thread only.
///
/// The coroutine goes on from the event loop, never from inside `complete`: whoever completes may be in the
/// middle of anything, its own destructor included.
template <class Value>
class Completion {
  public:
    /// The first value counts; later ones are dropped.
    void complete(Value value) const {
        if (state_->isComplete) return;
        state_->isComplete = true;
        state_->value = std::move(value);
        if (state_->waiter) resumeLater(state_->waiter);
    }
    [[nodiscard]] bool isComplete() const { return state_->isComplete; }

    [[nodiscard]] bool await_ready() const noexcept { return state_->isComplete; }
    void await_suspend(std::coroutine_handle<> waiter) const { state_->waiter = waiter; }
    Value await_resume() const { return *std::move(state_->value); }

  private:
    struct State {
        std::optional<Value> value;
        bool isComplete = false;
        std::coroutine_handle<> waiter;
    };

    static void resumeLater(std::coroutine_handle<> waiter) {
        QMetaObject::invokeMethod(
            QCoreApplication::instance(), [waiter] { waiter.resume(); }, Qt::QueuedConnection);
    }

    std::shared_ptr<State> state_ = std::make_shared<State>();
};

/// A wait that can be cut short. Whoever owns it ends it in its destructor, so that no coroutine is left
/// waiting for an object that is gone.
class Nap {
  public:
    /// For one waiter at a time; a second call ends the first wait.
    [[nodiscard]] Completion<bool> wait(Clock& clock, Clock::Duration duration) {
        end();
        const Completion<bool> waiting;
        timer_ = clock.after(duration, [waiting] { waiting.complete(true); });
        current_ = waiting;
        return waiting;
    }

    void end() {
        timer_.cancel();
        if (const auto waiting = std::exchange(current_, std::nullopt)) waiting->complete(false);
    }

  private:
    std::optional<Completion<bool>> current_;
    Clock::Timer timer_;
};

}  // namespace velmora
