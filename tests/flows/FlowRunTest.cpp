#include "flows/FlowRun.h"

#include "flows/RunHighlight.h"
#include "tests/flows/FlowWorkspace.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace ombrel {
namespace {

using test::FlowWorkspace;
using test::traceLine;
using Kind = FlowConsoleLine::Kind;
using Lines = std::vector<std::string>;

// A line with its figures as "0".
std::string withoutFigures(const std::string& line) {
    std::string result;
    for (const char c : line) {
        const bool isDigit = c >= '0' && c <= '9';
        if (!isDigit || result.empty() || result.back() != '0') {
            result += isDigit ? '0' : c;
        }
    }
    return result;
}

TEST(RunFlow, TellsAllOfARunThatSucceeds) {
    FlowWorkspace workspace;
    workspace.tools.setStudioCLI("echo '▸ Generating Swift code…' >&2\necho 'compiled' >&2\n"
                                 "echo '✗ a remark' >&2\necho '" +
                                 traceLine("flowStarted", "hi") + "'\necho 'RESULT: .result: ok'");
    workspace.runFlow();
    EXPECT_FALSE(*workspace->isRunningFlow);
    EXPECT_EQ(*workspace->flowRunPhase, std::nullopt);
    EXPECT_EQ(*workspace->flowRunStartedAt, std::nullopt);
    EXPECT_EQ(workspace.outcome().errorMessage, std::nullopt);
    EXPECT_EQ(workspace.outcome().resultLine, "RESULT: .result: ok");
    const auto& lines = *workspace->flowConsoleLines;
    ASSERT_EQ(lines.size(), 7U);
    EXPECT_EQ(lines[0].kind, Kind::info);
    EXPECT_EQ(withoutFigures(lines[0].text), "Run of “Support” started at 0:0:0");
    EXPECT_EQ(lines[1].text, "Checking Ombrel's build tools are up to date…");
    EXPECT_EQ(lines[3].text, "Generating Swift code…");
    EXPECT_EQ(lines[3].kind, Kind::step);
    EXPECT_EQ(lines[4].text, "compiled");
    EXPECT_EQ(lines[4].kind, Kind::output);
    EXPECT_EQ(lines[5].text, "a remark");
    EXPECT_EQ(lines[5].kind, Kind::failure);
    EXPECT_EQ(lines[6].kind, Kind::success);
    EXPECT_EQ(withoutFigures(lines[6].text), "Finished in 0.0 s — the result is in the Trace tab.");
    const auto& highlight = **workspace->flowRunHighlight;
    EXPECT_EQ(highlight.succeeded, true);
    EXPECT_FALSE(highlight.isLive);
    EXPECT_EQ(highlight.visitedNodeIDs.size(), 1U);
}

TEST(RunFlow, SetsTheStageBeforeItBegins) {
    FlowWorkspace workspace;
    workspace->lastFlowRunOutcome = FlowRunOutcome::failed("old");
    workspace->flowConsoleLines = {FlowConsoleLine()};
    auto task = runFlow(workspace.state, workspace.flowID, workspace.toolChain);
    task.await_suspend(std::noop_coroutine());
    EXPECT_TRUE(*workspace->isRunningFlow);
    EXPECT_EQ(*workspace->lastFlowRunOutcome, std::nullopt);
    EXPECT_EQ(*workspace->flowRunPhase, "Starting…");
    EXPECT_TRUE(*workspace->flowRunStartedAt);
    EXPECT_EQ(workspace->flowConsoleLines->size(), 1U);
    EXPECT_TRUE((*workspace->flowRunHighlight)->isLive);
    EXPECT_EQ((*workspace->flowRunHighlight)->flowID, workspace.flowID);
}

TEST(RunFlow, ASecondClickDoesNothing) {
    FlowWorkspace workspace;
    const auto count = workspace.tools.folder / "count";
    workspace.tools.setStudioCLI("echo x >> " + count.string() + "\necho 'RESULT: x'");
    workspace.executor->spawn(runFlow(workspace.state, workspace.flowID, workspace.toolChain));
    workspace.executor->spawn(runFlow(workspace.state, workspace.flowID, workspace.toolChain));
    workspace.executor->runUntil([&] { return workspace->lastFlowRunOutcome->has_value(); });
    EXPECT_EQ(test::contentsOf(count), "x\n");
}

TEST(RunFlow, DoesNothingForAFlowThatIsNotThere) {
    FlowWorkspace workspace;
    workspace.run(runFlow(workspace.state, Uuid::random(), workspace.toolChain));
    EXPECT_FALSE(*workspace->isRunningFlow);
    EXPECT_TRUE(workspace->flowConsoleLines->empty());
}

TEST(RunFlow, DoesNothingForAFlowWithErrors) {
    FlowWorkspace workspace;
    workspace.editFlow([](Flow& flow) { flow.edges.clear(); });
    workspace.runFlow();
    EXPECT_FALSE(*workspace->isRunningFlow);
    EXPECT_TRUE(workspace->flowConsoleLines->empty());
}

TEST(RunFlow, FollowsPhasesAndStepsWhileTheRunGoesOn) {
    FlowWorkspace workspace;
    const auto gate = workspace.tools.folder / "gate";
    workspace.tools.setStudioCLI(
        "echo '▸ Running…' >&2\necho '" + traceLine("flowStarted", "hi") + "'\necho '" +
        traceLine("nodeEntered", "input: hi", R"(,"node":"Writer")") + "'\nwhile [ ! -e " +
        gate.string() + " ]; do sleep 0.01; done\necho 'RESULT: x'");
    workspace.executor->spawn(runFlow(workspace.state, workspace.flowID, workspace.toolChain));
    // The test's limit of time fails it when this never comes.
    workspace.executor->runUntil([&] {
        return *workspace->flowRunPhase == "Running…" && *workspace->flowRunHighlight &&
               (*workspace->flowRunHighlight)->visitedNodeIDs.size() == 2;
    });
    EXPECT_TRUE(*workspace->isRunningFlow);
    EXPECT_EQ(bannerText(**workspace->flowRunHighlight), "Running · step 2");
    EXPECT_TRUE((*workspace->flowRunHighlight)->activeNodeID);
    test::writeContents(gate, "");
    workspace.executor->runUntil([&] { return !*workspace->isRunningFlow; });
    EXPECT_EQ(workspace.outcome().trace.size(), 2U);
}

TEST(RunFlow, TellsObserversOfManyLinesInFewChanges) {
    FlowWorkspace workspace;
    workspace.tools.setStudioCLI("awk 'BEGIN { for (i = 1; i <= 100000; i++) print \"line \" i > "
                                 "\"/dev/stderr\" }'\necho 'RESULT: x'");
    int changes = 0;
    const auto subscription = workspace->flowConsoleLines.observe([&] { ++changes; });
    workspace.runFlow();
    EXPECT_LE(workspace->flowConsoleLines->size(), 4000U);
    EXPECT_EQ((workspace->flowConsoleLines->end() - 2)->text, "line 100000");
    EXPECT_LT(changes, 5000);
}

TEST(RunFlow, ShowsTheStepsOfARunThatFailsAndKeepsNoTrace) {
    FlowWorkspace workspace;
    workspace.tools.setStudioCLI("echo '" + traceLine("flowStarted", "hi") + "'\necho '" +
                                 traceLine("nodeEntered", "input: hi", R"(,"node":"Writer")") +
                                 "'\necho '" +
                                 traceLine("promptBuilt", "p", R"(,"tokenEstimate":4)") +
                                 "'\necho '" + traceLine("outputReceived", "o") + "'\necho '" +
                                 traceLine("flowFinished", ".result") + "'\nexit 3");
    workspace.runFlow();
    EXPECT_TRUE(workspace.outcome().trace.empty());
    EXPECT_EQ(workspace.outcome().errorMessage, "Run failed (exit 3) — see the console tab.");
    const auto& highlight = **workspace->flowRunHighlight;
    EXPECT_EQ(highlight.visitedNodeIDs.size(), 3U);
    EXPECT_EQ(highlight.succeeded, false);
    EXPECT_EQ(workspace.lastLine().kind, Kind::failure);
    EXPECT_EQ(withoutFigures(workspace.lastLine().text),
              "Failed after 0.0 s: Run failed (exit 0) — see the console tab.");
}

TEST(RunFlow, WithResultsAloneSucceedsAndShowsNoPath) {
    FlowWorkspace workspace;
    workspace.tools.setStudioCLI("echo 'RESULT: x'");
    workspace.runFlow();
    EXPECT_EQ(workspace.outcome().errorMessage, std::nullopt);
    EXPECT_TRUE(workspace.outcome().trace.empty());
    EXPECT_TRUE((*workspace->flowRunHighlight)->visitedNodeIDs.empty());
    EXPECT_EQ((*workspace->flowRunHighlight)->succeeded, true);
}

TEST(RunFlow, SaysThatNothingCameBack) {
    FlowWorkspace workspace;
    workspace.runFlow();
    EXPECT_EQ(workspace.outcome().errorMessage,
              "No trace or result came back — see the console tab.");
}

TEST(RunFlow, GoesOnWhenTheHighlightIsCleared) {
    FlowWorkspace workspace;
    workspace.tools.setStudioCLI("echo '" + traceLine("flowStarted", "hi") + "'");
    const auto subscription = workspace->flowRunPhase.observe([&] {
        if (*workspace->flowRunPhase && *workspace->flowRunHighlight) {
            workspace->clearRunHighlight();
        }
    });
    workspace.runFlow();
    EXPECT_EQ(*workspace->flowRunHighlight, std::nullopt);
    EXPECT_EQ(workspace.outcome().errorMessage, std::nullopt);
}

TEST(RunFlow, ReportsAMissingToolAsTheOutcome) {
    FlowWorkspace workspace;
    workspace.tools.set("OMBREL_RUNTIME_PATH", "/no/such/runtime");
    workspace.toolChain = std::make_shared<ToolChain>();
    workspace.runFlow();
    EXPECT_EQ(workspace.outcome(),
              FlowRunOutcome::failed(
                  "OmbrelRuntime not found at /no/such/runtime. The app's bundled copy may be "
                  "missing — rebuild the app, or set OMBREL_RUNTIME_PATH."));
    EXPECT_FALSE(*workspace->isRunningFlow);
    EXPECT_EQ((*workspace->flowRunHighlight)->succeeded, false);
    EXPECT_EQ(workspace.scripted.endpoints->asked, std::vector<bool>());
}

TEST(RunFlow, ReportsADrawingThatIsNoTreeAsTheOutcome) {
    FlowWorkspace workspace;
    test::Drawing drawing; // Valid, but it does not begin with an agent.
    const Uuid tool = drawing.tool("Lookup");
    const Uuid agent = drawing.agent("Reader");
    drawing.connect(drawing.start(), tool);
    drawing.connect(tool, agent);
    drawing.connect(agent, drawing.end());
    workspace.flowID = workspace.add(std::move(drawing), "Odd");
    workspace.runFlow();
    EXPECT_EQ(workspace.outcome(), FlowRunOutcome::failed("Start isn't connected to an agent."));
}

TEST(RunFlow, ReportsABrokenBuildOfTheToolsAsTheOutcomeAndCanRunAgain) {
    FlowWorkspace workspace;
    workspace.tools.setSwift("echo broken; exit 1");
    workspace.runFlow();
    EXPECT_EQ(workspace.outcome(),
              FlowRunOutcome::failed("Couldn't build StudioCLI (exit 1) — see the console tab.",
                                     "broken\n"));
    EXPECT_EQ(workspace.tools.temporaryFiles().size(), 0U);
    workspace.tools.setSwift("exit 0");
    workspace.tools.setStudioCLI("echo 'RESULT: x'");
    workspace.runFlow();
    EXPECT_EQ(workspace.outcome().resultLine, "RESULT: x");
}

TEST(RunFlow, ReportsARequestThatCannotBeWrittenAsTheOutcome) {
    FlowWorkspace workspace;
    workspace.tools.set("TMPDIR", (workspace.tools.folder / "none").string());
    workspace.runFlow();
    ASSERT_TRUE(workspace.outcome().errorMessage);
    EXPECT_TRUE(workspace.outcome().errorMessage->starts_with("Couldn't encode the run request: "))
        << *workspace.outcome().errorMessage;
}

TEST(RunFlow, WritesTheRequestForTheUserAloneAndRemovesIt) {
    FlowWorkspace workspace;
    workspace.editFlow(
        [](Flow& flow) { flow.startInput = {test::property("count", PropertyKind::Int())}; });
    (*workspace->flowSampleInputValues.edit())["count"] = "12";
    const auto copy = workspace.tools.folder / "copy";
    workspace.tools.setStudioCLI("cp -p \"$1\" " + copy.string() + "\necho \"RESULT: $1\"");
    workspace.runFlow();
    const std::string path = workspace.outcome().resultLine->substr(8);
    EXPECT_TRUE(path.starts_with((workspace.tools.folder / "tmp/OmbrelRunRequest-").string()));
    EXPECT_TRUE(path.ends_with(".json"));
    EXPECT_EQ(workspace.tools.temporaryFiles().size(), 0U);
    struct stat status {};
    ASSERT_EQ(stat(copy.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600U);
    const std::string request = test::contentsOf(copy);
    EXPECT_NE(request.find(R"("inputJSON":"{\"count\":12}")"), std::string::npos) << request;
    EXPECT_NE(request.find(R"("runtimePath":")" + workspace.tools.runtime().string() + "\""),
              std::string::npos);
    EXPECT_NE(request.find(R"("packageDirectory":")" + packageDirectory(workspace.flowID).string() +
                           "\""),
              std::string::npos);
    EXPECT_NE(request.find(R"("name":"Writer")"), std::string::npos);
}

// Gives the first agent knowledge that is searched by vectors.
void attachVectors(const FlowWorkspace& workspace, const std::string& agentName) {
    DocumentChunk chunk;
    chunk.id = Uuid::random();
    chunk.text = "The bus leaves at ten.";
    chunk.embedding = Vector(std::vector<double>{1, 0});
    SourceDocument source;
    source.id = Uuid::random();
    auto index = workspace->editCurrentIndex();
    index->chunksByDocument[source.id] = {chunk};
    index->sources.push_back(source);
    index->variants.front().settings.index = IndexKind::vector;
    const auto agents = workspace->agents.edit();
    for (Agent& agent : *agents) {
        if (agent.name == agentName) {
            agent.ragAttachments.push_back({Uuid::random(), index->id, 5, 0});
        }
    }
}

TEST(RunFlow, AsksForTheEmbeddingModelWhenAnAgentOnAnyPathSearchesByVectors) {
    FlowWorkspace workspace;
    test::Drawing drawing;
    const Uuid first = drawing.agent("First", test::enumeration({"a", "b"}));
    const Uuid tool = drawing.tool("Lookup");
    const Uuid second =
        drawing.agent("Second", test::object({test::property("ok", PropertyKind::Bool())}));
    const Uuid branch = drawing.branch("ok");
    const Uuid third = drawing.agent("Third");
    drawing.connect(drawing.start(), first);
    drawing.connect(first, tool, "a");
    drawing.connect(tool, second);
    drawing.connect(second, branch);
    drawing.connect(branch, drawing.end("yes"), "true");
    drawing.connect(branch, third, "false");
    drawing.connect(third, drawing.end("no"));
    workspace.flowID = workspace.add(std::move(drawing), "Deep");
    workspace.runFlow();
    attachVectors(workspace, "Third");
    workspace.runFlow();
    EXPECT_EQ(workspace.scripted.endpoints->asked, (std::vector<bool>{false, true}));
}

TEST(RunFlow, GoesOnWhenTheProjectIsClosed) {
    FlowWorkspace workspace;
    const auto gate = workspace.tools.folder / "gate";
    const auto mark = workspace.tools.folder / "mark";
    workspace.tools.setStudioCLI("echo begun >&2\nwhile [ ! -e " + gate.string() +
                                 " ]; do sleep 0.01; done\necho 'RESULT: x'\ntouch " +
                                 mark.string());
    const std::weak_ptr<AppState> closed = workspace.state;
    workspace.executor->spawn(runFlow(workspace.state, workspace.flowID, workspace.toolChain));
    workspace.executor->runUntil([&] {
        return !workspace->flowConsoleLines->empty() && workspace.lastLine().text == "begun";
    });
    workspace.state.reset();
    EXPECT_TRUE(closed.expired());
    test::writeContents(gate, "");
    workspace.executor->runUntil(
        [&] { return std::filesystem::exists(mark) && workspace.tools.temporaryFiles().empty(); });
    EXPECT_TRUE(std::filesystem::exists(mark));
}

TEST(RunFlow, IsUndoneByNoUndo) {
    FlowWorkspace workspace;
    workspace.tools.setStudioCLI("echo 'RESULT: x'");
    const PersistedProject before = workspace->makeSnapshot();
    workspace.runFlow();
    EXPECT_EQ(workspace->makeSnapshot(), before);
    EXPECT_FALSE(workspace->hasPendingCheckpoint());
}

} // namespace
} // namespace ombrel
