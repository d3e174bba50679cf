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
// So that a timer can hold it.
constexpr std::chrono::hours longestSleep(24 * 20);

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
    m_work.post(std::move(work));
    wake();
}

std::uint64_t QtExecutor::postAfter(Clock::duration delay, std::function<void()> work) {
    const std::uint64_t id = m_work.postAfter(delay, std::move(work));
    wake();
    return id;
}

void QtExecutor::wake() {
    if (m_isWaking.exchange(true)) {
        return;
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
    m_isWaking = false;
    if (m_work.postedCount() > 0) {
        m_turn.start();
    }
    if (const auto left = m_work.timeToNextDue()) {
        const auto sleep = std::min<Clock::duration>(*left, longestSleep);
        m_alarm.start(std::chrono::ceil<std::chrono::milliseconds>(sleep));
    } else {
        m_alarm.stop();
    }
}

void QtExecutor::runTurn() {
    // What is posted meanwhile waits for the next turn.
    std::size_t posted = m_work.postedCount();
    const Clock::time_point end = now() + turnBudget;
    while (const auto work = m_work.takeDue()) {
        work();
        if (now() >= end) {
            break;
        }
    }
    for (; posted > 0; --posted) {
        const auto work = m_work.takePosted();
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

} // namespace ombrel
