#pragma once

#include "platform/MainExecutor.h"

#include <coroutine>
#include <cstddef>
#include <deque>
#include <memory>
#include <utility>

namespace ombrel::test {

// Where a scripted service waits while the test changes the world. Open at first: whoever passes
// an open gate does not suspend. Those who wait go on in later turns of the executor.
class Gate {
    struct Waiter {
        std::coroutine_handle<> handle; // null once its coroutine is gone
    };

  public:
    explicit Gate(std::shared_ptr<MainExecutor> executor) : m_executor(std::move(executor)) {}

    void close() { m_isOpen = false; }
    // Lets all who wait and all who come later pass.
    void open() {
        m_isOpen = true;
        while (letOne()) {
        }
    }
    // Lets the one pass who has waited longest; false when nobody waits.
    bool letOne() {
        dropTheGone();
        if (m_waiters.empty()) {
            return false;
        }
        m_executor->post([waiter = std::move(m_waiters.front())] {
            if (waiter->handle) {
                std::exchange(waiter->handle, nullptr).resume();
            }
        });
        m_waiters.pop_front();
        return true;
    }
    std::size_t waiting() {
        dropTheGone();
        return m_waiters.size();
    }

    class [[nodiscard]] Pass {
      public:
        explicit Pass(Gate& gate) : m_gate(gate) {}
        Pass(const Pass&) = delete;
        Pass& operator=(const Pass&) = delete;
        ~Pass() {
            if (m_waiter) {
                m_waiter->handle = nullptr;
            }
        }
        bool await_ready() const noexcept { return m_gate.m_isOpen; }
        void await_suspend(std::coroutine_handle<> handle) {
            m_waiter = std::make_shared<Waiter>(Waiter{handle});
            m_gate.m_waiters.push_back(m_waiter);
        }
        void await_resume() const noexcept {}

      private:
        Gate& m_gate;
        std::shared_ptr<Waiter> m_waiter;
    };
    Pass pass() { return Pass(*this); }

  private:
    void dropTheGone() {
        std::erase_if(m_waiters, [](const auto& waiter) { return !waiter->handle; });
    }

    std::shared_ptr<MainExecutor> m_executor;
    bool m_isOpen = true;
    std::deque<std::shared_ptr<Waiter>> m_waiters;
};

} // namespace ombrel::test
