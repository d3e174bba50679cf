#include "flows/Conversation.h"
#include "flows/FlowExport.h"
#include "flows/FlowRun.h"
#include "platform/InstalledModels.h"
#include "platform/LocalPlatform.h"
#include "platform/OnDeviceModel.h"
#include "platform/Process.h"
#include "platform/SentenceEmbedder.h"
#include "tests/flows/BuiltTools.h"
#include "tests/flows/FlowSamples.h"
#include "tests/platform/Await.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <vector>

// With the Swift tool chain of this machine, and the model server and models that
// resources/models/install-models installs.
namespace ombrel {
namespace {

namespace fs = std::filesystem;
using test::await;
using test::Drawing;

class EndToEndFlow : public testing::Test {
  protected:
    void SetUp() override {
        ServiceSettings settings;
        settings.languageModel = starterModelFile;
        m_platform = makeLocalPlatform(m_executor, settings);
        ASSERT_TRUE(m_platform.model->availability().isAvailable())
            << "Run resources/models/install-models";
        m_tools.use();
        m_toolChain = std::make_shared<ToolChain>();
        ASSERT_EQ(m_toolChain->checkTooling(), std::nullopt);
        m_state = AppState::make(m_platform);
    }

    // Puts the flow into the project in the place of all that was there.
    void add(Drawing drawing) {
        m_state->agents = drawing.agents;
        m_state->tools = drawing.tools;
        m_flowID = drawing.flow.id;
        m_state->flows = {std::move(drawing.flow)};
    }
    // Knowledge with vectors, as the project's index.
    Uuid addKnowledge(std::vector<std::string> texts) {
        const auto vectors = await(m_executor, m_platform.embedder->vectors("en", texts));
        std::vector<DocumentChunk> chunks;
        for (std::size_t i = 0; i < texts.size(); ++i) {
            DocumentChunk& chunk = chunks.emplace_back();
            chunk.id = Uuid::random();
            chunk.breadcrumb = {"Terms", "Section " + std::to_string(i + 1)};
            chunk.text = texts[i];
            chunk.embedding = vectors[i];
        }
        auto index = m_state->editCurrentIndex();
        index->sources.emplace_back().id = Uuid::random();
        index->chunksByDocument[index->sources.back().id] = std::move(chunks);
        index->variants.front().settings.index = IndexKind::hybrid;
        return index->id;
    }
    void run(Task<void> task) { m_executor->runUntil(std::move(task)); }
    const FlowRunOutcome& outcome() const { return **m_state->lastFlowRunOutcome; }
    std::string problem() const {
        return outcome().errorMessage.value_or("none") + "\n" + outcome().rawOutput;
    }
    // Runs a program to its end in the test's folder; its output when it fails.
    std::string failureOf(std::vector<std::string> arguments) {
        ProcessLaunch launch;
        launch.arguments = std::move(arguments);
        launch.environment = m_toolChain->environment();
        launch.errorsToOutput = true;
        const auto ran = await(m_executor, runToEnd(m_executor, std::move(launch), {}));
        if (!ran) {
            return ran.error().message;
        }
        return ran->exit.succeeded() ? "" : ran->exit.description() + "\n" + ran->output;
    }

    test::BuiltTools m_tools;
    std::shared_ptr<RunLoopExecutor> m_executor = std::make_shared<RunLoopExecutor>();
    Platform m_platform;
    std::shared_ptr<ToolChain> m_toolChain;
    std::shared_ptr<AppState> m_state;
    Uuid m_flowID;
};

// Start, an agent that chooses one of two ways; on each a tool, an agent with knowledge that gives
// an object, and a branch on it.
Drawing supportFlow(std::optional<Uuid> knowledge) {
    Drawing drawing;
    drawing.flow.id = *Uuid::parse("00000000-0000-4000-8000-000000000001");
    const Uuid triage = drawing.agent("Triage", test::enumeration({"refund", "other"}));
    drawing.agents.back().instructions = "Sort what the customer wrote.";
    drawing.connect(drawing.start(), triage);
    // Not a text, which a small model can go on writing until it is cut off.
    const AgentProperty tone = test::property(
        "tone",
        PropertyKind::Enumeration{{{Uuid::random(), "warm", {}}, {Uuid::random(), "plain", {}}}});
    for (const std::string route : {"refund", "other"}) {
        const Uuid tool = drawing.tool("Orders " + route, R"({"status": "shipped"})");
        const Uuid desk = drawing.agent(
            "Desk " + route, test::object({test::property("isSure", PropertyKind::Bool()), tone}));
        drawing.agents.back().instructions = "Say how to answer.";
        if (knowledge) {
            drawing.agents.back().ragAttachments = {{Uuid::random(), *knowledge, 1, 0}};
        }
        const Uuid branch = drawing.branch("isSure", WireBranchOperator::equals, "true");
        drawing.connect(triage, tool, route);
        drawing.connect(tool, desk);
        drawing.connect(desk, branch);
        drawing.connect(branch, drawing.end("sure " + route), "true");
        drawing.connect(branch, drawing.end("unsure " + route, false), "false");
    }
    return drawing;
}

const FlowTraceEvent* eventOf(const FlowRunOutcome& outcome, const std::string& kind,
                              std::size_t place = 0) {
    for (const FlowTraceEvent& event : outcome.trace) {
        if (event.kind == kind && place-- == 0) {
            return &event;
        }
    }
    return nullptr;
}

TEST_F(EndToEndFlow, GoesThroughARouteAToolKnowledgeAndABranch) {
    const std::string passage = "Money for a late parcel is given back within ten days.";
    add(supportFlow(addKnowledge({passage, "The shop opens at nine on weekdays."})));
    (*m_state->flowSampleInputValues.edit())["request"] =
        "My parcel is late. Do I get my money back?";
    run(runFlow(m_state, m_flowID, m_toolChain));
    ASSERT_EQ(outcome().errorMessage, std::nullopt) << problem();

    const FlowTraceEvent* route = eventOf(outcome(), "routeTaken");
    ASSERT_NE(route, nullptr) << problem();
    const std::string chosen = route->detail;
    ASSERT_TRUE(chosen == "refund" || chosen == "other") << chosen;
    const FlowTraceEvent* tool = eventOf(outcome(), "toolCalled");
    ASSERT_NE(tool, nullptr);
    EXPECT_EQ(tool->node, "Orders " + chosen);
    EXPECT_EQ(tool->detail, R"({"status": "shipped"})");
    EXPECT_EQ(eventOf(outcome(), "nodeEntered", 1)->node, "Desk " + chosen);
    const FlowTraceEvent* retrieved = eventOf(outcome(), "ragRetrieved");
    ASSERT_NE(retrieved, nullptr);
    EXPECT_TRUE(retrieved->detail.starts_with("1 passage\n[1] Terms > Section 1 · "))
        << retrieved->detail;
    EXPECT_NE(eventOf(outcome(), "promptBuilt", 1)->detail.find(passage), std::string::npos);
    const FlowTraceEvent* branch = eventOf(outcome(), "branch");
    ASSERT_NE(branch, nullptr);
    const bool isSure = branch->detail.ends_with("-> true");
    const std::string end = "." + std::string(isSure ? "sure " : "unsure ") + chosen;
    EXPECT_TRUE(outcome().resultLine->starts_with("RESULT: " + end)) << *outcome().resultLine;

    // The drawing shows the path: Start, two agents, a tool, a branch and an End.
    const FlowRunHighlight& highlight = **m_state->flowRunHighlight;
    EXPECT_EQ(highlight.visitedNodeIDs.size(), 6U);
    EXPECT_EQ(highlight.visitedEdgeIDs.size(), 5U);
    EXPECT_EQ(highlight.succeeded, true);
    EXPECT_EQ(highlight.failedNodeID, std::nullopt);
}

TEST_F(EndToEndFlow, TalksForThreeTurns) {
    Drawing drawing;
    drawing.flow.id = *Uuid::parse("00000000-0000-4000-8000-000000000002");
    drawing.flow.kind = FlowKind::conversational;
    drawing.flow.maxHistoryTokens = 6000; // whatever the model says fits
    drawing.flow.contextFields = {test::property("history", PropertyKind::String())};
    const Uuid talker = drawing.agent("Talker");
    drawing.agents.back().instructions =
        "Answer in one short sentence.\nBefore this was said:\n{{context.history}}";
    drawing.agents.back().contextFieldNames = {"history"};
    drawing.connect(drawing.start(), talker);
    drawing.connect(talker, drawing.end());
    add(std::move(drawing));

    std::vector<std::string> before;
    for (const char* message : {"My name is Ada.", "I like tea.", "What do I like?"}) {
        run(sendFlowMessage(m_state, m_flowID, message, m_toolChain));
        ASSERT_EQ(outcome().errorMessage, std::nullopt) << problem();
        const auto replies = chatReplies(*m_state);
        ASSERT_EQ(replies.size(), before.size() + 1) << problem();
        // What was said before stays said.
        EXPECT_TRUE(std::equal(before.begin(), before.end(), replies.begin()));
        before = replies;
    }
    const auto turns = chatTurns(*m_state, m_flowID);
    ASSERT_EQ(turns.size(), 3U);
    ASSERT_TRUE(turns[2].reply && turns[2].context);
    EXPECT_EQ(turns[2].context->prompt,
              "Answer in one short sentence.\nBefore this was said:\nUser: My name is Ada.\n"
              "Assistant: " +
                  *turns[0].reply + "\nUser: I like tea.\nAssistant: " + *turns[1].reply +
                  "\n\nWhat do I like?");
}

TEST_F(EndToEndFlow, ExportsAPackageThatAnotherPackageBuildsWith) {
    add(supportFlow(addKnowledge({"The shop opens at nine on weekdays."})));
    const fs::path destination = m_tools.folder / "exported";
    FlowExport what;
    what.destination = destination;
    what.name = "ShopFlows";
    what.flows = *m_state->flows;
    what.agents = *m_state->agents;
    what.tools = *m_state->tools;
    what.ragIndexes = *m_state->ragIndexes;
    fs::create_directories(destination);
    const ExportOutcome exported =
        await(m_executor, exportFlows(m_executor, std::move(what), m_toolChain));
    ASSERT_TRUE(exported.isSuccess) << exported.message << "\n" << exported.rawOutput;
    EXPECT_EQ(exported.message, "Export succeeded.");
    EXPECT_TRUE(fs::exists(destination / "ShopFlows/README.md"));

    const fs::path user = m_tools.folder / "user";
    fs::create_directories(user / "Sources/User");
    test::writeContents(user / "Package.swift", R"(// swift-tools-version: 6.2
import PackageDescription

let package = Package(
    name: "User",
    platforms: [.macOS(.v26)],
    dependencies: [.package(path: "../exported/ShopFlows")],
    targets: [.executableTarget(name: "User", dependencies: ["ShopFlows"])]
)
)");
    test::writeContents(user / "Sources/User/main.swift", R"(import ShopFlows

let kind = Support.self
print(kind)
)");
    EXPECT_EQ(failureOf({m_toolChain->swift(), "build", "--package-path", user.string()}), "");
    EXPECT_EQ(failureOf({(user / ".build/debug/User").string()}), "");
}

} // namespace
} // namespace ombrel
