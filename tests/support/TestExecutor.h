#pragma once

#include "platform/MainExecutor.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <utility>

namespace ombrel::test {

// A main executor that runs only when the test says so, and whose clock only the test moves.
class TestExecutor : public MainExecutor {
  public:
    void post(std::function<void()> work) override {
        std::lock_guard lock(m_mutex);
        m_posted.push_back(std::move(work));
    }
    std::uint64_t postAfter(Clock::duration delay, std::function<void()> work) override {
        std::lock_guard lock(m_mutex);
        const std::uint64_t handle = ++m_lastHandle;
        m_delayed.emplace(std::pair(m_now + delay, handle), std::move(work));
        return handle;
    }
    void cancel(std::uint64_t delayed) override {
        std::lock_guard lock(m_mutex);
        std::erase_if(m_delayed, [&](const auto& entry) { return entry.first.second == delayed; });
    }
    Clock::time_point now() const override {
        std::lock_guard lock(m_mutex);
        return m_now;
    }

    // Runs one piece of posted work; false when there is none.
    bool runOne() {
        std::function<void()> work;
        {
            std::lock_guard lock(m_mutex);
            if (m_posted.empty()) {
                return false;
            }
            work = std::move(m_posted.front());
            m_posted.pop_front();
        }
        work();
        return true;
    }
    // Runs everything that is posted, and what that posts. Delayed work waits for its time.
    void runAll() {
        while (runOne()) {
        }
    }
    // Moves the clock, and runs what is posted or becomes due on the way, in the order of its time.
    void advance(Clock::duration duration) {
        runAll();
        const Clock::time_point end = now() + duration;
        while (std::function<void()> work = takeDue(end)) {
            work();
            runAll();
        }
        std::lock_guard lock(m_mutex);
        m_now = end;
    }
    // Moves the clock and runs nothing: what a piece of work does that takes time.
    void moveClock(Clock::duration duration) {
        std::lock_guard lock(m_mutex);
        m_now += duration;
    }

    std::size_t postedCount() const {
        std::lock_guard lock(m_mutex);
        return m_posted.size();
    }
    std::size_t delayedCount() const {
        std::lock_guard lock(m_mutex);
        return m_delayed.size();
    }

  private:
    std::function<void()> takeDue(Clock::time_point end) {
        std::lock_guard lock(m_mutex);
        const auto first = m_delayed.begin();
        if (first == m_delayed.end() || first->first.first > end) {
            return nullptr;
        }
        m_now = std::max(m_now, first->first.first);
        std::function<void()> work = std::move(first->second);
        m_delayed.erase(first);
        return work;
    }

    mutable std::mutex m_mutex;
    std::deque<std::function<void()>> m_posted;
    std::map<std::pair<Clock::time_point, std::uint64_t>, std::function<void()>> m_delayed;
    Clock::time_point m_now{std::chrono::hours(1)};
    std::uint64_t m_lastHandle = 0;
};

// What a task that was started gives, once it is there.
template <class T>
using Pending = std::shared_ptr<std::optional<T>>;

namespace detail {
template <class T>
Task<void> keepValue(Task<T> task, Pending<T> place) {
    T value = co_await std::move(task);
    place->emplace(std::move(value));
}
inline Task<void> keepEnd(Task<void> task, std::shared_ptr<bool> isDone) {
    co_await std::move(task);
    *isDone = true;
}
} // namespace detail

// Starts a task and runs everything that can run; the task may then be waiting for something that
// the test has to let happen.
template <class T>
Pending<T> start(TestExecutor& executor, Task<T> task) {
    auto place = std::make_shared<std::optional<T>>();
    executor.spawn(detail::keepValue(std::move(task), place));
    executor.runAll();
    return place;
}
// The same for a task without a value: the result becomes true at its end.
inline std::shared_ptr<bool> start(TestExecutor& executor, Task<void> task) {
    auto isDone = std::make_shared<bool>(false);
    executor.spawn(detail::keepEnd(std::move(task), isDone));
    executor.runAll();
    return isDone;
}

// Runs a task to its end; throws, which fails the test, when it waits for something that never
// comes.
template <class T>
T run(TestExecutor& executor, Task<T> task) {
    const Pending<T> value = start(executor, std::move(task));
    if (!*value) {
        throw std::logic_error("the task did not end");
    }
    return std::move(**value);
}
inline void run(TestExecutor& executor, Task<void> task) {
    if (!*start(executor, std::move(task))) {
        throw std::logic_error("the task did not end");
    }
}

} // namespace ombrel::test
