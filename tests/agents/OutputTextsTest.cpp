#include "agents/OutputTexts.h"

#include "tests/agents/Properties.h"

#include <gtest/gtest.h>

#include <string>

namespace ombrel {
namespace {

using namespace test;
using Rows = std::vector<OutputDefinitionSummary::Row>;

TEST(OutputDefinitionSummary, ListsPropertiesWithTheirTypes) {
    AgentProperty tags = property("tags", arrayOf(stringKind()), true);
    tags.description = "At most three";
    const auto two = outputDefinitionSummary(objectOutput({tags, property("", intKind())}));
    EXPECT_EQ(two.heading, "2 properties");
    EXPECT_EQ(two.rows,
              (Rows{{"tags", "[String]?", "At most three"}, {"(unnamed)", "Int", std::nullopt}}));
    EXPECT_EQ(two.placeholder, std::nullopt);
    EXPECT_EQ(outputDefinitionSummary(objectOutput({tags})).heading, "1 property");
    const auto none = outputDefinitionSummary(objectOutput({}));
    EXPECT_EQ(none.heading, "0 properties");
    EXPECT_EQ(none.placeholder, "No properties yet — click Edit to add some.");
}

TEST(OutputDefinitionSummary, ListsCasesWithAPointInFront) {
    auto cases = enumCases({"low", "high"});
    cases[0].description = "Can wait";
    const auto two = outputDefinitionSummary({AgentOutputKind::Enumeration{cases}});
    EXPECT_EQ(two.heading, "2 cases");
    EXPECT_EQ(two.rows, (Rows{{".low", "", "Can wait"}, {".high", "", std::nullopt}}));
    EXPECT_EQ(outputDefinitionSummary(enumerationOutput({"a"})).heading, "1 case");
    EXPECT_EQ(outputDefinitionSummary(enumerationOutput({})).placeholder,
              "No cases yet — click Edit to add some.");
}

TEST(OutputDefinitionSummary, OfTextIsPlainText) {
    const auto summary = outputDefinitionSummary(textOutput());
    EXPECT_EQ(summary.heading, "Plain text");
    EXPECT_TRUE(summary.rows.empty());
    EXPECT_EQ(summary.placeholder, std::nullopt);
}

TEST(DiagramOutputText, SaysWhatIsThereInsteadOfRows) {
    EXPECT_EQ(diagramOutputText(textOutput()), "Plain text");
    EXPECT_EQ(diagramOutputText(objectOutput({})), "No properties yet");
    EXPECT_EQ(diagramOutputText(enumerationOutput({})), "No cases yet");
    EXPECT_EQ(diagramOutputText(enumerationOutput({"a"})), std::nullopt);
    EXPECT_EQ(diagramOutputText(objectOutput({property("a", intKind())})), std::nullopt);
}

TEST(AttachmentLine, CountsTheAgentsThatHaveTheTool) {
    const Uuid tool = Uuid::random();
    std::vector<Agent> agents(3);
    EXPECT_EQ(attachmentLine(agents, tool), "Not attached to any agent");
    agents[0].toolIDs = {Uuid::random(), tool, tool};
    EXPECT_EQ(attachmentLine(agents, tool), "Attached to 1 agent");
    agents[2].toolIDs = {tool};
    EXPECT_EQ(attachmentLine(agents, tool), "Attached to 2 agents");
}

TEST(MockResponse, IsAJsonObjectOrArray) {
    for (const char* valid : {"{}", "[]", " {\"a\": [1, null]}\n", "[1]"}) {
        EXPECT_TRUE(isValidMockResponse(valid)) << valid;
        EXPECT_EQ(mockResponseVerdict(valid), "Valid JSON");
    }
    for (const char* invalid : {"", "1", "\"text\"", "true", "null", "{", "{}{}", "{a: 1}", "[1,]",
                                "[\"\xFF\"]", "{\"a\": NaN}"}) {
        EXPECT_FALSE(isValidMockResponse(invalid)) << invalid;
        EXPECT_EQ(mockResponseVerdict(invalid), "Invalid JSON");
    }
    EXPECT_TRUE(isValidMockResponse(std::string(100'000, '[') + std::string(100'000, ']')));
}

TEST(OutputHelp, ExplainsEachKind) {
    using Kind = AgentOutputKind::Kind;
    EXPECT_EQ(outputHelp(Kind::text), "The agent returns plain text. Choose Enum or Object for a "
                                      "structured result.");
    EXPECT_EQ(outputHelp(Kind::enumeration), "The model picks exactly one.");
    EXPECT_EQ(outputHelp(Kind::object), "The model fills in every non-optional property.");
}

} // namespace
} // namespace ombrel
