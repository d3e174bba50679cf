#pragma once

#include "platform/MainExecutor.h"

#include <QObject>
#include <QTimer>

#include <deque>
#include <map>
#include <mutex>
#include <unordered_map>

namespace ombrel {

// The executor of the studio: work runs in Qt's event loop, on the thread that made it. Work that
// keeps posting more takes turns with the window's own events, so that a window can be used
// meanwhile. Work that is left at the end never runs.
class QtExecutor final : public QObject, public MainExecutor {
  public:
    QtExecutor();
    ~QtExecutor() override;

    void post(std::function<void()> work) override;
    std::uint64_t postAfter(Clock::duration delay, std::function<void()> work) override;
    void cancel(std::uint64_t delayed) override;
    Clock::time_point now() const override { return Clock::now(); }

  protected:
    bool event(QEvent* event) override;

  private:
    struct Delayed {
        std::uint64_t id;
        std::function<void()> work;
    };
    using DelayedWork = std::multimap<Clock::time_point, Delayed>;

    void wake();
    void runTurn();
    void scheduleNext();
    std::function<void()> takeDue();
    std::function<void()> takePosted();

    std::mutex m_mutex; // guards the next five
    std::deque<std::function<void()>> m_posted;
    DelayedWork m_delayed;
    std::unordered_map<std::uint64_t, DelayedWork::iterator> m_delayedById;
    std::uint64_t m_lastId = 0;
    bool m_isWaking = false;
    QTimer m_turn;  // fires when the window's events are done
    QTimer m_alarm; // fires when the next delayed work is due
};

} // namespace ombrel
