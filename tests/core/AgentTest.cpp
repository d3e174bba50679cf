#include "core/Agent.h"
#include "core/ToolDefinition.h"

#include <gtest/gtest.h>

namespace ombrel {
namespace {

PropertyKind arrayOf(PropertyKind element) {
    return {PropertyKind::Array{std::move(element)}};
}

TEST(NewAgent, GivesTextAndHoldsNothing) {
    const Agent agent = newAgent("Router");
    EXPECT_NE(agent.id, Uuid());
    EXPECT_EQ(agent.name, "Router");
    EXPECT_EQ(agent.output.kind(), AgentOutputKind::Kind::text);
    Agent bare;
    bare.id = agent.id;
    bare.name = "Router";
    EXPECT_EQ(agent, bare);
    EXPECT_TRUE(bare.summary.empty() && bare.instructions.empty() && bare.input.empty() &&
                bare.toolIDs.empty() && bare.contextFieldNames.empty() &&
                bare.ragAttachments.empty() && bare.evaluationCases.empty());
}

TEST(NewTool, GivesAnObjectWithoutProperties) {
    const ToolDefinition tool = newTool("lookUp");
    EXPECT_NE(tool.id, Uuid());
    EXPECT_EQ(tool.name, "lookUp");
    EXPECT_EQ(tool.output, AgentOutputKind{AgentOutputKind::Object{}});
    EXPECT_EQ(tool.mockResponseJSON, "{}");
    EXPECT_TRUE(tool.description.empty() && tool.arguments.empty());
}

TEST(Agent, DiffersInAnAttachmentsThresholdAlone) {
    Agent a = newAgent("Router");
    a.ragAttachments.push_back({Uuid::random(), Uuid::random(), 5, 0});
    Agent b = a;
    EXPECT_EQ(a, b);
    b.ragAttachments[0].threshold = 0.25;
    EXPECT_NE(a, b);
}

TEST(AgentOutputKind, TellsItsKindWithoutThePayload) {
    using K = AgentOutputKind;
    EXPECT_EQ(K{K::Text{}}.kind(), K::Kind::text);
    EXPECT_EQ((K{K::Enumeration{{{Uuid::random(), "yes", std::nullopt}}}}).kind(),
              K::Kind::enumeration);
    EXPECT_EQ(K{K::Object{}}.kind(), K::Kind::object);
    EXPECT_NE(K{K::Text{}}, K{K::Object{}});
}

TEST(TypeLabel, NamesTheFlatKinds) {
    using P = PropertyKind;
    EXPECT_EQ(P{P::String{}}.typeLabel(), "String");
    EXPECT_EQ(P{P::Int{}}.typeLabel(), "Int");
    EXPECT_EQ(P{P::Double{}}.typeLabel(), "Double");
    EXPECT_EQ(P{P::Bool{}}.typeLabel(), "Bool");
    EXPECT_EQ(P{P::Object{}}.typeLabel(), "Object");
    EXPECT_EQ(P{P::Enumeration{}}.typeLabel(), "Enum");
}

TEST(TypeLabel, PutsBracketsAroundTheElementOfAnArray) {
    EXPECT_EQ(arrayOf(arrayOf({PropertyKind::Int{}})).typeLabel(), "[[Int]]");
    EXPECT_EQ(arrayOf(arrayOf({PropertyKind::Enumeration{}})).typeLabel(), "[[Enum]]");
}

TEST(PropertyKind, TellsItsBaseKindWithoutThePayload) {
    using P = PropertyKind;
    EXPECT_EQ(P{P::Int{}}.baseKind(), P::BaseKind::integer);
    EXPECT_EQ(arrayOf({P::Bool{}}).baseKind(), P::BaseKind::array);
    EXPECT_EQ(P{P::Enumeration{}}.baseKind(), P::BaseKind::enumeration);
}

TEST(PropertyKind, ComparesThroughItsElements) {
    using P = PropertyKind;
    EXPECT_EQ(arrayOf(arrayOf({P::Int{}})), arrayOf(arrayOf({P::Int{}})));
    EXPECT_NE(arrayOf(arrayOf({P::Int{}})), arrayOf(arrayOf({P::Double{}})));
    AgentProperty property;
    property.name = "city";
    const P withCity = {P::Object{{property}}};
    property.isOptional = true;
    EXPECT_NE(withCity, (P{P::Object{{property}}}));
}

TEST(PropertyKind, IsCopiedAsAValue) {
    PropertyKind original = arrayOf({PropertyKind::Int{}});
    const PropertyKind copy = original;
    *std::get<PropertyKind::Array>(original.value).element = {PropertyKind::Bool{}};
    EXPECT_EQ(copy.typeLabel(), "[Int]");
    EXPECT_EQ(original.typeLabel(), "[Bool]");
}

TEST(ContextPlaceholder, WrapsTheFieldsName) {
    EXPECT_EQ(contextPlaceholder("city"), "{{context.city}}");
}

} // namespace
} // namespace ombrel
