#include "platform/GeneratedContent.h"

#include <cmath>
#include <gtest/gtest.h>

namespace ombrel {
namespace {

using Number = GeneratedContent::Number;

// The text form of what was read, or "error: " and the message.
std::string reread(std::string_view json) {
    const auto content = GeneratedContent::parse(json);
    return content ? content->text() : "error: " + content.error().message;
}

bool isRefused(std::string_view json) {
    return !GeneratedContent::parse(json);
}

TEST(GeneratedContent, WritesCompactlyWhatItRead) {
    EXPECT_EQ(reread(" { \"a\" : [ 1 , null , true , false ] , \"b\" : { } , \"c\" : [ ] } \n"),
              R"({"a":[1,null,true,false],"b":{},"c":[]})");
    EXPECT_EQ(reread("\"x\""), "\"x\"");
    EXPECT_EQ(reread("null"), "null");
}

TEST(GeneratedContent, KeepsTheOrderOfTheModel) {
    EXPECT_EQ(reread(R"({"z":1,"a":2,"m":3})"), R"({"z":1,"a":2,"m":3})");
}

TEST(GeneratedContent, NumbersKeepTheirText) {
    for (const char* text :
         {"0", "-0", "-0.0", "3.0", "3.00", "1e400", "-1E+400", "1e-400", "18446744073709551616",
          "9223372036854775808", "0.1000000000000000055511151231257827021181583404541015625"}) {
        EXPECT_EQ(reread(text), text);
        EXPECT_EQ(reread("[" + std::string(text) + "]"), "[" + std::string(text) + "]");
    }
    const std::string many(400, '7');
    EXPECT_EQ(reread(many), many);
    EXPECT_EQ(reread(many + "." + many + "e" + many), many + "." + many + "e" + many);
}

TEST(GeneratedContent, TextThatLooksLikeANumberStaysText) {
    EXPECT_EQ(reread(R"({"1e400":"-123456 \"789\\"})"), R"({"1e400":"-123456 \"789\\"})");
}

TEST(GeneratedContent, TellsTheValueOfANumber) {
    EXPECT_EQ(Number{"2.5"}.value(), 2.5);
    EXPECT_EQ(Number{"-12"}.value(), -12);
    EXPECT_TRUE(std::signbit(Number{"-0.0"}.value()));
    EXPECT_EQ(Number{"1e400"}.value(), HUGE_VAL);
    EXPECT_EQ(Number{"-1e400"}.value(), -HUGE_VAL);
    EXPECT_EQ(Number{"1e-400"}.value(), 0);
    EXPECT_EQ(Number{"18446744073709551616"}.value(), 18446744073709551616.0);
    EXPECT_EQ(Number{"5e-324"}.value(), 5e-324);
}

TEST(GeneratedContent, RefusesMalformedNumbers) {
    for (const char* text : {"01", "-", "+1", "1.", ".5", "1e", "1e+", "0123456", "1.2.3", "1e4e4",
                             "--1", "1234-5", "NaN", "Infinity", "0x10", "12a4", "-012.5e7"}) {
        EXPECT_TRUE(isRefused(text)) << text;
        EXPECT_TRUE(isRefused("[" + std::string(text) + "]")) << text;
    }
}

TEST(GeneratedContent, RefusesWhatIsNotOneValue) {
    for (const char* text : {"", " ", "{}{}", "[1] 2", "{\"a\":1,}", "[1,]", "{a:1}", "{'a':1}",
                             "[1", "\"open", "tru", "// no\n1", "{\"a\"}", "\"\n\"", "prose"}) {
        EXPECT_TRUE(isRefused(text)) << text;
    }
    EXPECT_EQ(reread("[1,,2]"), "error: The JSON can't be read at byte 4: Invalid value.");
}

TEST(GeneratedContent, AZeroByteDoesNotEndTheText) {
    using namespace std::string_view_literals;
    EXPECT_TRUE(isRefused("{}\0{}"sv));
    EXPECT_TRUE(isRefused("\0"sv));
    EXPECT_TRUE(isRefused("[1,\0]"sv));
    EXPECT_TRUE(isRefused("\"a\0b\""sv));
    EXPECT_EQ(reread(R"("a\u0000b")"), R"("a\u0000b")");
}

TEST(GeneratedContent, ReadsEscapes) {
    const auto content = GeneratedContent::parse(R"("\u00e9\ud83d\ude00\n\/\t")");
    ASSERT_TRUE(content);
    EXPECT_EQ(std::get<std::string>(content->kind), "é😀\n/\t");
    EXPECT_TRUE(isRefused(R"("\ud800")"));
    EXPECT_TRUE(isRefused(R"("\ud800\u0041")"));
    // A low surrogate alone is repaired, as the three bytes that it would be.
    EXPECT_EQ(reread(R"({"\ude00":"\udfff"})"), "{\"\uFFFD\uFFFD\uFFFD\":\"\uFFFD\uFFFD\uFFFD\"}");
}

TEST(GeneratedContent, RepairsInvalidBytes) {
    EXPECT_EQ(reread("{\"a\xff\":\"\xc3\"}"), "{\"a\xef\xbf\xbd\":\"\xef\xbf\xbd\"}");
    GeneratedContent made;
    made.kind = std::string("\xff");
    EXPECT_EQ(made.text(), "\"\xef\xbf\xbd\"");
}

TEST(GeneratedContent, RefusesDeepNesting) {
    const auto nested = [](std::size_t depth) {
        return std::string(depth, '[') + std::string(depth, ']');
    };
    EXPECT_EQ(reread(nested(256)), nested(256));
    EXPECT_EQ(reread(nested(257)), "error: The JSON is nested more than 256 levels deep.");
    EXPECT_TRUE(isRefused(std::string(1'000'000, '[')));
    std::string objects;
    for (int i = 0; i < 100'000; ++i) {
        objects += "{\"a\":";
    }
    EXPECT_TRUE(isRefused(objects));
}

TEST(GeneratedContent, FindsTheFirstOfRepeatedKeys) {
    const auto content = GeneratedContent::parse(R"({"a":1,"b":2,"a":3})");
    ASSERT_TRUE(content);
    ASSERT_NE(content->find("a"), nullptr);
    EXPECT_EQ(content->find("a")->text(), "1");
    EXPECT_EQ(content->find("c"), nullptr);
    EXPECT_EQ(content->text(), R"({"a":1,"b":2,"a":3})");
    EXPECT_EQ(GeneratedContent::parse("[1]")->find("a"), nullptr);
}

TEST(GeneratedContent, ComparesByKindAndText) {
    const auto parsed = [](std::string_view json) { return *GeneratedContent::parse(json); };
    EXPECT_EQ(parsed(R"({"a":[1,"x",null]})"), parsed(R"({ "a" : [1, "x", null] })"));
    EXPECT_NE(parsed("1"), parsed("1.0"));
    EXPECT_NE(parsed("1"), parsed("\"1\""));
    EXPECT_NE(parsed("null"), parsed("false"));
    EXPECT_NE(parsed("[1,2]"), parsed("[2,1]"));
    EXPECT_NE(parsed(R"({"a":1,"b":2})"), parsed(R"({"b":2,"a":1})"));
    EXPECT_NE(parsed("[]"), parsed("{}"));
}

TEST(GeneratedContent, ShowsItsJsonWhereTheTypeIsWrong) {
    EXPECT_EQ(GeneratedContent::parse(R"({"a":"b"})")->debugDescription(), R"({"a":"b"})");
    EXPECT_EQ(GeneratedContent::parse("\"b\"")->debugDescription(), "\"b\"");
}

} // namespace
} // namespace ombrel
