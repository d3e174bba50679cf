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

  private:
    std::shared_ptr<MainExecutor> m_executor;
    std::shared_ptr<HttpClient> m_http;
    ServerEndpoint m_address;
    std::optional<MainExecutor::Clock::time_point> m_probed;
    bool m_answered = false;
};

} // namespace ombrel
