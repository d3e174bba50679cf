#pragma once

#include "platform/SentenceEmbedder.h"

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ombrel {

// The embedding service that every workspace of the studio holds: another one can be put behind it.
class SwitchableEmbedder final : public SentenceEmbedder {
  public:
    void use(std::shared_ptr<SentenceEmbedder> embedder) { m_embedder = std::move(embedder); }

    bool supports(std::string_view language) override { return m_embedder->supports(language); }
    Task<std::vector<std::optional<Vector>>> vectors(std::string language,
                                                     std::vector<std::string> texts) override {
        return answer(m_embedder, std::move(language), std::move(texts));
    }
    std::size_t batchSize() const override { return m_embedder->batchSize(); }

  private:
    // Keeps the service that was asked until it has answered.
    static Task<std::vector<std::optional<Vector>>> answer(std::shared_ptr<SentenceEmbedder> asked,
                                                           std::string language,
                                                           std::vector<std::string> texts) {
        co_return co_await asked->vectors(std::move(language), std::move(texts));
    }

    std::shared_ptr<SentenceEmbedder> m_embedder;
};

} // namespace ombrel
