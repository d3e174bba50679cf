#include "shell/flow/FlowExportAction.h"

#include "flows/FlowExport.h"
#include "platform/MainExecutor.h"
#include "shell/QtText.h"
#include "shell/StudioServices.h"
#include "shell/flow/FlowExportDialog.h"

#include <QAbstractButton>
#include <QEvent>
#include <QFileDialog>
#include <QPointer>

#include <functional>
#include <utility>

namespace ombrel {

namespace {

// The one that follows an export of the window; null when none goes on.
FlowExportDialog* runningExport(const QWidget* inWindow) {
    const auto dialogs = inWindow->window()->findChildren<FlowExportDialog*>();
    for (FlowExportDialog* dialog : dialogs) {
        if (dialog->isExporting()) {
            return dialog;
        }
    }
    return nullptr;
}

Task<void> runExport(std::shared_ptr<MainExecutor> executor, FlowExport what,
                     std::shared_ptr<ToolChain> toolChain, QPointer<FlowExportDialog> dialog) {
    auto exporting = exportFlows(executor, std::move(what), std::move(toolChain));
    const ExportOutcome outcome = co_await std::move(exporting);
    if (dialog) {
        dialog->showOutcome(outcome);
    }
}

void start(const AppState& state, StudioServices& services, QWidget* window,
           std::filesystem::path destination) {
    FlowExport what;
    what.destination = std::move(destination);
    what.name = FlowExport::packageName(state.project->name);
    what.flows = *state.flows;
    what.agents = *state.agents;
    what.tools = *state.tools;
    what.ragIndexes = *state.ragIndexes;
    auto* dialog = new FlowExportDialog(toQt(what.name), what.destination, window);
    dialog->open();
    const auto& executor = state.platform().executor;
    executor->spawn(runExport(executor, std::move(what), services.toolChain(), dialog));
}

void choose(std::shared_ptr<AppState> state, StudioServices& services, QWidget* window,
            std::function<void()> began) {
    if (FlowExportDialog* running = runningExport(window)) {
        running->open();
        return;
    }
    auto* panel = new QFileDialog(window, FlowExportAction::tr("Export Package"),
                                  services.settings().lastFolder());
    panel->setObjectName(QStringLiteral("flowExport.destination"));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setFileMode(QFileDialog::Directory);
    panel->setOption(QFileDialog::ShowDirsOnly);
    panel->setLabelText(QFileDialog::Accept, FlowExportAction::tr("Export Here"));
    QObject::connect(panel, &QFileDialog::fileSelected, window,
                     [state = std::move(state), &services, window,
                      tell = std::move(began)](const QString& folder) {
                         services.settings().setLastFolder(folder);
                         start(*state, services, window, pathFromQt(folder));
                         tell();
                     });
    panel->open();
}

} // namespace

void exportFlowsPackage(std::shared_ptr<AppState> state, StudioServices& services,
                        QWidget* parent) {
    choose(std::move(state), services, parent->window(), [] {});
}

FlowExportAction::FlowExportAction(std::shared_ptr<AppState> state, StudioServices& services,
                                   QAbstractButton* button)
    : QObject(button), m_button(button) {
    button->setToolTip(toQt(exportFlowsHelp));
    button->installEventFilter(this);
    connect(button, &QAbstractButton::clicked, this, [this, shared = std::move(state), &services] {
        choose(shared, services, m_button->window(), [action = QPointer(this)] {
            if (action) {
                action->follow();
            }
        });
    });
}

bool FlowExportAction::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Show) {
        follow(); // an export may have begun before there was this button
    }
    return QObject::eventFilter(watched, event);
}

void FlowExportAction::follow() {
    FlowExportDialog* const running = runningExport(m_button);
    m_button->setEnabled(!running);
    if (running) {
        connect(running, &FlowExportDialog::exportEnded, this, &FlowExportAction::follow,
                Qt::UniqueConnection);
    }
}

} // namespace ombrel
