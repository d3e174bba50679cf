#include "agents/AgentSchema.h"

#include "tests/agents/Properties.h"

#include <gtest/gtest.h>

#include <string>
#include <variant>
#include <vector>

namespace ombrel {
namespace {

using namespace test;
using Schema = DynamicGenerationSchema;

std::string jsonOf(const AgentOutputKind& output) {
    const auto schema = generationSchema(output);
    if (!schema) {
        return "error: " + schema.error().message;
    }
    return *schema ? (*schema)->jsonSchema() : "none";
}

template <class Form>
const Form* formOf(const Schema& schema) {
    return std::get_if<Form>(&schema.form);
}

TEST(GenerationSchemaOfAnOutput, IsNoneForTextAndForAnEnumerationWithoutCases) {
    EXPECT_EQ(jsonOf(textOutput()), "none");
    EXPECT_EQ(jsonOf(enumerationOutput({})), "none");
}

TEST(GenerationSchemaOfAnOutput, IsAChoiceNamedOutputForAnEnumeration) {
    const auto schema = generationSchema(enumerationOutput({"bug", "question"}));
    ASSERT_TRUE(schema && *schema);
    const auto* choice = formOf<Schema::AnyOf>((*schema)->root());
    ASSERT_TRUE(choice);
    EXPECT_EQ(choice->name, "Output");
    EXPECT_EQ(choice->choices, (std::vector<std::string>{"bug", "question"}));
}

TEST(GenerationSchemaOfAnOutput, CountsARepeatedCaseOnce) {
    EXPECT_EQ(jsonOf(enumerationOutput({"a", "b", "a"})), R"({"type":"string","enum":["a","b"]})");
}

TEST(GenerationSchemaOfAnOutput, DoesNotRefuseAnObjectWithoutProperties) {
    EXPECT_EQ(jsonOf(objectOutput({})),
              R"({"type":"object","properties":{},"required":[],"additionalProperties":false})");
}

TEST(GenerationSchemaOfAnOutput, TakesTheSameNameAtDifferentDepths) {
    const AgentOutputKind output =
        objectOutput({property("Output", objectOf({property("Output", enumerationOf({"x"}))}))});
    EXPECT_EQ(jsonOf(output),
              R"({"type":"object","properties":{"Output":{"type":"object","properties":{"Output":)"
              R"({"type":"string","enum":["x"]}},"required":["Output"],)"
              R"("additionalProperties":false}},"required":["Output"],)"
              R"("additionalProperties":false})");
}

TEST(GenerationSchemaOfAnOutput, FailsForTwoPropertiesOfOneNameInOneObject) {
    EXPECT_EQ(jsonOf(objectOutput({property("a", stringKind()), property("a", intKind())})),
              "error: The object \"Output\" has two properties named \"a\".");
}

TEST(ObjectSchema, HasThePropertiesInOrderWithDescriptionsAndOptionality) {
    AgentProperty described = property("z", stringKind());
    described.description = "The last letter";
    AgentProperty blank = property("m", boolKind(), true);
    blank.description = "";
    const Schema schema = objectSchema("Thing", {described, property("a", intKind()), blank});
    const auto* object = formOf<Schema::Object>(schema);
    ASSERT_TRUE(object);
    EXPECT_EQ(object->name, "Thing");
    ASSERT_EQ(object->properties.size(), 3U);
    EXPECT_EQ(object->properties[0].name, "z");
    EXPECT_EQ(object->properties[0].description, "The last letter");
    EXPECT_FALSE(object->properties[0].isOptional);
    EXPECT_EQ(object->properties[1].description, std::nullopt);
    EXPECT_EQ(object->properties[2].description, "");
    EXPECT_TRUE(object->properties[2].isOptional);
}

TEST(DynamicSchema, IsAPlainScalarForAScalarKind) {
    const auto scalarOf = [](const PropertyKind& kind) {
        return std::get<Schema::Scalar>(dynamicSchema(kind, "x").form);
    };
    EXPECT_EQ(scalarOf(stringKind()), Schema::Scalar::string);
    EXPECT_EQ(scalarOf(intKind()), Schema::Scalar::integer);
    EXPECT_EQ(scalarOf(doubleKind()), Schema::Scalar::number);
    EXPECT_EQ(scalarOf(boolKind()), Schema::Scalar::boolean);
}

TEST(DynamicSchema, GivesNestedObjectsAndChoicesTheNameOfTheProperty) {
    const Schema object = dynamicSchema(objectOf({property("mood", enumerationOf({"x"}))}), "film");
    const auto* form = formOf<Schema::Object>(object);
    ASSERT_TRUE(form);
    EXPECT_EQ(form->name, "film");
    const auto* choice = formOf<Schema::AnyOf>(*form->properties[0].schema);
    ASSERT_TRUE(choice);
    EXPECT_EQ(choice->name, "mood");
}

TEST(DynamicSchema, PassesTheNameDownThroughArraysWithoutLimits) {
    const Schema schema = dynamicSchema(arrayOf(arrayOf(objectOf({}))), "rows");
    const auto* outer = formOf<Schema::ArrayOf>(schema);
    ASSERT_TRUE(outer);
    EXPECT_EQ(outer->minimumElements, std::nullopt);
    EXPECT_EQ(outer->maximumElements, std::nullopt);
    const auto* inner = formOf<Schema::ArrayOf>(*outer->element);
    ASSERT_TRUE(inner);
    const auto* object = formOf<Schema::Object>(*inner->element);
    ASSERT_TRUE(object);
    EXPECT_EQ(object->name, "rows");
}

TEST(DynamicSchema, IsAnyStringForAnEnumerationWithoutCases) {
    EXPECT_EQ(std::get<Schema::Scalar>(dynamicSchema(enumerationOf({}), "x").form),
              Schema::Scalar::string);
}

TEST(DynamicSchema, DoesNotSendTheDescriptionsOfCases) {
    PropertyKind kind = enumerationOf({"bug"});
    std::get<PropertyKind::Enumeration>(kind.value).cases[0].description = "Something is broken";
    EXPECT_EQ(jsonOf(objectOutput({property("kind", kind)})),
              R"({"type":"object","properties":{"kind":{"type":"string","enum":["bug"]}},)"
              R"("required":["kind"],"additionalProperties":false})");
}

} // namespace
} // namespace ombrel
