#pragma once

#include "platform/HttpClient.h"
#include "platform/ModelServer.h"
#include "platform/Process.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace ombrel {

// The studio's own `llama-server` with one model file. It starts when it is first asked for, on a
// free port of 127.0.0.1 and with a random key, and ends with this object or with this process,
// however that ends. One that crashed is started again by the next request; when it keeps crashing
// the pauses grow, and requests in a pause fail at once.
class LlamaServer final : public ModelServer {
  public:
    enum class Purpose { language, embedding };
    struct Options {
        std::optional<std::filesystem::path> program;
        std::optional<std::filesystem::path> modelFile;
        Purpose purpose = Purpose::language;
        std::int64_t contextTokens = 8192;
        std::chrono::milliseconds startLimit = std::chrono::minutes(5);
        // Told what the start is waiting for, as a sentence without a full stop; may be empty.
        std::function<void(const std::string& status)> onProgress;
    };

    LlamaServer(std::shared_ptr<MainExecutor> executor, std::shared_ptr<HttpClient> http,
                Options options);
    ~LlamaServer() override;
    LlamaServer(const LlamaServer&) = delete;
    LlamaServer& operator=(const LlamaServer&) = delete;

    // "modelNotInstalled" without the program or the model file.
    std::optional<std::string> unavailableReason() override;
    Task<Result<ServerEndpoint>> ready() override;
    void connectionFailed() override;

    // The process id of the server while it runs.
    std::optional<int> processId() const;

    // The server program: in `userDataFolder()`/Tools, else on PATH.
    static std::optional<std::filesystem::path> findProgram();

  private:
    struct Run;
    struct State;
    static Task<Result<ServerEndpoint>> makeReady(std::shared_ptr<State> state);
    static Task<void> start(std::shared_ptr<State> state);
    static Task<Result<ServerEndpoint>> startOnce(std::shared_ptr<State> state);

    std::shared_ptr<State> m_state;
};

} // namespace ombrel
