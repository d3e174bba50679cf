#include "platform/RunLoopExecutor.h"

#include <cerrno>
#include <cstdlib>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>
#include <utility>

namespace ombrel {

static_assert(std::atomic<bool>::is_always_lock_free, "stop() is called from signal handlers");

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
    m_work.post(std::move(work));
    wake();
}

std::uint64_t RunLoopExecutor::postAfter(Clock::duration delay, std::function<void()> work) {
    const std::uint64_t id = m_work.postAfter(delay, std::move(work));
    wake();
    return id;
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
            work = m_work.takeDue();
            postedInThisTurn = m_work.postedCount();
        }
        if (!work && postedInThisTurn > 0) {
            work = m_work.takePosted();
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

void RunLoopExecutor::waitForWork() {
    if (m_work.postedCount() > 0) {
        return;
    }
    timespec timeout{};
    const auto left = m_work.timeToNextDue();
    if (left) {
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(*left);
        timeout.tv_sec = seconds.count();
        timeout.tv_nsec = std::chrono::nanoseconds(*left - seconds).count();
    }
    pollfd descriptor{m_wakeDescriptor, POLLIN, 0};
    ppoll(&descriptor, 1, left ? &timeout : nullptr, nullptr);
    std::uint64_t count = 0;
    [[maybe_unused]] const auto bytes = read(m_wakeDescriptor, &count, sizeof count);
}

} // namespace ombrel
