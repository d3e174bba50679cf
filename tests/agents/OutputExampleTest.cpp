#include "agents/OutputExample.h"

#include "agents/OutputTexts.h"
#include "tests/agents/Properties.h"

#include <gtest/gtest.h>

namespace ombrel {
namespace {

using namespace test;

TEST(ExampleJSON, OfTextIsASentenceWithoutQuotes) {
    EXPECT_EQ(exampleJSON(textOutput()), "Here is the agent's answer, as plain text.");
}

TEST(ExampleJSON, OfAnEnumerationIsTheFirstCaseInQuotes) {
    EXPECT_EQ(exampleJSON(enumerationOutput({"very \"low\"", "high"})), R"("very \"low\"")");
}

TEST(ExampleJSON, IsAbsentWithoutCasesOrProperties) {
    EXPECT_EQ(exampleJSON(enumerationOutput({})), std::nullopt);
    EXPECT_EQ(exampleJSON(objectOutput({})), std::nullopt);
}

TEST(ExampleJSON, OfOneStringIsIndentedByTwoBlanks) {
    EXPECT_EQ(exampleJSON(objectOutput({property("title", stringKind())})),
              "{\n  \"title\": \"Example title\"\n}");
}

TEST(ExampleJSON, OfAnArrayHasOneElementByTheSingularName) {
    EXPECT_EQ(exampleJSON(objectOutput({property("tags", arrayOf(stringKind())),
                                        property("houses", arrayOf(stringKind()))})),
              "{\n"
              "  \"tags\": [\n"
              "    \"example\"\n"
              "  ],\n"
              "  \"houses\": [\n"
              "    \"example house\"\n"
              "  ]\n"
              "}");
}

TEST(ExampleJSON, IndentsANestedObjectInAnArrayByOneMoreLevelForEachStep) {
    const auto author = objectOf({property("name", stringKind()), property("year", intKind())});
    EXPECT_EQ(exampleJSON(
                  objectOutput({property("authors", arrayOf(author)), property("ok", boolKind())})),
              "{\n"
              "  \"authors\": [\n"
              "    {\n"
              "      \"name\": \"Jane Doe\",\n"
              "      \"year\": 2026\n"
              "    }\n"
              "  ],\n"
              "  \"ok\": true\n"
              "}");
}

TEST(ExampleJSON, OfAnImportedArrayOfArraysSingularisesTwice) {
    // Once for each array; what is singular already stays.
    EXPECT_EQ(exampleJSON(objectOutput({property("cities", arrayOf(arrayOf(stringKind())))})),
              "{\n"
              "  \"cities\": [\n"
              "    [\n"
              "      \"example city\"\n"
              "    ]\n"
              "  ]\n"
              "}");
}

TEST(ExampleJSON, CallsAnUnnamedPropertyField) {
    EXPECT_EQ(exampleJSON(objectOutput({property("", stringKind())})),
              "{\n  \"field\": \"example field\"\n}");
}

TEST(ExampleJSON, WritesEveryKindOfValue) {
    EXPECT_EQ(sampleObject({property("n", intKind()), property("x", doubleKind()),
                            property("b", boolKind()), property("o", objectOf({})),
                            property("mood", enumerationOf({"calm"})),
                            property("none", enumerationOf({}))},
                           1),
              "{\n"
              "    \"n\": 42,\n"
              "    \"x\": 3.5,\n"
              "    \"b\": true,\n"
              "    \"o\": {},\n"
              "    \"mood\": \"calm\",\n"
              "    \"none\": \"value\"\n"
              "  }");
}

TEST(Singular, TakesThePluralEndingOff) {
    EXPECT_EQ(singular("tags"), "tag");
    EXPECT_EQ(singular("categories"), "category");
    EXPECT_EQ(singular("address"), "address");
    EXPECT_EQ(singular("ties"), "ty");
    EXPECT_EQ(singular("ies"), "ie");
    EXPECT_EQ(singular("s"), "s");
    EXPECT_EQ(singular(""), "");
    EXPECT_EQ(singular("TAGS"), "TAGS");
}

TEST(SampleString, FollowsTheFirstRuleThatTheNameMeets) {
    const std::pair<const char*, const char*> expected[] = {
        {"workEmail", "name@example.com"},
        {"imageURL", "https://example.com"},
        {"linkText", "https://example.com"},
        {"dueDate", "2026-10-03"},
        {"candidate", "2026-10-03"},
        {"update", "2026-10-03"},
        {"dateTitle", "2026-10-03"},
        {"startTime", "14:30"},
        {"phoneNumber", "+1 555 0100"},
        {"id", "a1b2c3"},
        {"userID", "a1b2c3"},
        {"paid", "a1b2c3"},
        {"subtitle", "Example title"},
        {"fileName", "Jane Doe"},
        {"summary", "A short, clear explanation."},
        {"shortDescription", "A short, clear explanation."},
        {"reason", "A short, clear explanation."},
        {"explanation", "A short, clear explanation."},
        {"stage", "example"},
        {"hashtag", "example"},
        {"keyword", "example"},
        {"label", "example"},
        {"category", "example"},
        {"language", "en"},
        {"lang", "en"},
        {"question", "What does this cover?"},
        {"answer", "Generated text goes here."},
        {"text", "Generated text goes here."},
        {"content", "Generated text goes here."},
        {"body", "Generated text goes here."},
        {"City", "example City"},
    };
    for (const auto& [name, value] : expected) {
        EXPECT_EQ(sampleString(name), value) << name;
    }
    EXPECT_EQ(sampleString("email").size(), 16U);
    EXPECT_EQ(sampleString("url").size(), 19U);
}

TEST(SampleString, TakesANameThatEndsInAtForADateFromFiveCharactersOn) {
    EXPECT_EQ(sampleString("createdAt"), "2026-10-03");
    EXPECT_EQ(sampleString("format"), "2026-10-03");
    EXPECT_EQ(sampleString("chat"), "example chat");
}

TEST(SampleInteger, FollowsTheFirstRuleThatTheNameMeets) {
    const std::pair<const char*, const char*> expected[] = {
        {"publicationYear", "2026"}, {"age", "34"},   {"pageCount", "34"},  {"priority", "2"},
        {"rankOfAll", "2"},          {"level", "2"},  {"wordCount", "3"},   {"number", "3"},
        {"quantity", "3"},           {"total", "42"}, {"yearCount", "2026"}};
    for (const auto& [name, value] : expected) {
        EXPECT_EQ(sampleInteger(name), value) << name;
    }
}

TEST(SampleDouble, FollowsTheFirstRuleThatTheNameMeets) {
    const std::pair<const char*, const char*> expected[] = {
        {"score", "0.87"},      {"Confidence", "0.87"}, {"probability", "0.87"}, {"ratio", "0.87"},
        {"unitPrice", "19.99"}, {"amount", "19.99"},    {"cost", "19.99"},       {"weight", "3.5"}};
    for (const auto& [name, value] : expected) {
        EXPECT_EQ(sampleDouble(name), value) << name;
    }
}

TEST(JsonQuoted, EscapesQuotesBackslashesNewlinesAndTabsOnly) {
    EXPECT_EQ(jsonQuoted("a\"b\\c\nd\te\r\x01"), "\"a\\\"b\\\\c\\nd\\te\r\x01\"");
    EXPECT_EQ(jsonQuoted(""), "\"\"");
}

TEST(ExampleHeading, SaysJsonUnlessTheOutputIsText) {
    EXPECT_EQ(exampleHeading(AgentOutputKind::Kind::text), "Example output");
    EXPECT_EQ(exampleHeading(AgentOutputKind::Kind::enumeration), "Example output (JSON)");
    EXPECT_EQ(exampleHeading(AgentOutputKind::Kind::object), "Example output (JSON)");
}

} // namespace
} // namespace ombrel
