#include "platform/Completion.h"

#include "platform/RunLoopExecutor.h"

#include <gtest/gtest.h>
#include <string>
#include <thread>

namespace ombrel {
namespace {

TEST(Completion, AValueThatIsThereDoesNotSuspend) {
    const auto executor = std::make_shared<RunLoopExecutor>();
    int seen = 0;
    auto task = [](std::shared_ptr<RunLoopExecutor> loop, int* result) -> Task<void> {
        Completion<int> completion(loop);
        completion.fulfil(7);
        *result = co_await completion;
    }(executor, &seen);
    EXPECT_FALSE(task.await_suspend(std::noop_coroutine())); // It ended at once.
    EXPECT_EQ(seen, 7);
}

TEST(Completion, ResumesOnTheExecutorWhicheverThreadFulfils) {
    const auto executor = std::make_shared<RunLoopExecutor>();
    std::thread::id resumedOn;
    std::string value;
    auto task = [](std::shared_ptr<RunLoopExecutor> loop, std::thread::id* thread,
                   std::string* result) -> Task<void> {
        Completion<std::string> completion(loop);
        std::thread other([fulfil = completion.fulfiller()] { fulfil("from elsewhere"); });
        *result = co_await completion;
        *thread = std::this_thread::get_id();
        other.join();
    }(executor, &resumedOn, &value);
    executor->runUntil(std::move(task));
    EXPECT_EQ(resumedOn, std::this_thread::get_id());
    EXPECT_EQ(value, "from elsewhere");
}

TEST(Completion, TheFirstValueCounts) {
    const auto executor = std::make_shared<RunLoopExecutor>();
    int seen = 0;
    auto task = [](std::shared_ptr<RunLoopExecutor> loop, int* result) -> Task<void> {
        Completion<int> completion(loop);
        std::thread first(completion.fulfiller(), 1);
        first.join();
        std::thread second(completion.fulfiller(), 2);
        second.join();
        *result = co_await completion;
    }(executor, &seen);
    executor->runUntil(std::move(task));
    EXPECT_EQ(seen, 1);
}

TEST(Completion, ATaskThatIsDestroyedWhileItWaitsIsNotResumed) {
    const auto executor = std::make_shared<RunLoopExecutor>();
    std::function<void(int)> fulfil;
    bool isResumed = false;
    {
        auto task = [](std::shared_ptr<RunLoopExecutor> loop, std::function<void(int)>* out,
                       bool* resumed) -> Task<void> {
            Completion<int> completion(loop);
            *out = completion.fulfiller();
            co_await completion;
            *resumed = true;
        }(executor, &fulfil, &isResumed);
        task.await_suspend(std::noop_coroutine());
        fulfil(1); // Its resumption is posted, and then the task goes.
    }
    fulfil(2);
    bool isDone = false;
    executor->post([&] { isDone = true; });
    executor->runUntil([&] { return isDone; });
    EXPECT_FALSE(isResumed);
}

TEST(Completion, MayBeFulfilledAfterTheExecutorIsGone) {
    auto executor = std::make_shared<RunLoopExecutor>();
    std::function<void(int)> fulfil;
    auto task = [](std::shared_ptr<RunLoopExecutor> loop,
                   std::function<void(int)>* out) -> Task<void> {
        Completion<int> completion(loop);
        loop.reset();
        *out = completion.fulfiller();
        co_await completion;
        ADD_FAILURE() << "resumed";
    }(executor, &fulfil);
    task.await_suspend(std::noop_coroutine());
    executor.reset();
    fulfil(1);
}

} // namespace
} // namespace ombrel
