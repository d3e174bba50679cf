#include "core/CowArray.h"

#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <vector>

namespace ombrel {
namespace {

using Numbers = CowArray<int>;

TEST(CowArray, SharesItsMemoryWithItsCopies) {
    const Numbers a = {1, 2, 3};
    const Numbers b = a;
    EXPECT_EQ(a.identity(), b.identity());
    EXPECT_EQ(&a.values(), &b.values());
}

TEST(CowArray, LeavesItsCopiesAloneWhenItIsEdited) {
    Numbers a = {1, 2, 3};
    const Numbers b = a;
    a.edit().push_back(4);
    EXPECT_EQ(b.values(), (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(a.values(), (std::vector<int>{1, 2, 3, 4}));
    EXPECT_NE(a.identity(), b.identity());
}

TEST(CowArray, IsEditedInPlaceWhenNobodySharesIt) {
    Numbers a = {1, 2, 3};
    const void* before = a.identity();
    a.edit()[0] = 9;
    EXPECT_EQ(a.identity(), before);
    EXPECT_EQ(a[0], 9);
}

TEST(CowArray, IsEmptyWithoutMemoryUntilItIsEdited) {
    Numbers a;
    EXPECT_TRUE(a.empty());
    EXPECT_EQ(a.identity(), nullptr);
    EXPECT_EQ(a, Numbers(std::vector<int>{}));
    EXPECT_EQ(a.derived<int>(0, [](const auto&) { return std::make_shared<int>(1); }), nullptr);
    a.edit().push_back(1);
    EXPECT_EQ(a.size(), 1u);
}

TEST(CowArray, ComparesByValue) {
    EXPECT_EQ(Numbers({1, 2}), Numbers({1, 2}));
    EXPECT_NE(Numbers({1, 2}), Numbers({1, 3}));
}

TEST(CowArray, KeepsWhatIsDerivedUntilItIsEdited) {
    Numbers a = {1, 2, 3};
    int made = 0;
    const auto sum = [&](const Numbers& numbers) {
        return *numbers.derived<int>(2, [&](const std::vector<int>& values) {
            ++made;
            int total = 0;
            for (const int value : values) {
                total += value;
            }
            return std::make_shared<int>(total);
        });
    };
    EXPECT_EQ(sum(a), 6);
    const Numbers copy = a;
    EXPECT_EQ(sum(copy), 6);
    EXPECT_EQ(made, 1);
    a.edit()[0] = 5; // shared: a gets memory of its own, the copy keeps the sum
    EXPECT_EQ(sum(a), 10);
    EXPECT_EQ(sum(copy), 6);
    EXPECT_EQ(made, 2);
    a.edit()[0] = 6; // not shared: the same memory, without the sum
    EXPECT_EQ(sum(a), 11);
    EXPECT_EQ(made, 3);
}

TEST(CowArray, DropsWhatIsDerivedWithItsMemory) {
    std::weak_ptr<const int> watched;
    {
        Numbers a = {1};
        watched = a.derived<int>(0, [](const auto&) { return std::make_shared<int>(1); });
        EXPECT_FALSE(watched.expired());
    }
    EXPECT_TRUE(watched.expired());
}

TEST(CowArray, DerivesOnceWhenTwoThreadsAsk) {
    const Numbers a = {1, 2, 3};
    int made = 0;
    const auto ask = [&] {
        for (int i = 0; i < 100; ++i) {
            (void)a.derived<int>(1, [&](const auto&) {
                ++made;
                return std::make_shared<int>(1);
            });
        }
    };
    std::thread other(ask);
    ask();
    other.join();
    EXPECT_EQ(made, 1);
}

} // namespace
} // namespace ombrel
