#include "platform/RunLoopExecutor.h"

#include "platform/Completion.h"

#include <csignal>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

namespace ombrel {
namespace {

using namespace std::chrono_literals;

TEST(RunLoopExecutor, RunsPostedWorkInOrderAndNeverInsideTheCall) {
    RunLoopExecutor executor;
    std::string trace;
    executor.post([&] {
        executor.post([&] { trace += "c"; });
        trace += "a";
    });
    executor.post([&] { trace += "b"; });
    EXPECT_EQ(trace, "");
    executor.runUntil([&] { return trace.size() == 3; });
    EXPECT_EQ(trace, "abc");
}

TEST(RunLoopExecutor, RunsDelayedWorkByDueTimeAndThenByTheOrderOfPosting) {
    RunLoopExecutor executor;
    std::string trace;
    executor.postAfter(20ms, [&] { trace += "c"; });
    executor.postAfter(0ms, [&] { trace += "a"; });
    executor.postAfter(-5s, [&] { trace += "0"; });
    executor.postAfter(5ms, [&] { trace += "b"; });
    executor.runUntil([&] { return trace.size() == 4; });
    EXPECT_EQ(trace, "0abc");
}

TEST(RunLoopExecutor, DelaysAtLeastAsLongAsAsked) {
    RunLoopExecutor executor;
    const auto start = executor.now();
    bool isDone = false;
    executor.postAfter(15ms, [&] { isDone = true; });
    executor.runUntil([&] { return isDone; });
    EXPECT_GE(executor.now() - start, 15ms);
}

TEST(RunLoopExecutor, AcceptsTheLongestDelayThereIs) {
    RunLoopExecutor executor;
    const auto id = executor.postAfter(RunLoopExecutor::Clock::duration::max(), [] { FAIL(); });
    bool isDone = false;
    executor.postAfter(1ms, [&] { isDone = true; });
    executor.runUntil([&] { return isDone; });
    executor.cancel(id);
}

TEST(RunLoopExecutor, NeverRunsCancelledWork) {
    RunLoopExecutor executor;
    std::string trace;
    const auto first = executor.postAfter(0ms, [&] { trace += "x"; });
    std::uint64_t second = 0;
    executor.postAfter(0ms, [&] {
        trace += "a";
        executor.cancel(second); // Due by now, but not begun.
    });
    second = executor.postAfter(0ms, [&] { trace += "y"; });
    executor.cancel(first);
    executor.cancel(first);
    executor.cancel(12345);
    executor.postAfter(1ms, [&] { trace += "b"; });
    executor.runUntil([&] { return trace.ends_with("b"); });
    EXPECT_EQ(trace, "ab");
}

TEST(RunLoopExecutor, DelayedWorkIsNotKeptWaitingByWorkThatPostsItself) {
    RunLoopExecutor executor;
    bool isDone = false;
    std::function<void()> again = [&] { executor.post(again); };
    again();
    executor.postAfter(1ms, [&] { isDone = true; });
    executor.runUntil([&] { return isDone; });
    EXPECT_TRUE(isDone);
}

TEST(RunLoopExecutor, PostedWorkIsNotKeptWaitingByDelayedWorkThatPostsItself) {
    RunLoopExecutor executor;
    bool isDone = false;
    std::function<void()> again = [&] { executor.postAfter(0ms, again); };
    again();
    executor.post([&] { executor.post([&] { isDone = true; }); });
    executor.runUntil([&] { return isDone; });
    EXPECT_TRUE(isDone);
}

TEST(RunLoopExecutor, WakesForWorkFromOtherThreads) {
    RunLoopExecutor executor;
    int count = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; i++) {
        threads.emplace_back([&] {
            for (int j = 0; j < 500; j++) {
                executor.post([&] { count++; });
                executor.postAfter(10us, [&] { count++; });
            }
        });
    }
    executor.runUntil([&] { return count == 4000; });
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(count, 4000);
}

TEST(RunLoopExecutor, StopsBeforeAnyOtherWorkAndCanRunAgain) {
    RunLoopExecutor executor;
    std::string trace;
    executor.post([&] {
        trace += "a";
        executor.stop();
    });
    executor.post([&] { trace += "b"; });
    executor.run();
    EXPECT_EQ(trace, "a");
    EXPECT_TRUE(executor.runUntil([&] { return trace == "ab"; }));
    executor.stop();
    EXPECT_FALSE(executor.runUntil([] { return true; }));
}

RunLoopExecutor* interrupted = nullptr;

TEST(RunLoopExecutor, StopsFromASignalHandlerWhileItWaits) {
    RunLoopExecutor executor;
    interrupted = &executor;
    const auto previous = std::signal(SIGUSR1, [](int) { interrupted->stop(); });
    std::thread sender([main = pthread_self()] {
        std::this_thread::sleep_for(10ms);
        pthread_kill(main, SIGUSR1);
    });
    executor.run();
    sender.join();
    std::signal(SIGUSR1, previous);
}

Task<void> waitAndNote(RunLoopExecutor* executor, std::string* trace) {
    *trace += "a";
    co_await executor->yield();
    *trace += "b";
}

TEST(RunLoopExecutor, RunsATaskToItsEnd) {
    RunLoopExecutor executor;
    std::string trace;
    EXPECT_TRUE(executor.runUntil(waitAndNote(&executor, &trace)));
    EXPECT_EQ(trace, "ab");
}

TEST(RunLoopExecutor, DestroysATaskThatIsStopped) {
    RunLoopExecutor executor;
    std::string trace;
    auto held = std::make_shared<int>(1);
    const std::weak_ptr<int> watched = held;
    auto task = [](RunLoopExecutor* loop, std::string* noted, std::shared_ptr<int>) -> Task<void> {
        loop->stop();
        co_await waitAndNote(loop, noted);
        *noted += "c";
    }(&executor, &trace, std::move(held));
    EXPECT_FALSE(executor.runUntil(std::move(task)));
    EXPECT_TRUE(watched.expired());
    // What the task had posted finds it gone.
    bool isDone = false;
    executor.post([&] { isDone = true; });
    executor.runUntil([&] { return isDone; });
    EXPECT_EQ(trace, "a");
}

TEST(MainExecutor, SpawnStartsATaskInALaterTurnAndKeepsItUntilItsEnd) {
    RunLoopExecutor executor;
    std::string trace;
    executor.spawn(waitAndNote(&executor, &trace));
    EXPECT_EQ(trace, "");
    executor.runUntil([&] { return trace == "ab"; });
    EXPECT_EQ(trace, "ab");
}

TEST(MainExecutor, SpawnDestroysTheTaskAtItsEnd) {
    RunLoopExecutor executor;
    auto held = std::make_shared<int>(1);
    const std::weak_ptr<int> watched = held;
    executor.spawn([](RunLoopExecutor* loop, std::shared_ptr<int>) -> Task<void> {
        co_await loop->yield();
    }(&executor, std::move(held)));
    bool isDone = false;
    executor.postAfter(1ms, [&] { isDone = true; });
    executor.runUntil([&] { return isDone; });
    EXPECT_TRUE(watched.expired());
}

} // namespace
} // namespace ombrel
