#include "platform/Process.h"

#include "platform/RunLoopExecutor.h"
#include "tests/platform/Await.h"
#include "tests/support/TestExecutor.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace ombrel {
namespace {

using Ending = ProcessOutput::Ending;

ProcessLaunch shell(std::string script) {
    ProcessLaunch launch;
    launch.arguments = {"/bin/sh", "-c", std::move(script)};
    return launch;
}

Result<ProcessOutput> run(ProcessLaunch launch, ProcessBounds bounds = {}) {
    const auto executor = std::make_shared<RunLoopExecutor>();
    return test::await(executor, runToEnd(executor, std::move(launch), bounds));
}

std::string outputOf(ProcessLaunch launch) {
    const Result<ProcessOutput> result = run(std::move(launch));
    return result ? result->output : "error: " + result.error().message;
}

// Whether the process is there and has not ended.
bool isRunning(int id) {
    std::ifstream file("/proc/" + std::to_string(id) + "/stat");
    std::string line;
    if (!std::getline(file, line)) {
        return false;
    }
    const std::size_t state = line.rfind(')') + 2;
    return line[state] != 'Z' && line[state] != 'X';
}

void waitUntilGone(int id) {
    while (isRunning(id)) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
}

void waitUntilThere(const std::filesystem::path& file) {
    while (!std::filesystem::exists(file)) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
}

std::filesystem::path makeFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "ombrel-process-XXXXXX");
    return mkdtemp(pattern.data());
}

// A program that is being watched, with all that it has written.
struct Watched {
    std::shared_ptr<RunLoopExecutor> executor = std::make_shared<RunLoopExecutor>();
    std::string output;
    std::string error;
    std::optional<ProcessExit> exit;
    std::unique_ptr<Process> process;

    void start(ProcessLaunch launch) {
        ProcessHandlers handlers;
        handlers.onOutput = [this](std::string_view bytes) { output += bytes; };
        handlers.onError = [this](std::string_view bytes) { error += bytes; };
        handlers.onExit = [this](ProcessExit how) { exit = how; };
        auto started = Process::start(executor, std::move(launch), std::move(handlers));
        ASSERT_TRUE(started) << started.error().message;
        process = std::move(*started);
    }
    void runUntilOutputHas(std::string_view text) {
        executor->runUntil([&] { return output.find(text) != std::string::npos; });
    }
    void runUntilExit() {
        executor->runUntil([&] { return exit.has_value(); });
    }
};

// This executable as the parent of a program, when it is run with the variable set: tells the
// program's id and waits to be killed.
constexpr const char* parentVariable = "OMBREL_TEST_PROCESS_PARENT";

const bool isNoParent = [] {
    if (std::getenv(parentVariable) == nullptr) {
        return true;
    }
    const auto executor = std::make_shared<RunLoopExecutor>();
    ProcessLaunch launch;
    launch.arguments = {"sleep", "1000"};
    const auto process = *Process::start(executor, launch, {});
    const std::string line = std::to_string(process->id()) + "\n";
    [[maybe_unused]] const ssize_t written = write(STDOUT_FILENO, line.data(), line.size());
    executor->run();
    return false;
}();

TEST(Process, GivesOutputErrorAndExitStatus) {
    const auto result = run(shell("echo out; echo err >&2; exit 3"));
    ASSERT_TRUE(result);
    EXPECT_EQ(result->ending, Ending::exited);
    EXPECT_EQ(result->output, "out\n");
    EXPECT_EQ(result->error, "err\n");
    EXPECT_EQ(result->exit, (ProcessExit{3, 0}));
    EXPECT_FALSE(result->exit.succeeded());
    EXPECT_EQ(result->exit.description(), "exit status 3");
}

TEST(Process, JoinsStandardErrorToStandardOutputInTheOrderOfWriting) {
    ProcessLaunch launch = shell("echo one; echo two >&2; echo three; exit 3");
    launch.errorsToOutput = true;
    const auto result = run(launch);
    ASSERT_TRUE(result);
    EXPECT_EQ(result->output, "one\ntwo\nthree\n");
    EXPECT_EQ(result->error, "");
    EXPECT_EQ(result->exit, (ProcessExit{3, 0}));
}

TEST(Process, TellsTheSignalThatEndedAProgram) {
    const auto result = run(shell("kill -KILL $$"));
    ASSERT_TRUE(result);
    EXPECT_EQ(result->exit, (ProcessExit{0, SIGKILL}));
    EXPECT_EQ(result->exit.description(), "signal 9 (Killed)");
}

TEST(Process, PassesArgumentsAsTheyAre) {
    ProcessLaunch launch;
    launch.arguments = {"printf", "[%s]", "two words", "$HOME", "", "\"*'\n", "é"};
    EXPECT_EQ(outputOf(launch), "[two words][$HOME][][\"*'\n][é]");
}

TEST(Process, SaysThatAProgramWasNotFound) {
    for (const char* name : {"ombrel-no-such-program", "/no/such/program"}) {
        ProcessLaunch launch;
        launch.arguments = {name};
        const auto result = run(launch);
        ASSERT_FALSE(result);
        EXPECT_EQ(result.error().message,
                  "The program \"" + std::string(name) + "\" wasn't found.");
    }
}

TEST(Process, SaysWhyAFileCannotBeRun) {
    const auto folder = makeFolder();
    const auto file = folder / "data";
    std::ofstream(file) << "not a program";
    ProcessLaunch launch;
    launch.arguments = {file};
    const auto result = run(launch);
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error().message,
              "The program \"" + file.string() + "\" couldn't be started: Permission denied.");
    std::filesystem::permissions(file, std::filesystem::perms::owner_all);
    const auto unknownFormat = run(launch);
    ASSERT_FALSE(unknownFormat);
    EXPECT_EQ(unknownFormat.error().message,
              "The program \"" + file.string() + "\" couldn't be started: Exec format error.");
    std::filesystem::remove_all(folder);
}

TEST(Process, RefusesToStartNothing) {
    EXPECT_EQ(run(ProcessLaunch{}).error().message, "There is no program to start.");
    ProcessLaunch launch;
    launch.arguments = {"printf", std::string("a\0b", 3)};
    EXPECT_EQ(run(launch).error().message,
              "The program \"printf\" couldn't be started: an argument holds a zero byte.");
}

TEST(Process, RunsInTheWorkingDirectory) {
    const auto folder = std::filesystem::canonical(makeFolder());
    ProcessLaunch launch = shell("pwd -P");
    launch.workingDirectory = folder;
    EXPECT_EQ(outputOf(launch), folder.string() + "\n");
    launch.workingDirectory = folder / "missing";
    EXPECT_EQ(outputOf(launch), "error: The folder \"" + (folder / "missing").string() +
                                    "\" couldn't be entered: No such file or directory.");
    std::filesystem::remove_all(folder);
}

TEST(Process, AddsToTheEnvironmentAndReplacesInIt) {
    setenv("OMBREL_TEST_KEPT", "kept", 1);
    setenv("OMBREL_TEST_REPLACED", "old", 1);
    ProcessLaunch launch = shell("echo $OMBREL_TEST_KEPT $OMBREL_TEST_REPLACED $OMBREL_TEST_ADDED; "
                                 "env | grep -c ^OMBREL_TEST_REPLACED=");
    launch.environment = {{"OMBREL_TEST_REPLACED", "new"}, {"OMBREL_TEST_ADDED", "a=b"}};
    EXPECT_EQ(outputOf(launch), "kept new a=b\n1\n");
}

TEST(Process, FeedsStandardInputAndEndsIt) {
    ProcessLaunch launch = shell("cat; echo done");
    launch.input = "line\n";
    EXPECT_EQ(outputOf(launch), "line\ndone\n");
    launch.input.clear();
    EXPECT_EQ(outputOf(launch), "done\n");
}

TEST(Process, FeedsAndReadsMoreThanPipesHold) {
    ProcessLaunch launch;
    launch.arguments = {"cat"};
    for (int i = 0; i < 500'000; ++i) {
        launch.input += std::to_string(i) + "\n";
    }
    const auto result = run(launch);
    ASSERT_TRUE(result);
    EXPECT_TRUE(result->output == launch.input);
    EXPECT_TRUE(result->exit.succeeded());
}

TEST(Process, OutlivesAProgramThatDoesNotReadItsInput) {
    ProcessLaunch launch = shell("exec <&-; echo closed");
    launch.input = std::string(1 << 20, 'x');
    EXPECT_EQ(outputOf(launch), "closed\n");
}

TEST(Process, WaitsForAProgramThatClosedItsStreams) {
    const auto result = run(shell("exec >&- 2>&-; sleep 0.2; exit 5"));
    ASSERT_TRUE(result);
    EXPECT_EQ(result->exit, (ProcessExit{5, 0}));
}

TEST(Process, DoesNotWaitForWhatKeepsItsStreamsOpen) {
    const auto result = run(shell("setsid sleep 1000 & echo $!; exit 4"));
    ASSERT_TRUE(result);
    EXPECT_EQ(result->exit, (ProcessExit{4, 0}));
    const int left = std::stoi(result->output);
    ::kill(left, SIGKILL);
    waitUntilGone(left);
}

TEST(Process, KeepsWhatALateWriterStillGave) {
    EXPECT_EQ(outputOf(shell("(sleep 0.1; echo late) & echo early")), "early\nlate\n");
}

TEST(Process, KillsWhatAProgramLeftInItsGroup) {
    const auto result = run(shell("sleep 1000 >/dev/null 2>&1 & echo $!"));
    ASSERT_TRUE(result);
    waitUntilGone(std::stoi(result->output));
}

TEST(Process, HandsOutputOverWhileTheProgramRuns) {
    Watched watched;
    watched.start(shell("echo ready; exec sleep 1000"));
    watched.runUntilOutputHas("ready\n");
    EXPECT_FALSE(watched.exit);
    EXPECT_TRUE(isRunning(watched.process->id()));
    watched.process->terminate();
    watched.runUntilExit();
    EXPECT_EQ(watched.exit, (ProcessExit{0, SIGTERM}));
    // The program is gone: nothing is signalled any more.
    watched.process->terminate();
    watched.process->kill();
}

TEST(Process, KillEndsAProgramThatIgnoresTermination) {
    Watched watched;
    watched.start(shell("trap '' TERM; echo ready; while :; do sleep 0.01; done"));
    watched.runUntilOutputHas("ready\n");
    watched.process->terminate();
    watched.process->kill();
    watched.runUntilExit();
    EXPECT_EQ(watched.exit, (ProcessExit{0, SIGKILL}));
}

TEST(Process, DestroyingItKillsTheWholeGroupAndSilencesTheHandlers) {
    Watched watched;
    watched.start(shell("sleep 1000 & echo $!; echo ready; wait"));
    watched.runUntilOutputHas("ready\n");
    const int leader = watched.process->id();
    const int inner = std::stoi(watched.output);
    watched.process.reset();
    waitUntilGone(leader);
    waitUntilGone(inner);
    bool isTurnOver = false;
    watched.executor->post([&] { isTurnOver = true; });
    watched.executor->runUntil([&] { return isTurnOver; });
    EXPECT_FALSE(watched.exit);
}

TEST(Process, MayBeDestroyedByItsOwnHandler) {
    const auto executor = std::make_shared<RunLoopExecutor>();
    std::unique_ptr<Process> process;
    int calls = 0;
    ProcessHandlers handlers;
    handlers.onOutput = [&](std::string_view) {
        ++calls;
        process.reset();
    };
    handlers.onExit = [&](ProcessExit) { ++calls; };
    process = *Process::start(executor, shell("echo a; sleep 0.05; echo b"), handlers);
    const int id = process->id();
    executor->runUntil([&] { return process == nullptr; });
    waitUntilGone(id);
    EXPECT_EQ(calls, 1);
}

TEST(Process, AProgramWaitsWhileTheMainThreadIsBehind) {
    const auto executor = std::make_shared<test::TestExecutor>();
    const auto folder = makeFolder();
    const auto mark = folder / "written";
    std::size_t bytes = 0;
    bool hasExited = false;
    ProcessHandlers handlers;
    handlers.onOutput = [&](std::string_view piece) { bytes += piece.size(); };
    handlers.onExit = [&](ProcessExit) { hasExited = true; };
    ProcessLaunch launch = shell("head -c 8000000 /dev/zero; echo done > '" + mark.string() +
                                 "'; exec >&-; sleep 1000");
    const auto process = *Process::start(executor, launch, handlers);
    // Nothing is handled, so no more is taken than the bound and what pipes hold.
    std::size_t posted = 0;
    for (int unchanged = 0; unchanged < 50; ++unchanged) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        if (executor->postedCount() != posted) {
            posted = executor->postedCount();
            unchanged = 0;
        }
    }
    EXPECT_FALSE(std::filesystem::exists(mark));
    while (bytes < 8'000'000) {
        executor->runAll();
    }
    waitUntilThere(mark);
    EXPECT_FALSE(hasExited);
    std::filesystem::remove_all(folder);
}

TEST(Process, InheritsNoDescriptorButTheThreeStreams) {
    const int null = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    const int inheritable = fcntl(null, F_DUPFD, 40);
    ASSERT_GE(inheritable, 40);
    const std::string folder = "/proc/$$/fd/";
    const std::string found =
        outputOf(shell("test -e " + folder + std::to_string(inheritable) +
                       " && echo leaked; test -e " + folder + "2 && echo standard"));
    ::close(inheritable);
    ::close(null);
    EXPECT_EQ(found, "standard\n");
}

TEST(Process, StartsWithDefaultSignalsAndNoneBlocked) {
    const auto before = std::signal(SIGPIPE, SIG_IGN);
    const std::string masks = outputOf(shell("grep -E '^Sig(Blk|Ign)' /proc/self/status"));
    std::signal(SIGPIPE, before);
    EXPECT_EQ(masks, "SigBlk:\t0000000000000000\nSigIgn:\t0000000000000000\n");
}

TEST(Process, IsHeldToItsLimits) {
    const auto folder = makeFolder();
    ProcessLaunch launch = shell("ulimit -c; ulimit -v; ulimit -t; ulimit -n; ulimit -f");
    launch.limits.addressSpaceBytes = std::uint64_t{512} << 20;
    launch.limits.processorSeconds = 7;
    launch.limits.openFiles = 32;
    launch.limits.fileBytes = 4096;
    EXPECT_EQ(outputOf(launch), "0\n524288\n7\n32\n8\n");

    ProcessLaunch writer = shell("exec head -c 10000 /dev/zero > file");
    writer.workingDirectory = folder;
    writer.limits.fileBytes = 4096;
    const auto written = run(writer);
    ASSERT_TRUE(written);
    EXPECT_EQ(written->exit, (ProcessExit{0, SIGXFSZ}));
    EXPECT_EQ(std::filesystem::file_size(folder / "file"), 4096u);

    ProcessLaunch spinner = shell("while :; do :; done");
    spinner.limits.processorSeconds = 1;
    const auto spun = run(spinner);
    ASSERT_TRUE(spun);
    EXPECT_EQ(spun->exit, (ProcessExit{0, SIGXCPU}));
    std::filesystem::remove_all(folder);
}

TEST(Process, DoesNotRaiseALimitAboveItsOwn) {
    rlimit before{};
    getrlimit(RLIMIT_NOFILE, &before);
    ProcessLaunch launch = shell("ulimit -Hn");
    launch.limits.openFiles = before.rlim_max;
    if (before.rlim_max != RLIM_INFINITY) {
        launch.limits.openFiles = before.rlim_max + 1000;
        EXPECT_EQ(outputOf(launch), std::to_string(before.rlim_max) + "\n");
    } else {
        EXPECT_EQ(outputOf(launch), "unlimited\n");
    }
}

TEST(Process, EndsWithItsParent) {
    Watched parent;
    ProcessLaunch launch;
    launch.arguments = {"/proc/self/exe"};
    launch.environment = {{parentVariable, "1"}};
    parent.start(launch);
    parent.runUntilOutputHas("\n");
    const int id = std::stoi(parent.output);
    EXPECT_TRUE(isRunning(id));
    // Only the parent: the program has a group of its own.
    ::kill(parent.process->id(), SIGKILL);
    waitUntilGone(id);
}

TEST(RunToEnd, KillsAProgramWhoseTimeIsOver) {
    const auto folder = makeFolder();
    const auto mark = folder / "begun";
    const auto executor = std::make_shared<test::TestExecutor>();
    ProcessBounds bounds;
    bounds.time = std::chrono::seconds(60);
    ProcessLaunch launch =
        shell("echo begun; echo > '" + mark.string() + "'; sleep 1000 & exec sleep 1000");
    const auto result = test::start(*executor, runToEnd(executor, launch, bounds));
    waitUntilThere(mark);
    executor->advance(std::chrono::seconds(59));
    EXPECT_FALSE(*result);
    executor->advance(std::chrono::seconds(1));
    while (!*result) {
        executor->runAll();
    }
    ASSERT_TRUE(**result);
    EXPECT_EQ((**result)->ending, Ending::outOfTime);
    EXPECT_EQ((**result)->exit, (ProcessExit{0, SIGKILL}));
    EXPECT_EQ((**result)->output, "begun\n");
    std::filesystem::remove_all(folder);
}

TEST(RunToEnd, KillsAProgramThatWritesTooMuch) {
    ProcessBounds bounds;
    bounds.outputBytes = 100'000;
    for (const char* script : {"exec cat /dev/zero", "exec cat /dev/zero >&2"}) {
        const auto result = run(shell(script), bounds);
        ASSERT_TRUE(result);
        EXPECT_EQ(result->ending, Ending::tooMuchOutput);
        EXPECT_EQ(result->output.size() + result->error.size(), 100'000u);
    }
    const auto exact = run(shell("exec head -c 100000 /dev/zero"), bounds);
    ASSERT_TRUE(exact);
    EXPECT_EQ(exact->ending, Ending::exited);
}

TEST(RunToEnd, LeavesNoTimerBehind) {
    const auto executor = std::make_shared<test::TestExecutor>();
    ProcessBounds bounds;
    bounds.time = std::chrono::seconds(60);
    const auto result = test::start(*executor, runToEnd(executor, shell("exit 0"), bounds));
    while (!*result) {
        executor->runAll();
    }
    EXPECT_EQ(executor->delayedCount(), 0u);
}

Task<void> runAndForget(Task<Result<ProcessOutput>> task, bool* hasEnded) {
    const auto result = co_await std::move(task);
    *hasEnded = result.has_value() || !result.error().message.empty();
}

TEST(RunToEnd, DestroyingTheTaskKillsTheProgram) {
    const auto folder = makeFolder();
    const auto file = folder / "id";
    const auto executor = std::make_shared<RunLoopExecutor>();
    bool hasEnded = false;
    int id = 0;
    std::thread watcher([&] {
        while (id == 0) {
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
            std::ifstream(file) >> id;
        }
        executor->stop();
    });
    executor->runUntil(runAndForget(
        runToEnd(executor, shell("echo $$ > '" + file.string() + "'; exec sleep 1000"), {}),
        &hasEnded));
    watcher.join();
    waitUntilGone(id);
    EXPECT_FALSE(hasEnded);
    std::filesystem::remove_all(folder);
}

TEST(RunToEnd, DiscardsErrorsWhenAsked) {
    ProcessLaunch launch = shell("echo chatter >&2; echo said");
    launch.discardsErrors = true;
    const auto result = run(launch);
    ASSERT_TRUE(result);
    EXPECT_EQ(result->output, "said\n");
    EXPECT_EQ(result->error, "");
}

TEST(RunToEnd, RunsManyProgramsAtOnce) {
    const auto executor = std::make_shared<RunLoopExecutor>();
    constexpr int count = 40;
    int ended = 0;
    std::array<std::string, count> outputs;
    std::vector<std::unique_ptr<Process>> processes;
    for (int i = 0; i < count; ++i) {
        ProcessHandlers handlers;
        handlers.onOutput = [&outputs, i](std::string_view bytes) {
            outputs[static_cast<std::size_t>(i)] += bytes;
        };
        handlers.onExit = [&ended](ProcessExit) { ++ended; };
        processes.push_back(
            *Process::start(executor, shell("echo " + std::to_string(i)), handlers));
    }
    executor->runUntil([&] { return ended == count; });
    for (int i = 0; i < count; ++i) {
        EXPECT_EQ(outputs[static_cast<std::size_t>(i)], std::to_string(i) + "\n");
    }
}

TEST(FindProgram, LooksInThePathAndAtPaths) {
    const auto found = findProgram("sh");
    ASSERT_TRUE(found);
    EXPECT_EQ(found->filename(), "sh");
    EXPECT_EQ(findProgram(found->string()), found);
    EXPECT_FALSE(findProgram(""));
    EXPECT_FALSE(findProgram("/etc/passwd"));
    EXPECT_FALSE(findProgram("/usr"));
    EXPECT_FALSE(findProgram("ombrel-no-such-program"));
}

} // namespace
} // namespace ombrel
