#pragma once

#include <cstdint>
#include <vector>

namespace ombrel {

// The heights of the rows of a long list, of which most are estimates until the row is seen. All
// but `splice` and `estimateAnew` take at most the logarithm of the number of rows.
class RowHeights {
  public:
    int count() const { return static_cast<int>(m_rows.size()); }
    // Puts rows with these estimates in place of `removed` rows from `first` on.
    void splice(int first, int removed, const std::vector<int>& estimates);
    // Replaces all estimates, and forgets what was measured.
    void estimateAnew(const std::vector<int>& estimates);
    void measure(int row, int height);
    // Makes the heights of the rows estimates again.
    void forget(int first, int last);

    bool isMeasured(int row) const { return at(row).isMeasured; }
    int height(int row) const { return at(row).height; }
    // How many rows are measured now.
    int measuredCount() const { return m_measured; }
    // The sum of the heights above the row; the row may be `count()`.
    std::int64_t top(int row) const;
    std::int64_t total() const { return top(count()); }
    // The row that holds the position; the first or last one beyond the ends. There must be rows.
    int rowAt(std::int64_t y) const;

  private:
    struct Row {
        int height = 0;
        bool isMeasured = false;
    };
    const Row& at(int row) const { return m_rows[static_cast<std::size_t>(row)]; }
    void sumAnew();

    std::vector<Row> m_rows;
    // A binary indexed tree: element i, from 1, sums the rows from i - (i & -i) to i - 1.
    std::vector<std::int64_t> m_sums;
    int m_measured = 0;
};

} // namespace ombrel
