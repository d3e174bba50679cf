#include "platform/RunLoopExecutor.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <limits>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>
#include <utility>

namespace ombrel {

static_assert(std::atomic<bool>::is_always_lock_free, "stop() is called from signal handlers");

// So that the time of day plus a delay is a time.
static constexpr std::chrono::hours longestDelay(24 * 365);

RunLoopExecutor::RunLoopExecutor() : m_wakeDescriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (m_wakeDescriptor < 0) {
        std::abort(); // No descriptor is left at the start of the program.
    }
}

RunLoopExecutor::~RunLoopExecutor() {
    close(m_wakeDescriptor);
}

void RunLoopExecutor::wake() const noexcept {
    const int savedErrno = errno; // A signal handler may be what calls this.
    const std::uint64_t one = 1;
    // It fails only when the counter is full, and then the descriptor is readable anyway.
    [[maybe_unused]] const auto written = write(m_wakeDescriptor, &one, sizeof one);
    errno = savedErrno;
}

void RunLoopExecutor::post(std::function<void()> work) {
    {
        const std::lock_guard lock(m_mutex);
        m_posted.push_back(std::move(work));
    }
    wake();
}

std::uint64_t RunLoopExecutor::postAfter(Clock::duration delay, std::function<void()> work) {
    std::uint64_t id = 0;
    {
        const std::lock_guard lock(m_mutex);
        id = ++m_lastId;
        const Clock::duration bounded = std::min<Clock::duration>(delay, longestDelay);
        const auto position = m_delayed.emplace(now() + bounded, Delayed{id, std::move(work)});
        m_delayedById.emplace(id, position);
    }
    wake();
    return id;
}

void RunLoopExecutor::cancel(std::uint64_t delayed) {
    std::function<void()> dropped; // What it holds is destroyed outside the lock.
    const std::lock_guard lock(m_mutex);
    const auto found = m_delayedById.find(delayed);
    if (found == m_delayedById.end()) {
        return;
    }
    dropped = std::move(found->second->second.work);
    m_delayed.erase(found->second);
    m_delayedById.erase(found);
}

void RunLoopExecutor::run() {
    runUntil([] { return false; });
}

bool RunLoopExecutor::runUntil(const std::function<bool()>& done) {
    // Delayed work takes turns with the posted work that was there when it became due, so that
    // neither keeps the other waiting.
    std::size_t postedInThisTurn = 0;
    while (true) {
        if (m_isStopping.exchange(false)) {
            return false;
        }
        if (done()) {
            return true;
        }
        std::function<void()> work;
        if (postedInThisTurn == 0) {
            work = takeDue();
            postedInThisTurn = postedCount();
        }
        if (!work && postedInThisTurn > 0) {
            work = takePosted();
            postedInThisTurn -= 1;
        }
        if (work) {
            work();
        } else {
            waitForWork();
        }
    }
}

bool RunLoopExecutor::runUntil(Task<void> task) {
    if (m_isStopping.exchange(false)) {
        return false;
    }
    bool hasEnded = false;
    auto watched = [](Task<void> inner, bool* ended) -> Task<void> {
        co_await std::move(inner);
        *ended = true;
    }(std::move(task), &hasEnded);
    // Nobody awaits this one: it tells of its end through `hasEnded`.
    watched.await_suspend(std::noop_coroutine());
    return runUntil([&hasEnded] { return hasEnded; });
}

void RunLoopExecutor::stop() noexcept {
    m_isStopping.store(true);
    wake();
}

std::function<void()> RunLoopExecutor::takeDue() {
    const std::lock_guard lock(m_mutex);
    const auto first = m_delayed.begin();
    if (first == m_delayed.end() || first->first > now()) {
        return {};
    }
    auto work = std::move(first->second.work);
    m_delayedById.erase(first->second.id);
    m_delayed.erase(first);
    return work;
}

std::function<void()> RunLoopExecutor::takePosted() {
    const std::lock_guard lock(m_mutex);
    if (m_posted.empty()) {
        return {};
    }
    auto work = std::move(m_posted.front());
    m_posted.pop_front();
    return work;
}

std::size_t RunLoopExecutor::postedCount() const {
    const std::lock_guard lock(m_mutex);
    return m_posted.size();
}

void RunLoopExecutor::waitForWork() {
    timespec timeout{};
    bool isBounded = false;
    {
        const std::lock_guard lock(m_mutex);
        if (!m_posted.empty()) {
            return;
        }
        if (!m_delayed.empty()) {
            const auto left = std::max(m_delayed.begin()->first - now(), Clock::duration::zero());
            const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
            timeout.tv_sec = seconds.count();
            timeout.tv_nsec = std::chrono::nanoseconds(left - seconds).count();
            isBounded = true;
        }
    }
    pollfd descriptor{m_wakeDescriptor, POLLIN, 0};
    ppoll(&descriptor, 1, isBounded ? &timeout : nullptr, nullptr);
    std::uint64_t count = 0;
    [[maybe_unused]] const auto bytes = read(m_wakeDescriptor, &count, sizeof count);
}

} // namespace ombrel
