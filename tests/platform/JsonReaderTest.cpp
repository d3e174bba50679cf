#include "platform/JsonReader.h"

#include <gtest/gtest.h>

namespace ombrel {
namespace {

std::string problemOf(std::string_view text) {
    const auto reader = JsonReader::open(text);
    return reader ? "" : reader.error().message;
}

StoredValue rootOf(std::string_view text) {
    auto reader = JsonReader::open(text);
    EXPECT_TRUE(reader) << text;
    StoredValue value;
    EXPECT_TRUE(reader && reader->read(reader->top(), value));
    return value;
}

TEST(JsonReader, SaysWhatIsWrongAndWhere) {
    EXPECT_EQ(problemOf("{\"a\": 1,\n  \"b\" 2}"),
              "The text is not JSON: Missing a colon after a name of object member. "
              "(line 2, column 7)");
    EXPECT_EQ(problemOf(""), "The text is not JSON: The document is empty. (line 1, column 1)");
    EXPECT_EQ(problemOf("1 2"), "The text is not JSON: The document root must not be followed by "
                                "other values. (line 1, column 3)");
    EXPECT_NE(problemOf("[1,]"), "");
    EXPECT_NE(problemOf("\"\\uD83E\""), "");
    EXPECT_NE(problemOf("\"\xFF\""), "");
    EXPECT_NE(problemOf("1e999"), "");
    EXPECT_NE(problemOf("nan"), "");
}

TEST(JsonReader, SeesWhatFollowsANul) {
    EXPECT_EQ(problemOf(std::string_view("1\0x", 3)),
              "The text is not JSON: there is a NUL in it (line 1, column 2)");
}

TEST(JsonReader, PassesOverAByteOrderMark) {
    EXPECT_EQ(rootOf("\xEF\xBB\xBF[]").kind, StoredKind::array);
}

TEST(JsonReader, TellsIntegersFromReals) {
    EXPECT_EQ(rootOf("9223372036854775807").kind, StoredKind::integer);
    EXPECT_EQ(rootOf("-9223372036854775808").kind, StoredKind::integer);
    EXPECT_EQ(rootOf("9223372036854775808").kind, StoredKind::real);
    EXPECT_EQ(rootOf("9223372036854775808").real, 9223372036854775808.0);
    EXPECT_EQ(rootOf("1.0").kind, StoredKind::real);
    EXPECT_EQ(rootOf("7").real, 7.0);
}

TEST(JsonReader, ReadsALineOfBracketsWithoutTheStack) {
    const std::string deep = std::string(2'000'000, '[') + std::string(2'000'000, ']');
    EXPECT_EQ(rootOf(deep).kind, StoredKind::array);
    EXPECT_NE(problemOf(std::string(2'000'000, '[')), "");
}

TEST(JsonReader, GivesTheEntriesOfAnObjectInTheirOrder) {
    auto reader = JsonReader::open(R"({"b":1,"":2,"a\u0000":3})");
    ASSERT_TRUE(reader);
    StoredValue object;
    ASSERT_TRUE(reader->read(reader->top(), object));
    ASSERT_EQ(object.count, 3U);
    const std::string_view names[] = {"b", "", std::string_view("a\0", 2)};
    for (std::uint64_t i = 0; i < 3; ++i) {
        std::string_view key;
        JsonReader::Node node = 0;
        StoredValue value;
        ASSERT_TRUE(reader->entry(object, i, key, node) && reader->read(node, value));
        EXPECT_EQ(key, names[i]);
        EXPECT_EQ(value.integer, static_cast<std::int64_t>(i + 1));
    }
}

} // namespace
} // namespace ombrel
