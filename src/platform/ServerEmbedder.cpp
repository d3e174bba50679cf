#include "platform/ServerEmbedder.h"

#include "platform/ChatCompletion.h"
#include "platform/ServerJson.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <iterator>
#include <unordered_map>
#include <utility>

namespace ombrel {

struct ServerEmbedder::State {
    std::shared_ptr<HttpClient> http;
    std::shared_ptr<ModelServer> server;
    std::vector<std::string> languages;
    EmbeddingCache cache{cacheBytes};

    // About 20,000 vectors of 384 numbers.
    static constexpr std::size_t cacheBytes = std::size_t{64} << 20;
};

namespace {

using MaybeVector = std::optional<Vector>;

constexpr std::size_t textsPerRequest = 32;
constexpr std::chrono::minutes requestIdleLimit(2);
constexpr std::chrono::minutes requestTotalLimit(10);
// A part of a text that is so short was not refused for its length.
constexpr std::size_t shortestPart = 16;

// What became of one request.
struct Embedded {
    enum class Outcome {
        vectors,
        tooLong,     // a text is longer than the model takes
        refused,     // something else is wrong with a text
        unreachable, // nothing is wrong with the texts
    };
    Outcome outcome;
    std::vector<Vector> vectors;
};

std::string requestBody(const std::vector<std::string>& texts, const std::string& model) {
    rapidjson::StringBuffer buffer;
    JsonStream json(buffer);
    json.StartObject();
    if (!model.empty()) {
        writeJsonKey(json, "model");
        writeJsonText(json, model);
    }
    writeJsonKey(json, "input");
    json.StartArray();
    for (const auto& text : texts) {
        writeJsonText(json, text);
    }
    json.EndArray();
    json.EndObject();
    return {buffer.GetString(), buffer.GetSize()};
}

// Nothing when it is not a list of finite numbers.
MaybeVector readVector(const rapidjson::Value* numbers) {
    if (!numbers || !numbers->IsArray() || numbers->Empty()) {
        return std::nullopt;
    }
    Vector vector;
    vector.reserve(numbers->Size());
    for (const auto& number : numbers->GetArray()) {
        if (!number.IsNumber()) {
            return std::nullopt;
        }
        const double value = static_cast<double>(static_cast<float>(number.GetDouble()));
        if (!std::isfinite(value)) {
            return std::nullopt;
        }
        vector.push_back(value);
    }
    return vector;
}

// One vector for each of `count` texts, or nothing for any other answer.
std::optional<std::vector<Vector>> readVectors(const std::string& body, std::size_t count) {
    const auto document = parseServerJson(body);
    if (document.HasParseError()) {
        return std::nullopt;
    }
    const auto* data = jsonMember(document, "data");
    if (!data || !data->IsArray() || data->Size() != count) {
        return std::nullopt;
    }
    std::vector<Vector> vectors(count);
    for (rapidjson::SizeType i = 0; i < data->Size(); i++) {
        const auto& item = (*data)[i];
        const auto index = jsonInteger(jsonMember(item, "index")).value_or(i);
        auto vector = readVector(jsonMember(item, "embedding"));
        if (!vector || index < 0 || index >= static_cast<std::int64_t>(count) ||
            !vectors[static_cast<std::size_t>(index)].empty()) {
            return std::nullopt;
        }
        vectors[static_cast<std::size_t>(index)] = std::move(*vector);
    }
    return vectors;
}

Task<Embedded> request(std::shared_ptr<HttpClient> http, std::shared_ptr<ModelServer> server,
                       std::vector<std::string> texts) {
    // As for a chat, a connection that cannot be made is tried a second time.
    for (int attempt = 0; attempt < 2; attempt++) {
        const Result<ServerEndpoint> endpoint = co_await server->ready();
        if (!endpoint) {
            break;
        }
        HttpRequest httpRequest;
        httpRequest.url = endpoint->url + "/v1/embeddings";
        httpRequest.key = endpoint->key;
        httpRequest.body = requestBody(texts, endpoint->model);
        httpRequest.idleLimit = requestIdleLimit;
        httpRequest.totalLimit = requestTotalLimit;
        auto sending = http->send(std::move(httpRequest));
        const Result<HttpResponse, HttpError> response = co_await std::move(sending);
        if (response && response->status == 200) {
            auto vectors = readVectors(response->body, texts.size());
            if (!vectors) {
                co_return Embedded{Embedded::Outcome::refused, {}};
            }
            co_return Embedded{Embedded::Outcome::vectors, std::move(*vectors)};
        }
        if (response) {
            const ChatError error = chatError(*response);
            if (error.kind == ChatError::Kind::notAllowed) {
                break;
            }
            const bool isTooLong =
                response->status == 413 || error.kind == ChatError::Kind::tooLong;
            co_return Embedded{isTooLong ? Embedded::Outcome::tooLong : Embedded::Outcome::refused,
                               {}};
        }
        if (response.error().kind != HttpError::Kind::cannotConnect) {
            break;
        }
        server->connectionFailed();
    }
    co_return Embedded{Embedded::Outcome::unreachable, {}};
}

// Where to cut a text in two: at the white space nearest to its middle, else between two scalars.
// Both parts have something in them.
std::size_t cutPosition(std::string_view text) {
    const std::size_t middle = text.size() / 2;
    constexpr std::string_view blanks = " \n\r\t";
    const std::size_t before = text.find_last_of(blanks, middle);
    const std::size_t after = text.find_first_of(blanks, middle);
    std::size_t nearest = after;
    if (before != std::string_view::npos &&
        (after == std::string_view::npos || middle - before < after - middle)) {
        nearest = before;
    }
    if (nearest != std::string_view::npos && nearest > 0 && nearest + 1 < text.size()) {
        return nearest;
    }
    std::size_t position = middle;
    while (position > 1 && (static_cast<unsigned char>(text[position]) & 0xC0) == 0x80) {
        position--;
    }
    return position;
}

// The mean of parts' vectors by their weights, of length 1.
MaybeVector weightedMean(const std::vector<std::pair<double, Vector>>& parts) {
    Vector mean(parts.front().second.size(), 0.0);
    for (const auto& [weight, vector] : parts) {
        if (vector.size() != mean.size()) {
            return std::nullopt;
        }
        for (std::size_t i = 0; i < mean.size(); i++) {
            mean[i] += weight * vector[i];
        }
    }
    double squares = 0;
    for (const double value : mean) {
        squares += value * value;
    }
    const double length = std::sqrt(squares);
    if (length > 0) {
        for (double& value : mean) {
            value /= length;
        }
    }
    return mean;
}

// The vector of a text that is too long for the model.
Task<MaybeVector> embedInParts(std::shared_ptr<HttpClient> http,
                               std::shared_ptr<ModelServer> server, std::string text) {
    std::vector<std::pair<double, Vector>> done;
    std::vector<std::string> left = {std::move(text)}; // the next one last
    bool isKnownTooLong = true;
    while (!left.empty()) {
        std::string part = std::move(left.back());
        left.pop_back();
        if (!isKnownTooLong) {
            std::vector<std::string> alone = {part};
            Embedded embedded = co_await request(http, server, std::move(alone));
            if (embedded.outcome == Embedded::Outcome::vectors) {
                done.emplace_back(static_cast<double>(part.size()),
                                  std::move(embedded.vectors.front()));
                continue;
            }
            if (embedded.outcome != Embedded::Outcome::tooLong) {
                co_return std::nullopt;
            }
        }
        isKnownTooLong = false;
        if (part.size() <= shortestPart) {
            co_return std::nullopt;
        }
        const std::size_t cut = cutPosition(part);
        left.push_back(part.substr(cut));
        left.push_back(part.substr(0, cut));
    }
    co_return weightedMean(done);
}

// The vectors of some texts, asked for together as far as the server takes them. False when it
// can't be reached: no other need be tried.
Task<bool> embedBatch(std::shared_ptr<HttpClient> http, std::shared_ptr<ModelServer> server,
                      std::vector<std::string> texts, std::vector<MaybeVector>* results) {
    Embedded embedded = co_await request(http, server, texts);
    switch (embedded.outcome) {
    case Embedded::Outcome::vectors:
        std::move(embedded.vectors.begin(), embedded.vectors.end(), std::back_inserter(*results));
        co_return true;
    case Embedded::Outcome::unreachable:
        results->resize(results->size() + texts.size());
        co_return false;
    case Embedded::Outcome::tooLong:
    case Embedded::Outcome::refused:
        break;
    }
    if (texts.size() == 1) {
        MaybeVector vector;
        if (embedded.outcome == Embedded::Outcome::tooLong) {
            vector = co_await embedInParts(http, server, std::move(texts.front()));
        }
        results->push_back(std::move(vector));
        co_return true;
    }
    // One of them is at fault: it is looked for by halves, so that the others get their vectors.
    const auto middle = texts.begin() + static_cast<std::ptrdiff_t>(texts.size() / 2);
    std::vector<std::string> second(std::make_move_iterator(middle),
                                    std::make_move_iterator(texts.end()));
    texts.erase(middle, texts.end());
    const bool isReachable = co_await embedBatch(http, server, std::move(texts), results);
    if (!isReachable) {
        results->resize(results->size() + second.size());
        co_return false;
    }
    const bool isStillReachable = co_await embedBatch(http, server, std::move(second), results);
    co_return isStillReachable;
}

// "en-GB" is a case of "en".
bool isCovered(std::string_view language, const std::string& known) {
    return language.starts_with(known) &&
           (language.size() == known.size() || language[known.size()] == '-');
}

} // namespace

ServerEmbedder::ServerEmbedder(std::shared_ptr<HttpClient> http,
                               std::shared_ptr<ModelServer> server,
                               std::vector<std::string> languages)
    : m_state(std::make_shared<State>()) {
    m_state->http = std::move(http);
    m_state->server = std::move(server);
    m_state->languages = std::move(languages);
}

bool ServerEmbedder::supports(std::string_view language) {
    const auto& known = m_state->languages;
    const bool isKnown = known.empty() || std::any_of(known.begin(), known.end(),
                                                      [language](const std::string& each) {
                                                          return isCovered(language, each);
                                                      });
    return isKnown && !m_state->server->unavailableReason();
}

std::size_t ServerEmbedder::batchSize() const {
    return textsPerRequest;
}

Task<std::vector<MaybeVector>> ServerEmbedder::vectors(std::string language,
                                                       std::vector<std::string> texts) {
    return embed(m_state, supports(language), std::move(texts));
}

Task<std::vector<MaybeVector>> ServerEmbedder::embed(std::shared_ptr<State> state, bool isSupported,
                                                     std::vector<std::string> texts) {
    std::vector<MaybeVector> results(texts.size());
    if (!isSupported) {
        co_return results;
    }
    std::vector<std::string> missing;
    std::unordered_map<std::string_view, std::size_t> missingByText;
    for (std::size_t i = 0; i < texts.size(); i++) {
        if (const Vector* known = state->cache.find(texts[i])) {
            results[i] = *known;
        } else if (missingByText.emplace(texts[i], missing.size()).second) {
            missing.push_back(texts[i]);
        }
    }
    std::vector<MaybeVector> found;
    bool isReachable = true;
    for (std::size_t first = 0; first < missing.size() && isReachable; first = found.size()) {
        const std::size_t end = std::min(first + textsPerRequest, missing.size());
        std::vector<std::string> batch(missing.begin() + static_cast<std::ptrdiff_t>(first),
                                       missing.begin() + static_cast<std::ptrdiff_t>(end));
        isReachable = co_await embedBatch(state->http, state->server, std::move(batch), &found);
    }
    found.resize(missing.size());
    for (std::size_t i = 0; i < texts.size(); i++) {
        if (const auto asked = missingByText.find(texts[i]); asked != missingByText.end()) {
            results[i] = found[asked->second];
        }
    }
    for (std::size_t i = 0; i < missing.size(); i++) {
        if (found[i]) {
            state->cache.store(std::move(missing[i]), std::move(*found[i]));
        }
    }
    co_return results;
}

} // namespace ombrel
