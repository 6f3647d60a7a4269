#include "Platform/Foundation/QtRunLoop.h"
#include "Tests/Support/QtTest.h"

#include <thread>
#include <vector>

namespace velloren {

namespace {

class QtRunLoopTest : public QtTest {
  protected:
    QtRunLoop loop;
};

} // namespace

TEST_F(QtRunLoopTest, RunsTasksOfAnyThreadOnItsOwnInOrderAndNeverAtOnce) {
    std::vector<int> order;
    loop.post([&] {
        loop.post([&] { order.push_back(3); });
        order.push_back(1);
    });
    std::thread([&] {
        EXPECT_FALSE(loop.isCurrent());
        loop.post([&] { order.push_back(loop.isCurrent() ? 2 : 0); });
    }).join();
    EXPECT_TRUE(order.empty());
    ASSERT_TRUE(waitUntil([&] { return order.size() == 3; }));
    EXPECT_EQ(order, (std::vector{1, 2, 3}));
}

TEST_F(QtRunLoopTest, KeepsATimerThatNobodyHoldsUntilItIsInvalidatedAlsoByItself) {
    constexpr RunLoop::Seconds moment{0.001};
    int ticks = 0;
    std::weak_ptr<RunLoop::Timer> timer = loop.scheduleRepeating(moment, [&] {
        if (++ticks == 3)
            timer.lock()->invalidate();
    });
    bool later = false;
    ASSERT_TRUE(waitUntil([&] { return ticks >= 3; }));
    loop.postAfter(20 * moment, [&] { later = true; });
    ASSERT_TRUE(waitUntil([&] { return later; }));
    EXPECT_EQ(ticks, 3);
    EXPECT_TRUE(timer.expired());
}

} // namespace velloren
