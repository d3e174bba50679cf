#pragma once

#include "flows/ToolChain.h"
#include "platform/Platform.h"
#include "platform/ResourceFolder.h"
#include "platform/ServiceSettings.h"
#include "platform/Task.h"
#include "shell/StudioSettings.h"
#include "shell/SwitchableEmbedder.h"
#include "shell/SwitchableEndpoints.h"
#include "shell/SwitchableModel.h"

#include <QObject>

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

namespace ombrel {

class ModelInstaller;

// What all windows share: the services, made once a process, and what the studio remembers. Main
// thread.
class StudioServices final : public QObject {
    Q_OBJECT

  public:
    using Progress = std::function<void(const std::string& status)>;
    // Makes the services as settings say.
    using MakePlatform = std::function<Platform(const ServiceSettings&, Progress)>;

    struct Folders {
        std::filesystem::path config;   // settings.json, studio.ini
        std::filesystem::path recovery; // autosaved projects
        std::filesystem::path installScript = resourceFolder() / "models" / "install-models";
    };

    StudioServices(Folders folders, const MakePlatform& makePlatform);
    // The real services, on this executor, and this user's folders.
    static std::unique_ptr<StudioServices> ofThisUser();

    const Platform& platform() const { return m_platform; }
    StudioSettings& settings() { return m_settings; }
    const std::filesystem::path& recoveryFolder() const { return m_folders.recovery; }

    const ServiceSettings& serviceSettings() const { return m_serviceSettings; }
    // Why the stored settings were not used.
    const std::optional<Error>& settingsProblem() const { return m_settingsProblem; }
    // Stores the settings and uses them at once, in every window. Fails when they can't be stored,
    // and then nothing changes.
    Result<void> setServiceSettings(const ServiceSettings& settings);
    // Looks again for models and servers, which were installed or removed meanwhile.
    void makeServicesAnew();

    // Installs the default models; when it has, they are used at once.
    ModelInstaller& modelInstaller() { return *m_modelInstaller; }

    // The compiler and packages that flows are run and exported with.
    const std::shared_ptr<ToolChain>& toolChain() const { return m_toolChain; }
    // Starts a run of a flow. The model servers that its programs were told of live until it ends,
    // whatever the settings are meanwhile.
    void spawnRun(Task<void> run);

    // What the start of a model server waits for; empty when nothing starts.
    const QString& modelStatus() const { return m_modelStatus; }

  Q_SIGNALS:
    void servicesChanged();
    void modelStatusChanged();

  private:
    Folders m_folders;
    StudioSettings m_settings;
    MakePlatform m_makePlatform;
    ServiceSettings m_serviceSettings;
    std::optional<Error> m_settingsProblem;
    std::shared_ptr<SwitchableModel> m_model;
    std::shared_ptr<SwitchableEmbedder> m_embedder;
    std::shared_ptr<SwitchableEndpoints> m_endpoints;
    Platform m_platform;
    std::shared_ptr<ToolChain> m_toolChain;
    ModelInstaller* m_modelInstaller;
    QString m_modelStatus;
};

} // namespace ombrel
