#pragma once

#include "platform/MainExecutor.h"
#include "platform/WorkQueue.h"

#include <QObject>
#include <QTimer>

#include <atomic>

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
    void cancel(std::uint64_t delayed) override { m_work.cancel(delayed); }
    Clock::time_point now() const override { return Clock::now(); }

  protected:
    bool event(QEvent* event) override;

  private:
    void wake();
    void runTurn();
    void scheduleNext();

    WorkQueue m_work;
    std::atomic<bool> m_isWaking = false;
    QTimer m_turn;  // fires when the window's events are done
    QTimer m_alarm; // fires when the next delayed work is due
};

} // namespace ombrel
