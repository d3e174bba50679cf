#include "platform/PropertyListWriter.h"

#include "platform/PropertyListReader.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

namespace ombrel {
namespace {

// What is written of the calls that `tell` makes.
template <class Tell>
std::string written(const Tell& tell) {
    PropertyListCounter counter;
    tell(counter);
    std::string bytes;
    PropertyListWriter writer(
        [&bytes](std::string_view piece) {
            bytes += piece;
            return true;
        },
        counter.objects());
    tell(writer);
    EXPECT_TRUE(writer.finish());
    return bytes;
}

PropertyListReader opened(const std::string& bytes) {
    auto reader = PropertyListReader::open(PropertyListBytes(bytes));
    EXPECT_TRUE(reader) << reader.error().message;
    return std::move(*reader);
}

StoredValue elementOf(PropertyListReader& reader, std::uint64_t index) {
    StoredValue array;
    StoredValue value;
    PropertyListReader::Node node = 0;
    EXPECT_TRUE(reader.read(reader.top(), array) && reader.element(array, index, node) &&
                reader.read(node, value));
    return value;
}

TEST(PropertyListWriter, WritesTheBytesOfTheFormat) {
    const std::string bytes = written([](auto& writer) {
        writer.beginDictionary();
        writer.key("a");
        writer.integer(1);
        writer.endDictionary();
    });
    EXPECT_EQ(bytes, std::string("bplist00"
                                 "\x51"
                                 "a"            // 0: the key
                                 "\x10\x01"     // 1: the value
                                 "\xD1\x00\x01" // 2: the dictionary
                                 "\x08\x0A\x0C" // where they are
                                 "\0\0\0\0\0\0\x01\x01"
                                 "\0\0\0\0\0\0\0\x03"
                                 "\0\0\0\0\0\0\0\x02"
                                 "\0\0\0\0\0\0\0\x0F",
                                 50));
}

TEST(PropertyListWriter, WritesIntegersInTheFewestBytes) {
    const std::vector<std::int64_t> integers = {
        0,          255,
        256,        65535,
        65536,      4294967295,
        4294967296, std::numeric_limits<std::int64_t>::max(),
        -1,         std::numeric_limits<std::int64_t>::min()};
    const std::string bytes = written([&](auto& writer) {
        writer.beginArray();
        for (const std::int64_t integer : integers) {
            writer.integer(integer);
        }
        writer.endArray();
    });
    EXPECT_EQ(bytes.substr(8, 2 + 2 + 3 + 3 + 5 + 5),
              std::string("\x10\x00\x10\xFF\x11\x01\x00\x11\xFF\xFF\x12\x00\x01\x00\x00"
                          "\x12\xFF\xFF\xFF\xFF",
                          20));
    auto reader = opened(bytes);
    for (std::size_t i = 0; i < integers.size(); ++i) {
        EXPECT_EQ(elementOf(reader, i).integer, integers[i]);
    }
}

TEST(PropertyListWriter, ReadsBackEveryKindOfReal) {
    const std::vector<double> reals = {0.0,
                                       -0.0,
                                       0.1,
                                       std::numeric_limits<double>::denorm_min(),
                                       std::numeric_limits<double>::max(),
                                       -std::numeric_limits<double>::infinity(),
                                       std::numeric_limits<double>::quiet_NaN()};
    const std::string bytes = written([&](auto& writer) {
        writer.beginArray();
        for (const double real : reals) {
            writer.real(real);
        }
        writer.endArray();
    });
    EXPECT_EQ(bytes, written([&](auto& writer) { writer.reals(reals); }));
    auto reader = opened(bytes);
    for (std::size_t i = 0; i < reals.size(); ++i) {
        const double read = elementOf(reader, i).real;
        EXPECT_EQ(std::bit_cast<std::uint64_t>(read), std::bit_cast<std::uint64_t>(reals[i]));
    }
}

TEST(PropertyListWriter, SharesKeysOnly) {
    const std::string bytes = written([](auto& writer) {
        writer.beginArray();
        for (int i = 0; i < 3; ++i) {
            writer.beginDictionary();
            writer.key("shared key");
            writer.string("a value");
            writer.endDictionary();
        }
        writer.endArray();
    });
    const auto occurrences = [&bytes](std::string_view text) {
        int count = 0;
        for (std::size_t at = 0; (at = bytes.find(text, at)) != std::string::npos; ++at) {
            ++count;
        }
        return count;
    };
    EXPECT_EQ(occurrences("shared key"), 1);
    EXPECT_EQ(occurrences("a value"), 3);
}

TEST(PropertyListWriter, WritesTextBeyondAsciiAsUtf16AndRepairsIt) {
    for (const auto& [text, expected] : std::vector<std::pair<std::string, std::string>>{
             {"é🩺", "é🩺"}, {"a\xFFz", "a\uFFFDz"}, {"\xED\xA0\xBD", "\uFFFD\uFFFD\uFFFD"}}) {
        const std::string bytes =
            written([&, &original = text](auto& writer) { writer.string(original); });
        auto reader = opened(bytes);
        StoredValue value;
        std::string read;
        ASSERT_TRUE(reader.read(reader.top(), value) && reader.string(value, read));
        EXPECT_EQ(read, expected);
    }
}

TEST(PropertyListWriter, WidensReferencesWithTheNumberOfObjects) {
    for (const auto& [count, size] : std::vector<std::pair<std::size_t, int>>{
             {254, 1}, {255, 2}, {65'534, 2}, {65'535, 4}, {200'000, 4}}) {
        const std::vector<double> reals(count, 0.5);
        const std::string bytes = written([&](auto& writer) { writer.reals(reals); });
        EXPECT_EQ(bytes[bytes.size() - 25], size) << count;
        auto reader = opened(bytes);
        StoredValue array;
        ASSERT_TRUE(reader.read(reader.top(), array));
        std::vector<double> read(count);
        ASSERT_EQ(reader.reals(array, 0, read.data()), count);
        EXPECT_EQ(read, reals);
    }
}

TEST(PropertyListWriter, WritesTextLargerThanItsBuffer) {
    const std::string text(3'000'000, 'x');
    const std::string bytes = written([&](auto& writer) {
        writer.beginArray();
        writer.string(text);
        writer.data(text);
        writer.boolean(true);
        writer.date(-0.5);
        writer.nothing();
        writer.reals({});
        writer.endArray();
    });
    auto reader = opened(bytes);
    std::string read;
    ASSERT_TRUE(reader.string(elementOf(reader, 0), read));
    EXPECT_EQ(read, text);
    ASSERT_TRUE(reader.data(elementOf(reader, 1), read));
    EXPECT_EQ(read, text);
    EXPECT_TRUE(elementOf(reader, 2).boolean);
    EXPECT_EQ(elementOf(reader, 3).real, -0.5);
    EXPECT_EQ(elementOf(reader, 4).kind, StoredKind::nothing);
    EXPECT_EQ(elementOf(reader, 5).count, 0U);
}

TEST(PropertyListWriter, StopsAtTheFirstBytesThatAreRefused) {
    int pieces = 0;
    const std::vector<double> reals(200'000, 1);
    PropertyListWriter writer(
        [&pieces](std::string_view) {
            ++pieces;
            return false;
        },
        reals.size() + 1);
    writer.reals(reals);
    EXPECT_FALSE(writer.finish());
    EXPECT_EQ(pieces, 1);
}

} // namespace
} // namespace ombrel
