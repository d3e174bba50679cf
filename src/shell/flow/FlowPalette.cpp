#include "shell/flow/FlowPalette.h"

#include "core/FlowPalette.h"
#include "shell/ThingTitle.h"
#include "shell/design/Icon.h"
#include "shell/design/LongText.h"
#include "shell/design/Named.h"
#include "shell/design/Spacing.h"

#include <QHBoxLayout>
#include <QMenu>
#include <QToolButton>

namespace ombrel {

FlowPalette::FlowPalette(QWidget* parent) : QFrame(parent) {
    named(this, QStringLiteral("canvas.palette"), tr("Palette"));
    setProperty("card", "true");
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(spacing::tight, spacing::tight, spacing::tight, spacing::tight);
    row->setSpacing(spacing::hair);
    m_agents = addButton("agent", "agent", tr("Agent"), tr("Add an agent of this project"));
    m_tools = addButton("tool", "tool", tr("Tool"), tr("Add a tool of this project"));
    for (QToolButton* button : {m_agents, m_tools}) {
        auto* menu = new QMenu(button);
        menu->setObjectName(button->objectName() + QStringLiteral(".menu"));
        menu->setToolTipsVisible(true);
        button->setMenu(menu);
        button->setPopupMode(QToolButton::InstantPopup);
        button->setText(button->text() + QStringLiteral("  \u25be"));
    }
    QToolButton* branch =
        addButton("branch", "branch", tr("Branch"),
                  tr("Add a branch: two ways on, by a field of what the agent before it returned"));
    QToolButton* end = addButton("end", "end", tr("End"), tr("Add an end of the flow"));
    connect(branch, &QToolButton::clicked, this, [this] { Q_EMIT asked(paletteBranch()); });
    connect(end, &QToolButton::clicked, this, [this] { Q_EMIT asked(paletteEnd()); });
    showOffers({}, {});
}

QToolButton* FlowPalette::addButton(const char* name, const char* icon, const QString& text,
                                    const QString& help) {
    auto* button = named(new QToolButton, QStringLiteral("canvas.add.") + QLatin1String(name),
                         tr("Add %1").arg(text));
    button->setIcon(themeIcon(QLatin1String(icon)));
    button->setIconSize({spacing::icon, spacing::icon});
    button->setText(text);
    button->setToolTip(help);
    button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    button->setFocusPolicy(Qt::TabFocus);
    layout()->addWidget(button);
    return button;
}

void FlowPalette::setCompact(bool isCompact) {
    for (auto* button : findChildren<QToolButton*>()) {
        button->setToolButtonStyle(isCompact ? Qt::ToolButtonIconOnly
                                             : Qt::ToolButtonTextBesideIcon);
    }
}

template <class Kind>
void FlowPalette::fill(QToolButton* button, Offers& shown, const Offers& offers,
                       const QString& none) {
    QMenu* menu = button->menu();
    if (offers == shown && !menu->isEmpty()) {
        return;
    }
    shown = offers;
    menu->clear();
    for (const auto& [id, title] : offers) {
        QAction* action = menu->addAction(actionText(title));
        action->setToolTip(toolTipText(title));
        connect(action, &QAction::triggered, this,
                [this, id = id] { Q_EMIT asked(FlowNodeKind{Kind{id}}); });
    }
    if (offers.empty()) {
        menu->addAction(none)->setEnabled(false);
    }
}

void FlowPalette::showOffers(const std::vector<Agent>& agents,
                             const std::vector<ToolDefinition>& tools) {
    Offers agentOffers;
    for (const Agent& agent : agents) {
        agentOffers.emplace_back(agent.id, titleOf(agent));
    }
    Offers toolOffers;
    for (const ToolDefinition& tool : tools) {
        toolOffers.emplace_back(tool.id, titleOf(tool));
    }
    fill<FlowNodeKind::Agent>(m_agents, m_shownAgents, agentOffers, tr("No agents yet"));
    fill<FlowNodeKind::Tool>(m_tools, m_shownTools, toolOffers, tr("No tools yet"));
}

} // namespace ombrel
