#include "System/Clock.h"

#include <QEventLoop>

#include <gtest/gtest.h>

#include <vector>

namespace velmora {
namespace {

using namespace std::chrono_literals;

class SystemClockTest : public testing::Test {
  protected:
    /// Lets the event loop run for `duration` at least.
    void pass(Clock::Duration duration) {
        QEventLoop loop;
        const Clock::Timer end = clock_.after(duration, [&loop] { loop.quit(); });
        loop.exec();
    }

    SystemClock clock_;
};

TEST_F(SystemClockTest, callbacksComeOnceInOrderAndNeverEarly) {
    std::vector<int> order;
    const Clock::Instant start = clock_.now();
    const Clock::Timer late = clock_.after(20ms, [&] {
        order.push_back(2);
        EXPECT_GE(clock_.now() - start, 20ms);
    });
    const Clock::Timer soon = clock_.after(300us, [&] {
        order.push_back(1);
        EXPECT_GE(clock_.now() - start, 300us);
    });
    const Clock::Timer overdue = clock_.after(-5ms, [&] { order.push_back(0); });
    EXPECT_TRUE(order.empty()) << "never from inside `after`";
    pass(40ms);
    EXPECT_EQ(order, (std::vector{0, 1, 2}));
}

TEST_F(SystemClockTest, aDroppedTimerStaysSilent) {
    int calls = 0;
    Clock::Timer cancelled = clock_.after(1ms, [&] { ++calls; });
    cancelled.cancel();
    (void)clock_.after(1ms, [&] { ++calls; });
    Clock::Timer own;
    own = clock_.after(1ms, [&] {
        ++calls;
        own.cancel();  // from inside its own callback
    });
    pass(10ms);
    EXPECT_EQ(calls, 1);
}

}  // namespace
}  // namespace velmora
