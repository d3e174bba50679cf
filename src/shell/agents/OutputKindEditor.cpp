#include "shell/agents/OutputKindEditor.h"

#include "agents/OutputTexts.h"
#include "shell/QtText.h"
#include "shell/agents/OutputEditorSheet.h"
#include "shell/agents/OutputSummaryView.h"
#include "shell/design/Button.h"
#include "shell/design/Icon.h"
#include "shell/design/Named.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextLabel.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

#include <utility>

namespace ombrel {

OutputKindEditor::OutputKindEditor(const QString& name, std::shared_ptr<MainExecutor> executor,
                                   QWidget* parentWidget)
    : QWidget(parentWidget), m_executor(std::move(executor)),
      m_summary(new OutputSummaryView(name + QStringLiteral(".summary"))) {
    setObjectName(name);
    auto* edit = named(makeButton(tr("Edit")), name + QStringLiteral(".edit"), tr("Edit output"));
    edit->setIcon(themeIcon(QStringLiteral("edit")));
    auto* hint = (new TextLabel(toQt(editOutputHint), TextRole::caption, TextLabel::Ink::secondary))
                     ->wrapping();
    hint->setObjectName(name + QStringLiteral(".hint"));
    auto* foot = new QHBoxLayout;
    foot->setSpacing(spacing::medium);
    foot->addWidget(edit);
    foot->addWidget(hint, 1);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(spacing::small);
    column->addWidget(m_summary);
    column->addLayout(foot);
    connect(edit, &QPushButton::clicked, this, &OutputKindEditor::openSheet);
}

void OutputKindEditor::showOutput(const AgentOutputKind& output) {
    m_output = output;
    m_summary->showOutput(output);
}

void OutputKindEditor::openSheet() {
    auto* sheet = new OutputEditorSheet(
        m_output, m_executor, [this](const AgentOutputKind& saved) { Q_EMIT edited(saved); }, this);
    sheet->open();
}

} // namespace ombrel
