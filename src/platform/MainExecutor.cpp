#include "platform/MainExecutor.h"

#include <utility>

namespace ombrel {

namespace {

// A coroutine that owns itself: its frame goes when it ends.
struct Detached {
    struct promise_type {
        Detached get_return_object() const noexcept { return {}; }
        std::suspend_never initial_suspend() const noexcept { return {}; }
        std::suspend_never final_suspend() const noexcept { return {}; }
        void return_void() const noexcept {}
        [[noreturn]] void unhandled_exception() const noexcept { std::terminate(); }
    };
};

Detached runToItsEnd(Task<void> task) {
    co_await std::move(task);
}

} // namespace

void MainExecutor::spawn(Task<void> task) {
    // A function object must be copyable, a task is not.
    post([held = std::make_shared<Task<void>>(std::move(task))] { runToItsEnd(std::move(*held)); });
}

} // namespace ombrel
