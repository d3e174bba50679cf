#include "shell/StudioServices.h"

#include "platform/LocalPlatform.h"
#include "platform/MainExecutor.h"
#include "platform/UserFolders.h"
#include "shell/ModelInstaller.h"
#include "shell/QtExecutor.h"
#include "shell/QtText.h"

#include <utility>

namespace ombrel {

namespace {

Task<void> runHolding(std::shared_ptr<const void> endpoints, Task<void> run) {
    co_await std::move(run);
    endpoints.reset();
}

} // namespace

StudioServices::StudioServices(Folders folders, const MakePlatform& makePlatform)
    : m_folders(std::move(folders)), m_settings(m_folders.config / "studio.ini"),
      m_makePlatform(makePlatform), m_model(std::make_shared<SwitchableModel>()),
      m_embedder(std::make_shared<SwitchableEmbedder>()),
      m_endpoints(std::make_shared<SwitchableEndpoints>()),
      m_toolChain(std::make_shared<ToolChain>()) {
    auto loaded = ServiceSettings::load(m_folders.config / "settings.json");
    m_serviceSettings = std::move(loaded.settings);
    m_settingsProblem = std::move(loaded.problem);
    makeServicesAnew();
    m_modelInstaller = new ModelInstaller(m_platform.executor, m_folders.installScript, this);
    connect(m_modelInstaller, &ModelInstaller::succeeded, this, &StudioServices::makeServicesAnew);
}

std::unique_ptr<StudioServices> StudioServices::ofThisUser() {
    const auto executor = std::make_shared<QtExecutor>();
    return std::make_unique<StudioServices>(
        Folders{userConfigFolder(), userDataFolder() / "Recovery"},
        [executor](const ServiceSettings& settings, Progress progress) {
            return makeLocalPlatform(executor, settings, std::move(progress));
        });
}

Result<void> StudioServices::setServiceSettings(const ServiceSettings& settings) {
    auto saved = settings.save(m_folders.config / "settings.json");
    if (saved) {
        m_serviceSettings = settings;
        m_settingsProblem.reset();
        makeServicesAnew();
    }
    return saved;
}

void StudioServices::spawnRun(Task<void> run) {
    m_platform.executor->spawn(runHolding(m_endpoints->hold(), std::move(run)));
}

void StudioServices::makeServicesAnew() {
    Platform made = m_makePlatform(m_serviceSettings, [this](const std::string& status) {
        m_modelStatus = toQt(status);
        Q_EMIT modelStatusChanged();
    });
    m_model->use(made.model);
    m_embedder->use(made.embedder);
    m_modelStatus.clear();
    m_endpoints->use(made.endpoints);
    if (!m_platform.executor) {
        m_platform = std::move(made);
        m_platform.model = m_model;
        m_platform.embedder = m_embedder;
        m_platform.endpoints = m_endpoints;
    }
    Q_EMIT servicesChanged();
}

} // namespace ombrel
