#include "platform/UserServer.h"

#include "platform/ServerJson.h"

#include <chrono>
#include <utility>

namespace ombrel {

namespace {

// How long the answer to "does anybody listen there?" is believed.
constexpr std::chrono::seconds probeLife(3);

std::string withoutEnding(std::string url, std::string_view ending) {
    if (url.ends_with(ending)) {
        url.resize(url.size() - ending.size());
    }
    return url;
}

std::string firstModel(const std::string& body) {
    const auto document = parseServerJson(body);
    if (document.HasParseError()) {
        return {};
    }
    const auto* models = jsonMember(document, "data");
    if (!models || !models->IsArray() || models->Empty()) {
        return {};
    }
    return jsonText(jsonMember((*models)[0], "id")).value_or("");
}

} // namespace

UserServer::UserServer(std::shared_ptr<MainExecutor> executor, std::shared_ptr<HttpClient> http,
                       ServerEndpoint address)
    : m_state(std::make_shared<State>()) {
    m_state->executor = std::move(executor);
    m_state->http = std::move(http);
    m_state->endpoint = std::move(address);
    std::string& url = m_state->endpoint.url;
    url = withoutEnding(withoutEnding(withoutEnding(std::move(url), "/"), "/v1"), "/");
}

std::optional<std::string> UserServer::unavailableReason() {
    State& state = *m_state;
    if (whyNotLocal(state.endpoint.url)) {
        return "serverNotOnThisMachine";
    }
    const auto now = state.executor->now();
    if (!state.probed || now - *state.probed >= probeLife) {
        state.isListening = isListening(state.endpoint.url);
        state.probed = now;
    }
    return state.isListening ? std::nullopt : std::optional<std::string>("modelNotReady");
}

Task<Result<ServerEndpoint>> UserServer::ready() {
    return makeReady(m_state);
}

Task<Result<ServerEndpoint>> UserServer::makeReady(std::shared_ptr<State> state) {
    if (const auto why = whyNotLocal(state->endpoint.url)) {
        co_return failure(*why);
    }
    if (!state->endpoint.model.empty()) {
        co_return state->endpoint;
    }
    HttpRequest request;
    request.url = state->endpoint.url + "/v1/models";
    request.key = state->endpoint.key;
    request.idleLimit = std::chrono::seconds(10);
    request.bodyLimit = std::size_t{4} << 20;
    auto sending = state->http->send(std::move(request));
    const Result<HttpResponse, HttpError> response = co_await std::move(sending);
    if (!response) {
        state->isListening = false;
        state->probed = state->executor->now();
        co_return failure(response.error().message);
    }
    // A server that lists none may still have one that it uses when no name is given.
    ServerEndpoint endpoint = state->endpoint;
    if (response->status == 200) {
        endpoint.model = firstModel(response->body);
    }
    co_return endpoint;
}

void UserServer::connectionFailed() {
    m_state->isListening = false;
    m_state->probed = m_state->executor->now();
}

} // namespace ombrel
