#pragma once

#include <coroutine>
#include <exception>
#include <optional>
#include <type_traits>
#include <utility>

namespace ombrel {

// A coroutine that gives a T. It starts when it is awaited (or handed to `MainExecutor::spawn`),
// runs on the thread that awaits it, and resumes its awaiter when it is done. Awaiting a task that
// never suspends does not suspend the awaiter's executor. A task is awaited at most once; one that
// is destroyed before its end destroys what it holds.
//
// Await named locals: `auto task = f(x); auto value = co_await std::move(task);` is not needed for
// a plain `co_await f(x)`, but braces and conditionals inside the awaited expression are to be
// avoided, since the oldest compiler that we support miscompiles them.
template <class T>
class [[nodiscard]] Task;

namespace detail {

struct TaskPromiseBase {
    std::coroutine_handle<> continuation = std::noop_coroutine();
    // Its awaiter is still inside the call that started it.
    bool isStarting = false;

    struct FinalAwaiter {
        bool await_ready() const noexcept { return false; }
        template <class Promise>
        std::coroutine_handle<> await_suspend(std::coroutine_handle<Promise> done) const noexcept {
            // A task that ends before its start returns goes back to its awaiter by returning,
            // so that a loop over such tasks does not grow the stack.
            if (done.promise().isStarting) {
                return std::noop_coroutine();
            }
            return done.promise().continuation;
        }
        void await_resume() const noexcept {}
    };

    std::suspend_always initial_suspend() const noexcept { return {}; }
    FinalAwaiter final_suspend() const noexcept { return {}; }
    [[noreturn]] void unhandled_exception() const noexcept { std::terminate(); }
};

template <class T>
struct TaskPromise : TaskPromiseBase {
    std::optional<T> value;
    Task<T> get_return_object() noexcept;
    template <class U>
    void return_value(U&& result) {
        value.emplace(std::forward<U>(result));
    }
    T take() { return std::move(*value); }
};

template <>
struct TaskPromise<void> : TaskPromiseBase {
    Task<void> get_return_object() noexcept;
    void return_void() const noexcept {}
    void take() const noexcept {}
};

} // namespace detail

template <class T>
class [[nodiscard]] Task {
  public:
    using promise_type = detail::TaskPromise<T>;
    using Handle = std::coroutine_handle<promise_type>;

    Task() = default;
    explicit Task(Handle handle) : m_handle(handle) {}
    Task(Task&& other) noexcept : m_handle(std::exchange(other.m_handle, nullptr)) {}
    Task& operator=(Task&& other) noexcept {
        if (this != &other) {
            destroy();
            m_handle = std::exchange(other.m_handle, nullptr);
        }
        return *this;
    }
    Task(const Task&) = delete;
    Task& operator=(const Task&) = delete;
    ~Task() { destroy(); }

    bool await_ready() const noexcept { return false; }
    bool await_suspend(std::coroutine_handle<> awaiter) noexcept {
        promise_type& promise = m_handle.promise();
        promise.continuation = awaiter;
        promise.isStarting = true;
        m_handle.resume();
        promise.isStarting = false;
        return !m_handle.done();
    }
    T await_resume() { return m_handle.promise().take(); }

  private:
    void destroy() {
        if (m_handle) {
            m_handle.destroy();
        }
    }
    Handle m_handle = nullptr;
};

template <class T>
Task<T> detail::TaskPromise<T>::get_return_object() noexcept {
    return Task<T>(std::coroutine_handle<TaskPromise<T>>::from_promise(*this));
}

inline Task<void> detail::TaskPromise<void>::get_return_object() noexcept {
    return Task<void>(std::coroutine_handle<TaskPromise<void>>::from_promise(*this));
}

} // namespace ombrel
