#pragma once

#include "platform/GgufFile.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace ombrel {

// A model file in the models folder.
struct InstalledModel {
    std::filesystem::path file;
    std::filesystem::file_time_type modified;
    GgufFile description;
};

// The models in a folder, by file name. A file that cannot be read is not among them; a folder that
// does not exist holds none.
std::vector<InstalledModel> installedModels(const std::filesystem::path& folder);

// The language model that a new installation has: small, to show that everything works.
inline constexpr std::string_view starterModelFile = "SmolLM2-135M-Instruct.Q4_1.gguf";

// The model of the wanted file name. Without a name: the language model that was modified last and
// is not the starter, those with a chat template before those without; else the starter. Nothing
// when there is none.
std::optional<InstalledModel> chooseLanguageModel(const std::vector<InstalledModel>& models,
                                                  const std::string& wantedFile);
// The same for embedding models: the one that was modified last.
std::optional<InstalledModel> chooseEmbeddingModel(const std::vector<InstalledModel>& models,
                                                   const std::string& wantedFile);

} // namespace ombrel
