#pragma once

#include "platform/Task.h"

#include <chrono>
#include <coroutine>
#include <cstdint>
#include <functional>
#include <memory>

namespace ombrel {

// Where everything that touches a workspace runs: one thread, one piece of work at a time, in the
// order of posting. Three implementations: Qt's event loop, the command line's run loop, and one
// for tests whose clock the test moves.
class MainExecutor {
  public:
    using Clock = std::chrono::steady_clock;

    virtual ~MainExecutor() = default;

    // Runs `work` on the main thread, later: never inside this call. Any thread.
    virtual void post(std::function<void()> work) = 0;
    // The same after at least `delay` on a monotonic clock. Any thread. The result cancels it.
    virtual std::uint64_t postAfter(Clock::duration delay, std::function<void()> work) = 0;
    // Makes a delayed piece of work that has not begun never run. Main thread.
    virtual void cancel(std::uint64_t delayed) = 0;
    // The monotonic clock that delays are measured on.
    virtual Clock::time_point now() const = 0;

    // Starts a task that nobody awaits, in a later turn of the executor, and keeps it until it
    // ends. A task that never ends lives as long as the process.
    void spawn(Task<void> task);

    // `co_await executor.yield()` lets everything posted so far run first. A task that is destroyed
    // meanwhile is not resumed.
    class Yield {
      public:
        explicit Yield(MainExecutor& executor) : m_executor(executor) {}
        Yield(const Yield&) = delete;
        Yield& operator=(const Yield&) = delete;
        ~Yield() {
            if (m_awaiter) {
                *m_awaiter = nullptr;
            }
        }
        bool await_ready() const noexcept { return false; }
        void await_suspend(std::coroutine_handle<> awaiter) {
            m_awaiter = std::make_shared<std::coroutine_handle<>>(awaiter);
            m_executor.post([held = m_awaiter] {
                if (*held) {
                    held->resume();
                }
            });
        }
        void await_resume() const noexcept {}

      private:
        MainExecutor& m_executor;
        std::shared_ptr<std::coroutine_handle<>> m_awaiter;
    };
    Yield yield() { return Yield(*this); }
};

} // namespace ombrel
