#include "platform/WorkQueue.h"

#include <algorithm>
#include <utility>

namespace ombrel {

// So that the time of day plus a delay is a time.
static constexpr std::chrono::hours longestDelay(24 * 365);

void WorkQueue::post(std::function<void()> work) {
    const std::lock_guard lock(m_mutex);
    m_posted.push_back(std::move(work));
}

std::uint64_t WorkQueue::postAfter(Clock::duration delay, std::function<void()> work) {
    const auto due = Clock::now() + std::min<Clock::duration>(delay, longestDelay);
    const std::lock_guard lock(m_mutex);
    const std::uint64_t id = ++m_lastId;
    m_delayedById.emplace(id, m_delayed.emplace(due, Delayed{id, std::move(work)}));
    return id;
}

void WorkQueue::cancel(std::uint64_t delayed) {
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

std::function<void()> WorkQueue::takeDue() {
    const std::lock_guard lock(m_mutex);
    const auto first = m_delayed.begin();
    if (first == m_delayed.end() || first->first > Clock::now()) {
        return {};
    }
    auto work = std::move(first->second.work);
    m_delayedById.erase(first->second.id);
    m_delayed.erase(first);
    return work;
}

std::function<void()> WorkQueue::takePosted() {
    const std::lock_guard lock(m_mutex);
    if (m_posted.empty()) {
        return {};
    }
    auto work = std::move(m_posted.front());
    m_posted.pop_front();
    return work;
}

std::size_t WorkQueue::postedCount() const {
    const std::lock_guard lock(m_mutex);
    return m_posted.size();
}

std::optional<WorkQueue::Clock::duration> WorkQueue::timeToNextDue() const {
    const std::lock_guard lock(m_mutex);
    if (m_delayed.empty()) {
        return std::nullopt;
    }
    return std::max(m_delayed.begin()->first - Clock::now(), Clock::duration::zero());
}

} // namespace ombrel
