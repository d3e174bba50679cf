#include "platform/PropertyListReader.h"

#include "tests/support/PropertyListBuilder.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

namespace ombrel {
namespace {

using test::bigEndian;
using test::PropertyListBuilder;

// The root of a property list that has one object.
StoredValue rootOf(const std::string& object) {
    PropertyListBuilder builder;
    builder.add(object);
    const std::string bytes = builder.bytes();
    auto reader = PropertyListReader::open(PropertyListBytes(bytes));
    StoredValue value;
    EXPECT_TRUE(reader && reader->read(reader->top(), value));
    return value;
}

std::string textOf(const std::string& object) {
    PropertyListBuilder builder;
    builder.add(object);
    const std::string bytes = builder.bytes();
    auto reader = PropertyListReader::open(PropertyListBytes(bytes));
    StoredValue value;
    std::string text;
    EXPECT_TRUE(reader && reader->read(reader->top(), value) && reader->string(value, text));
    return text;
}

// What reading everything of a property list says is wrong; empty when nothing is.
std::string problemOf(std::string_view bytes) {
    auto reader = PropertyListReader::open(PropertyListBytes(bytes));
    if (!reader) {
        return reader.error().message;
    }
    std::vector<PropertyListReader::Node> pending{reader->top()};
    for (int visited = 0; !pending.empty() && visited < 10'000; ++visited) {
        const auto node = pending.back();
        pending.pop_back();
        StoredValue value;
        if (!reader->read(node, value)) {
            return reader->problem();
        }
        std::string text;
        if ((value.kind == StoredKind::string && !reader->string(value, text)) ||
            (value.kind == StoredKind::data && !reader->data(value, text))) {
            return reader->problem();
        }
        if (value.kind != StoredKind::array && value.kind != StoredKind::dictionary) {
            continue;
        }
        for (std::uint64_t i = 0; i < value.count; ++i) {
            PropertyListReader::Node child = 0;
            std::string_view key;
            if (value.kind == StoredKind::array ? !reader->element(value, i, child)
                                                : !reader->entry(value, i, key, child)) {
                return reader->problem();
            }
            pending.push_back(child);
        }
    }
    return "";
}

TEST(PropertyListReader, ReadsIntegersOfEverySize) {
    EXPECT_EQ(rootOf("\x10\xFF").integer, 255);
    EXPECT_EQ(rootOf("\x11\xFF\xFE").integer, 65534);
    EXPECT_EQ(rootOf("\x12\xFF\xFF\xFF\xFF").integer, 4294967295);
    EXPECT_EQ(rootOf("\x13" + bigEndian(static_cast<std::uint64_t>(-2), 8)).integer, -2);
    EXPECT_EQ(rootOf("\x13\x7F" + std::string(7, '\xFF')).integer,
              std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(rootOf("\x14" + bigEndian(5, 16)).integer, 5);
    EXPECT_EQ(rootOf("\x14" + std::string(16, '\xFF')).integer, -1);
    for (const char* object : {"\x10\x07", "\x11\x01\x02"}) {
        const StoredValue value = rootOf(std::string(object, object[0] == 0x10 ? 2 : 3));
        EXPECT_EQ(value.kind, StoredKind::integer);
        EXPECT_EQ(value.real, static_cast<double>(value.integer));
    }
}

TEST(PropertyListReader, GivesAnIntegerBeyond64BitsAsAReal) {
    const StoredValue value = rootOf("\x14" + std::string(8, '\0') + std::string(8, '\xFF'));
    EXPECT_EQ(value.kind, StoredKind::real);
    EXPECT_EQ(value.real, 18446744073709551615.0);
    const StoredValue least = rootOf("\x14\x80" + std::string(15, '\0'));
    EXPECT_EQ(least.kind, StoredKind::real);
    EXPECT_EQ(least.real, -std::ldexp(1.0, 127));
}

TEST(PropertyListReader, ReadsRealsOfBothSizes) {
    EXPECT_EQ(rootOf("\x22\x3F\x80" + std::string(2, '\0')).real, 1.0);
    EXPECT_EQ(rootOf("\x23\xBF\xF8" + std::string(6, '\0')).real, -1.5);
    EXPECT_TRUE(std::isinf(rootOf("\x23\x7F\xF0" + std::string(6, '\0')).real));
    EXPECT_TRUE(std::isnan(rootOf("\x22\x7F\xC0" + std::string(2, '\0')).real));
}

TEST(PropertyListReader, ReadsBooleansDatesAndNothing) {
    EXPECT_TRUE(rootOf("\x09").boolean);
    EXPECT_FALSE(rootOf("\x08").boolean);
    EXPECT_EQ(rootOf("\x08").kind, StoredKind::boolean);
    EXPECT_EQ(rootOf(std::string(1, '\0')).kind, StoredKind::nothing);
    const StoredValue date = rootOf("\x33\xBF\xF8" + std::string(6, '\0'));
    EXPECT_EQ(date.kind, StoredKind::date);
    EXPECT_EQ(date.real, -1.5);
}

TEST(PropertyListReader, ReadsStringsOfBothKinds) {
    EXPECT_EQ(textOf("\x53"
                     "abc"),
              "abc");
    EXPECT_EQ(textOf("\x50"), "");
    EXPECT_EQ(textOf(std::string("\x5F\x10\x10", 3) + "sixteen letters."), "sixteen letters.");
    EXPECT_EQ(textOf(std::string("\x63\x00\xE9\xD8\x3E\xDE\x7A", 7)), "é🩺");
    EXPECT_EQ(textOf(std::string("\x53"
                                 "a\0b",
                                 4)),
              std::string("a\0b", 3));
}

TEST(PropertyListReader, ReplacesHalvesOfSurrogatePairs) {
    EXPECT_EQ(textOf(std::string("\x62\xD8\x3E\x00\x61", 5)), "\uFFFDa");
    EXPECT_EQ(textOf(std::string("\x62\xDE\x7A\x00\x61", 5)), "\uFFFDa");
    EXPECT_EQ(textOf("\x61\xD8\x3E"), "\uFFFD");
    EXPECT_EQ(textOf("\x63\xD8\x3E\xD8\x3E\xDE\x7A"), "\uFFFD🩺");
}

TEST(PropertyListReader, ReadsAPairThatLiesAcrossItsBlocks) {
    std::string object = "\x6F\x11" + bigEndian(2049, 2);
    for (int i = 0; i < 2047; ++i) {
        object += std::string("\0a", 2);
    }
    object += "\xD8\x3E\xDE\x7A";
    EXPECT_EQ(textOf(object), std::string(2047, 'a') + "🩺");
}

TEST(PropertyListReader, ReadsDataOfAnyLength) {
    PropertyListBuilder builder;
    builder.add("\x4F\x11" + bigEndian(1000, 2) + std::string(1000, '\xFF'));
    const std::string bytes = builder.bytes();
    auto reader = PropertyListReader::open(PropertyListBytes(bytes));
    ASSERT_TRUE(reader);
    StoredValue value;
    std::string data;
    ASSERT_TRUE(reader->read(reader->top(), value) && reader->data(value, data));
    EXPECT_EQ(value.kind, StoredKind::data);
    EXPECT_EQ(data, std::string(1000, '\xFF'));
}

TEST(PropertyListReader, ReadsReferencesAndOffsetsOfEverySize) {
    for (int referenceSize = 1; referenceSize <= 8; ++referenceSize) {
        for (int offsetSize = 1; offsetSize <= 8; ++offsetSize) {
            PropertyListBuilder builder;
            builder.referenceSize = referenceSize;
            builder.offsetSize = offsetSize;
            const auto key = builder.ascii("key");
            const auto values = builder.array({builder.real(1), builder.real(2), key});
            builder.top = builder.dictionary({key}, {values});
            const std::string bytes = builder.bytes();
            auto reader = PropertyListReader::open(PropertyListBytes(bytes));
            ASSERT_TRUE(reader) << referenceSize << offsetSize;
            StoredValue root;
            StoredValue array;
            std::string_view name;
            PropertyListReader::Node node = 0;
            ASSERT_TRUE(reader->read(reader->top(), root));
            ASSERT_TRUE(reader->entry(root, 0, name, node));
            EXPECT_EQ(name, "key");
            ASSERT_TRUE(reader->read(node, array));
            double reals[3] = {};
            EXPECT_EQ(reader->reals(array, 0, reals), 2U);
            EXPECT_EQ(reals[0], 1);
            EXPECT_EQ(reals[1], 2);
        }
    }
}

TEST(PropertyListReader, ReadsRealsWhereverTheyLie) {
    PropertyListBuilder builder;
    builder.referenceSize = 2;
    std::vector<std::uint64_t> elements;
    std::vector<double> expected;
    for (int i = 0; i < 1500; ++i) { // with others between, backwards, and shared
        if (i % 7 == 3) {
            builder.ascii("between");
        }
        elements.push_back(builder.real(i * 0.5));
        expected.push_back(i * 0.5);
        if (i % 5 == 0) {
            elements.push_back(elements.front());
            expected.push_back(expected.front());
        }
    }
    for (int i = 0; i < 700; ++i) {
        elements.push_back(elements[static_cast<std::size_t>(700 - i)]);
        expected.push_back(expected[static_cast<std::size_t>(700 - i)]);
    }
    builder.top = builder.array(elements);
    const std::string bytes = builder.bytes();
    auto reader = PropertyListReader::open(PropertyListBytes(bytes));
    ASSERT_TRUE(reader);
    StoredValue array;
    ASSERT_TRUE(reader->read(reader->top(), array));
    std::vector<double> reals(elements.size());
    ASSERT_EQ(reader->reals(array, 0, reals.data()), elements.size());
    EXPECT_EQ(reals, expected);
    ASSERT_EQ(reader->reals(array, 100, reals.data()), elements.size() - 100);
    EXPECT_EQ(reals[0], expected[100]);
}

TEST(PropertyListReader, StopsReadingRealsAtAnythingElse) {
    PropertyListBuilder builder;
    const auto real = builder.real(3);
    builder.top = builder.array({real, real, builder.add("\x10\x05"), real});
    const std::string bytes = builder.bytes();
    auto reader = PropertyListReader::open(PropertyListBytes(bytes));
    ASSERT_TRUE(reader);
    StoredValue array;
    ASSERT_TRUE(reader->read(reader->top(), array));
    double reals[4] = {};
    EXPECT_EQ(reader->reals(array, 0, reals), 2U);
    EXPECT_EQ(reader->reals(array, 2, reals), 0U);
    EXPECT_EQ(reader->reals(array, 3, reals), 1U);
    EXPECT_EQ(reader->reals(array, 4, reals), 0U);
}

TEST(PropertyListReader, ToleratesBytesBetweenTheTableAndTheTrailer) {
    PropertyListBuilder builder;
    builder.ascii("abc");
    EXPECT_EQ(problemOf(builder.bytes("left by another program")), "");
}

TEST(PropertyListReader, ToleratesUnusedTrailerBytes) {
    PropertyListBuilder builder;
    builder.ascii("abc");
    std::string bytes = builder.bytes();
    bytes.replace(bytes.size() - 32, 6, "\xFF\xFF\xFF\xFF\xFF\x01");
    EXPECT_EQ(problemOf(bytes), "");
}

TEST(PropertyListReader, GivesSetsAndIdentifiersAsOther) {
    EXPECT_EQ(rootOf("\x80\x05").kind, StoredKind::other);
    EXPECT_EQ(rootOf("\xC0").kind, StoredKind::other);
    EXPECT_EQ(rootOf("\xB0").kind, StoredKind::other);
}

// Each row is a file that lies; the reader says how, and does not believe it.
struct Hostile {
    const char* name;
    std::string bytes;
    std::string problem;
};

std::vector<Hostile> hostileFiles() {
    const auto one = [](const std::string& object) {
        PropertyListBuilder builder;
        builder.add(object);
        return builder.bytes();
    };
    const auto withTrailer = [&](const std::string& trailer) {
        std::string bytes = one("\x08");
        bytes.replace(bytes.size() - 32, 32, trailer);
        return bytes;
    };
    const auto trailer = PropertyListBuilder::trailer;
    PropertyListBuilder outside;
    outside.array({7});
    PropertyListBuilder keyOutside;
    keyOutside.dictionary({9}, {0});
    PropertyListBuilder numberKey;
    numberKey.top = numberKey.dictionary({numberKey.real(1)}, {0});
    const std::string huge = bigEndian(~std::uint64_t{0}, 8);
    const std::string larger = "an object is larger than the file";
    const std::string unknown = "an object is of no known kind";
    const std::string table = "The property list is cut short, or its table of objects is damaged";
    const std::string sizes = "The property list is cut short, or its trailer is damaged";
    return {
        {"empty file", "", "It is not a binary property list"},
        {"other format", "PK\x03\x04 and so on, for a good many bytes",
         "It is not a binary property list"},
        {"header only", "bplist00", "The property list is cut short"},
        {"no objects", "bplist00" + trailer(1, 1, 0, 0, 8), "The property list is cut short"},
        {"zero objects", withTrailer(trailer(2, 1, 0, 0, 9)),
         "The property list has no root object"},
        {"XML", "<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist version=\"1.0\"><dict/></plist>",
         "It is an XML property list, and only binary ones can be read"},
        {"XML after a byte order mark", "\xEF\xBB\xBF\n<!DOCTYPE plist>",
         "It is an XML property list, and only binary ones can be read"},
        {"root that does not exist", withTrailer(trailer(2, 1, 1, 1, 9)),
         "The property list has no root object"},
        {"offsets of no bytes", withTrailer(trailer(0, 1, 1, 0, 9)), sizes},
        {"offsets of nine bytes", withTrailer(trailer(9, 1, 1, 0, 9)), sizes},
        {"references of no bytes", withTrailer(trailer(2, 0, 1, 0, 9)), sizes},
        {"references of 255 bytes", withTrailer(trailer(2, 255, 1, 0, 9)), sizes},
        {"table in the header", withTrailer(trailer(2, 1, 1, 0, 3)), table},
        {"table beyond the file", withTrailer(trailer(2, 1, 1, 0, 1'000'000)), table},
        {"table at the end of numbers", withTrailer(trailer(2, 1, 1, 0, ~std::uint64_t{0})), table},
        {"more objects than the table", withTrailer(trailer(2, 1, 2, 0, 9)), table},
        {"as many objects as numbers", withTrailer(trailer(8, 1, ~std::uint64_t{0}, 0, 9)), table},
        {"object beyond the file", "bplist00\x08\xFF\xFF" + trailer(2, 1, 1, 0, 9),
         "an object lies outside the file"},
        {"object in the header", std::string("bplist00\x08\x00\x03", 11) + trailer(2, 1, 1, 0, 9),
         "an object lies outside the file"},
        {"reference to no object", outside.bytes(), "refers to an object that does not exist"},
        {"key that is no object", keyOutside.bytes(), "refers to an object that does not exist"},
        {"key that is a number", numberKey.bytes(), "a key is not a string"},
        {"string longer than the file", one("\x5F\x13" + bigEndian(1'000'000, 8)), larger},
        {"string of the largest length", one("\x5F\x13\x7F" + std::string(7, '\xFF')), larger},
        {"string of negative length", one("\x5F\x13" + huge), larger},
        {"string of a length beyond 64 bits", one("\x6F\x14" + huge + huge), larger},
        {"wide string of half its length", one("\x6F\x12" + bigEndian(40, 4) + "abc"), larger},
        {"array longer than the file", one("\xAF\x13\x40" + std::string(7, '\0')), larger},
        {"dictionary longer than the file", one("\xDF\x12\xFF\xFF\xFF\xFF"), larger},
        {"data longer than the file", one("\x4F\x12\xFF\xFF\xFF\xFF"), larger},
        {"length that is a real", one("\x5F\x23" + huge), "an object's count is damaged"},
        {"length of an unknown size", one("\x5F\x15" + huge), unknown},
        {"real of two bytes", one("\x21\x01\x01"), unknown},
        {"integer of 32 bytes", one("\x15" + std::string(32, '\0')), unknown},
        {"date of four bytes", one(std::string("\x32\0\0\0\0", 5)), unknown},
        {"unknown kind", one("\xE0"), unknown},
        {"unknown constant", one("\x0E"), unknown},
        {"string that is not ASCII", one("\x51\xE9"), "a string has bytes that are not ASCII"},
    };
}

TEST(PropertyListReader, SaysWhatIsWrongWithEveryHostileFile) {
    for (const Hostile& file : hostileFiles()) {
        EXPECT_EQ(problemOf(file.bytes), file.problem) << file.name;
    }
}

TEST(PropertyListReader, SaysThatANumberAtTheVeryEndIsCutShort) {
    // The trailer follows at once, so that the number's bytes would be the trailer's.
    const std::string bytes = "bplist00\x0A\x0A\x23" + PropertyListBuilder::trailer(1, 1, 2, 1, 8);
    EXPECT_EQ(problemOf(bytes), "an object is larger than the file");
}

} // namespace
} // namespace ombrel
