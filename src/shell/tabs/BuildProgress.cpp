#include "shell/tabs/BuildProgress.h"

#include "core/AppState.h"
#include "knowledge/BuildTexts.h"
#include "shell/QtText.h"
#include "shell/design/ProgressRow.h"

#include <QVBoxLayout>

namespace ombrel {

namespace {

// How far the step of the build is that goes on; nothing while none does.
std::optional<Progress> stepOf(const RAGIndex& index) {
    if (index.isEnriching) {
        return index.enrichProgress.value_or(Progress{});
    }
    return index.importProgress ? index.importProgress : index.embedProgress;
}

} // namespace

BuildProgress::BuildProgress(QWidget* parent) : QWidget(parent), m_row(new ProgressRow) {
    setObjectName(QStringLiteral("buildProgress"));
    m_row->setObjectName(QStringLiteral("buildProgress.row"));
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(m_row);
    hide();
}

void BuildProgress::show(const AppState& state) {
    const std::optional<Progress> step = stepOf(state.currentIndex());
    if (step) {
        m_row->setProgress(toQt(buildStatusText(state, Date::now())), step->completed, step->total);
    }
    setVisible(step.has_value());
}

} // namespace ombrel
