#pragma once

#include "platform/HttpClient.h"
#include "platform/ModelServer.h"
#include "platform/OnDeviceModel.h"

#include <chrono>
#include <memory>

namespace ombrel {

// The language model behind a server with the OpenAI protocol. Of the server it needs
// `/v1/chat/completions` alone; it uses `/props` where there is one to learn whether the model's
// chat template knows tools, and does without response formats and tool calls where a server or a
// model has none.
class ServerModel final : public OnDeviceModel {
  public:
    struct Limits {
        // Tokens of one answer. No caller sets a bound, and a model may never stop by itself.
        std::int64_t answerTokens = 800;
        // Requests in which the model may call tools, in one `respond`. After them it is asked for
        // its answer without tools.
        int toolRounds = 16;
        // The time without a byte from the server, and of one answer.
        std::chrono::milliseconds idle = std::chrono::minutes(5);
        std::chrono::milliseconds total = std::chrono::minutes(20);
    };

    ServerModel(std::shared_ptr<HttpClient> http, std::shared_ptr<ModelServer> server)
        : ServerModel(std::move(http), std::move(server), Limits()) {}
    ServerModel(std::shared_ptr<HttpClient> http, std::shared_ptr<ModelServer> server,
                Limits limits);

    ModelAvailability availability() override;
    std::shared_ptr<LanguageModelSession>
    makeSession(std::string instructions, std::vector<std::shared_ptr<Tool>> tools = {}) override;

  private:
    struct Connection;
    class Session;
    std::shared_ptr<Connection> m_connection;
};

} // namespace ombrel
