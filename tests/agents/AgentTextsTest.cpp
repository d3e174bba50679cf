#include "agents/AgentTexts.h"

#include <gtest/gtest.h>

namespace ombrel {
namespace {

TEST(AgentTexts, TellTheSizeOfTheInstructions) {
    Agent agent;
    EXPECT_EQ(instructionTokensText(agent), "~1 tokens");
    agent.instructions = std::string(48, 'a');
    EXPECT_EQ(instructionTokensText(agent), "~12 tokens");
    EXPECT_EQ(diagramTokensText(agent), "~12 instruction tokens");
}

TEST(AgentTexts, TellHowMuchAnIndexContributes) {
    AgentRAGAttachment attachment;
    attachment.topK = 7;
    EXPECT_EQ(attachmentText(attachment), "top-7 chunks");
}

TEST(AgentTexts, TellHowLongARunTookOrThatItFailed) {
    AgentRunResult result;
    result.durationSeconds = 1.254;
    EXPECT_EQ(runStatusText(result), "1.25s");
    result.isError = true;
    EXPECT_EQ(runStatusText(result), "Failed");
}

TEST(AgentTexts, ShowADashForWhatIsMissing) {
    EXPECT_EQ(valueText({AgentOutputFieldValue::Missing{}}), "\u2014");
    EXPECT_EQ(valueText({AgentOutputFieldValue::Plain{"Dune"}}), "Dune");
    EXPECT_EQ(valueText({AgentOutputFieldValue::EnumCase{"bug", "A defect"}}), "bug");
}

} // namespace
} // namespace ombrel
