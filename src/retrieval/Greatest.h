#pragma once

#include <algorithm>
#include <cstddef>
#include <functional>
#include <vector>

namespace ombrel {

// The greatest `size` (at least 1) of the numbers that were offered.
class Greatest {
  public:
    explicit Greatest(std::size_t size) : m_size(size) { m_heap.reserve(size); }

    void clear() { m_heap.clear(); }
    // The least of them, or 0 when there are fewer than `size`.
    float least() const { return m_heap.size() < m_size ? 0 : m_heap.front(); }
    void offer(float value) {
        if (m_heap.size() == m_size) {
            if (value <= m_heap.front()) {
                return;
            }
            std::ranges::pop_heap(m_heap, std::greater());
            m_heap.pop_back();
        }
        m_heap.push_back(value);
        std::ranges::push_heap(m_heap, std::greater());
    }

  private:
    std::size_t m_size;
    std::vector<float> m_heap; // the least first
};

} // namespace ombrel
