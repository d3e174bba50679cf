#include "shell/tabs/RowHeights.h"

#include <algorithm>
#include <bit>
#include <cstddef>

namespace ombrel {

void RowHeights::splice(int first, int removed, const std::vector<int>& estimates) {
    const auto begin = m_rows.begin() + first;
    m_measured -= static_cast<int>(
        std::count_if(begin, begin + removed, [](const Row& row) { return row.isMeasured; }));
    std::vector<Row> added;
    added.reserve(estimates.size());
    for (const int height : estimates) {
        added.push_back({height, false});
    }
    m_rows.insert(m_rows.erase(begin, begin + removed), added.begin(), added.end());
    sumAnew();
}

void RowHeights::estimateAnew(const std::vector<int>& estimates) {
    splice(0, count(), estimates);
}

void RowHeights::measure(int row, int height) {
    Row& measured = m_rows[static_cast<std::size_t>(row)];
    const int more = height - measured.height;
    m_measured += measured.isMeasured ? 0 : 1;
    measured = {height, true};
    if (more != 0) {
        for (std::size_t i = static_cast<std::size_t>(row) + 1; i < m_sums.size(); i += i & -i) {
            m_sums[i] += more;
        }
    }
}

void RowHeights::forget(int first, int last) {
    for (int row = first; row <= last; ++row) {
        Row& forgotten = m_rows[static_cast<std::size_t>(row)];
        m_measured -= forgotten.isMeasured ? 1 : 0;
        forgotten.isMeasured = false;
    }
}

std::int64_t RowHeights::top(int row) const {
    std::int64_t sum = 0;
    for (auto i = static_cast<std::size_t>(row); i > 0; i -= i & -i) {
        sum += m_sums[i];
    }
    return sum;
}

int RowHeights::rowAt(std::int64_t y) const {
    std::size_t row = 0;
    for (std::size_t step = std::bit_floor(m_rows.size()); step > 0; step /= 2) {
        if (row + step < m_sums.size() && m_sums[row + step] <= y) {
            row += step;
            y -= m_sums[row];
        }
    }
    return static_cast<int>(std::min(row, m_rows.size() - 1));
}

void RowHeights::sumAnew() {
    m_sums.assign(m_rows.size() + 1, 0);
    for (std::size_t i = 1; i < m_sums.size(); ++i) {
        m_sums[i] += m_rows[i - 1].height;
        if (const std::size_t parent = i + (i & -i); parent < m_sums.size()) {
            m_sums[parent] += m_sums[i];
        }
    }
}

} // namespace ombrel
