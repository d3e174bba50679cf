#include "platform/JsonWriter.h"

#include "platform/JsonReader.h"

#include <bit>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <random>

namespace ombrel {
namespace {

template <class Tell>
std::string written(const Tell& tell, JsonLayout layout = JsonLayout::compact) {
    std::string text;
    JsonWriter writer(
        [&text](std::string_view piece) {
            text += piece;
            return true;
        },
        layout);
    tell(writer);
    EXPECT_TRUE(writer.finish());
    return text;
}

std::string realText(double value) {
    return written([value](JsonWriter& writer) { writer.real(value); });
}

void tellSample(JsonWriter& writer) {
    writer.beginDictionary();
    writer.key("empty");
    writer.beginArray();
    writer.endArray();
    writer.key("list");
    writer.beginArray();
    writer.boolean(true);
    writer.nothing();
    writer.integer(-5);
    writer.date(1.5);
    writer.data("\xFF");
    writer.endArray();
    writer.endDictionary();
}

TEST(JsonWriter, WritesCompactText) {
    EXPECT_EQ(written(tellSample), R"({"empty":[],"list":[true,null,-5,1.5,"/w=="]})");
}

TEST(JsonWriter, WritesIndentedText) {
    EXPECT_EQ(written(tellSample, JsonLayout::indented), R"({
  "empty": [],
  "list": [
    true,
    null,
    -5,
    1.5,
    "/w=="
  ]
})");
}

TEST(JsonWriter, WritesTheShortestRealThatReadsBackTheSame) {
    EXPECT_EQ(realText(0.1), "0.1");
    EXPECT_EQ(realText(400), "400");
    EXPECT_EQ(realText(1.0 / 3), "0.3333333333333333");
    EXPECT_EQ(realText(-0.0), "-0.0");
    EXPECT_EQ(realText(1e300), "1e+300");
    std::mt19937_64 random(5);
    for (int i = 0; i < 20'000; ++i) {
        const double value = std::bit_cast<double>(random());
        if (!std::isfinite(value)) {
            continue;
        }
        auto reader = JsonReader::open(realText(value));
        ASSERT_TRUE(reader) << realText(value);
        StoredValue read;
        ASSERT_TRUE(reader->read(reader->top(), read));
        ASSERT_EQ(std::bit_cast<std::uint64_t>(read.real), std::bit_cast<std::uint64_t>(value))
            << realText(value);
    }
}

TEST(JsonWriter, WritesRealsThatAreNotFiniteAsStrings) {
    EXPECT_EQ(realText(std::numeric_limits<double>::infinity()), R"("inf")");
    EXPECT_EQ(realText(-std::numeric_limits<double>::infinity()), R"("-inf")");
    EXPECT_EQ(realText(std::nan("")), R"("nan")");
}

TEST(JsonWriter, EscapesAndRepairsStrings) {
    const auto text = [](std::string_view original) {
        return written([original](JsonWriter& writer) { writer.string(original); });
    };
    EXPECT_EQ(text("a\"b\\c\n\t"), R"("a\"b\\c\n\t")");
    EXPECT_EQ(text(std::string_view("\0\x1F", 2)), R"("\u0000\u001F")");
    EXPECT_EQ(text("é\xFF🩺"), "\"é\uFFFD🩺\"");
    EXPECT_EQ(text({}), R"("")");
}

TEST(JsonWriter, HandsALongTextOnInPieces) {
    std::size_t longest = 0;
    std::string text;
    JsonWriter writer([&](std::string_view piece) {
        longest = std::max(longest, piece.size());
        text += piece;
        return true;
    });
    const std::vector<double> reals(200'000, 0.25);
    writer.reals(reals);
    EXPECT_TRUE(writer.finish());
    EXPECT_EQ(text.size(), 200'000 * 5 + 1);
    EXPECT_LT(longest, 100'000U);
}

TEST(JsonWriter, SaysThatItsSinkRefusedSomething) {
    JsonWriter writer([](std::string_view) { return false; });
    writer.integer(1);
    EXPECT_FALSE(writer.finish());
}

} // namespace
} // namespace ombrel
