#include "System/Clock.h"

#include <QEventLoop>

#include <gtest/gtest.h>

#include <vector>

namespace velmora {
namespace {

using namespace std::chrono_literals;

TEST(SystemClock, callbacksComeOnceInOrderNeverEarlyAndOnlyWhileTheirTimerLives) {
    SystemClock clock;
    std::vector<int> order;
    const Clock::Instant start = clock.now();
    QEventLoop loop;
    const Clock::Timer end = clock.after(40ms, [&] { loop.quit(); });
    const Clock::Timer late = clock.after(20ms, [&] {
        order.push_back(3);
        EXPECT_GE(clock.now() - start, 20ms);
    });
    Clock::Timer own;
    own = clock.after(10ms, [&] {
        order.push_back(2);
        own.cancel();  // from inside its own callback
    });
    const Clock::Timer soon = clock.after(300us, [&] { order.push_back(1); });
    const Clock::Timer overdue = clock.after(-5ms, [&] { order.push_back(0); });
    (void)clock.after(1ms, [&] { order.push_back(-1); });
    EXPECT_TRUE(order.empty()) << "never from inside `after`";
    loop.exec();
    EXPECT_EQ(order, (std::vector{0, 1, 2, 3}));
}

}  // namespace
}  // namespace velmora
