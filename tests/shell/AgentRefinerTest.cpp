#include "tests/shell/AgentBuilderFixture.h"

namespace ombrel {
namespace {

using namespace test;
using namespace std::chrono_literals;
using Builder = AgentBuilderFixture;

TEST(AgentRefiner, IsOffForBlankInstructions) {
    Builder b;
    EXPECT_FALSE(find<QWidget>(b.window, "agent.refine").isEnabled());
    type(b.window, "agent.instructions", QStringLiteral("  "));
    b.studio.settle();
    EXPECT_FALSE(find<QWidget>(b.window, "agent.refine").isEnabled());
}

TEST(AgentRefiner, ProposesARewriteThatIsTakenUndoably) {
    Builder b;
    type(b.window, "agent.instructions", QStringLiteral("Be kind."));
    b.studio.advance(500ms);
    ASSERT_TRUE(b.becomesEnabled("agent.refine"));
    b.studio.platform.model->gate.close();
    b.studio.platform.model->queue.push_back(
        R"({"instructions": "Always be kind.", "summary": "Said when."})");
    click(b.window, "agent.refine");
    EXPECT_TRUE(find<BusyButton>(b.window, "agent.refine").isBusy());
    EXPECT_FALSE(find<QWidget>(b.window, "agent.refine").isEnabled());
    type(b.window, "agent.instructions", QStringLiteral("Be nice."));
    b.studio.platform.model->gate.open();
    ASSERT_TRUE(b.shows("agent.refine.proposal"));
    EXPECT_EQ(textOf(b.window, "agent.refine.text"), "Always be kind.");
    EXPECT_EQ(textOf(b.window, "agent.refine.summary"), "Said when.");
    EXPECT_EQ(b.agent().instructions, "Be nice.");
    b.studio.advance(500ms);
    type(b.window, "agent.instructions", QStringLiteral("Be fair."));
    b.studio.settle();
    EXPECT_TRUE(isShown(b.window, "agent.refine.proposal"));
    b.studio.advance(500ms);
    click(b.window, "agent.refine.use");
    EXPECT_EQ(b.agent().instructions, "Always be kind.");
    EXPECT_FALSE(isShown(b.window, "agent.refine.proposal"));
    b.undo();
    EXPECT_EQ(b.agent().instructions, "Be fair.");
}

TEST(AgentRefiner, DiscardsAProposal) {
    Builder b;
    b.edit([](Agent& agent) { agent.instructions = "Be kind."; });
    ASSERT_TRUE(b.becomesEnabled("agent.refine"));
    b.studio.platform.model->queue.push_back(R"({"instructions": "X", "summary": "Y"})");
    click(b.window, "agent.refine");
    ASSERT_TRUE(b.shows("agent.refine.proposal"));
    click(b.window, "agent.refine.discard");
    EXPECT_FALSE(isShown(b.window, "agent.refine.proposal"));
    EXPECT_EQ(b.agent().instructions, "Be kind.");
}

TEST(AgentRefiner, SaysWhyItFailedUntilTheNextPress) {
    Builder b;
    b.edit([](Agent& agent) { agent.instructions = "Be kind."; });
    ASSERT_TRUE(b.becomesEnabled("agent.refine"));
    b.studio.platform.model->unavailableReason = "off";
    click(b.window, "agent.refine");
    ASSERT_TRUE(b.shows("agent.refine.error"));
    EXPECT_EQ(fromQt(find<Banner>(b.window, "agent.refine.error").text()),
              "On-device model unavailable \u2014 enable Apple Intelligence to refine "
              "instructions.");
    b.studio.platform.model->unavailableReason.reset();
    b.studio.platform.model->queue.push_back(ModelAnswer::fails("Too long."));
    ASSERT_TRUE(b.becomesEnabled("agent.refine"));
    click(b.window, "agent.refine");
    EXPECT_TRUE(b.studio.until(
        [&] { return find<Banner>(b.window, "agent.refine.error").text() == "Too long."; }));
    EXPECT_EQ(b.agent().instructions, "Be kind.");
}

} // namespace
} // namespace ombrel
