#pragma once

#include "platform/Result.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace ombrel {

// What a model file (GGUF, versions 2 and 3) says about itself. Format:
// https://github.com/ggml-org/ggml/blob/master/docs/gguf.md
struct GgufFile {
    std::string architecture;            // general.architecture
    std::string name;                    // general.name, empty when missing
    std::string type;                    // general.type, "model" when missing
    std::vector<std::string> languages;  // general.languages
    std::int64_t contextLength = 0;      // tokens the model was trained for; 0 when missing
    std::optional<std::int64_t> pooling; // <architecture>.pooling_type
    bool isCausal = true;                // <architecture>.attention.causal
    bool hasChatTemplate = false;
    std::int64_t part = 0; // split.no: the number of this part of a model in several files

    // Reads the metadata. Any file may be given: one that is not a model, or is damaged, is an
    // error that names it. Reads no more than a bounded part of the file.
    static Result<GgufFile> read(const std::filesystem::path& file);

    // Makes vectors of texts.
    bool isEmbeddingModel() const;
    // Writes text.
    bool isLanguageModel() const;
};

} // namespace ombrel
