#pragma once

#include "platform/MainExecutor.h"

#include <coroutine>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

namespace ombrel {

// The one value that a callback hands to a task that waits for it:
//
//     Completion<Answer> answered(executor);
//     startSomething(answered.fulfiller());
//     Answer answer = co_await answered;
//
// The waiting task resumes in a turn of its own of the executor. Waiting for a value that is
// already there does not suspend. Made, awaited (at most once) and destroyed on the main thread; a
// task that is destroyed while it waits is not resumed.
template <class T>
class Completion {
  public:
    explicit Completion(const std::shared_ptr<MainExecutor>& executor)
        : m_state(std::make_shared<State>()) {
        m_state->executor = executor;
    }
    Completion(const Completion&) = delete;
    Completion& operator=(const Completion&) = delete;
    ~Completion() { m_state->waiter = nullptr; }

    // Gives the value. Any thread; the first call counts, others do nothing. It may be called
    // after the Completion is gone.
    std::function<void(T)> fulfiller() const {
        return [state = m_state](T value) { State::fulfil(state, std::move(value)); };
    }
    void fulfil(T value) const { State::fulfil(m_state, std::move(value)); }

    bool await_ready() const {
        const std::lock_guard lock(m_state->mutex);
        return m_state->value.has_value();
    }
    bool await_suspend(std::coroutine_handle<> waiter) const {
        const std::lock_guard lock(m_state->mutex);
        if (m_state->value) {
            return false;
        }
        m_state->waiter = waiter;
        m_state->isAwaited = true;
        return true;
    }
    T await_resume() const {
        const std::lock_guard lock(m_state->mutex);
        return std::move(*m_state->value);
    }

  private:
    struct State {
        std::weak_ptr<MainExecutor> executor;
        std::mutex mutex;
        std::optional<T> value;
        bool isAwaited = false;
        std::coroutine_handle<> waiter; // Main thread only.

        static void fulfil(const std::shared_ptr<State>& state, T value) {
            {
                const std::lock_guard lock(state->mutex);
                if (state->value) {
                    return;
                }
                state->value.emplace(std::move(value));
                if (!state->isAwaited) {
                    return;
                }
            }
            if (const auto executor = state->executor.lock()) {
                executor->post([state] {
                    if (const auto waiting = std::exchange(state->waiter, nullptr)) {
                        waiting.resume();
                    }
                });
            }
        }
    };

    std::shared_ptr<State> m_state;
};

} // namespace ombrel
