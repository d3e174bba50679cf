#pragma once

#include "platform/RunLoopExecutor.h"
#include "platform/Task.h"

#include <memory>
#include <optional>
#include <utility>

namespace ombrel::test {

// Runs a task to its end on the executor; its value.
template <class T>
T await(const std::shared_ptr<RunLoopExecutor>& executor, Task<T> task) {
    std::optional<T> value;
    executor->runUntil([](Task<T> inner, std::optional<T>* result) -> Task<void> {
        auto given = co_await std::move(inner);
        result->emplace(std::move(given));
    }(std::move(task), &value));
    return std::move(*value);
}

} // namespace ombrel::test
