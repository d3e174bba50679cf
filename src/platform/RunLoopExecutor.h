#pragma once

#include "platform/MainExecutor.h"
#include "platform/WorkQueue.h"

#include <atomic>

namespace ombrel {

// The executor of a program without a window: whichever thread calls one of the run functions is
// the main thread.
class RunLoopExecutor final : public MainExecutor {
  public:
    RunLoopExecutor();
    ~RunLoopExecutor() override;
    RunLoopExecutor(const RunLoopExecutor&) = delete;
    RunLoopExecutor& operator=(const RunLoopExecutor&) = delete;

    void post(std::function<void()> work) override;
    std::uint64_t postAfter(Clock::duration delay, std::function<void()> work) override;
    void cancel(std::uint64_t delayed) override { m_work.cancel(delayed); }
    Clock::time_point now() const override { return Clock::now(); }

    // Runs work, and waits for more, until `stop` is called.
    void run();
    // The same until `done`, which is asked before the first and after each piece of work. False
    // when `stop` came first.
    bool runUntil(const std::function<bool()>& done);
    // Starts the task and does the same until it has ended. A task that `stop` interrupts is
    // destroyed, and with it what it holds.
    bool runUntil(Task<void> task);

    // Makes the run function that is running, or the next one to be called, return before it does
    // any other work. Any thread, and signal handlers.
    void stop() noexcept;

  private:
    void waitForWork();
    void wake() const noexcept;

    WorkQueue m_work;
    std::atomic<bool> m_isStopping = false;
    int m_wakeDescriptor = -1;
};

} // namespace ombrel
