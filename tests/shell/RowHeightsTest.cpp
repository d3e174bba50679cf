#include "shell/tabs/RowHeights.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace ombrel {
namespace {

TEST(RowHeights, FindsRowsByPosition) {
    RowHeights heights;
    heights.splice(0, 0, {10, 20, 30});
    EXPECT_EQ(heights.total(), 60);
    EXPECT_EQ(heights.top(2), 30);
    EXPECT_EQ(heights.rowAt(-5), 0);
    EXPECT_EQ(heights.rowAt(9), 0);
    EXPECT_EQ(heights.rowAt(10), 1);
    EXPECT_EQ(heights.rowAt(59), 2);
    EXPECT_EQ(heights.rowAt(60), 2);
}

TEST(RowHeights, CountsWhatIsMeasured) {
    RowHeights heights;
    heights.splice(0, 0, {10, 20, 30});
    heights.measure(1, 25);
    heights.measure(1, 26);
    heights.measure(2, 30);
    EXPECT_EQ(heights.measuredCount(), 2);
    EXPECT_EQ(heights.total(), 66);
    heights.forget(0, 1);
    EXPECT_EQ(heights.measuredCount(), 1);
    EXPECT_EQ(heights.height(1), 26);
    heights.splice(2, 1, {5});
    EXPECT_EQ(heights.measuredCount(), 0);
}

TEST(RowHeights, AgreesWithAPlainListThroughAnyChanges) {
    std::mt19937 random(1);
    RowHeights heights;
    std::vector<int> plain;
    for (int round = 0; round < 400; ++round) {
        const int first = static_cast<int>(random() % (plain.size() + 1));
        if (round % 3 == 0 || plain.empty()) {
            const int left = static_cast<int>(plain.size()) - first;
            const int removed = left == 0 ? 0 : static_cast<int>(random() % 5) % (left + 1);
            std::vector<int> added(random() % 6);
            for (int& height : added) {
                height = static_cast<int>(1 + random() % 50);
            }
            heights.splice(first, removed, added);
            plain.erase(plain.begin() + first, plain.begin() + first + removed);
            plain.insert(plain.begin() + first, added.begin(), added.end());
        } else {
            const auto row = random() % plain.size();
            plain[row] = static_cast<int>(1 + random() % 50);
            heights.measure(static_cast<int>(row), plain[row]);
        }
        ASSERT_EQ(heights.count(), static_cast<int>(plain.size()));
        std::int64_t top = 0;
        for (int row = 0; row < heights.count(); ++row) {
            ASSERT_EQ(heights.top(row), top);
            ASSERT_EQ(heights.rowAt(top), row);
            top += plain[static_cast<std::size_t>(row)];
            ASSERT_EQ(heights.rowAt(top - 1), row);
        }
        ASSERT_EQ(heights.total(), top);
    }
}

} // namespace
} // namespace ombrel
