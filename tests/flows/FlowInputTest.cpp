#include "flows/FlowInput.h"

#include "tests/flows/FlowSamples.h"

#include <gtest/gtest.h>
#include <string>

namespace ombrel {
namespace {

using Kind = PropertyKind;

std::string inputOf(decltype(Kind::value) kind, std::string text) {
    return flowInputJSON({test::property("x", std::move(kind))}, {{"x", std::move(text)}});
}

TEST(FlowInput, TellsTextAsItWasTyped) {
    EXPECT_EQ(inputOf(Kind::String(), " a \"b\"\n"), R"({"x":" a \"b\"\n"})");
}

TEST(FlowInput, TellsObjectsListsAndChoicesAsText) {
    EXPECT_EQ(inputOf(Kind::Object(), R"({"a":1})"), R"({"x":"{\"a\":1}"})");
    EXPECT_EQ(inputOf(Kind::Array(), "[1]"), R"({"x":"[1]"})");
    EXPECT_EQ(inputOf(Kind::Enumeration(), "red"), R"({"x":"red"})");
}

TEST(FlowInput, ReadsIntegers) {
    EXPECT_EQ(inputOf(Kind::Int(), "42"), R"({"x":42})");
    EXPECT_EQ(inputOf(Kind::Int(), "-7"), R"({"x":-7})");
    EXPECT_EQ(inputOf(Kind::Int(), "+7"), R"({"x":7})");
}

TEST(FlowInput, TakesAnIntegerThatCannotBeReadAsZero) {
    for (const char* text : {"12a", "", " 12", "12 ", "1.5", "+-3", "-", "9223372036854775808"}) {
        EXPECT_EQ(inputOf(Kind::Int(), text), R"({"x":0})") << text;
    }
}

TEST(FlowInput, ReadsNumbers) {
    EXPECT_EQ(inputOf(Kind::Double(), "1.5"), R"({"x":1.5})");
    EXPECT_EQ(inputOf(Kind::Double(), "-2e3"), R"({"x":-2000})");
    EXPECT_EQ(inputOf(Kind::Double(), "0x1p3"), R"({"x":8})");
}

TEST(FlowInput, TakesANumberThatCannotBeReadAsZero) {
    for (const char* text : {"", "abc", " 1.5", "1.5 ", "1,5"}) {
        EXPECT_EQ(inputOf(Kind::Double(), text), R"({"x":0})") << text;
    }
}

TEST(FlowInput, IsEmptyWhenANumberCannotBeTold) {
    for (const char* text : {"inf", "nan", "1e999"}) {
        EXPECT_EQ(inputOf(Kind::Double(), text), "{}") << text;
    }
}

TEST(FlowInput, ReadsBooleansByHowTheyBegin) {
    for (const char* text : {"true", "Y", "yes", "T", "1", "9", "  true", "+001", "-1"}) {
        EXPECT_EQ(inputOf(Kind::Bool(), text), R"({"x":true})") << text;
    }
    for (const char* text : {"", "false", "no", "0", "000", "on", "-"}) {
        EXPECT_EQ(inputOf(Kind::Bool(), text), R"({"x":false})") << text;
    }
}

TEST(FlowInput, HasEveryFieldAndNoOther) {
    EXPECT_EQ(flowInputJSON({test::property("a", Kind::String()), test::property("b", Kind::Int()),
                             test::property("c", Kind::Bool())},
                            {{"b", "2"}, {"other", "1"}}),
              R"({"a":"","b":2,"c":false})");
    EXPECT_EQ(flowInputJSON({}, {}), "{}");
}

TEST(FlowInput, TakesTheLastOfFieldsWithOneName) {
    EXPECT_EQ(flowInputJSON({test::property("a", Kind::String()), test::property("a", Kind::Int())},
                            {{"a", "2"}}),
              R"({"a":2})");
}

} // namespace
} // namespace ombrel
