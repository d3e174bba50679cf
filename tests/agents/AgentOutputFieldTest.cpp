#include "agents/AgentOutputField.h"

#include "agents/AgentTexts.h"
#include "tests/agents/Properties.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ombrel {
namespace {

using namespace test;
using Value = AgentOutputFieldValue;

GeneratedContent content(std::string_view json) {
    return GeneratedContent::parse(json).value();
}

std::string rendered(std::string_view json, const PropertyKind& kind) {
    return renderContent(content(json), kind);
}

Value valueOf(std::string_view json, const PropertyKind& kind) {
    const GeneratedContent given = content(json);
    return fieldValue(&given, kind);
}

// An enumeration "bug", "question" of which only the first says more, and one without a word.
PropertyKind ticketKind() {
    PropertyKind kind = enumerationOf({"bug", "question", "bug"});
    auto& cases = std::get<PropertyKind::Enumeration>(kind.value).cases;
    cases[0].description = "Something is broken";
    cases[1].description = "";
    cases[2].description = "never seen";
    return kind;
}

TEST(RenderContent, ShowsNullAsADashWhateverTheKind) {
    for (const PropertyKind& kind : {stringKind(), intKind(), arrayOf(intKind()), objectOf({})}) {
        EXPECT_EQ(rendered("null", kind), "—");
    }
    EXPECT_EQ(rendered("[null,\"a\"]", arrayOf(stringKind())), "[—, a]");
}

TEST(RenderContent, ShowsAStringAsItIs) {
    EXPECT_EQ(rendered("\"say \\\"hi\\\"\\n\"", stringKind()), "say \"hi\"\n");
}

TEST(RenderContent, RoundsAnIntHalfAwayFromZero) {
    EXPECT_EQ(rendered("2.5", intKind()), "3");
    EXPECT_EQ(rendered("-2.5", intKind()), "-3");
    EXPECT_EQ(rendered("2.49", intKind()), "2");
    EXPECT_EQ(rendered("1e3", intKind()), "1000");
    EXPECT_EQ(rendered("-0.0", intKind()), "0");
}

TEST(RenderContent, KeepsEveryDigitOfAnIntOf64Bits) {
    EXPECT_EQ(rendered("9223372036854775807", intKind()), "9223372036854775807");
    EXPECT_EQ(rendered("-9223372036854775808", intKind()), "-9223372036854775808");
    EXPECT_EQ(rendered("9007199254740993", intKind()), "9007199254740993");
}

TEST(RenderContent, ShowsAnIntBeyond64BitsAsTheModelWroteIt) {
    EXPECT_EQ(rendered("9223372036854775808", intKind()), "9223372036854775808");
    EXPECT_EQ(rendered("1e19", intKind()), "1e19");
    EXPECT_EQ(rendered("-1e400", intKind()), "-1e400");
}

TEST(RenderContent, ShowsADoubleWithAFractionOrAnExponent) {
    EXPECT_EQ(rendered("3", doubleKind()), "3.0");
    EXPECT_EQ(rendered("0.10", doubleKind()), "0.1");
    EXPECT_EQ(rendered("-0.0", doubleKind()), "-0.0");
    EXPECT_EQ(rendered("1e30", doubleKind()), "1e+30");
    EXPECT_EQ(rendered("1e400", doubleKind()), "1e400");
}

TEST(RenderContent, ShowsABoolAsAWord) {
    EXPECT_EQ(rendered("true", boolKind()), "true");
    EXPECT_EQ(rendered("false", boolKind()), "false");
}

TEST(RenderContent, ShowsAnArrayInBrackets) {
    EXPECT_EQ(rendered(R"(["a","b"])", arrayOf(stringKind())), "[a, b]");
    EXPECT_EQ(rendered("[[1],[]]", arrayOf(arrayOf(intKind()))), "[[1], []]");
}

TEST(RenderContent, ShowsANestedObjectInBraces) {
    const PropertyKind book =
        objectOf({property("title", stringKind()), property("year", intKind())});
    EXPECT_EQ(rendered(R"({"year":1965,"title":"Dune"})", book), "{ title: Dune, year: 1965 }");
    EXPECT_EQ(rendered(R"([{"title":"Dune","year":1965}])", arrayOf(book)),
              "[{ title: Dune, year: 1965 }]");
}

TEST(RenderContent, LeavesOutPropertiesWithoutKeysAndKeysWithoutProperties) {
    const PropertyKind book =
        objectOf({property("title", stringKind()), property("year", intKind())});
    EXPECT_EQ(rendered(R"({"author":"Herbert","year":1965})", book), "{ year: 1965 }");
    EXPECT_EQ(rendered(R"({"author":"Herbert"})", book), "{  }");
}

TEST(RenderContent, ShowsACaseWithItsDescription) {
    EXPECT_EQ(rendered("\"bug\"", ticketKind()), "bug — Something is broken");
    EXPECT_EQ(rendered("\"question\"", ticketKind()), "question");
    EXPECT_EQ(rendered("\"other\"", ticketKind()), "other");
}

TEST(RenderContent, ShowsWhatHasAnotherTypeAsItsDebugDescription) {
    EXPECT_EQ(rendered("3", stringKind()), "3");
    EXPECT_EQ(rendered("\"3\"", intKind()), "\"3\"");
    EXPECT_EQ(rendered("\"3\"", doubleKind()), "\"3\"");
    EXPECT_EQ(rendered("1", boolKind()), "1");
    EXPECT_EQ(rendered(R"({"a":1})", arrayOf(intKind())), R"({"a":1})");
    EXPECT_EQ(rendered("[1]", objectOf({})), "[1]");
    EXPECT_EQ(rendered("[true]", ticketKind()), "[true]");
}

TEST(FieldValue, IsMissingWithoutContentAndForNull) {
    EXPECT_EQ(fieldValue(nullptr, stringKind()), Value{Value::Missing{}});
    EXPECT_EQ(valueOf("null", ticketKind()), Value{Value::Missing{}});
}

TEST(FieldValue, IsPlainForWhatIsNoEnumeration) {
    EXPECT_EQ(valueOf("2.5", intKind()), Value{Value::Plain{"3"}});
    EXPECT_EQ(valueOf("[\"bug\"]", arrayOf(ticketKind())),
              Value{Value::Plain{"[bug — Something is broken]"}});
}

TEST(FieldValue, IsPlainForAnEnumerationThatIsNoString) {
    EXPECT_EQ(valueOf("{\"a\": 1}", ticketKind()), Value{Value::Plain{"{\"a\":1}"}});
}

TEST(FieldValue, TakesTheDescriptionOfTheFirstCaseOfThatNameWhereItSaysSomething) {
    EXPECT_EQ(valueOf("\"bug\"", ticketKind()),
              (Value{Value::EnumCase{"bug", "Something is broken"}}));
    EXPECT_EQ(valueOf("\"question\"", ticketKind()),
              (Value{Value::EnumCase{"question", std::nullopt}}));
}

TEST(FieldValue, IsAnEnumCaseWithoutDescriptionForAValueThatIsNoCase) {
    EXPECT_EQ(valueOf("\"Bug\"", ticketKind()), (Value{Value::EnumCase{"Bug", std::nullopt}}));
}

TEST(ObjectFields, AreInDeclaredOrderAndMissingWhereTheAnswerHasNoKey) {
    const std::vector<AgentProperty> properties = {property("title", stringKind()),
                                                   property("years", arrayOf(intKind())),
                                                   property("kind", ticketKind())};
    const auto fields = objectFields(content(R"({"kind":"bug","title":"Dune"})"), properties);
    ASSERT_EQ(fields.size(), 3U);
    EXPECT_EQ(fields[0].name, "title");
    EXPECT_EQ(fields[0].typeLabel, "String");
    EXPECT_EQ(fields[0].value, Value{Value::Plain{"Dune"}});
    EXPECT_EQ(fields[1].typeLabel, "[Int]");
    EXPECT_EQ(fields[1].value, Value{Value::Missing{}});
    EXPECT_EQ(valueText(fields[1].value), "—");
    EXPECT_EQ(valueText(fields[2].value), "bug");
    EXPECT_NE(fields[0].id, fields[1].id);
}

TEST(ObjectFields, AreNoneForContentThatIsNoStructureAndWithoutProperties) {
    EXPECT_TRUE(objectFields(content("[1]"), {property("a", intKind())}).empty());
    EXPECT_TRUE(objectFields(content("\"text\""), {property("a", intKind())}).empty());
    EXPECT_TRUE(objectFields(content("{\"a\":1}"), {}).empty());
}

TEST(ObjectFields, FindNamesOfAnyCharacters) {
    for (const std::string& name :
         {std::string(), std::string("a \"b\"\n"), std::string("😀"), std::string("\xff")}) {
        const GeneratedContent given{GeneratedContent::Structure{
            {name == "\xff" ? "\ufffd" : name, {std::string("found")}}}};
        const auto fields = objectFields(content(given.text()), {property(name, stringKind())});
        ASSERT_EQ(fields.size(), 1U);
        EXPECT_EQ(fields[0].value, Value{Value::Plain{"found"}}) << name;
    }
}

} // namespace
} // namespace ombrel
