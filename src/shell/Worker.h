#pragma once

#include "platform/Completion.h"
#include "platform/Task.h"

#include <QThreadPool>

#include <functional>
#include <memory>
#include <utility>

namespace ombrel {

// Does work on another thread, and gives its result on the executor. The program does not end
// before the work has.
template <class T>
Task<T> onWorker(std::shared_ptr<MainExecutor> executor, std::function<T()> work) {
    Completion<T> done(executor);
    QThreadPool::globalInstance()->start(
        [fulfil = done.fulfiller(), todo = std::move(work)] { fulfil(todo()); });
    T result = co_await done;
    co_return result;
}

} // namespace ombrel
