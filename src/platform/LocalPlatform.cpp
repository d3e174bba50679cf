#include "platform/LocalPlatform.h"

#include "platform/Cld2Recognizer.h"
#include "platform/HttpClient.h"
#include "platform/InstalledModels.h"
#include "platform/LlamaServer.h"
#include "platform/PopplerPdf.h"
#include "platform/ServerEmbedder.h"
#include "platform/ServerEndpoints.h"
#include "platform/ServerModel.h"
#include "platform/UserServer.h"

#include <optional>
#include <utility>
#include <vector>

namespace ombrel {

namespace {

std::optional<std::filesystem::path> fileOf(const std::optional<InstalledModel>& model) {
    return model ? std::optional(model->file) : std::nullopt;
}

// The languages that the embedding model knows; empty for all.
std::vector<std::string> languagesOf(const std::optional<InstalledModel>& model) {
    if (!model) {
        return {};
    }
    // Conversions of this English model that others made don't say so.
    if (model->description.languages.empty() &&
        model->file.filename().string().starts_with("all-MiniLM-L6-v2")) {
        return {"en"};
    }
    return model->description.languages;
}

} // namespace

Platform makeLocalPlatform(std::shared_ptr<MainExecutor> executor, ServiceSettings settings,
                           std::function<void(const std::string&)> onProgress) {
    const auto http = std::make_shared<HttpClient>(executor);
    const auto models = installedModels(settings.modelsPath());
    LlamaServer::Options options;
    options.program = LlamaServer::findProgram();
    options.contextTokens = settings.contextTokens;
    options.onProgress = std::move(onProgress);

    std::shared_ptr<ModelServer> languageServer;
    if (settings.serverURL.empty()) {
        options.purpose = LlamaServer::Purpose::language;
        options.modelFile = fileOf(chooseLanguageModel(models, settings.languageModel));
        languageServer = std::make_shared<LlamaServer>(executor, http, options);
    } else {
        languageServer = std::make_shared<UserServer>(
            executor, http,
            ServerEndpoint{settings.serverURL, settings.serverKey, settings.serverModel,
                           settings.contextTokens});
    }

    std::shared_ptr<ModelServer> embeddingServer;
    std::vector<std::string> languages;
    if (settings.embeddingServerURL.empty()) {
        const auto model = chooseEmbeddingModel(models, settings.embeddingModel);
        options.purpose = LlamaServer::Purpose::embedding;
        options.modelFile = fileOf(model);
        embeddingServer = std::make_shared<LlamaServer>(executor, http, options);
        languages = languagesOf(model);
    } else {
        embeddingServer = std::make_shared<UserServer>(
            executor, http,
            ServerEndpoint{settings.embeddingServerURL, settings.embeddingServerKey,
                           settings.embeddingServerModel, 0});
    }

    Platform platform;
    platform.executor = executor;
    platform.model = std::make_shared<ServerModel>(http, languageServer);
    platform.embedder =
        std::make_shared<ServerEmbedder>(http, embeddingServer, std::move(languages));
    platform.endpoints =
        std::make_shared<ServerEndpoints>(executor, languageServer, embeddingServer);
    platform.languages = std::make_shared<Cld2Recognizer>();
    platform.pdf = std::make_shared<PopplerPdf>(executor);
    return platform;
}

} // namespace ombrel
