#include "platform/Process.h"

#include "platform/Completion.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <condition_variable>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <linux/close_range.h>
#include <mutex>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace ombrel {

namespace {

using Clock = std::chrono::steady_clock;

// How much may be on its way to the main thread before a program waits; and the same once the
// program has ended, when all that it can have left is what the pipes hold.
constexpr std::size_t pendingLimit = std::size_t{1} << 20;
constexpr std::size_t pendingLimitAfterExit = 2 * pendingLimit;
constexpr std::size_t readBytes = std::size_t{64} << 10;
// How long streams that something else keeps open are read after the program's end.
constexpr auto streamGrace = std::chrono::seconds(1);

// A file descriptor that is closed with its owner.
class Descriptor {
  public:
    Descriptor() = default;
    explicit Descriptor(int fd) : m_fd(fd) {}
    Descriptor(Descriptor&& other) noexcept : m_fd(std::exchange(other.m_fd, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(m_fd, other.m_fd);
        return *this;
    }
    ~Descriptor() { close(); }

    int get() const { return m_fd; }
    bool isOpen() const { return m_fd >= 0; }
    void close() {
        if (m_fd >= 0) {
            ::close(std::exchange(m_fd, -1));
        }
    }

  private:
    int m_fd = -1;
};

Descriptor checked(int fd, const char* what) {
    if (fd < 0) {
        throw std::system_error(errno, std::generic_category(), what);
    }
    return Descriptor(fd);
}

// Moves a descriptor off the numbers of the standard streams, where it lands when this process was
// started with one of them closed, and where a program's own streams would overwrite it.
void moveAboveStandardStreams(Descriptor& descriptor) {
    if (descriptor.get() <= STDERR_FILENO) {
        descriptor = checked(fcntl(descriptor.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1), "fcntl");
    }
}

struct Pipe {
    Descriptor reading;
    Descriptor writing;

    Pipe() {
        std::array<int, 2> ends{};
        if (pipe2(ends.data(), O_CLOEXEC) != 0) {
            throw std::system_error(errno, std::generic_category(), "pipe");
        }
        reading = Descriptor(ends[0]);
        writing = Descriptor(ends[1]);
        moveAboveStandardStreams(reading);
        moveAboveStandardStreams(writing);
    }
};

void setNonBlocking(const Descriptor& descriptor) {
    if (fcntl(descriptor.get(), F_SETFL, O_NONBLOCK) != 0) {
        throw std::system_error(errno, std::generic_category(), "fcntl");
    }
}

// Everything that the new process does before it becomes the program, prepared beforehand: between
// vfork and exec nothing may allocate, lock, or change what the parent sees.
struct ChildPlan {
    const char* program = nullptr;
    char* const* arguments = nullptr;
    char* const* environment = nullptr;
    const char* workingDirectory = nullptr;
    int input = -1;
    int output = -1;
    int error = -1;
    int report = -1;
    bool endsWithParent = true;
    pid_t parent = 0;
    const ProcessLimits* limits = nullptr;
};

// What the new process reports when it cannot become the program.
struct ChildFailure {
    enum class Step { enterFolder, execute, prepare };
    Step step;
    int error;
};

[[noreturn]] void giveUp(const ChildPlan& plan, ChildFailure::Step step) {
    const ChildFailure report{step, errno};
    [[maybe_unused]] const ssize_t written = write(plan.report, &report, sizeof report);
    _exit(127);
}

void setLimit(const ChildPlan& plan, __rlimit_resource resource, rlim_t soft, rlim_t hard) {
    rlimit limit{};
    if (getrlimit(resource, &limit) != 0) {
        giveUp(plan, ChildFailure::Step::prepare);
    }
    limit.rlim_max = std::min(limit.rlim_max, hard);
    limit.rlim_cur = std::min(limit.rlim_max, soft);
    if (setrlimit(resource, &limit) != 0) {
        giveUp(plan, ChildFailure::Step::prepare);
    }
}

[[noreturn]] void becomeProgram(const ChildPlan& plan) {
    if (setpgid(0, 0) != 0) {
        giveUp(plan, ChildFailure::Step::prepare);
    }
    if (plan.endsWithParent) {
        // Tied to the thread that forked, which lives as long as the process.
        if (prctl(PR_SET_PDEATHSIG, SIGKILL) != 0) {
            giveUp(plan, ChildFailure::Step::prepare);
        }
        if (getppid() != plan.parent) {
            _exit(127);
        }
    }
    if (dup2(plan.input, STDIN_FILENO) < 0 || dup2(plan.output, STDOUT_FILENO) < 0 ||
        dup2(plan.error, STDERR_FILENO) < 0) {
        giveUp(plan, ChildFailure::Step::prepare);
    }
    if (syscall(SYS_close_range, STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC) != 0) {
        giveUp(plan, ChildFailure::Step::prepare);
    }
    if (plan.workingDirectory != nullptr && chdir(plan.workingDirectory) != 0) {
        giveUp(plan, ChildFailure::Step::enterFolder);
    }
    setLimit(plan, RLIMIT_CORE, 0, 0);
    const ProcessLimits& limits = *plan.limits;
    if (limits.processorSeconds) {
        setLimit(plan, RLIMIT_CPU, *limits.processorSeconds, *limits.processorSeconds + 1);
    }
    if (limits.openFiles) {
        setLimit(plan, RLIMIT_NOFILE, *limits.openFiles, *limits.openFiles);
    }
    if (limits.fileBytes) {
        setLimit(plan, RLIMIT_FSIZE, *limits.fileBytes, *limits.fileBytes);
    }
    if (limits.addressSpaceBytes) {
        setLimit(plan, RLIMIT_AS, *limits.addressSpaceBytes, *limits.addressSpaceBytes);
    }
    // The program starts with every signal at its default and none blocked.
    struct sigaction standard {};
    standard.sa_handler = SIG_DFL;
    for (int signal = 1; signal < NSIG; ++signal) {
        sigaction(signal, &standard, nullptr); // fails for the few that cannot be set
    }
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    execve(plan.program, plan.arguments, plan.environment);
    giveUp(plan, ChildFailure::Step::execute);
}

// A function of its own, so that nothing of the caller's lives in a frame that vfork returns to
// twice.
__attribute__((noinline)) pid_t forkProgram(const ChildPlan& plan) {
    const pid_t pid = vfork();
    if (pid == 0) {
        becomeProgram(plan);
    }
    return pid;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

std::vector<std::string>
environmentWith(const std::vector<std::pair<std::string, std::string>>& additions) {
    std::vector<std::string> result;
    for (char** variable = environ; *variable != nullptr; ++variable) {
        const std::string_view text = *variable;
        const std::string_view name = text.substr(0, text.find('='));
        if (std::none_of(additions.begin(), additions.end(),
                         [name](const auto& addition) { return addition.first == name; })) {
            result.emplace_back(text);
        }
    }
    for (const auto& [name, value] : additions) {
        result.emplace_back(name).append("=").append(value);
    }
    return result;
}

std::string reason(int error) {
    return std::generic_category().message(error);
}

std::string couldNotStart(const std::string& program, const std::string& why) {
    return "The program \"" + program + "\" couldn't be started: " + why + ".";
}

bool isExecutableFile(const std::filesystem::path& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
           access(path.c_str(), X_OK) == 0;
}

} // namespace

std::optional<std::filesystem::path> findProgram(std::string_view name) {
    std::error_code error;
    if (name.find('/') != std::string_view::npos) {
        const auto path = std::filesystem::absolute(std::filesystem::path(name), error);
        return !error && isExecutableFile(path) ? std::optional(path) : std::nullopt;
    }
    const char* const variable = std::getenv("PATH");
    std::string_view folders = variable != nullptr ? variable : "/usr/local/bin:/usr/bin:/bin";
    while (!name.empty() && !folders.empty()) {
        const std::string_view folder = folders.substr(0, folders.find(':'));
        folders.remove_prefix(std::min(folders.size(), folder.size() + 1));
        if (folder.empty()) {
            continue;
        }
        const auto path = std::filesystem::absolute(std::filesystem::path(folder) / name, error);
        if (!error && isExecutableFile(path)) {
            return path;
        }
    }
    return std::nullopt;
}

std::string ProcessExit::description() const {
    if (signal == 0) {
        return "exit status " + std::to_string(status);
    }
    const char* const name = sigdescr_np(signal);
    std::string text = "signal " + std::to_string(signal);
    return name != nullptr ? text + " (" + name + ")" : text;
}

// The handlers. Owned by the `Process`, used by the main thread alone.
struct Process::Receiver {
    ProcessHandlers handlers;
};

// What the main thread and the supervisor share about one program.
struct Process::Channel : std::enable_shared_from_this<Process::Channel> {
    std::mutex mutex;
    std::shared_ptr<MainExecutor> executor; // nothing once nobody listens
    pid_t group = 0;                        // 0 once it must not be signalled any more
    std::weak_ptr<Receiver> receiver;       // locked on the main thread only
    std::atomic<std::size_t> pending = 0;   // bytes posted and not handled yet
    std::atomic<bool> isAbandoned = false;

    void signalGroup(int signal) {
        const std::lock_guard lock(mutex);
        if (group > 0) {
            ::kill(-group, signal);
        }
    }
    template <class Use>
    void post(Use use) {
        const std::lock_guard lock(mutex);
        if (executor) {
            executor->post([self = shared_from_this(), use = std::move(use)] {
                use(*self, self->receiver.lock());
            });
        }
    }
    void postBytes(std::function<void(std::string_view)> ProcessHandlers::*handler,
                   std::string bytes);
    void postExit(ProcessExit exit) {
        post([exit](Channel&, const std::shared_ptr<Receiver>& to) {
            if (to && to->handlers.onExit) {
                to->handlers.onExit(exit);
            }
        });
    }
};

// The thread that starts, watches and reaps every program.
class Process::Supervisor {
  public:
    // Lives until the process ends, and its thread with it.
    static Supervisor& instance() {
        static Supervisor* const supervisor = new Supervisor;
        return *supervisor;
    }

    // Starts the program on the supervisor's thread and waits until it runs. The error is a
    // sentence; empty when it runs.
    std::string start(ProcessLaunch launch, const std::shared_ptr<Channel>& channel, int& id) {
        Request request;
        request.launch = std::move(launch);
        request.channel = channel;
        std::unique_lock lock(m_mutex);
        m_requests.push_back(&request);
        wake();
        m_answered.wait(lock, [&request] { return request.isAnswered; });
        id = request.id;
        return std::move(request.error);
    }

    void wake() {
        const std::uint64_t one = 1;
        [[maybe_unused]] const ssize_t written = write(m_wake.get(), &one, sizeof one);
    }

  private:
    struct Request {
        ProcessLaunch launch;
        std::shared_ptr<Channel> channel;
        bool isAnswered = false;
        int id = 0;
        std::string error;
    };

    struct Child {
        std::shared_ptr<Channel> channel;
        pid_t id = 0;
        Descriptor ending; // readable when the program has ended
        Descriptor input;
        Descriptor output;
        Descriptor error;
        std::string inputBytes;
        std::size_t inputWritten = 0;
        std::optional<ProcessExit> exit;
        Clock::time_point graceEnd;

        bool isPaused() const {
            return channel->pending.load() >= (exit ? pendingLimitAfterExit : pendingLimit);
        }
        bool isReading() const { return output.isOpen() || error.isOpen(); }
    };

    Supervisor() : m_wake(checked(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK), "eventfd")) {
        moveAboveStandardStreams(m_wake);
        // The thread takes no signal: neither the program's handlers nor a broken pipe's.
        sigset_t all;
        sigset_t before;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before);
        try {
            std::thread([this] { run(); }).detach();
        } catch (...) {
            pthread_sigmask(SIG_SETMASK, &before, nullptr);
            throw;
        }
        pthread_sigmask(SIG_SETMASK, &before, nullptr);
    }

    [[noreturn]] void run() {
        for (;;) {
            waitForSomething();
            answerRequests();
            for (Child& child : m_children) {
                attend(child);
            }
            std::erase_if(m_children, [](Child& child) { return finish(child); });
        }
    }

    void waitForSomething() {
        std::vector<pollfd> waits{{m_wake.get(), POLLIN, 0}};
        std::optional<Clock::time_point> until;
        for (const Child& child : m_children) {
            if (!child.exit) {
                waits.push_back({child.ending.get(), POLLIN, 0});
            } else if (!until || child.graceEnd < *until) {
                until = child.graceEnd;
            }
            if (child.input.isOpen()) {
                waits.push_back({child.input.get(), POLLOUT, 0});
            }
            for (const Descriptor* stream : {&child.output, &child.error}) {
                if (stream->isOpen() && !child.isPaused()) {
                    waits.push_back({stream->get(), POLLIN, 0});
                }
            }
        }
        int timeout = -1;
        if (until) {
            const auto left =
                std::chrono::ceil<std::chrono::milliseconds>(*until - Clock::now()).count();
            timeout = static_cast<int>(std::max<std::int64_t>(left, 0));
        }
        poll(waits.data(), waits.size(), timeout);
        std::uint64_t wakes = 0;
        [[maybe_unused]] const ssize_t count = read(m_wake.get(), &wakes, sizeof wakes);
    }

    void answerRequests() {
        std::unique_lock lock(m_mutex);
        while (!m_requests.empty()) {
            Request& request = *m_requests.front();
            m_requests.erase(m_requests.begin());
            lock.unlock();
            try {
                launch(request);
            } catch (const std::exception& error) {
                request.error = couldNotStart(request.launch.arguments.front(), error.what());
            }
            lock.lock();
            request.isAnswered = true;
            m_answered.notify_all();
        }
    }

    void launch(Request& request) {
        ProcessLaunch& launch = request.launch;
        const std::string name = launch.arguments.front();
        const bool isPath = name.find('/') != std::string::npos;
        auto program = findProgram(name);
        if (!program && isPath && std::filesystem::exists(name)) {
            program = std::filesystem::absolute(name); // the kernel says why it can't be run
        }
        if (!program) {
            request.error = "The program \"" + name + "\" wasn't found.";
            return;
        }

        Child child;
        child.channel = request.channel;
        Pipe output;
        Pipe error;
        Pipe report;
        std::optional<Pipe> input;
        Descriptor nowhere = checked(open("/dev/null", O_RDWR | O_CLOEXEC), "/dev/null");
        moveAboveStandardStreams(nowhere);
        if (!launch.input.empty()) {
            input.emplace();
            setNonBlocking(input->writing);
        }
        setNonBlocking(output.reading);
        setNonBlocking(error.reading);

        std::vector<std::string> environment = environmentWith(launch.environment);
        const std::vector<char*> arguments = pointersTo(launch.arguments);
        const std::vector<char*> variables = pointersTo(environment);
        ChildPlan plan;
        plan.program = program->c_str();
        plan.arguments = arguments.data();
        plan.environment = variables.data();
        plan.workingDirectory =
            launch.workingDirectory ? launch.workingDirectory->c_str() : nullptr;
        plan.input = input ? input->reading.get() : nowhere.get();
        plan.output = output.writing.get();
        plan.error = error.writing.get();
        if (launch.discardsErrors) {
            plan.error = nowhere.get();
        } else if (launch.errorsToOutput) {
            plan.error = output.writing.get();
        }
        plan.report = report.writing.get();
        plan.endsWithParent = launch.endsWithParent;
        plan.parent = getpid();
        plan.limits = &launch.limits;

        child.id = forkProgram(plan);
        if (child.id < 0) {
            request.error = couldNotStart(name, reason(errno));
            return;
        }
        report.writing.close();
        ChildFailure failed{};
        if (readWhole(report.reading, failed)) {
            reap(child.id);
            request.error = failed.step == ChildFailure::Step::enterFolder
                                ? "The folder \"" + launch.workingDirectory->string() +
                                      "\" couldn't be entered: " + reason(failed.error) + "."
                                : couldNotStart(name, reason(failed.error));
            return;
        }
        child.ending = Descriptor(static_cast<int>(syscall(SYS_pidfd_open, child.id, 0)));
        if (!child.ending.isOpen()) {
            request.error = couldNotStart(name, reason(errno));
            ::kill(-child.id, SIGKILL);
            reap(child.id);
            return;
        }
        child.output = std::move(output.reading);
        if (!launch.discardsErrors) {
            child.error = std::move(error.reading);
        }
        if (input) {
            child.input = std::move(input->writing);
            child.inputBytes = std::move(launch.input);
        }
        {
            const std::lock_guard lock(child.channel->mutex);
            child.channel->group = child.id;
        }
        request.id = child.id;
        m_children.push_back(std::move(child));
    }

    // Whether the new process reported a failure; false when the other end was closed by exec.
    static bool readWhole(const Descriptor& from, ChildFailure& failed) {
        ssize_t count = 0;
        do {
            count = read(from.get(), &failed, sizeof failed);
        } while (count < 0 && errno == EINTR);
        return count == static_cast<ssize_t>(sizeof failed);
    }

    static void reap(pid_t id) {
        while (waitpid(id, nullptr, 0) < 0 && errno == EINTR) {
        }
    }

    void attend(Child& child) {
        if (child.channel->isAbandoned.load()) {
            child.input.close();
            child.output.close();
            child.error.close();
        }
        // The end is looked for before the streams are read: what was written before it is there.
        if (!child.exit) {
            noticeExit(child);
        }
        feed(child);
        drain(child, child.output, &ProcessHandlers::onOutput);
        drain(child, child.error, &ProcessHandlers::onError);
    }

    static void noticeExit(Child& child) {
        siginfo_t info{};
        // Left unreaped, so that the group keeps its number until we are done with it.
        const int result =
            waitid(P_PID, static_cast<id_t>(child.id), &info, WEXITED | WNOHANG | WNOWAIT);
        if (result == 0 && info.si_pid == 0) {
            return;
        }
        ProcessExit exit;
        if (result != 0) {
            exit.status = 255; // reaped behind our back: how it ended is lost
        } else if (info.si_code == CLD_EXITED) {
            exit.status = info.si_status;
        } else {
            exit.signal = info.si_status;
        }
        child.exit = exit;
        child.graceEnd = Clock::now() + streamGrace;
        child.input.close();
    }

    static void feed(Child& child) {
        while (child.input.isOpen()) {
            const ssize_t count =
                write(child.input.get(), child.inputBytes.data() + child.inputWritten,
                      child.inputBytes.size() - child.inputWritten);
            if (count < 0) {
                if (errno == EINTR) {
                    continue;
                }
                if (errno != EAGAIN) {
                    child.input.close(); // the program does not read on
                }
                return;
            }
            child.inputWritten += static_cast<std::size_t>(count);
            if (child.inputWritten == child.inputBytes.size()) {
                child.input.close();
            }
        }
    }

    void drain(Child& child, Descriptor& stream,
               std::function<void(std::string_view)> ProcessHandlers::*handler) {
        while (stream.isOpen() && !child.isPaused()) {
            const ssize_t count = read(stream.get(), m_buffer.data(), m_buffer.size());
            if (count > 0) {
                child.channel->postBytes(
                    handler, std::string(m_buffer.data(), static_cast<std::size_t>(count)));
            } else if (count == 0 || (errno != EAGAIN && errno != EINTR)) {
                stream.close();
            } else if (errno == EAGAIN) {
                return;
            }
        }
    }

    // Whether there is nothing more to expect of the program; ends what it left and reaps it then.
    static bool finish(Child& child) {
        if (!child.exit || (child.isReading() && Clock::now() < child.graceEnd)) {
            return false;
        }
        {
            const std::lock_guard lock(child.channel->mutex);
            ::kill(-child.id, SIGKILL);
            child.channel->group = 0;
            reap(child.id);
        }
        child.channel->postExit(*child.exit);
        return true;
    }

    Descriptor m_wake;
    std::vector<char> m_buffer = std::vector<char>(readBytes);
    std::vector<Child> m_children; // the supervisor's thread only
    std::mutex m_mutex;
    std::vector<Request*> m_requests;
    std::condition_variable m_answered;
};

void Process::Channel::postBytes(std::function<void(std::string_view)> ProcessHandlers::*handler,
                                 std::string bytes) {
    pending += bytes.size();
    post(
        [handler, bytes = std::move(bytes)](Channel& channel, const std::shared_ptr<Receiver>& to) {
            if (to && to->handlers.*handler) {
                (to->handlers.*handler)(bytes);
            }
            const std::size_t before = channel.pending.fetch_sub(bytes.size());
            if (before >= pendingLimit && before - bytes.size() < pendingLimitAfterExit) {
                Supervisor::instance().wake();
            }
        });
}

Process::Process(std::shared_ptr<Channel> channel, std::shared_ptr<Receiver> receiver, int id)
    : m_channel(std::move(channel)), m_receiver(std::move(receiver)), m_id(id) {}

Result<std::unique_ptr<Process>> Process::start(std::shared_ptr<MainExecutor> executor,
                                                ProcessLaunch launch, ProcessHandlers handlers) {
    if (launch.arguments.empty() || launch.arguments.front().empty()) {
        return failure("There is no program to start.");
    }
    const std::string program = launch.arguments.front();
    const auto holdsZero = [](const std::string& text) {
        return text.find('\0') != std::string::npos;
    };
    if (std::any_of(launch.arguments.begin(), launch.arguments.end(), holdsZero)) {
        return failure(couldNotStart(program, "an argument holds a zero byte"));
    }
    auto receiver = std::make_shared<Receiver>();
    receiver->handlers = std::move(handlers);
    auto channel = std::make_shared<Channel>();
    channel->executor = std::move(executor);
    channel->receiver = receiver;
    int id = 0;
    try {
        std::string error = Supervisor::instance().start(std::move(launch), channel, id);
        if (!error.empty()) {
            return failure(std::move(error));
        }
    } catch (const std::exception& error) {
        return failure(couldNotStart(program, error.what()));
    }
    return std::unique_ptr<Process>(new Process(std::move(channel), std::move(receiver), id));
}

Process::~Process() {
    std::shared_ptr<MainExecutor> executor;
    {
        const std::lock_guard lock(m_channel->mutex);
        executor.swap(m_channel->executor);
    }
    m_channel->isAbandoned = true;
    kill();
    Supervisor::instance().wake();
}

void Process::terminate() {
    m_channel->signalGroup(SIGTERM);
}

void Process::kill() {
    m_channel->signalGroup(SIGKILL);
}

namespace {

// What a run has given so far, and what bounds it.
struct Run {
    std::shared_ptr<MainExecutor> executor;
    std::size_t limit = 0;
    ProcessOutput result;
    std::unique_ptr<Process> process;
    std::optional<std::uint64_t> timer;

    Run() = default;
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;
    ~Run() {
        if (timer) {
            executor->cancel(*timer);
        }
    }

    void end(ProcessOutput::Ending ending) {
        if (result.ending == ProcessOutput::Ending::exited) {
            result.ending = ending;
            process->kill();
        }
    }
    void append(std::string& to, std::string_view bytes) {
        const std::size_t room = limit - to.size();
        to.append(bytes.substr(0, room));
        if (bytes.size() > room) {
            end(ProcessOutput::Ending::tooMuchOutput);
        }
    }
};

} // namespace

Task<Result<ProcessOutput>> runToEnd(std::shared_ptr<MainExecutor> executor, ProcessLaunch launch,
                                     ProcessBounds bounds) {
    Run run;
    run.executor = executor;
    run.limit = bounds.outputBytes;
    const Completion<ProcessExit> exited(executor);
    ProcessHandlers handlers;
    handlers.onOutput = [&run](std::string_view bytes) { run.append(run.result.output, bytes); };
    handlers.onError = [&run](std::string_view bytes) { run.append(run.result.error, bytes); };
    handlers.onExit = exited.fulfiller();
    Result<std::unique_ptr<Process>> started =
        Process::start(executor, std::move(launch), std::move(handlers));
    if (!started) {
        co_return tl::unexpected<Error>(started.error());
    }
    run.process = std::move(*started);
    if (bounds.time) {
        run.timer = executor->postAfter(*bounds.time, [&run] {
            run.timer.reset();
            run.end(ProcessOutput::Ending::outOfTime);
        });
    }
    run.result.exit = co_await exited;
    co_return std::move(run.result);
}

} // namespace ombrel
