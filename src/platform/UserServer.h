#pragma once

#include "platform/HttpClient.h"
#include "platform/ModelServer.h"

#include <memory>

namespace ombrel {

// A server that the user runs: llama.cpp, Ollama, LM Studio, or any other with the same protocol.
class UserServer final : public ModelServer {
  public:
    // `address.url` as the user typed it, with or without "/v1"; an empty `address.model` is filled
    // in with the first one that the server lists.
    UserServer(std::shared_ptr<MainExecutor> executor, std::shared_ptr<HttpClient> http,
               ServerEndpoint address);

    // "modelNotReady" when nobody listens at the address, which is tried again after some seconds;
    // "serverNotOnThisMachine" when the address is not one that the studio talks to.
    std::optional<std::string> unavailableReason() override;
    Task<Result<ServerEndpoint>> ready() override;
    void connectionFailed() override;

  private:
    struct State {
        std::shared_ptr<MainExecutor> executor;
        std::shared_ptr<HttpClient> http;
        ServerEndpoint endpoint;
        std::optional<MainExecutor::Clock::time_point> probed;
        bool isListening = false; // at `probed`
    };
    static Task<Result<ServerEndpoint>> makeReady(std::shared_ptr<State> state);

    std::shared_ptr<State> m_state;
};

} // namespace ombrel
