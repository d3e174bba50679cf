#pragma once

#include "platform/MainExecutor.h"

#include <chrono>
#include <coroutine>

namespace ombrel {

// Lets long work on the main thread give way: `co_await turn.giveWay()` suspends for one turn of
// the executor when the work has had the thread for its share of time, else not at all. The
// executor must outlive it.
class TurnBudget {
  public:
    static constexpr MainExecutor::Clock::duration share = std::chrono::milliseconds(20);

    explicit TurnBudget(MainExecutor& executor) : m_executor(executor), m_begin(executor.now()) {}

    struct GiveWay {
        TurnBudget& turn;
        bool await_ready() const { return turn.m_executor.now() - turn.m_begin < share; }
        void await_suspend(std::coroutine_handle<> awaiter) const {
            TurnBudget* budget = &turn;
            turn.m_executor.post([awaiter, budget] {
                budget->m_begin = budget->m_executor.now();
                awaiter.resume();
            });
        }
        void await_resume() const noexcept {}
    };
    GiveWay giveWay() { return GiveWay{*this}; }

  private:
    MainExecutor& m_executor;
    MainExecutor::Clock::time_point m_begin;
};

} // namespace ombrel
