#include "core/Observed.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace ombrel {
namespace {

TEST(Observed, TellsOfEachAssignmentEvenOfTheSameValue) {
    Observed<int> field(1);
    int told = 0;
    const auto subscription = field.observe([&] { ++told; });
    field = 2;
    field = 2;
    EXPECT_EQ(told, 2);
    EXPECT_EQ(*field, 2);
}

TEST(Observed, TellsNobodyWhenACheckedValueStaysTheSame) {
    Observed<int> field(1);
    int told = 0;
    const auto subscription = field.observe([&] { ++told; });
    field.setIfChanged(1);
    EXPECT_EQ(told, 0);
    field.setIfChanged(2);
    EXPECT_EQ(told, 1);
}

TEST(Observed, TellsOnceAtTheEndOfAnEdit) {
    Observed<std::string> field(std::string("a"));
    std::string seen;
    int told = 0;
    const auto subscription = field.observe([&] {
        ++told;
        seen = *field;
    });
    {
        auto edit = field.edit();
        *edit += "b";
        auto moved = std::move(edit);
        *moved += "c";
        EXPECT_EQ(told, 0);
    }
    EXPECT_EQ(told, 1);
    EXPECT_EQ(seen, "abc");
}

TEST(Observed, TellsNobodyAnyMoreWhenTheSubscriptionIsGone) {
    Observed<int> field(1);
    int told = 0;
    {
        const auto subscription = field.observe([&] { ++told; });
        field = 2;
    }
    field = 3;
    EXPECT_EQ(told, 1);
}

TEST(Observed, TellsAllObserversInTheOrderOfTheirComing) {
    Observed<int> field(1);
    std::string order;
    const auto first = field.observe([&] { order += 'a'; });
    const auto second = field.observe([&] { order += 'b'; });
    field = 2;
    EXPECT_EQ(order, "ab");
}

TEST(Observed, LetsAnObserverEndAnothersSubscription) {
    Observed<int> field(1);
    int told = 0;
    std::optional<Subscription> second;
    const auto first = field.observe([&] { second.reset(); });
    second = field.observe([&] { ++told; });
    field = 2;
    EXPECT_EQ(told, 0);
}

TEST(Observed, LetsAnObserverSubscribeAnother) {
    Observed<int> field(1);
    int told = 0;
    std::optional<Subscription> second;
    const auto first = field.observe([&] {
        if (!second) {
            second = field.observe([&] { ++told; });
        }
    });
    field = 2;
    EXPECT_EQ(told, 0); // it was not there when the field changed
    field = 3;
    EXPECT_EQ(told, 1);
}

TEST(Observed, LetsAnObserverWriteTheField) {
    Observed<int> field(1);
    const auto subscription = field.observe([&] {
        if (*field < 5) {
            field = *field + 1;
        }
    });
    field = 2;
    EXPECT_EQ(*field, 5);
}

} // namespace
} // namespace ombrel
