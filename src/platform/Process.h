#pragma once

#include "platform/MainExecutor.h"
#include "platform/Result.h"
#include "platform/Task.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// Other programs, run without a shell.
//
// One thread of this process starts, watches and reaps all of them, so that a program can be tied
// to the life of this one. What a program writes is handed to the main thread in the order of its
// arrival; when the main thread falls behind by more than a mebibyte the program waits, as it does
// on any full pipe.
namespace ombrel {

// What the kernel holds a program to. Nothing: as this process is held. A program that exceeds the
// processor seconds ends by SIGXCPU, one that exceeds the file size by SIGXFSZ; beyond the other
// two its calls fail.
struct ProcessLimits {
    std::optional<std::uint64_t> addressSpaceBytes;
    std::optional<std::uint64_t> processorSeconds;
    std::optional<std::uint64_t> openFiles;
    std::optional<std::uint64_t> fileBytes;
    // Core dumps are never written.
};

struct ProcessLaunch {
    // The program, then its arguments. A program without "/" is looked for in PATH; a relative
    // path is relative to this process's folder, not to `workingDirectory`.
    std::vector<std::string> arguments;
    // Added to this process's environment, in place of a variable of the same name.
    std::vector<std::pair<std::string, std::string>> environment;
    std::optional<std::filesystem::path> workingDirectory;
    // What the program reads on its standard input, which ends after it. Empty: it ends at once.
    std::string input;
    // Standard error goes nowhere instead of being handed over.
    bool discardsErrors = false;
    // Standard error comes with standard output, in the order of writing.
    bool errorsToOutput = false;
    // The kernel kills the program when this process ends, however it ends.
    bool endsWithParent = true;
    ProcessLimits limits;
};

// How a program ended.
struct ProcessExit {
    int status = 0; // 0 when a signal ended it
    int signal = 0; // 0 when it ended by itself
    bool succeeded() const { return status == 0 && signal == 0; }
    // "exit status 1", "signal 9 (Killed)".
    std::string description() const;
    bool operator==(const ProcessExit&) const = default;
};

// Called on the main thread, never inside `Process::start`, and never again once the `Process` is
// gone. Each may destroy the `Process`. Any may be empty.
struct ProcessHandlers {
    std::function<void(std::string_view bytes)> onOutput; // standard output, as the bytes come
    std::function<void(std::string_view bytes)> onError;  // standard error
    // Once, after the last output. A program that closed its streams but lives on has not ended.
    // When something that it started keeps its streams open after its end, no more than a second
    // is waited for the rest.
    std::function<void(ProcessExit)> onExit;
};

// A running program, in a process group of its own. Main thread. Destroying it kills the group;
// when the program ends by itself, what it left running in its group is killed.
class Process {
  public:
    // Starts a program. Fails, with a sentence that names the program, when it does not exist or
    // cannot be run, or when the working directory cannot be entered. Takes a few milliseconds.
    static Result<std::unique_ptr<Process>> start(std::shared_ptr<MainExecutor> executor,
                                                  ProcessLaunch launch, ProcessHandlers handlers);
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    // Its process id, for messages. Signals go through the functions below, which never reach
    // another program that got the same number later.
    int id() const { return m_id; }
    // Asks the group to end (SIGTERM). Nothing happens when the program has ended.
    void terminate();
    // Ends the group (SIGKILL).
    void kill();

  private:
    struct Receiver;
    struct Channel;
    class Supervisor;

    Process(std::shared_ptr<Channel> channel, std::shared_ptr<Receiver> receiver, int id);

    std::shared_ptr<Channel> m_channel;
    std::shared_ptr<Receiver> m_receiver;
    int m_id = 0;
};

// What one run of a program gave.
struct ProcessOutput {
    enum class Ending {
        exited,        // by itself, or by a signal that we did not send
        outOfTime,     // killed when its time was over
        tooMuchOutput, // killed when either stream passed the limit
    };
    Ending ending = Ending::exited;
    ProcessExit exit;
    // What was written up to the end, each at most as long as the limit.
    std::string output;
    std::string error;
};

struct ProcessBounds {
    std::optional<std::chrono::milliseconds> time;   // measured on the executor's clock
    std::size_t outputBytes = std::size_t{64} << 20; // of each stream
};

// Runs a program to its end. Fails as `Process::start` does. Destroying the task kills the program.
Task<Result<ProcessOutput>> runToEnd(std::shared_ptr<MainExecutor> executor, ProcessLaunch launch,
                                     ProcessBounds bounds);

// A program as people run it: the file at that path when the name has a "/", or the first
// executable file of that name in the folders of PATH.
std::optional<std::filesystem::path> findProgram(std::string_view name);

} // namespace ombrel
