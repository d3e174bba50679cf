#include "flows/FlowRunner.h"

#include "platform/RunLoopExecutor.h"
#include "tests/flows/FlowWorkspace.h"
#include "tests/flows/ScriptedTools.h"
#include "tests/platform/Await.h"

#include <algorithm>
#include <csignal>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

namespace ombrel {
namespace {

using test::traceLine;
using Lines = std::vector<std::string>;

// A runner on scripted tools, and what it tells.
struct Runner {
    test::ScriptedTools tools;
    test::TestPlatform scripted = test::makeTestPlatform();
    std::shared_ptr<RunLoopExecutor> executor = std::make_shared<RunLoopExecutor>();
    std::shared_ptr<ToolChain> toolChain = std::make_shared<ToolChain>();
    Lines lines;
    std::vector<FlowTraceEvent> events;

    FlowRunner runner() const {
        Platform platform = scripted.platform;
        platform.executor = executor;
        return {platform, toolChain};
    }
    FlowRunner::PreparedCLI prepare() {
        return test::await(executor, runner().prepareCLI(onLine()));
    }
    FlowRunOutcome run(bool usesVectors = false) {
        return test::await(executor,
                           runner().run("/the/request.json", usesVectors, onLine(),
                                        [this](const FlowTraceEvent& e) { events.push_back(e); }));
    }
    FlowRunner::ConsoleHandler onLine() {
        return [this](std::string line) { lines.push_back(std::move(line)); };
    }
};

std::string message(const FlowRunner::PreparedCLI& prepared) {
    return prepared ? "" : prepared.error().message;
}

// The line that says how long the build took, with the figure left out.
std::string withoutSeconds(std::string line) {
    line.erase(
        std::remove_if(line.begin(), line.end(), [](char c) { return c >= '0' && c <= '9'; }),
        line.end());
    return line;
}

TEST(PrepareCLI, BuildsTheToolAndTellsWhatTheBuildSays) {
    Runner runner;
    std::filesystem::remove(runner.tools.studioCLI());
    runner.tools.setSwift("printf 'one\\n\\n \\t two \\t\\n' >&2; printf three; mkdir -p " +
                          runner.tools.studioCLI().parent_path().string() + "; touch " +
                          runner.tools.studioCLI().string());
    const auto prepared = runner.prepare();
    ASSERT_TRUE(prepared) << message(prepared);
    EXPECT_EQ(*prepared, runner.tools.studioCLI());
    EXPECT_EQ(runner.tools.swiftCalls(),
              "build --package-path " + runner.tools.core().string() + " --product StudioCLI\n");
    ASSERT_EQ(runner.lines.size(), 5U);
    EXPECT_EQ(runner.lines[0],
              "▸ Building Ombrel's build tools — this happens once after installing or updating "
              "the app and can take a minute…");
    EXPECT_EQ(Lines(runner.lines.begin() + 1, runner.lines.end() - 1),
              (Lines{"  one", "  two", "  three"}));
    EXPECT_EQ(withoutSeconds(runner.lines.back()), "▸ Build tools ready in . s");
}

TEST(PrepareCLI, ChecksAToolThatIsThere) {
    Runner runner;
    ASSERT_TRUE(runner.prepare());
    ASSERT_EQ(runner.lines.size(), 2U);
    EXPECT_EQ(runner.lines[0], "▸ Checking Ombrel's build tools are up to date…");
}

TEST(PrepareCLI, SaysNothingAndDoesNothingTheSecondTime) {
    Runner runner;
    ASSERT_TRUE(runner.prepare());
    const std::string calls = runner.tools.swiftCalls();
    runner.lines.clear();
    const auto again = runner.prepare();
    ASSERT_TRUE(again);
    EXPECT_EQ(*again, runner.tools.studioCLI());
    EXPECT_EQ(runner.lines, Lines());
    EXPECT_EQ(runner.tools.swiftCalls(), calls);
}

TEST(PrepareCLI, BuildsAgainWhenTheToolWasDeletedMeanwhile) {
    Runner runner;
    ASSERT_TRUE(runner.prepare());
    std::filesystem::remove(runner.tools.studioCLI());
    runner.tools.setSwift("touch " + runner.tools.studioCLI().string());
    runner.lines.clear();
    const auto again = runner.prepare();
    EXPECT_TRUE(again) << message(again);
    ASSERT_EQ(runner.lines.size(), 2U);
    EXPECT_TRUE(runner.lines[0].starts_with("▸ Building"));
}

TEST(PrepareCLI, FailsWithTheStatusAndTheOutputOfABuildThatFails) {
    Runner runner;
    runner.tools.setSwift("echo compiling; echo 'error: \xff' >&2; exit 7");
    const auto prepared = runner.prepare();
    ASSERT_FALSE(prepared);
    EXPECT_EQ(prepared.error(),
              (FlowRunOutcomeError{"Couldn't build StudioCLI (exit 7) — see the console tab.",
                                   "compiling\nerror: \uFFFD\n"}));
    EXPECT_EQ(runner.lines.back(), "✗ Ombrel's build tools didn't compile — see the output above.");
}

TEST(PrepareCLI, FailsWhenTheBuildSucceedsButThereIsNoTool) {
    Runner runner;
    std::filesystem::remove(runner.tools.studioCLI());
    const auto prepared = runner.prepare();
    EXPECT_EQ(message(prepared), "Couldn't build StudioCLI (exit 0) — see the console tab.");
}

TEST(PrepareCLI, FailsWhenTheCompilerCannotBeStarted) {
    Runner runner;
    ASSERT_TRUE(runner.toolChain->isSwiftToolchainAvailable());
    const auto swift = runner.tools.folder / "bin/swift";
    std::filesystem::remove(swift);
    const auto prepared = runner.prepare();
    ASSERT_FALSE(prepared);
    EXPECT_EQ(prepared.error(), (FlowRunOutcomeError{"Couldn't start swift build: The program \"" +
                                                         swift.string() + "\" wasn't found.",
                                                     ""}));
    EXPECT_EQ(runner.lines.size(), 1U);
}

TEST(FlowRunner, GivesTraceAndResultsOfARunThatSucceeds) {
    Runner runner;
    runner.tools.setStudioCLI("echo '" + traceLine("flowStarted", "hello") +
                              "'\necho 'RESULT: one'\necho 'RESULT: two'\necho 'noise'\necho said "
                              ">&2");
    const FlowRunOutcome outcome = runner.run();
    EXPECT_EQ(outcome.errorMessage, std::nullopt);
    ASSERT_EQ(outcome.trace.size(), 1U);
    EXPECT_EQ(outcome.trace[0].detail, "hello");
    EXPECT_EQ(outcome.resultLines, (Lines{"RESULT: one", "RESULT: two"}));
    EXPECT_EQ(outcome.resultLine, "RESULT: two");
    EXPECT_EQ(outcome.rawOutput,
              traceLine("flowStarted", "hello") + "\nRESULT: one\nRESULT: two\nnoise\n\nsaid\n");
    EXPECT_EQ(runner.lines.back(), "said");
    EXPECT_EQ(runner.events.size(), 1U);
}

TEST(FlowRunner, HandsThePathOfTheRequestAndTheEnvironmentOver) {
    Runner runner;
    runner.scripted.endpoints->variables = {{"OMBREL_MODEL_URL", "http://127.0.0.1:5/v1"}};
    runner.tools.setStudioCLI("echo \"RESULT: $# $1 $OMBREL_MODEL_URL\"");
    EXPECT_EQ(runner.run().resultLine, "RESULT: 1 /the/request.json http://127.0.0.1:5/v1");
    EXPECT_EQ(runner.scripted.endpoints->asked, std::vector<bool>{false});
    runner.run(true);
    EXPECT_EQ(runner.scripted.endpoints->asked, (std::vector<bool>{false, true}));
}

TEST(FlowRunner, PutsNoLineFeedBehindTheOutputWithoutErrors) {
    Runner runner;
    runner.tools.setStudioCLI("printf 'RESULT: x'");
    EXPECT_EQ(runner.run().rawOutput, "RESULT: x");
}

TEST(FlowRunner, ReadsALastLineWithoutALineFeed) {
    Runner runner;
    runner.tools.setStudioCLI("echo 'RESULT: one'\nprintf '%s' '" + traceLine("error", "no") +
                              "'\nprintf last >&2");
    const FlowRunOutcome outcome = runner.run();
    EXPECT_EQ(outcome.trace.size(), 1U);
    EXPECT_EQ(runner.events.size(), 1U);
    EXPECT_EQ(runner.lines.back(), "last");
}

TEST(FlowRunner, KeepsAResultLineWithItsMark) {
    Runner runner;
    runner.tools.setStudioCLI("echo 'RESULT:{\"kind\":1}'\necho ' RESULT: no'");
    EXPECT_EQ(runner.run().resultLines, Lines{"RESULT:{\"kind\":1}"});
}

TEST(FlowRunner, FailsWhenNothingButUnreadableLinesCameBack) {
    Runner runner;
    runner.tools.setStudioCLI("echo '{\"kind\":\"flowStarted\",\"elapsedMS\":5}'");
    const FlowRunOutcome outcome = runner.run();
    EXPECT_EQ(outcome.errorMessage, "No trace or result came back — see the console tab.");
    EXPECT_EQ(outcome.rawOutput, "{\"kind\":\"flowStarted\",\"elapsedMS\":5}\n");
}

TEST(FlowRunner, GivesNothingButTheOutputOfARunThatFails) {
    Runner runner;
    runner.tools.setStudioCLI("for i in 1 2 3 4 5; do echo '" + traceLine("nodeEntered", "x") +
                              "'; done\necho 'RESULT: x'\nexit 3");
    const FlowRunOutcome outcome = runner.run();
    EXPECT_EQ(outcome.errorMessage, "Run failed (exit 3) — see the console tab.");
    EXPECT_TRUE(outcome.trace.empty());
    EXPECT_TRUE(outcome.resultLines.empty());
    EXPECT_EQ(outcome.resultLine, std::nullopt);
    EXPECT_TRUE(outcome.rawOutput.ends_with("RESULT: x\n"));
    EXPECT_EQ(runner.events.size(), 5U);
}

TEST(FlowRunner, TellsTheSignalThatEndedARun) {
    Runner runner;
    runner.tools.setStudioCLI("kill -SEGV $$");
    EXPECT_EQ(runner.run().errorMessage, "Run failed (exit 11) — see the console tab.");
}

TEST(FlowRunner, FailsWhenTheToolCannotBeStarted) {
    Runner runner;
    std::filesystem::permissions(runner.tools.studioCLI(), std::filesystem::perms::owner_read);
    const FlowRunOutcome outcome = runner.run();
    EXPECT_EQ(outcome.errorMessage, "Couldn't launch StudioCLI: The program \"" +
                                        runner.tools.studioCLI().string() +
                                        "\" couldn't be started: Permission denied.");
    EXPECT_EQ(outcome.rawOutput, "");
}

TEST(FlowRunner, FailsAsThePreparationDid) {
    Runner runner;
    runner.tools.setSwift("echo broken; exit 1");
    EXPECT_EQ(runner.run(),
              FlowRunOutcome::failed("Couldn't build StudioCLI (exit 1) — see the console tab.",
                                     "broken\n"));
}

TEST(FlowRunner, ReadsALineOfAMebibyte) {
    Runner runner;
    runner.tools.setStudioCLI("head -c 1048576 /dev/zero | tr '\\0' x >&2\nprintf 'RESULT: '\n"
                              "head -c 1048576 /dev/zero | tr '\\0' y");
    const FlowRunOutcome outcome = runner.run();
    EXPECT_EQ(outcome.resultLine->size(), 8 + (std::size_t{1} << 20));
    EXPECT_EQ(runner.lines.back(), std::string(std::size_t{1} << 20, 'x'));
}

TEST(FlowRunner, ReadsAMillionLines) {
    Runner runner;
    runner.tools.setStudioCLI("awk 'BEGIN { for (i = 1; i <= 1000000; i++) print \"line \" i > "
                              "\"/dev/stderr\" }'\necho 'RESULT: x'");
    const FlowRunOutcome outcome = runner.run();
    EXPECT_EQ(outcome.errorMessage, std::nullopt);
    EXPECT_EQ(runner.lines.size(), 1000000U + 2);
    EXPECT_EQ(runner.lines.back(), "line 1000000");
    EXPECT_TRUE(outcome.rawOutput.ends_with("line 1000000\n"));
}

TEST(FlowRunner, RepairsInvalidText) {
    Runner runner;
    runner.tools.setStudioCLI("printf 'RESULT: a\\377b\\n'\nprintf 'c\\300\\n' >&2");
    const FlowRunOutcome outcome = runner.run();
    EXPECT_EQ(outcome.resultLine, "RESULT: a\uFFFDb");
    EXPECT_EQ(runner.lines.back(), "c\uFFFD");
    EXPECT_EQ(outcome.rawOutput, "RESULT: a\uFFFDb\n\nc\uFFFD\n");
}

TEST(FlowRunner, WaitsForAToolThatClosedItsStreams) {
    Runner runner;
    const auto mark = runner.tools.folder / "mark";
    runner.tools.setStudioCLI("echo 'RESULT: x'\nexec >&- 2>&-\nsleep 0.2\ntouch " + mark.string());
    EXPECT_EQ(runner.run().resultLine, "RESULT: x");
    EXPECT_TRUE(std::filesystem::exists(mark));
}

// Whether the process with that id is there and has not ended.
bool isRunning(int id) {
    if (kill(id, 0) != 0) {
        return false;
    }
    std::ifstream file("/proc/" + std::to_string(id) + "/stat");
    std::string line;
    if (!std::getline(file, line)) {
        return false;
    }
    const char state = line[line.rfind(')') + 2];
    return state != 'Z' && state != 'X';
}

TEST(FlowRunner, DestroyingTheRunEndsWhatItStarted) {
    Runner runner;
    const auto file = runner.tools.folder / "id";
    runner.tools.setStudioCLI("sleep 1000 & echo $! > " + file.string() + "\necho begun >&2\nwait");
    {
        auto task = runner.runner().run("/r", false, runner.onLine(), [](const auto&) {});
        task.await_suspend(std::noop_coroutine());
        runner.executor->runUntil(
            [&] { return !runner.lines.empty() && runner.lines.back() == "begun"; });
    }
    const int child = std::stoi(test::contentsOf(file));
    // Its end is at once; the test's own limit of time fails it otherwise.
    while (isRunning(child)) {
        std::this_thread::yield();
    }
    EXPECT_FALSE(isRunning(child));
}

} // namespace
} // namespace ombrel
