#include "agents/OutputDraft.h"

#include "core/Agent.h"
#include "tests/agents/Properties.h"

#include <gtest/gtest.h>

#include <optional>
#include <string_view>

namespace ombrel {
namespace {

using namespace test;
using Kind = AgentOutputKind::Kind;
using Message = std::optional<std::string_view>;

TEST(OutputValidation, FindsNothingWrongWithText) {
    EXPECT_EQ(validationMessage(textOutput()), Message());
}

TEST(OutputValidation, WantsACaseAndANameForEveryCase) {
    EXPECT_EQ(validationMessage(enumerationOutput({})), Message("Add at least one case."));
    EXPECT_EQ(validationMessage(enumerationOutput({"bug", ""})),
              Message("Every case needs a name."));
    EXPECT_EQ(validationMessage(enumerationOutput({"bug", "question"})), Message());
}

TEST(OutputValidation, WantsAPropertyAndANameForEveryProperty) {
    EXPECT_EQ(validationMessage(objectOutput({})), Message("Add at least one property."));
    EXPECT_EQ(
        validationMessage(objectOutput({property("a", intKind()), property("", stringKind())})),
        Message("Every property needs a name."));
    EXPECT_EQ(validationMessage(objectOutput({property("a", intKind())})), Message());
}

TEST(OutputValidation, PassesANamelessNestedPropertyButNotOneAtTheTop) {
    const AgentProperty nameless = property("", stringKind());
    EXPECT_EQ(validationMessage(objectOutput({property("a", objectOf({nameless}))})), Message());
    EXPECT_EQ(validationMessage(objectOutput({property("a", enumerationOf({}))})), Message());
    EXPECT_NE(validationMessage(objectOutput({nameless})), Message());
}

TEST(OutputValidation, CountsBlanksAndTabsAsNoName) {
    EXPECT_EQ(validationMessage(objectOutput({property(" \t ", intKind())})),
              Message("Every property needs a name."));
    EXPECT_EQ(validationMessage(enumerationOutput({" "})), Message("Every case needs a name."));
    EXPECT_EQ(validationMessage(enumerationOutput({"\n"})), Message());
}

TEST(OutputDraft, RestoresThePropertiesFromObjectToTextToObject) {
    const AgentOutputKind object = objectOutput({property("title", stringKind())});
    OutputDraft draft(object);
    draft.setKind(Kind::text);
    EXPECT_EQ(draft.output(), textOutput());
    draft.setKind(Kind::object);
    EXPECT_EQ(draft.output(), object);
}

TEST(OutputDraft, LosesNeitherListFromObjectToEnumAndBack) {
    const AgentOutputKind object = objectOutput({property("title", stringKind())});
    OutputDraft draft(object);
    draft.setKind(Kind::enumeration);
    EXPECT_EQ(draft.output(), enumerationOutput({}));
    const auto cases = enumCases({"low", "high"});
    draft.setCases(cases);
    draft.setKind(Kind::object);
    EXPECT_EQ(draft.output(), object);
    draft.setKind(Kind::enumeration);
    EXPECT_EQ(draft.output(), (AgentOutputKind{AgentOutputKind::Enumeration{cases}}));
}

TEST(OutputDraft, KeepsWhatWasEditedLast) {
    OutputDraft draft(objectOutput({property("title", stringKind())}));
    const std::vector<AgentProperty> edited{property("name", stringKind())};
    draft.setProperties(edited);
    draft.setKind(Kind::object);
    EXPECT_EQ(draft.output(), objectOutput(edited));
    draft.setKind(Kind::text);
    draft.setKind(Kind::object);
    EXPECT_EQ(draft.output(), objectOutput(edited));
}

TEST(OutputDraft, LeavesTheAgentAsItWasUntilItIsSaved) {
    Agent agent = newAgent("A");
    agent.output = objectOutput({property("title", stringKind())});
    const Agent before = agent;
    OutputDraft draft(agent.output);
    draft.setProperties({});
    draft.setKind(Kind::enumeration);
    EXPECT_EQ(agent, before);
}

TEST(OutputDraft, AnImportReplacesTheDraftAndIsKeptForItsKindOnly) {
    const AgentOutputKind object = objectOutput({property("title", stringKind())});
    OutputDraft draft(object);
    const AgentOutputKind imported = enumerationOutput({"low", "high"});
    draft.import(imported);
    EXPECT_EQ(draft.output(), imported);
    draft.setKind(Kind::object);
    EXPECT_EQ(draft.output(), object);
    draft.setKind(Kind::enumeration);
    EXPECT_EQ(draft.output(), imported);
    const AgentOutputKind other = objectOutput({property("n", intKind())});
    draft.import(other);
    draft.setKind(Kind::text);
    draft.setKind(Kind::object);
    EXPECT_EQ(draft.output(), other);
}

} // namespace
} // namespace ombrel
