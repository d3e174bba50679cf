#include "platform/WorkerThread.h"

#include "platform/RunLoopExecutor.h"
#include "tests/platform/Await.h"

#include <atomic>
#include <gtest/gtest.h>
#include <string>
#include <thread>

namespace ombrel {
namespace {

TEST(WorkerThread, GivesWhatTheWorkGaveOnTheMainThread) {
    const auto executor = std::make_shared<RunLoopExecutor>();
    std::thread::id workedOn;
    std::function<std::string(std::stop_token)> work = [&](const std::stop_token&) {
        workedOn = std::this_thread::get_id();
        return std::string("done");
    };
    EXPECT_EQ(test::await(executor, onWorkerThread(executor, work)), "done");
    EXPECT_NE(workedOn, std::this_thread::get_id());
}

TEST(WorkerThread, AsksTheWorkToStopWhenItsTaskIsDestroyed) {
    const auto executor = std::make_shared<RunLoopExecutor>();
    std::atomic<bool> wasStopped = false;
    std::function<bool(std::stop_token)> work = [&](const std::stop_token& stop) {
        while (!stop.stop_requested()) {
            std::this_thread::yield();
        }
        wasStopped = true;
        return true;
    };
    {
        Task<bool> task = onWorkerThread(executor, work);
        task.await_suspend(std::noop_coroutine());
    }
    EXPECT_TRUE(wasStopped);
}

} // namespace
} // namespace ombrel
