#include "shell/SingleInstance.h"

#include "tests/shell/Wait.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace ombrel {
namespace {

TEST(SingleInstance, IsTheFirstWhereNobodyListens) {
    const test::TemporaryFolder folder;
    const SingleInstance instance(folder.path());
    EXPECT_FALSE(instance.handOver({}));
}

TEST(SingleInstance, HandsFilesOverToTheFirst) {
    const test::TemporaryFolder folder;
    std::vector<std::filesystem::path> opened;
    int count = 0;
    SingleInstance first(folder.path());
    ASSERT_TRUE(first.listen([&](const auto& files) {
        count += 1;
        opened = files;
    }));
    std::atomic<int> handedOver = -1;
    std::thread second([&] {
        handedOver = SingleInstance(folder.path())
                         .handOver({"/a/with space.ombrel", "/b/\xff odd bytes.ombrel"});
    });
    ASSERT_TRUE(test::waitUntil([&] { return handedOver >= 0; }));
    second.join();
    EXPECT_EQ(handedOver, 1);
    EXPECT_EQ(count, 1);
    EXPECT_EQ(opened, (std::vector<std::filesystem::path>{"/a/with space.ombrel",
                                                          "/b/\xff odd bytes.ombrel"}));
}

TEST(SingleInstance, TakesThePlaceOfOneThatWasKilled) {
    const test::TemporaryFolder folder;
    auto killed = std::make_unique<SingleInstance>(folder.path());
    ASSERT_TRUE(killed->listen([](const auto&) {}));
    killed.reset();
    SingleInstance next(folder.path());
    EXPECT_FALSE(next.handOver({}));
    EXPECT_TRUE(next.listen([](const auto&) {}));
}

} // namespace
} // namespace ombrel
