#include "platform/GenerationSchema.h"

#include <gtest/gtest.h>

namespace ombrel {
namespace {

using Schema = DynamicGenerationSchema;
using Scalar = Schema::Scalar;

std::shared_ptr<const Schema> shared(Schema::Form form) {
    return std::make_shared<const Schema>(Schema{std::move(form)});
}

Schema::Property property(std::string name, Schema::Form form, bool isOptional = false,
                          std::optional<std::string> description = {}) {
    return {std::move(name), std::move(description), shared(std::move(form)), isOptional};
}

Schema::ArrayOf arrayOf(Schema::Form element, std::optional<int> minimum = {},
                        std::optional<int> maximum = {}) {
    return {shared(std::move(element)), minimum, maximum};
}

std::string jsonOf(Schema::Form form) {
    const auto schema = GenerationSchema::make(Schema{std::move(form)});
    return schema ? schema->jsonSchema() : "error: " + schema.error().message;
}

TEST(GenerationSchema, WritesScalars) {
    EXPECT_EQ(jsonOf(Scalar::string), R"({"type":"string"})");
    EXPECT_EQ(jsonOf(Scalar::integer), R"({"type":"integer"})");
    EXPECT_EQ(jsonOf(Scalar::number), R"({"type":"number"})");
    EXPECT_EQ(jsonOf(Scalar::boolean), R"({"type":"boolean"})");
}

TEST(GenerationSchema, WritesPropertiesInDeclaredOrder) {
    const Schema::Object object{"Output",
                                {property("z", Scalar::string, false, "The last letter"),
                                 property("a", Scalar::integer, true),
                                 property("m", Scalar::boolean)}};
    EXPECT_EQ(jsonOf(object),
              R"({"type":"object","properties":{"z":{"description":"The last letter",)"
              R"("type":"string"},"a":{"anyOf":[{"type":"integer"},{"type":"null"}]},)"
              R"("m":{"type":"boolean"}},"required":["z","a","m"],"additionalProperties":false})");
}

TEST(GenerationSchema, DescribesAnOptionalPropertyBesideItsType) {
    const Schema::Object inner{"Author", {property("name", Scalar::string, true)}};
    const Schema::Object object{"Output", {property("author", inner, true, "Who wrote it")}};
    EXPECT_EQ(jsonOf(object),
              R"({"type":"object","properties":{"author":{"description":"Who wrote it","anyOf":[)"
              R"({"type":"object","properties":{"name":{"anyOf":[{"type":"string"},)"
              R"({"type":"null"}]}},"required":["name"],"additionalProperties":false},)"
              R"({"type":"null"}]}},"required":["author"],"additionalProperties":false})");
}

TEST(GenerationSchema, WritesAnObjectWithoutProperties) {
    EXPECT_EQ(jsonOf(Schema::Object{"Output", {}}),
              R"({"type":"object","properties":{},"required":[],"additionalProperties":false})");
}

TEST(GenerationSchema, WritesArraysWithTheirLimits) {
    EXPECT_EQ(jsonOf(arrayOf(Scalar::string)), R"({"type":"array","items":{"type":"string"}})");
    EXPECT_EQ(jsonOf(arrayOf(Scalar::number, 1, 3)),
              R"({"type":"array","items":{"type":"number"},"minItems":1,"maxItems":3})");
}

TEST(GenerationSchema, WritesAChoiceOnce) {
    EXPECT_EQ(jsonOf(Schema::AnyOf{"Output", {"b", "a", "b", ""}}),
              R"({"type":"string","enum":["b","a",""]})");
}

TEST(GenerationSchema, AcceptsNamesOfAnyCharacters) {
    const Schema::Object object{
        "Out\"put", {property("a \"b\"\n", Scalar::string), property("\xff", Scalar::string)}};
    EXPECT_EQ(jsonOf(object), "{\"type\":\"object\",\"properties\":{\"a \\\"b\\\"\\n\":{\"type\":"
                              "\"string\"},\"\xef\xbf\xbd\":{\"type\":\"string\"}},\"required\":"
                              "[\"a \\\"b\\\"\\n\",\"\xef\xbf\xbd\"],"
                              "\"additionalProperties\":false}");
}

TEST(GenerationSchema, AcceptsTheSameNameAtDifferentDepths) {
    const Schema::Object inner{"Output", {property("Output", Scalar::string)}};
    EXPECT_EQ(jsonOf(Schema::Object{"Output", {property("Output", inner)}}).substr(0, 7),
              R"({"type")");
}

TEST(GenerationSchema, RefusesAChoiceOfNothing) {
    EXPECT_EQ(jsonOf(Schema::AnyOf{"mood", {}}), "error: The choice \"mood\" has no values.");
    EXPECT_EQ(jsonOf(Schema::Object{"Output", {property("x", arrayOf(Schema::AnyOf{"m", {}}))}}),
              "error: The choice \"m\" has no values.");
}

TEST(GenerationSchema, RefusesARepeatedPropertyName) {
    const Schema::Object object{"Output",
                                {property("a", Scalar::string), property("a", Scalar::integer)}};
    EXPECT_EQ(jsonOf(object), "error: The object \"Output\" has two properties named \"a\".");
    // They would be the same in JSON.
    EXPECT_EQ(jsonOf(Schema::Object{
                         "o", {property("\xff", Scalar::string), property("\xfe", Scalar::string)}})
                  .substr(0, 6),
              "error:");
}

TEST(GenerationSchema, RefusesImpossibleNumbersOfElements) {
    EXPECT_EQ(jsonOf(arrayOf(Scalar::string, 3, 2)),
              "error: An array can't have at least 3 and at most 2 elements.");
    EXPECT_EQ(jsonOf(arrayOf(Scalar::string, -1)),
              "error: An array can't have fewer than 0 elements.");
    EXPECT_EQ(jsonOf(arrayOf(Scalar::string, {}, -1)),
              "error: An array can't have fewer than 0 elements.");
    EXPECT_EQ(jsonOf(arrayOf(Scalar::string, {}, 1001)),
              "error: The number of an array's elements can't be held to more than 1000.");
    EXPECT_EQ(jsonOf(arrayOf(Scalar::string, 1001)),
              "error: The number of an array's elements can't be held to more than 1000.");
    EXPECT_EQ(jsonOf(arrayOf(Scalar::string, 2, 2)),
              R"({"type":"array","items":{"type":"string"},"minItems":2,"maxItems":2})");
}

TEST(GenerationSchema, RefusesWhatHasNoType) {
    EXPECT_EQ(jsonOf(Schema::ArrayOf{}), "error: An array's elements have no type.");
    EXPECT_EQ(jsonOf(Schema::Object{"Output", {{"a", std::nullopt, nullptr, false}}}),
              "error: The property \"a\" has no type.");
}

TEST(GenerationSchema, RefusesDeepNestingAndTooManyParts) {
    Schema::Form form = Scalar::string;
    for (int i = 0; i < 63; ++i) {
        form = arrayOf(form);
    }
    EXPECT_EQ(jsonOf(form).substr(0, 7), R"({"type")");
    EXPECT_EQ(jsonOf(arrayOf(form)), "error: The schema is nested more than 64 levels deep.");
    // Shared parts count each time.
    form = Scalar::string;
    for (int i = 0; i < 40; ++i) {
        const auto part = shared(form);
        form = Schema::Object{"o", {{"a", {}, part, false}, {"b", {}, part, false}}};
    }
    EXPECT_EQ(jsonOf(form), "error: The schema has more than 10000 parts.");
}

} // namespace
} // namespace ombrel
