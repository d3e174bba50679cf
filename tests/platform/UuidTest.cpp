#include "platform/Uuid.h"

#include <gtest/gtest.h>
#include <thread>
#include <unordered_set>
#include <vector>

namespace ombrel {
namespace {

TEST(Uuid, IsWrittenInUpperCaseAndReadInEither) {
    const auto id = Uuid::parse("01234567-89ab-CDEF-0123-456789abcdef");
    ASSERT_TRUE(id);
    EXPECT_EQ(id->text(), "01234567-89AB-CDEF-0123-456789ABCDEF");
    EXPECT_EQ(id->bytes[0], 0x01);
    EXPECT_EQ(id->bytes[15], 0xef);
    EXPECT_EQ(Uuid::parse(id->text()), id);
    EXPECT_EQ(Uuid().text(), "00000000-0000-0000-0000-000000000000");
}

TEST(Uuid, ReadsOnlyTheCanonicalForm) {
    for (const std::string_view text :
         {"", "0123456789abcdef0123456789abcdef", "{1234567-89ab-cdef-0123-456789abcdef}",
          "01234567-89ab-cdef-0123-456789abcde", "01234567-89ab-cdef-0123-456789abcdef0",
          "01234567-89ab-cdef-0123-456789abcdeg", "01234567089ab-cdef-0123-456789abcdef",
          "0123456-789ab-cdef-0123-456789abcdef", "+1234567-89ab-cdef-0123-456789abcdef"}) {
        EXPECT_FALSE(Uuid::parse(text)) << text;
    }
}

TEST(Uuid, RandomOnesAreOfVersionFourAndDiffer) {
    std::unordered_set<Uuid> seen;
    for (int i = 0; i < 10000; ++i) {
        const Uuid id = Uuid::random();
        EXPECT_EQ(id.bytes[6] >> 4, 4);
        EXPECT_EQ(id.bytes[8] >> 6, 2);
        EXPECT_EQ(Uuid::parse(id.text()), id);
        EXPECT_TRUE(seen.insert(id).second);
    }
}

TEST(Uuid, RandomOnesOfTwoThreadsDiffer) {
    std::vector<std::vector<Uuid>> made(4);
    std::vector<std::thread> threads;
    for (auto& ids : made) {
        threads.emplace_back([&ids] {
            for (int i = 0; i < 1000; ++i) {
                ids.push_back(Uuid::random());
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::unordered_set<Uuid> seen;
    for (const auto& ids : made) {
        seen.insert(ids.begin(), ids.end());
    }
    EXPECT_EQ(seen.size(), 4000U);
}

} // namespace
} // namespace ombrel
