#pragma once

#include "platform/Result.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace ombrel {

// Where the model services come from, as this user has set it. Stored as an object of these keys in
// `userConfigFolder()`/settings.json; a key that is missing there has its default.
struct ServiceSettings {
    // Holds the model files (GGUF). Empty: `userDataFolder()`/Models.
    std::string modelsFolder;
    // File names in that folder. Empty: chosen by what is there (InstalledModels.h).
    std::string languageModel;
    std::string embeddingModel;
    // A server of the user's own on this machine, such as "http://localhost:11434", with or without
    // "/v1" at the end, to use instead of starting one; its key if it wants one, and the name of
    // the model to ask for (empty: the first that it lists).
    std::string serverURL;
    std::string serverKey;
    std::string serverModel;
    std::string embeddingServerURL;
    std::string embeddingServerKey;
    std::string embeddingServerModel;
    // How many tokens a conversation may have; no more than the model was trained for.
    std::int64_t contextTokens = 8192;

    bool operator==(const ServiceSettings&) const = default;

    std::filesystem::path modelsPath() const;

    struct Loaded;
    // Reads the settings of this user, or of a file. Without a file they are the defaults.
    static Loaded load();
    static Loaded load(const std::filesystem::path& file);
    // Writes the settings, readable by this user alone. Keys of the file that are not known here
    // stay. Fails, and leaves the file as it is, when what stands there cannot be read as settings.
    Result<void> save() const;
    Result<void> save(const std::filesystem::path& file) const;
};

struct ServiceSettings::Loaded {
    ServiceSettings settings;
    // Why the file, or a key in it, was not used: the defaults stand in its place.
    std::optional<Error> problem;
};

} // namespace ombrel
