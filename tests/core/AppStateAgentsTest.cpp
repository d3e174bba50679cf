#include "core/AppState.h"

#include "tests/core/Workspace.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace ombrel {
namespace {

using namespace test;
using Names = std::vector<std::string>;

template <class T>
Names names(const std::vector<T>& things) {
    Names result;
    for (const auto& thing : things) {
        result.push_back(thing.name);
    }
    return result;
}

TEST(AddAgent, AppendsShowsAndSchedules) {
    const Workspace workspace;
    EXPECT_TRUE(workspace.schedules([&] { workspace->addAgent(); }));
    const Agent& agent = workspace->agents->front();
    Agent expected = newAgent("New Agent 1");
    expected.id = agent.id;
    EXPECT_EQ(agent, expected);
    EXPECT_EQ(workspace->selectedNavigatorItem(), showsAgent(agent.id));
}

TEST(AddAgent, CountsAgentsSoThatANameCanRepeatAfterADeletion) {
    const Workspace workspace;
    const Uuid first = workspace->addAgent().id;
    workspace->addAgent();
    workspace->addAgent();
    workspace->deleteAgent(first);
    EXPECT_EQ(workspace->addAgent().name, "New Agent 3");
    EXPECT_EQ(names(*workspace->agents), (Names{"New Agent 2", "New Agent 3", "New Agent 3"}));
}

TEST(AddTool, AppendsAnIdentifierAsNameShowsAndSchedules) {
    const Workspace workspace;
    EXPECT_TRUE(workspace.schedules([&] { workspace->addTool(); }));
    const ToolDefinition& tool = workspace->tools->front();
    ToolDefinition expected = newTool("newTool1");
    expected.id = tool.id;
    EXPECT_EQ(tool, expected);
    EXPECT_EQ(workspace->selectedNavigatorItem(), showsTool(tool.id));
    EXPECT_EQ(workspace->addTool().name, "newTool2");
}

TEST(DuplicateAgent, PutsABlankAndCopyAfterTheName) {
    const Workspace workspace;
    Agent agent = workspace->addAgent();
    agent.name = "Router";
    agent.instructions = "Route.";
    agent.ragAttachments.push_back({Uuid::random(), Uuid::random(), 3, 0.5});
    workspace->updateAgent(agent);
    const Agent* copy = nullptr;
    EXPECT_TRUE(workspace.schedules([&] { copy = workspace->duplicateAgent(agent.id); }));
    ASSERT_NE(copy, nullptr);
    EXPECT_NE(copy->id, agent.id);
    EXPECT_EQ(workspace->selectedNavigatorItem(), showsAgent(copy->id));
    EXPECT_EQ(copy, &workspace->agents->back());
    Agent expected = agent;
    expected.id = copy->id;
    expected.name = "Router copy";
    EXPECT_EQ(*copy, expected);
    EXPECT_EQ(workspace->duplicateAgent(copy->id)->name, "Router copy copy");
}

TEST(DuplicateTool, PutsCopyStraightAfterTheName) {
    const Workspace workspace;
    const Uuid tool = workspace->addTool().id;
    const ToolDefinition* copy = nullptr;
    EXPECT_TRUE(workspace.schedules([&] { copy = workspace->duplicateTool(tool); }));
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->name, "newTool1Copy");
    EXPECT_NE(copy->id, tool);
    EXPECT_EQ(workspace->selectedNavigatorItem(), showsTool(copy->id));
    EXPECT_EQ(workspace->duplicateTool(copy->id)->name, "newTool1CopyCopy");
}

TEST(DuplicateAgentAndTool, ChangeNothingWithoutTheThing) {
    const Workspace workspace;
    EXPECT_FALSE(workspace.schedules([&] {
        EXPECT_EQ(workspace->duplicateAgent(Uuid::random()), nullptr);
        EXPECT_EQ(workspace->duplicateTool(Uuid::random()), nullptr);
    }));
    EXPECT_TRUE(workspace->agents->empty() && workspace->tools->empty());
}

TEST(DeleteAgent, RemovesEveryOneWithTheIDAndShowsTheSelectedIndex) {
    const Workspace workspace;
    const Agent agent = workspace->addAgent();
    workspace->agents.edit()->push_back(agent);
    EXPECT_TRUE(workspace.schedules([&] { workspace->deleteAgent(agent.id); }));
    EXPECT_TRUE(workspace->agents->empty());
    EXPECT_EQ(workspace->selectedNavigatorItem(), showsIndex(*workspace->selectedRAGIndexID));
}

TEST(DeleteAgent, LeavesTheFlowsThatNameIt) {
    const Workspace workspace;
    const Uuid agent = workspace->addAgent().id;
    const Uuid flow = workspace->addFlow().id;
    workspace->addFlowNode({FlowNodeKind::Agent{agent}}, flow, 0, 0);
    const Flow before = *workspace->flow(flow);
    workspace->deleteAgent(agent);
    EXPECT_EQ(*workspace->flow(flow), before);
    EXPECT_EQ(workspace->selectedNavigatorItem(), showsFlow(flow));
}

TEST(DeleteTool, TakesItFromEveryAgentAndLeavesFlows) {
    const Workspace workspace;
    const Uuid tool = workspace->addTool().id;
    const Uuid other = workspace->addTool().id;
    for (int i = 0; i < 2; ++i) {
        Agent agent = workspace->addAgent();
        agent.toolIDs = {tool, other, tool};
        workspace->updateAgent(agent);
    }
    const Uuid flow = workspace->addFlow().id;
    workspace->addFlowNode({FlowNodeKind::Tool{tool}}, flow, 0, 0);
    workspace->setSelectedNavigatorItem(showsTool(tool));
    EXPECT_TRUE(workspace.schedules([&] { workspace->deleteTool(tool); }));
    ASSERT_EQ(workspace->tools->size(), 1u);
    EXPECT_EQ(workspace->tools->front().id, other);
    for (const Agent& agent : *workspace->agents) {
        EXPECT_EQ(agent.toolIDs, std::vector<Uuid>{other});
    }
    EXPECT_EQ(workspace->flow(flow)->nodes.back().kind, FlowNodeKind{FlowNodeKind::Tool{tool}});
    EXPECT_EQ(workspace->selectedNavigatorItem(), showsIndex(*workspace->selectedRAGIndexID));
}

TEST(UpdateAgentAndTool, ReplaceTheFirstWithTheID) {
    const Workspace workspace;
    workspace->addAgent();
    Agent agent = workspace->addAgent();
    agent.summary = "Routes";
    EXPECT_TRUE(workspace.schedules([&] { workspace->updateAgent(agent); }));
    EXPECT_EQ(workspace->agents->back(), agent);
    EXPECT_EQ(workspace->agents->front().summary, "");
    ToolDefinition tool = workspace->addTool();
    tool.description = "Looks up";
    EXPECT_TRUE(workspace.schedules([&] { workspace->updateTool(tool); }));
    EXPECT_EQ(workspace->tools->front(), tool);
}

TEST(UpdateAgentAndTool, WriteNowhereWhenTheThingIsGone) {
    const Workspace workspace;
    EXPECT_FALSE(workspace.schedules([&] {
        workspace->updateAgent(newAgent("New Agent"));
        workspace->updateTool(newTool("newTool"));
    }));
    EXPECT_TRUE(workspace->agents->empty() && workspace->tools->empty());
}

TEST(SetRAGAttached, AppendsAnAttachmentOnce) {
    const Workspace workspace;
    const Uuid agent = workspace->addAgent().id;
    const Uuid index = *workspace->selectedRAGIndexID;
    EXPECT_TRUE(workspace.schedules([&] { workspace->setRAGAttached(agent, index, true); }));
    EXPECT_FALSE(workspace.schedules([&] { workspace->setRAGAttached(agent, index, true); }));
    const auto& attachments = workspace->agents->front().ragAttachments;
    ASSERT_EQ(attachments.size(), 1u);
    EXPECT_NE(attachments[0].id, Uuid());
    EXPECT_EQ(attachments[0].ragIndexID, index);
    EXPECT_EQ(attachments[0].topK, 5);
    EXPECT_EQ(attachments[0].threshold, 0);
}

TEST(SetRAGAttached, RemovesEveryAttachmentOfTheIndexAndKeepsTheOthersOrder) {
    const Workspace workspace;
    Agent agent = workspace->addAgent();
    const Uuid gone = Uuid::random();
    for (const Uuid index : {Uuid::random(), gone, Uuid::random(), gone}) {
        agent.ragAttachments.push_back({Uuid::random(), index, 5, 0});
    }
    workspace->updateAgent(agent);
    EXPECT_TRUE(workspace.schedules([&] { workspace->setRAGAttached(agent.id, gone, false); }));
    EXPECT_EQ(workspace->agents->front().ragAttachments,
              (std::vector{agent.ragAttachments[0], agent.ragAttachments[2]}));
    EXPECT_FALSE(workspace.schedules([&] { workspace->setRAGAttached(agent.id, gone, false); }));
}

TEST(RAGAttachment, IsEditedAtTheFirstOfTheIndex) {
    const Workspace workspace;
    Agent agent = workspace->addAgent();
    const Uuid index = Uuid::random();
    for (const Uuid attached : {Uuid::random(), index, index}) {
        agent.ragAttachments.push_back({Uuid::random(), attached, 5, 0});
    }
    workspace->updateAgent(agent);
    EXPECT_TRUE(workspace.schedules([&] { workspace->setRAGTopK(agent.id, index, 12); }));
    EXPECT_TRUE(workspace.schedules([&] { workspace->setRAGThreshold(agent.id, index, -0.5); }));
    agent.ragAttachments[1].topK = 12;
    agent.ragAttachments[1].threshold = -0.5;
    EXPECT_EQ(workspace->agents->front(), agent);
    EXPECT_FALSE(workspace.schedules([&] { workspace->setRAGTopK(agent.id, Uuid::random(), 1); }));
    EXPECT_FALSE(workspace.schedules([&] { workspace->setRAGTopK(Uuid::random(), index, 1); }));
}

TEST(AddContextFieldName, TrimsBlanksAndTabsAndAddsANameOnce) {
    const Workspace workspace;
    const Uuid agent = workspace->addAgent().id;
    EXPECT_TRUE(workspace.schedules(
        [&] { EXPECT_TRUE(workspace->addContextFieldName(agent, " \tcity\t ")); }));
    EXPECT_FALSE(
        workspace.schedules([&] { EXPECT_TRUE(workspace->addContextFieldName(agent, "city")); }));
    EXPECT_TRUE(workspace->addContextFieldName(agent, "\ncity"));
    EXPECT_EQ(workspace->agents->front().contextFieldNames, (Names{"city", "\ncity"}));
}

TEST(AddContextFieldName, DoesNothingWithABlankText) {
    const Workspace workspace;
    const Uuid agent = workspace->addAgent().id;
    EXPECT_FALSE(workspace.schedules([&] {
        EXPECT_FALSE(workspace->addContextFieldName(agent, ""));
        EXPECT_FALSE(workspace->addContextFieldName(agent, " \t "));
    }));
    EXPECT_TRUE(workspace->agents->front().contextFieldNames.empty());
}

TEST(RemoveContextFieldName, RemovesEveryEntryAndLeavesTheInstructions) {
    const Workspace workspace;
    Agent agent = workspace->addAgent();
    agent.contextFieldNames = {"city", "day", "city"};
    agent.instructions = "In {{context.city}}.";
    workspace->updateAgent(agent);
    // The name is that of the entry itself.
    EXPECT_TRUE(workspace.schedules([&] {
        workspace->removeContextFieldName(agent.id,
                                          workspace->agents->front().contextFieldNames[0]);
    }));
    EXPECT_EQ(workspace->agents->front().contextFieldNames, Names{"day"});
    EXPECT_EQ(workspace->agents->front().instructions, "In {{context.city}}.");
    EXPECT_FALSE(workspace.schedules([&] { workspace->removeContextFieldName(agent.id, "city"); }));
}

TEST(InsertContextPlaceholder, AppendsABlankAndThePlaceholder) {
    const Workspace workspace;
    Agent agent = workspace->addAgent();
    agent.instructions = "Answer for";
    workspace->updateAgent(agent);
    EXPECT_TRUE(
        workspace.schedules([&] { workspace->insertContextPlaceholder(agent.id, "city"); }));
    EXPECT_EQ(workspace->agents->front().instructions, "Answer for {{context.city}}");
}

} // namespace
} // namespace ombrel
