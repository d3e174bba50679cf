#include "shell/agents/EnumCaseRow.h"

#include "agents/OutputTexts.h"
#include "agents/PropertyEditing.h"
#include "shell/QtText.h"
#include "shell/design/Button.h"
#include "shell/design/Named.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextField.h"
#include "shell/design/Theme.h"

#include <QHBoxLayout>
#include <QToolButton>

namespace ombrel {

EnumCaseRow::EnumCaseRow(const QString& name, QWidget* parentWidget)
    : QFrame(parentWidget), m_name(named(new TextField(toQt(caseNamePrompt)),
                                         name + QStringLiteral(".name"), tr("Case name"))),
      m_description(named(new TextField(toQt(caseDescriptionPrompt)),
                          name + QStringLiteral(".description"), tr("Case description"))) {
    setObjectName(name);
    setFocusProxy(m_name);
    m_name->setFont(Theme::current().font(TextRole::code));
    auto* remove = makeIconButton(QStringLiteral("trash"), tr("Remove this case"));
    remove->setObjectName(name + QStringLiteral(".remove"));
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(spacing::small);
    row->addWidget(m_name, 2);
    row->addWidget(m_description, 3);
    row->addWidget(remove);

    connect(m_name, &TextField::edited, this, [this](const QString& text) {
        m_case.name = fromQt(text);
        Q_EMIT changed();
    });
    connect(m_description, &TextField::edited, this, [this](const QString& text) {
        m_case.description = storedDescription(fromQt(text));
        Q_EMIT changed();
    });
    connect(remove, &QToolButton::clicked, this, &EnumCaseRow::removeRequested);
}

void EnumCaseRow::showValue(const AgentEnumCase& enumCase) {
    m_case = enumCase;
    m_name->showValue(toQt(m_case.name));
    m_description->showValue(toQt(m_case.description.value_or(std::string())));
}

} // namespace ombrel
