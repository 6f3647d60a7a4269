#include "Platform/Foundation/QtRunLoop.h"
#include "Tests/Support/QtTest.h"

#include <array>
#include <string>
#include <thread>
#include <unistd.h>
#include <utility>
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
    loop.postAfter(RunLoop::Seconds(0.05), [&] { order.push_back(4); });
    loop.post([&] {
        loop.post([&] { order.push_back(3); });
        order.push_back(1);
    });
    std::thread([&] {
        EXPECT_FALSE(loop.isCurrent());
        loop.post([&] { order.push_back(loop.isCurrent() ? 2 : 0); });
    }).join();
    EXPECT_TRUE(order.empty());
    ASSERT_TRUE(waitUntil([&] { return order.size() == 4; }));
    EXPECT_EQ(order, (std::vector{1, 2, 3, 4}));
}

TEST_F(QtRunLoopTest, GoesOnWithATimerThatNobodyHoldsAndEndsOneThatIsInvalidatedAlsoByItself) {
    constexpr RunLoop::Seconds moment{0.001};
    int ticks = 0;
    int others = 0;
    loop.scheduleRepeating(moment, [&] { ++others; });
    std::shared_ptr<RunLoop::Timer> timer = loop.scheduleRepeating(moment, [&] {
        if (++ticks == 3)
            std::exchange(timer, nullptr)->invalidate();
    });
    ASSERT_TRUE(waitUntil([&] { return others >= 20; }));
    EXPECT_EQ(ticks, 3);
}

TEST_F(QtRunLoopTest, RunsTasksAtTheirMomentAndWhenThereIsSomethingToReadUntilThatEnds) {
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe(ends.data()), 0);
    ASSERT_EQ(::write(ends[1], "x", 1), 1);
    std::vector<std::string> order;
    const auto now = std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now());
    Subscription reading;
    const Subscription later = loop.postAt(now + std::chrono::milliseconds(50), [&] {
        order.emplace_back("later");
        reading = loop.watch(ends[0], [&] {
            order.emplace_back("to read");
            reading = {}; // or it would come again at once
            loop.postAfter(RunLoop::Seconds(0.02), [&] { order.emplace_back("end"); });
        });
    });
    const auto earlier = loop.postAt(now - std::chrono::hours(1), [&] { order.emplace_back("earlier"); });
    loop.postAt(now, [&] { order.emplace_back("nobody waits"); }) = {};
    ASSERT_TRUE(waitUntil([&] { return !order.empty() && order.back() == "end"; }));
    EXPECT_EQ(order, (std::vector<std::string>{"earlier", "later", "to read", "end"}));
    ::close(ends[0]), ::close(ends[1]);
}

} // namespace velloren
