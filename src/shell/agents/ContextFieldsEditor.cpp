#include "shell/agents/ContextFieldsEditor.h"

#include "agents/AgentTexts.h"
#include "shell/QtText.h"
#include "shell/design/Button.h"
#include "shell/design/Card.h"
#include "shell/design/Chip.h"
#include "shell/design/Icon.h"
#include "shell/design/Named.h"
#include "shell/design/SectionTitle.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextField.h"
#include "shell/design/Theme.h"
#include "shell/design/WrapLayout.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

#include <utility>

namespace ombrel {

ContextFieldsEditor::ContextFieldsEditor(std::shared_ptr<AppState> shownState, Uuid id,
                                         QWidget* parentWidget)
    : AgentPart(std::move(shownState), id, parentWidget), m_chips(new QWidget),
      m_row(new WrapLayout(spacing::small, 0, m_chips)),
      m_newName(named(new TextField(tr("fieldName")), QStringLiteral("agent.context.newName"),
                      tr("Name of a context field"))),
      m_add(named(makeButton(tr("Add")), QStringLiteral("agent.context.add"),
                  tr("Add the context field"))) {
    m_newName->setFont(Theme::current().font(TextRole::code));
    m_newName->setMaximumWidth(240);
    m_add->setIcon(themeIcon(QStringLiteral("plus")));
    auto* card = new Card;
    card->content()->addWidget(
        new SectionTitle(tr("FLOW CONTEXT"), toQt(flowContextSubtitle), TextRole::overline));
    card->content()->addWidget(m_chips);
    auto* row = new QHBoxLayout;
    row->setSpacing(spacing::small);
    row->addWidget(m_newName, 1);
    row->addWidget(m_add);
    row->addStretch(1);
    card->content()->addLayout(row);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(card);
    connect(m_add, &QPushButton::clicked, this, &ContextFieldsEditor::add);
    connect(m_newName, &QLineEdit::returnPressed, this, &ContextFieldsEditor::add);
}

void ContextFieldsEditor::add() {
    if (state().addContextFieldName(agentID(), fromQt(m_newName->text()))) {
        m_newName->clear();
    }
    m_newName->setFocus();
}

void ContextFieldsEditor::refresh() {
    const Agent* shown = agent();
    if (!shown || m_shown == shown->contextFieldNames) {
        return;
    }
    m_shown = shown->contextFieldNames;
    while (QLayoutItem* item = m_row->takeAt(0)) {
        item->widget()->hide();
        item->widget()->deleteLater();
        delete item;
    }
    for (const std::string& name : *m_shown) {
        auto* chip = new Chip(QStringLiteral("agent.context.") + toQt(name), toQt(name), true);
        m_row->addWidget(chip);
        connect(chip, &Chip::removed, this,
                [this, name] { state().removeContextFieldName(agentID(), name); });
    }
    m_chips->setVisible(!m_shown->empty());
}

} // namespace ombrel
