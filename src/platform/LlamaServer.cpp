#include "platform/LlamaServer.h"

#include "platform/Completion.h"
#include "platform/GgufFile.h"
#include "platform/Text.h"
#include "platform/UserFolders.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cstdlib>
#include <netinet/in.h>
#include <sys/random.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace ombrel {

namespace {

using Clock = MainExecutor::Clock;

constexpr std::chrono::milliseconds healthInterval(50);
// A server that ends so soon after its start will do so again.
constexpr std::chrono::seconds shortLife(10);
constexpr std::chrono::seconds longestPause(60);
// The port is free when it is chosen, but another program may take it before the server does.
constexpr int portAttempts = 3;
constexpr std::size_t keptOutputBytes = std::size_t{16} << 10;
constexpr std::size_t quotedLines = 2;
// Of the context of an embedding model: texts are chunks, and the buffers grow with it.
constexpr std::int64_t mostEmbeddingTokens = 2048;
// What the server may keep of earlier conversations.
constexpr const char* promptCacheMebibytes = "512";

std::optional<int> freePort() {
    const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (descriptor < 0) {
        return std::nullopt;
    }
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    const bool isBound =
        bind(descriptor, generic, length) == 0 && getsockname(descriptor, generic, &length) == 0;
    close(descriptor);
    return isBound ? std::optional<int>(ntohs(address.sin_port)) : std::nullopt;
}

std::string randomKey() {
    std::array<unsigned char, 24> bytes{};
    if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
        std::abort(); // So few bytes are always given at once.
    }
    constexpr std::string_view digits = "0123456789abcdef";
    std::string key;
    for (const unsigned char byte : bytes) {
        key += digits[byte >> 4];
        key += digits[byte & 15];
    }
    return key;
}

std::string inSeconds(Clock::duration time) {
    const auto whole = std::chrono::ceil<std::chrono::seconds>(time).count();
    return std::to_string(whole) + (whole == 1 ? " second" : " seconds");
}

} // namespace

// One life of the server's process.
struct LlamaServer::Run {
    std::unique_ptr<Process> process;
    ServerEndpoint endpoint;
    std::optional<ProcessExit> exit;
    std::optional<Clock::time_point> readySince;
    std::string output; // the last of it
    std::function<void(bool)> wake;

    void keep(std::string_view bytes) {
        output += bytes;
        if (output.size() > 2 * keptOutputBytes) {
            output.erase(0, output.size() - keptOutputBytes);
        }
    }

    // The last lines in which it says something.
    std::string lastWords() const {
        std::vector<std::string> lines;
        for (const auto line : splitNewlines(output)) {
            if (const auto said = trimWhitespacesAndNewlines(line); !said.empty()) {
                lines.emplace_back(repairUtf8(said));
            }
        }
        if (lines.size() > quotedLines) {
            lines.erase(lines.begin(), lines.end() - quotedLines);
        }
        return join(lines, "\n");
    }
};

struct LlamaServer::State {
    std::shared_ptr<MainExecutor> executor;
    std::shared_ptr<HttpClient> http;
    Options options;
    bool isClosed = false;
    std::shared_ptr<Run> run;
    // Those who wait for the start that is under way; nothing when none is.
    std::optional<std::vector<std::function<void(Result<ServerEndpoint>)>>> waiting;
    int shortLives = 0; // in succession
    Clock::time_point notBefore;
    std::string lastFailure;

    bool isReady() const { return run && run->readySince && !run->exit; }

    // Remembers that the server did not live, and for how long it is not to be started again.
    void noteEnd(std::string why, bool wasShort) {
        lastFailure = std::move(why);
        shortLives = wasShort ? shortLives + 1 : 1;
        // Once can be an accident.
        const int doublings = std::min(shortLives - 2, 6);
        const auto pause = doublings < 0 ? std::chrono::seconds(0)
                                         : std::min<std::chrono::seconds>(
                                               std::chrono::seconds(1 << doublings), longestPause);
        notBefore = executor->now() + pause;
    }

    // Forgets a server that has ended while it was in use.
    void lose(const std::string& how) {
        const bool wasShort = executor->now() - *run->readySince < shortLife;
        noteEnd("The model server ended unexpectedly (" + how + ").", wasShort);
        run.reset();
    }

    void report(const std::string& status) const {
        if (options.onProgress) {
            options.onProgress(status);
        }
    }
};

namespace {

std::vector<std::string> serverArguments(const LlamaServer::Options& options, const GgufFile& model,
                                         std::int64_t contextTokens, int port) {
    const std::string context = std::to_string(contextTokens);
    std::vector<std::string> arguments = {
        options.program->string(), "--model", options.modelFile->string(), "--host", "127.0.0.1",
        "--port", std::to_string(port), "--ctx-size", context,
        // One request at a time: its prompt stays cached for the next, and a text's vector does
        // not depend on what else is being embedded.
        "--parallel", "1"};
    if (options.purpose == LlamaServer::Purpose::embedding) {
        arguments.insert(arguments.end(),
                         {"--embeddings", "--batch-size", context, "--ubatch-size", context});
        if (!model.pooling) {
            arguments.insert(arguments.end(), {"--pooling", "mean"});
        }
    } else {
        // With the server's own temperature of 0.8 small models wander off and do not stop; with a
        // low one alone they go round in circles.
        arguments.insert(arguments.end(), {"--jinja", "--temp", "0.2", "--repeat-penalty", "1.1"});
    }
    return arguments;
}

// Options that not every version has are given as variables, which older ones ignore. Threads are
// left to the server: as many as the processor has cores.
std::vector<std::pair<std::string, std::string>> serverEnvironment(const std::string& key) {
    return {{"LLAMA_API_KEY", key},
            {"LLAMA_ARG_OFFLINE", "1"},
            {"LLAMA_ARG_UI", "0"},
            {"LLAMA_ARG_CACHE_RAM", promptCacheMebibytes},
            // An answer's bound of tokens is for the answer.
            {"LLAMA_ARG_REASONING", "off"}};
}

std::int64_t contextOf(const LlamaServer::Options& options, const GgufFile& model) {
    std::int64_t tokens = options.contextTokens;
    if (options.purpose == LlamaServer::Purpose::embedding) {
        tokens = mostEmbeddingTokens;
    }
    return model.contextLength > 0 ? std::min(tokens, model.contextLength) : tokens;
}

} // namespace

LlamaServer::LlamaServer(std::shared_ptr<MainExecutor> executor, std::shared_ptr<HttpClient> http,
                         Options options)
    : m_state(std::make_shared<State>()) {
    m_state->executor = std::move(executor);
    m_state->http = std::move(http);
    m_state->options = std::move(options);
}

LlamaServer::~LlamaServer() {
    m_state->isClosed = true;
    if (m_state->run) {
        m_state->run->process.reset(); // Which ends it.
    }
}

std::optional<std::string> LlamaServer::unavailableReason() {
    const Options& options = m_state->options;
    std::error_code error;
    if (!options.program || !options.modelFile ||
        !std::filesystem::is_regular_file(*options.modelFile, error)) {
        return "modelNotInstalled";
    }
    return std::nullopt;
}

std::optional<int> LlamaServer::processId() const {
    if (!m_state->run || m_state->run->exit) {
        return std::nullopt;
    }
    return m_state->run->process->id();
}

std::optional<std::filesystem::path> LlamaServer::findProgram() {
    const auto own = userDataFolder() / "Tools" / "llama-server";
    if (access(own.c_str(), X_OK) == 0) {
        return own;
    }
    return ombrel::findProgram("llama-server");
}

Task<Result<ServerEndpoint>> LlamaServer::ready() {
    if (unavailableReason()) {
        return [](bool hasProgram) -> Task<Result<ServerEndpoint>> {
            co_return failure(hasProgram ? "No model is installed in the models folder."
                                         : "The model server (llama-server) is not installed.");
        }(m_state->options.program.has_value());
    }
    return makeReady(m_state);
}

Task<Result<ServerEndpoint>> LlamaServer::makeReady(std::shared_ptr<State> state) {
    if (state->isReady()) {
        co_return state->run->endpoint;
    }
    if (!state->waiting) {
        const auto left = state->notBefore - state->executor->now();
        if (left > Clock::duration::zero()) {
            co_return failure(state->lastFailure + " It can be started again in " +
                              inSeconds(left) + ".");
        }
        state->waiting.emplace();
        state->executor->spawn(start(state));
    }
    Completion<Result<ServerEndpoint>> started(state->executor);
    state->waiting->push_back(started.fulfiller());
    Result<ServerEndpoint> endpoint = co_await started;
    co_return endpoint;
}

// Starts the server for everybody who waits for it.
Task<void> LlamaServer::start(std::shared_ptr<State> state) {
    Result<ServerEndpoint> endpoint = failure("");
    bool isPortTaken = true;
    for (int attempt = 0; attempt < portAttempts && isPortTaken && !state->isClosed; attempt++) {
        endpoint = co_await startOnce(state);
        isPortTaken = !endpoint && state->run && state->run->exit &&
                      state->run->output.find("bind") != std::string::npos;
    }
    if (state->isClosed) {
        endpoint = failure("The model server was ended.");
    }
    if (!endpoint) {
        state->run.reset();
        state->noteEnd(endpoint.error().message, true);
    }
    const auto waiting = std::exchange(state->waiting, std::nullopt);
    for (const auto& fulfil : *waiting) {
        fulfil(endpoint);
    }
}

Task<Result<ServerEndpoint>> LlamaServer::startOnce(std::shared_ptr<State> state) {
    const Options& options = state->options;
    const std::string modelName = options.modelFile->filename().string();
    const Result<GgufFile> model = GgufFile::read(*options.modelFile);
    if (!model) {
        co_return failure(model.error().message);
    }
    const auto port = freePort();
    if (!port) {
        co_return failure("No port is free for the model server.");
    }
    const auto run = std::make_shared<Run>();
    run->endpoint.url = "http://127.0.0.1:" + std::to_string(*port);
    run->endpoint.key = randomKey();
    // The server has one model only; others who ask it can tell models apart by this.
    run->endpoint.model = repairUtf8(modelName);
    run->endpoint.contextTokens = contextOf(options, *model);
    state->run = run;

    ProcessLaunch launch;
    launch.arguments = serverArguments(options, *model, run->endpoint.contextTokens, *port);
    launch.environment = serverEnvironment(run->endpoint.key);
    ProcessHandlers handlers;
    // The process, and with it these, goes with the run.
    handlers.onOutput =
        handlers.onError = [self = run.get()](std::string_view bytes) { self->keep(bytes); };
    handlers.onExit = [self = run.get(), weak = std::weak_ptr(state)](ProcessExit exit) {
        self->exit = exit;
        if (self->wake) {
            self->wake(true);
        }
        const auto owner = weak.lock();
        if (owner && owner->run.get() == self && self->readySince) {
            owner->lose(exit.description());
        }
    };
    auto process = Process::start(state->executor, std::move(launch), std::move(handlers));
    if (!process) {
        co_return failure(process.error().message);
    }
    run->process = std::move(*process);

    const auto started = state->executor->now();
    auto nextReport = started;
    while (true) {
        const auto now = state->executor->now();
        if (state->isClosed) {
            co_return failure("The model server was ended.");
        }
        if (run->exit) {
            co_return failure("The model server could not be started with " + modelName + " (" +
                              run->exit->description() + "): " + run->lastWords());
        }
        if (now - started > options.startLimit) {
            co_return failure("The model server did not get ready with " + modelName + " within " +
                              inSeconds(options.startLimit) + ".");
        }
        if (now >= nextReport) {
            state->report("Loading " + modelName);
            nextReport = now + std::chrono::seconds(1);
        }
        HttpRequest request;
        request.url = run->endpoint.url + "/health";
        request.idleLimit = std::chrono::seconds(5);
        auto sending = state->http->send(std::move(request));
        const Result<HttpResponse, HttpError> health = co_await std::move(sending);
        if (health && health->status == 200 && !run->exit && !state->isClosed) {
            break;
        }
        if (!run->exit) {
            // Until the time is over or the process has ended.
            Completion<bool> woken(state->executor);
            run->wake = woken.fulfiller();
            const auto timer = state->executor->postAfter(healthInterval, [run] {
                if (run->wake) {
                    run->wake(false);
                }
            });
            const bool hasEnded = co_await woken;
            run->wake = nullptr;
            if (hasEnded) {
                state->executor->cancel(timer);
            }
        }
    }
    run->readySince = state->executor->now();
    state->report("Ready: " + modelName);
    co_return run->endpoint;
}

void LlamaServer::connectionFailed() {
    if (m_state->isReady()) {
        m_state->lose("it does not answer");
    }
}

} // namespace ombrel
