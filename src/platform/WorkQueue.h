#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <unordered_map>

namespace ombrel {

// Work that waits for the thread it belongs to: posted work in order, and delayed work by the time
// when it is due. Any thread may call it; what it hands out is run by the caller.
class WorkQueue {
  public:
    using Clock = std::chrono::steady_clock;

    void post(std::function<void()> work);
    // The result cancels it. A delay is a year at most.
    std::uint64_t postAfter(Clock::duration delay, std::function<void()> work);
    // Drops delayed work that was not taken. Other numbers are ignored.
    void cancel(std::uint64_t delayed);

    // Takes the delayed work that has been due for longest, or the first that was posted; empty
    // when there is none.
    std::function<void()> takeDue();
    std::function<void()> takePosted();

    std::size_t postedCount() const;
    // How long until delayed work is due: not below zero, nothing without delayed work.
    std::optional<Clock::duration> timeToNextDue() const;

  private:
    struct Delayed {
        std::uint64_t id;
        std::function<void()> work;
    };
    using DelayedWork = std::multimap<Clock::time_point, Delayed>;

    mutable std::mutex m_mutex; // guards the rest
    std::deque<std::function<void()>> m_posted;
    DelayedWork m_delayed;
    std::unordered_map<std::uint64_t, DelayedWork::iterator> m_delayedById;
    std::uint64_t m_lastId = 0;
};

} // namespace ombrel
