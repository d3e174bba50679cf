#include "platform/InstalledModels.h"

#include <algorithm>
#include <tuple>

namespace ombrel {

namespace {

// The model for which `rank` is greatest, of those for which it is something.
template <class Rank>
std::optional<InstalledModel> best(const std::vector<InstalledModel>& models,
                                   const std::string& wantedFile, Rank rank) {
    const InstalledModel* chosen = nullptr;
    for (const auto& model : models) {
        if (!wantedFile.empty()) {
            if (model.file.filename() == wantedFile) {
                return model;
            }
        } else if (rank(model) && (!chosen || *rank(model) > *rank(*chosen))) {
            chosen = &model;
        }
    }
    return chosen ? std::optional(*chosen) : std::nullopt;
}

} // namespace

std::vector<InstalledModel> installedModels(const std::filesystem::path& folder) {
    std::vector<InstalledModel> models;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        const auto& path = entry->path();
        if (path.extension() != ".gguf" || path.filename().string().starts_with('.')) {
            continue;
        }
        std::error_code unreadable;
        const auto modified = std::filesystem::last_write_time(path, unreadable);
        auto description = GgufFile::read(path);
        if (description && !unreadable) {
            models.push_back({path, modified, std::move(*description)});
        }
    }
    std::sort(models.begin(), models.end(),
              [](const auto& a, const auto& b) { return a.file < b.file; });
    return models;
}

std::optional<InstalledModel> chooseLanguageModel(const std::vector<InstalledModel>& models,
                                                  const std::string& wantedFile) {
    using Rank = std::tuple<bool, bool, std::filesystem::file_time_type>;
    return best(models, wantedFile, [](const InstalledModel& model) -> std::optional<Rank> {
        if (!model.description.isLanguageModel()) {
            return std::nullopt;
        }
        return Rank(model.file.filename() != starterModelFile, model.description.hasChatTemplate,
                    model.modified);
    });
}

std::optional<InstalledModel> chooseEmbeddingModel(const std::vector<InstalledModel>& models,
                                                   const std::string& wantedFile) {
    using Rank = std::filesystem::file_time_type;
    return best(models, wantedFile, [](const InstalledModel& model) -> std::optional<Rank> {
        if (!model.description.isEmbeddingModel()) {
            return std::nullopt;
        }
        return model.modified;
    });
}

} // namespace ombrel
