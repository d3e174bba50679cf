#include "flows/TraceLine.h"

#include <gtest/gtest.h>

namespace ombrel {
namespace {

TEST(ParseTraceLine, ReadsAllKeysAndIgnoresOthers) {
    const auto event = parseTraceLine(R"({"node":"Triage","tokenEstimate":41,"kind":"promptBuilt",)"
                                      R"("elapsedMS":12,"detail":"a\nb","more":{"kind":"x"}})");
    ASSERT_TRUE(event);
    EXPECT_EQ(event->kind, "promptBuilt");
    EXPECT_EQ(event->detail, "a\nb");
    EXPECT_EQ(event->elapsedMS, 12);
    EXPECT_EQ(event->node, "Triage");
    EXPECT_EQ(event->tokenEstimate, 41);
    EXPECT_NE(event->id, Uuid());
}

TEST(ParseTraceLine, MakesAnIdForEveryEvent) {
    const std::string_view line = R"({"kind":"a","detail":"","elapsedMS":0})";
    EXPECT_NE(parseTraceLine(line)->id, parseTraceLine(line)->id);
}

TEST(ParseTraceLine, NeedsKindDetailAndTime) {
    EXPECT_FALSE(parseTraceLine(R"({"detail":"","elapsedMS":0})"));
    EXPECT_FALSE(parseTraceLine(R"({"kind":"a","elapsedMS":0})"));
    EXPECT_FALSE(parseTraceLine(R"({"kind":"a","detail":""})"));
}

TEST(ParseTraceLine, TakesAValueOfAnotherTypeAsMissing) {
    EXPECT_FALSE(parseTraceLine(R"({"kind":1,"detail":"","elapsedMS":0})"));
    EXPECT_FALSE(parseTraceLine(R"({"kind":"a","detail":null,"elapsedMS":0})"));
    EXPECT_FALSE(parseTraceLine(R"({"kind":"a","detail":"","elapsedMS":"0"})"));
    EXPECT_FALSE(parseTraceLine(R"({"kind":"a","detail":"","elapsedMS":true})"));
    const auto event =
        parseTraceLine(R"({"kind":"a","detail":"","elapsedMS":0,"node":3,"tokenEstimate":"9"})");
    ASSERT_TRUE(event);
    EXPECT_FALSE(event->node);
    EXPECT_FALSE(event->tokenEstimate);
}

TEST(ParseTraceLine, TakesOnlyWholeNumbersAsIntegers) {
    EXPECT_FALSE(parseTraceLine(R"({"kind":"a","detail":"","elapsedMS":1.5})"));
    EXPECT_FALSE(parseTraceLine(R"({"kind":"a","detail":"","elapsedMS":9223372036854775808})"));
    EXPECT_EQ(parseTraceLine(R"({"kind":"a","detail":"","elapsedMS":5.0})")->elapsedMS, 5);
    EXPECT_EQ(
        parseTraceLine(R"({"kind":"a","detail":"","elapsedMS":-9223372036854775808})")->elapsedMS,
        INT64_MIN);
    EXPECT_FALSE(parseTraceLine(R"({"kind":"a","detail":"","elapsedMS":1,"tokenEstimate":1.5})")
                     ->tokenEstimate);
}

TEST(ParseTraceLine, RefusesWhatIsNoObject) {
    for (const char* line :
         {"", " ", "RESULT: .done", "[]", "\"{\"", "{", "{}", "null", "5", "{\"kind\":\"a\"",
          R"([{"kind":"a","detail":"","elapsedMS":0}])",
          R"({"kind":"a","detail":"","elapsedMS":0} x)", "{\"kind\":\"a\",\"detail\":\"\xff\"}"}) {
        EXPECT_FALSE(parseTraceLine(line)) << line;
    }
}

TEST(ParseTraceLine, TakesACarriageReturnAtTheEnd) {
    EXPECT_TRUE(parseTraceLine("{\"kind\":\"a\",\"detail\":\"\",\"elapsedMS\":0}\r"));
}

} // namespace
} // namespace ombrel
