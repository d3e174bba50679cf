#pragma once

#include "platform/EmbeddingCache.h"
#include "platform/HttpClient.h"
#include "platform/ModelServer.h"
#include "platform/SentenceEmbedder.h"

#include <memory>
#include <string>
#include <vector>

namespace ombrel {

// Sentence vectors from a server with the OpenAI protocol (`/v1/embeddings`): the f32 numbers that
// it gives, as doubles. A text that the server refuses as too long is cut in two at white space
// near its middle, and the parts likewise until they are accepted; its vector is the mean of the
// parts' vectors, weighted by their lengths in bytes and scaled to length 1.
class ServerEmbedder final : public SentenceEmbedder {
  public:
    // `languages`: the BCP 47 identifiers that the model knows; empty when it knows all.
    ServerEmbedder(std::shared_ptr<HttpClient> http, std::shared_ptr<ModelServer> server,
                   std::vector<std::string> languages);

    bool supports(std::string_view language) override;
    Task<std::vector<std::optional<Vector>>> vectors(std::string language,
                                                     std::vector<std::string> texts) override;
    std::size_t batchSize() const override;

  private:
    struct State;
    static Task<std::vector<std::optional<Vector>>>
    embed(std::shared_ptr<State> state, bool isSupported, std::vector<std::string> texts);

    std::shared_ptr<State> m_state;
};

} // namespace ombrel
