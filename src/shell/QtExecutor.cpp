#include "shell/QtExecutor.h"

#include <QCoreApplication>
#include <QEvent>
#include <QThread>

#include <algorithm>
#include <utility>

namespace ombrel {

namespace {

// How long one turn may keep the window waiting.
constexpr std::chrono::milliseconds turnBudget(8);
// So that the time of day plus a delay is a time, and a timer can hold it.
constexpr std::chrono::hours longestDelay(24 * 20);

QEvent::Type wakeEvent() {
    static const auto type = static_cast<QEvent::Type>(QEvent::registerEventType());
    return type;
}

} // namespace

QtExecutor::QtExecutor() {
    m_turn.setSingleShot(true);
    m_turn.setInterval(0);
    m_alarm.setSingleShot(true);
    m_alarm.setTimerType(Qt::PreciseTimer);
    connect(&m_turn, &QTimer::timeout, this, [this] { runTurn(); });
    connect(&m_alarm, &QTimer::timeout, this, [this] { runTurn(); });
}

QtExecutor::~QtExecutor() = default;

void QtExecutor::post(std::function<void()> work) {
    {
        const std::lock_guard lock(m_mutex);
        m_posted.push_back(std::move(work));
    }
    wake();
}

std::uint64_t QtExecutor::postAfter(Clock::duration delay, std::function<void()> work) {
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

void QtExecutor::cancel(std::uint64_t delayed) {
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

void QtExecutor::wake() {
    {
        const std::lock_guard lock(m_mutex);
        if (std::exchange(m_isWaking, true)) {
            return;
        }
    }
    if (QThread::currentThread() == thread()) {
        scheduleNext();
    } else {
        QCoreApplication::postEvent(this, new QEvent(wakeEvent()));
    }
}

bool QtExecutor::event(QEvent* event) {
    if (event->type() != wakeEvent()) {
        return QObject::event(event);
    }
    scheduleNext();
    return true;
}

void QtExecutor::scheduleNext() {
    const std::lock_guard lock(m_mutex);
    m_isWaking = false;
    if (!m_posted.empty()) {
        m_turn.start();
    }
    if (m_delayed.empty()) {
        m_alarm.stop();
    } else {
        const auto left = std::max(m_delayed.begin()->first - now(), Clock::duration::zero());
        m_alarm.start(std::chrono::ceil<std::chrono::milliseconds>(left));
    }
}

void QtExecutor::runTurn() {
    // What is posted meanwhile waits for the next turn.
    std::size_t posted = 0;
    {
        const std::lock_guard lock(m_mutex);
        posted = m_posted.size();
    }
    const Clock::time_point end = now() + turnBudget;
    while (const auto work = takeDue()) {
        work();
        if (now() >= end) {
            break;
        }
    }
    while (posted > 0) {
        posted -= 1;
        const auto work = takePosted();
        if (!work) {
            break;
        }
        work();
        if (now() >= end) {
            break;
        }
    }
    scheduleNext();
}

std::function<void()> QtExecutor::takeDue() {
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

std::function<void()> QtExecutor::takePosted() {
    const std::lock_guard lock(m_mutex);
    if (m_posted.empty()) {
        return {};
    }
    auto work = std::move(m_posted.front());
    m_posted.pop_front();
    return work;
}

} // namespace ombrel
