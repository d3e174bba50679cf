#pragma once

#include "platform/Completion.h"
#include "platform/MainExecutor.h"
#include "platform/Task.h"

#include <functional>
#include <memory>
#include <stop_token>
#include <thread>
#include <utility>

namespace ombrel {

// Runs work that would hold the main thread up on a thread of its own; gives its value on the main
// thread. Destroying the task asks the work to stop, and waits for its end. The work must not
// throw, and shares nothing with the main thread that either of them writes.
template <class T>
Task<T> onWorkerThread(std::shared_ptr<MainExecutor> executor,
                       std::function<T(std::stop_token)> work) {
    const Completion<T> finished(executor);
    const std::jthread thread([&work, fulfil = finished.fulfiller()](const std::stop_token& stop) {
        fulfil(work(stop));
    });
    T value = co_await finished;
    co_return value;
}

} // namespace ombrel
