#pragma once

#include "platform/MainExecutor.h"
#include "platform/Platform.h"

#include <chrono>
#include <cstdint>
#include <memory>

namespace ombrel {

// Measures the time since it was made, on the clock of the platform's executor.
class StageClock {
  public:
    explicit StageClock(const Platform& platform)
        : m_executor(platform.executor), m_begin(m_executor->now()) {}

    double seconds() const {
        return std::chrono::duration<double>(m_executor->now() - m_begin).count();
    }
    std::int64_t milliseconds() const {
        return std::chrono::duration_cast<std::chrono::milliseconds>(m_executor->now() - m_begin)
            .count();
    }

  private:
    std::shared_ptr<MainExecutor> m_executor;
    MainExecutor::Clock::time_point m_begin;
};

} // namespace ombrel
