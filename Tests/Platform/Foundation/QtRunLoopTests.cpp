#include "Platform/Foundation/QtRunLoop.h"
#include "Tests/Support/QtTest.h"

#include <thread>
#include <vector>

namespace velloren {

namespace {

constexpr RunLoop::Seconds moment{0.001};

class QtRunLoopTest : public QtTest {
  protected:
    /// Long enough for whatever runs every moment.
    void letMomentsPass() {
        bool later = false;
        loop.postAfter(20 * moment, [&] { later = true; });
        ASSERT_TRUE(waitUntil([&] { return later; }));
    }

    QtRunLoop loop;
};

} // namespace

TEST_F(QtRunLoopTest, RunsPostedTasksInOrderAndNeverAtOnce) {
    std::vector<int> order;
    loop.post([&] {
        loop.post([&] { order.push_back(3); });
        order.push_back(1);
    });
    loop.post([&] { order.push_back(2); });
    EXPECT_TRUE(order.empty());
    ASSERT_TRUE(waitUntil([&] { return order.size() == 3; }));
    EXPECT_EQ(order, (std::vector{1, 2, 3}));
}

TEST_F(QtRunLoopTest, TakesTasksFromAnyThreadAndRunsThemOnItsOwn) {
    bool onMain = false;
    std::thread([&] {
        EXPECT_FALSE(loop.isCurrent());
        loop.post([&] { onMain = loop.isCurrent(); });
    }).join();
    EXPECT_TRUE(waitUntil([&] { return onMain; }));
}

TEST_F(QtRunLoopTest, KeepsATimerThatNobodyHoldsUntilItIsInvalidated) {
    int ticks = 0;
    std::weak_ptr<RunLoop::Timer> timer = loop.scheduleRepeating(moment, [&] { ++ticks; });
    ASSERT_TRUE(waitUntil([&] { return ticks >= 3; }));
    ASSERT_FALSE(timer.expired());
    timer.lock()->invalidate();
    EXPECT_TRUE(timer.expired());
    const int last = ticks;
    letMomentsPass();
    EXPECT_EQ(ticks, last);
}

TEST_F(QtRunLoopTest, LetsATimerInvalidateItself) {
    int ticks = 0;
    std::shared_ptr<RunLoop::Timer> timer;
    timer = loop.scheduleRepeating(moment, [&] {
        ++ticks;
        timer->invalidate();
        timer.reset();
    });
    letMomentsPass();
    EXPECT_EQ(ticks, 1);
}

} // namespace velloren
