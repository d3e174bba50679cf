#pragma once

#include <memory>
#include <utility>
#include <vector>

namespace ombrel {

// A vector of numbers that may be large and is cheap to copy. Immutable.
class SharedReals {
  public:
    SharedReals() = default;
    SharedReals(std::vector<double> values)
        : m_values(std::make_shared<const std::vector<double>>(std::move(values))) {}
    // Shares what somebody else keeps.
    explicit SharedReals(std::shared_ptr<const std::vector<double>> values)
        : m_values(std::move(values)) {}

    const std::vector<double>& values() const {
        static const std::vector<double> none;
        return m_values ? *m_values : none;
    }

    friend bool operator==(const SharedReals& a, const SharedReals& b) {
        return a.m_values == b.m_values || a.values() == b.values();
    }

  private:
    std::shared_ptr<const std::vector<double>> m_values;
};

} // namespace ombrel
