#include "shell/QtExecutor.h"
#include "tests/shell/Wait.h"

#include <QTimer>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace ombrel {
namespace {

using namespace std::chrono_literals;
using test::waitUntil;

TEST(QtExecutor, RunsWorkLaterInTheOrderOfPosting) {
    QtExecutor executor;
    std::string order;
    executor.post([&] {
        order += 'a';
        executor.post([&] { order += 'c'; });
    });
    executor.post([&] { order += 'b'; });
    EXPECT_EQ(order, "");
    ASSERT_TRUE(waitUntil([&] { return order.size() == 3; }));
    EXPECT_EQ(order, "abc");
}

TEST(QtExecutor, RunsDelayedWorkInTheOrderOfItsTime) {
    QtExecutor executor;
    std::string order;
    const auto begin = executor.now();
    executor.postAfter(30ms, [&] { order += 'b'; });
    executor.postAfter(10ms, [&] { order += 'a'; });
    executor.postAfter(-1s, [&] { order += '0'; });
    ASSERT_TRUE(waitUntil([&] { return order.size() == 3; }));
    EXPECT_EQ(order, "0ab");
    EXPECT_GE(executor.now() - begin, 30ms);
}

TEST(QtExecutor, NeverRunsCancelledWork) {
    QtExecutor executor;
    bool cancelledRan = false;
    bool otherRan = false;
    const auto handle = executor.postAfter(1ms, [&] { cancelledRan = true; });
    executor.postAfter(20ms, [&] { otherRan = true; });
    executor.cancel(handle);
    executor.cancel(handle);
    executor.cancel(12345);
    ASSERT_TRUE(waitUntil([&] { return otherRan; }));
    EXPECT_FALSE(cancelledRan);
}

TEST(QtExecutor, TakesWorkFromEveryThreadAndRunsItOnItsOwn) {
    QtExecutor executor;
    int count = 0;
    bool wasElsewhere = false;
    const auto here = std::this_thread::get_id();
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&] {
            for (int i = 0; i < 250; ++i) {
                const auto work = [&] {
                    count += 1;
                    wasElsewhere |= std::this_thread::get_id() != here;
                };
                if (i % 5 == 0) {
                    executor.postAfter(1ms, work);
                } else {
                    executor.post(work);
                }
            }
        });
    }
    ASSERT_TRUE(waitUntil([&] { return count == 1000; }));
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_FALSE(wasElsewhere);
}

// Work that posts itself again and again must leave room for the window.
TEST(QtExecutor, LetsTheWindowsEventsThroughWhileWorkKeepsComing) {
    QtExecutor executor;
    bool isStopped = false;
    std::function<void()> again = [&] {
        if (!isStopped) {
            executor.post(again);
        }
    };
    executor.post(again);
    int ticks = 0;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] { ticks += 1; });
    timer.start(1);
    ASSERT_TRUE(waitUntil([&] { return ticks >= 5; }));
    isStopped = true;
}

TEST(QtExecutor, DropsWorkThatIsLeftAtTheEnd) {
    auto held = std::make_shared<int>(0);
    {
        QtExecutor executor;
        executor.post([held] { *held = 1; });
        executor.postAfter(1h, [held] { *held = 1; });
        EXPECT_EQ(held.use_count(), 3);
    }
    EXPECT_EQ(held.use_count(), 1);
    EXPECT_EQ(*held, 0);
}

Task<void> countYields(MainExecutor& executor, int& count) {
    for (int i = 0; i < 100; ++i) {
        co_await executor.yield();
        count += 1;
    }
}

TEST(QtExecutor, ResumesTasks) {
    QtExecutor executor;
    int count = 0;
    executor.spawn(countYields(executor, count));
    EXPECT_EQ(count, 0);
    ASSERT_TRUE(waitUntil([&] { return count == 100; }));
}

} // namespace
} // namespace ombrel
