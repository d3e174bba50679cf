#include "platform/ServiceSettings.h"

#include "platform/AtomicFile.h"
#include "platform/ServerJson.h"
#include "platform/UserFolders.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <rapidjson/error/en.h>
#include <rapidjson/prettywriter.h>
#include <unistd.h>
#include <utility>

namespace ombrel {

namespace {

struct TextKey {
    const char* name;
    std::string ServiceSettings::*member;
};

constexpr TextKey textKeys[] = {
    {"modelsFolder", &ServiceSettings::modelsFolder},
    {"languageModel", &ServiceSettings::languageModel},
    {"embeddingModel", &ServiceSettings::embeddingModel},
    {"serverURL", &ServiceSettings::serverURL},
    {"serverKey", &ServiceSettings::serverKey},
    {"serverModel", &ServiceSettings::serverModel},
    {"embeddingServerURL", &ServiceSettings::embeddingServerURL},
    {"embeddingServerKey", &ServiceSettings::embeddingServerKey},
    {"embeddingServerModel", &ServiceSettings::embeddingServerModel},
};
constexpr const char* contextTokensKey = "contextTokens";
constexpr std::int64_t fewestContextTokens = 512;
constexpr std::int64_t mostContextTokens = std::int64_t{1} << 20;

std::filesystem::path settingsFile() {
    return userConfigFolder() / "settings.json";
}

Error unusable(const std::filesystem::path& file, const std::string& why) {
    return {"The settings in " + file.string() + " were not used: " + why + "."};
}

// The object in the file; an empty one when there is no file, or an empty one.
Result<rapidjson::Document> readObject(const std::filesystem::path& file) {
    std::error_code error;
    const auto type = std::filesystem::status(file, error).type();
    if (type == std::filesystem::file_type::not_found) {
        return rapidjson::Document(rapidjson::kObjectType);
    }
    std::ifstream stream(file, std::ios::binary);
    if (type != std::filesystem::file_type::regular || !stream) {
        return tl::unexpected(unusable(file, "it cannot be read"));
    }
    const std::string bytes((std::istreambuf_iterator<char>(stream)),
                            std::istreambuf_iterator<char>());
    const std::string_view text = withoutByteOrderMark(bytes);
    if (trimWhitespacesAndNewlines(text).empty()) {
        return rapidjson::Document(rapidjson::kObjectType);
    }
    auto document = parseServerJson(text);
    if (document.HasParseError()) {
        return tl::unexpected(
            unusable(file, "it is not JSON (" +
                               std::string(rapidjson::GetParseError_En(document.GetParseError())) +
                               " At byte " + std::to_string(document.GetErrorOffset()) + ")"));
    }
    if (!document.IsObject()) {
        return tl::unexpected(unusable(file, "it does not hold a JSON object"));
    }
    return document;
}

void setMember(rapidjson::Document& document, const char* name, rapidjson::Value value) {
    if (const auto found = document.FindMember(name); found != document.MemberEnd()) {
        found->value = value;
    } else {
        document.AddMember(rapidjson::Value(name, document.GetAllocator()), value,
                           document.GetAllocator());
    }
}

// The keys in it are this user's alone: the file is made before anything is in it.
Result<void> makePrivateFile(const std::filesystem::path& file) {
    std::error_code error;
    std::filesystem::create_directories(file.parent_path(), error);
    const int descriptor = open(file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    if (descriptor < 0) {
        return failure("The settings cannot be written to " + file.string() + ": " +
                       std::strerror(errno) + ".");
    }
    close(descriptor);
    return {};
}

} // namespace

std::filesystem::path ServiceSettings::modelsPath() const {
    return modelsFolder.empty() ? userDataFolder() / "Models" : std::filesystem::path(modelsFolder);
}

ServiceSettings::Loaded ServiceSettings::load() {
    return load(settingsFile());
}

ServiceSettings::Loaded ServiceSettings::load(const std::filesystem::path& file) {
    Loaded loaded;
    const auto document = readObject(file);
    if (!document) {
        loaded.problem = document.error();
        return loaded;
    }
    for (const auto& key : textKeys) {
        const auto* value = jsonMember(*document, key.name);
        if (const auto text = jsonText(value)) {
            loaded.settings.*key.member = *text;
        } else if (value) {
            loaded.problem = unusable(file, "\"" + std::string(key.name) + "\" is not a string");
        }
    }
    if (const auto* value = jsonMember(*document, contextTokensKey)) {
        const auto tokens = jsonInteger(value);
        if (tokens && *tokens >= fewestContextTokens && *tokens <= mostContextTokens) {
            loaded.settings.contextTokens = *tokens;
        } else {
            loaded.problem = unusable(file, "\"contextTokens\" is not a whole number from " +
                                                std::to_string(fewestContextTokens) + " to " +
                                                std::to_string(mostContextTokens));
        }
    }
    if (loaded.problem) {
        loaded.settings = ServiceSettings();
    }
    return loaded;
}

Result<void> ServiceSettings::save() const {
    return save(settingsFile());
}

Result<void> ServiceSettings::save(const std::filesystem::path& file) const {
    auto document = readObject(file);
    if (!document) {
        return tl::unexpected(document.error());
    }
    for (const auto& key : textKeys) {
        const std::string text = repairUtf8(this->*key.member);
        setMember(*document, key.name,
                  rapidjson::Value(text.data(), static_cast<rapidjson::SizeType>(text.size()),
                                   document->GetAllocator()));
    }
    setMember(*document, contextTokensKey, rapidjson::Value(contextTokens));
    rapidjson::StringBuffer buffer;
    rapidjson::PrettyWriter<rapidjson::StringBuffer> json(buffer);
    json.SetIndent(' ', 2);
    document->Accept(json);
    if (auto made = makePrivateFile(file); !made) {
        return made;
    }
    Replacement replacement;
    replacement.replaceAny = true;
    const auto replaced = replaceFile(file, replacement, [&buffer](const ByteSink& sink) {
        return sink({buffer.GetString(), buffer.GetSize()}) && sink("\n");
    });
    if (!replaced) {
        return failure("The settings cannot be written to " + file.string() + ": " +
                       replaced.error().message + ".");
    }
    return {};
}

} // namespace ombrel
