#include "shell/TabPage.h"
#include "shell/tabs/EvaluationTab.h"
#include "shell/tabs/ExportTab.h"
#include "shell/tabs/IndexTab.h"
#include "shell/tabs/PlaygroundTab.h"
#include "shell/tabs/ProjectTab.h"
#include "shell/tabs/SettingsTab.h"
#include "shell/tabs/SourcesTab.h"

namespace ombrel {

TabPage* makeTabPage(AppTab tab, std::shared_ptr<AppState> state, StudioServices& services,
                     QWidget* parent) {
    switch (tab) {
    case AppTab::project:
        return new ProjectTab(state, services, parent);
    case AppTab::sources:
        return new SourcesTab(state, services, parent);
    case AppTab::settings:
        return new SettingsTab(state, services, parent);
    case AppTab::index:
        return new IndexTab(state, services, parent);
    case AppTab::evaluation:
        return new EvaluationTab(state, services, parent);
    case AppTab::playground:
        return new PlaygroundTab(state, services, parent);
    case AppTab::exportPackage:
        return new ExportTab(state, services, parent);
    }
    return nullptr;
}

} // namespace ombrel
