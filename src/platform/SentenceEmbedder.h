#pragma once

#include "platform/Task.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ombrel {

using Vector = std::vector<double>;

// The sentence embedding service: a map from (language, text) to a vector whose length is fixed
// for each language, or to nothing. The same text always gets the same vector. Main thread.
class SentenceEmbedder {
  public:
    virtual ~SentenceEmbedder() = default;

    // Whether there is an embedding for the language, a BCP 47 identifier, at all.
    virtual bool supports(std::string_view language) = 0;
    // One entry a text, in order: its vector, or nothing where the service gives none. Never
    // fails: a service that cannot be reached gives nothing for every text.
    virtual Task<std::vector<std::optional<Vector>>> vectors(std::string language,
                                                             std::vector<std::string> texts) = 0;
    // How many texts are best asked for at once.
    virtual std::size_t batchSize() const { return 32; }
};

} // namespace ombrel
