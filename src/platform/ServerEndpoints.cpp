#include "platform/ServerEndpoints.h"

#include "platform/Completion.h"

#include <functional>
#include <string>
#include <utility>

namespace ombrel {

namespace {

using Ready = Result<ServerEndpoint>;

Task<void> fetch(std::shared_ptr<ModelServer> server, std::function<void(Ready)> fulfil) {
    Ready endpoint = co_await server->ready();
    fulfil(std::move(endpoint));
}

void append(EnvironmentVariables& variables, const std::string& prefix, const Ready& endpoint) {
    const ServerEndpoint given = endpoint.value_or(ServerEndpoint());
    variables.emplace_back(prefix + "_URL", endpoint ? given.url + "/v1" : "");
    variables.emplace_back(prefix + "_KEY", given.key);
    variables.emplace_back(prefix + "_NAME", given.model);
}

Task<EnvironmentVariables> variablesOf(std::shared_ptr<MainExecutor> executor,
                                       std::shared_ptr<ModelServer> language,
                                       std::shared_ptr<ModelServer> embedding,
                                       bool withEmbeddings) {
    Completion<Ready> embeddingStarted(executor);
    if (withEmbeddings) {
        executor->spawn(fetch(embedding, embeddingStarted.fulfiller()));
    } else {
        embeddingStarted.fulfil(failure(""));
    }
    const Ready languageReady = co_await language->ready();
    const Ready embeddingReady = co_await embeddingStarted;
    EnvironmentVariables variables;
    append(variables, "OMBREL_MODEL", languageReady);
    append(variables, "OMBREL_EMBEDDING", embeddingReady);
    variables.emplace_back("OMBREL_MODEL_ERROR",
                           languageReady ? "" : languageReady.error().message);
    co_return variables;
}

} // namespace

ServerEndpoints::ServerEndpoints(std::shared_ptr<MainExecutor> executor,
                                 std::shared_ptr<ModelServer> language,
                                 std::shared_ptr<ModelServer> embedding)
    : m_executor(std::move(executor)), m_language(std::move(language)),
      m_embedding(std::move(embedding)) {}

Task<EnvironmentVariables> ServerEndpoints::environment(bool withEmbeddings) {
    return variablesOf(m_executor, m_language, m_embedding, withEmbeddings);
}

} // namespace ombrel
