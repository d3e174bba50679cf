#include "cli/Session.h"
#include "core/JsonEncoder.h"
#include "platform/InstalledModels.h"
#include "platform/LanguageRecognizer.h"
#include "platform/LlamaServer.h"
#include "platform/OnDeviceModel.h"
#include "platform/ResourceFolder.h"
#include "platform/SentenceEmbedder.h"
#include "platform/ServiceSettings.h"

#include <cerrno>
#include <chrono>
#include <cstring>
#include <unistd.h>

namespace ombrel {

namespace {

// One of the two services: what it uses, and what came of asking it something.
struct ServiceReport {
    std::string server; // a program's path or a URL; empty when there is none
    std::string model;  // a file's path or a name; empty when there is none
    bool answers = false;
    std::optional<std::string> problem;    // why it doesn't answer
    std::optional<double> seconds;         // how long the answer took, loading included
    std::optional<std::int64_t> dimension; // numbers in a vector

    static constexpr auto keys() {
        return std::tuple(required("server", &ServiceReport::server),
                          required("model", &ServiceReport::model),
                          required("answers", &ServiceReport::answers),
                          optional("problem", &ServiceReport::problem),
                          optional("seconds", &ServiceReport::seconds),
                          optional("dimension", &ServiceReport::dimension));
    }
};

struct ModelReport {
    ServiceReport language;
    ServiceReport embedding;
    std::string modelsFolder;
    bool isStarter = false; // the language model is the one that a new installation has

    static constexpr auto keys() {
        return std::tuple(required("language", &ModelReport::language),
                          required("embedding", &ModelReport::embedding),
                          required("modelsFolder", &ModelReport::modelsFolder),
                          required("isStarter", &ModelReport::isStarter));
    }
};

std::string modelPath(const std::optional<InstalledModel>& model) {
    return model ? model->file.string() : std::string();
}

ModelReport whatIsUsed(const ServiceSettings& settings) {
    ModelReport report;
    report.modelsFolder = settings.modelsPath().string();
    const std::vector<InstalledModel> models = installedModels(settings.modelsPath());
    const auto program = LlamaServer::findProgram();
    const std::string own = program ? program->string() : std::string();
    const auto language = chooseLanguageModel(models, settings.languageModel);
    if (settings.serverURL.empty()) {
        report.language.server = own;
        report.language.model = modelPath(language);
        report.isStarter = language && language->file.filename() == starterModelFile;
    } else {
        report.language.server = settings.serverURL;
        report.language.model = settings.serverModel;
    }
    if (settings.embeddingServerURL.empty()) {
        report.embedding.server = own;
        report.embedding.model = modelPath(chooseEmbeddingModel(models, settings.embeddingModel));
    } else {
        report.embedding.server = settings.embeddingServerURL;
        report.embedding.model = settings.embeddingServerModel;
    }
    return report;
}

double secondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

Task<void> tryServices(Platform platform, ModelReport& report) {
    auto start = std::chrono::steady_clock::now();
    const ModelAvailability availability = platform.model->availability();
    if (availability.isAvailable()) {
        const std::string prompt = "Reply with only the word OK.";
        const auto session = platform.model->makeSession("You are a helpful assistant.");
        const auto reply = co_await session->respond(prompt);
        report.language.answers = reply.has_value();
        if (reply) {
            report.language.seconds = secondsSince(start);
        } else {
            report.language.problem = reply.error().message;
        }
    } else {
        report.language.problem = *availability.unavailableReason;
    }

    start = std::chrono::steady_clock::now();
    const std::string language(fallbackLanguage);
    const std::vector<std::string> texts(1, "A man is eating food.");
    const auto vectors = co_await platform.embedder->vectors(language, texts);
    if (vectors.front()) {
        report.embedding.answers = true;
        report.embedding.seconds = secondsSince(start);
        report.embedding.dimension = static_cast<std::int64_t>(vectors.front()->size());
    } else {
        report.embedding.problem =
            report.embedding.model.empty() ? "modelNotInstalled" : "modelNotReady";
    }
}

std::string serviceText(const std::string& title, const ServiceReport& service) {
    std::string text = title + "\n";
    text += "  Model    " + (service.model.empty() ? "none" : service.model) + "\n";
    text += "  Server   " + (service.server.empty() ? "none" : service.server) + "\n";
    text += "  Answers  ";
    if (service.answers) {
        char seconds[64];
        std::snprintf(seconds, sizeof seconds, "yes, after %.1f s", *service.seconds);
        text += seconds;
        if (service.dimension) {
            text += ", vectors of " + std::to_string(*service.dimension) + " numbers";
        }
    } else {
        text += "no: " + service.problem.value_or("");
    }
    return text + "\n";
}

void install() {
    const std::string script = (resourceFolder() / "models" / "install-models").string();
    execl(script.c_str(), script.c_str(), nullptr);
    throw Failure{script + " couldn't be run: " + std::strerror(errno) + "."};
}

} // namespace

void addModelCommand(CLI::App& app, Invocation& invocation) {
    const auto installs = std::make_shared<bool>(false);
    auto* model =
        addCommand(app, "model", "Show which model and server are in use and whether they answer",
                   "ombrel model --install", invocation);
    model->add_flag("--install", *installs, "Fetch the default model server and models");
    model->callback([installs, &invocation] {
        if (*installs) {
            install();
        }
        Runtime runtime;
        ModelReport report = whatIsUsed(ServiceSettings::load().settings);
        runtime.progress().show("Asking the models…");
        if (!runtime.run(tryServices(runtime.platform(), report))) {
            throw Failure{"Stopped."};
        }
        if (invocation.json) {
            invocation.printJson(encodeJson(report));
        } else {
            std::string text = serviceText("Language model", report.language) +
                               serviceText("Embedding model", report.embedding);
            if (report.isStarter) {
                text += "\nThis language model is a starter: it shows that everything works, its "
                        "answers are weak.\nPut a better one (a .gguf file) into " +
                        report.modelsFolder + ".\n";
            } else if (report.language.model.empty()) {
                text += "\n`ombrel model --install` fetches the default models; any .gguf file can "
                        "be put into\n" +
                        report.modelsFolder + ".\n";
            }
            invocation.print(text);
        }
        if (!report.language.answers || !report.embedding.answers) {
            throw Failure{"Not all of the models answer."};
        }
    });
}

} // namespace ombrel
