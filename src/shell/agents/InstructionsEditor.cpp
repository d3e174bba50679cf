#include "shell/agents/InstructionsEditor.h"

#include "agents/AgentTexts.h"
#include "core/TokenEstimate.h"
#include "shell/QtText.h"
#include "shell/agents/HeightHandle.h"
#include "shell/design/Banner.h"
#include "shell/design/BusyButton.h"
#include "shell/design/Button.h"
#include "shell/design/Card.h"
#include "shell/design/Icon.h"
#include "shell/design/LongText.h"
#include "shell/design/MessageText.h"
#include "shell/design/Named.h"
#include "shell/design/SectionTitle.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextArea.h"
#include "shell/design/TextLabel.h"

#include <QHBoxLayout>
#include <QMenu>
#include <QVBoxLayout>

#include <utility>

namespace ombrel {

namespace {

constexpr int usualHeight = 168;
constexpr int leastHeight = 72;
constexpr int mostHeight = 900;

} // namespace

InstructionsEditor::InstructionsEditor(std::shared_ptr<AppState> shownState, Uuid id,
                                       QWidget* parentWidget)
    : AgentPart(std::move(shownState), id, parentWidget),
      m_text(named(new TextArea(tr("What the agent is for, and how it should answer")),
                   QStringLiteral("agent.instructions"), tr("Instructions"))),
      m_tokens(new TextLabel({}, TextRole::caption, TextLabel::Ink::secondary)),
      m_insert(named(makeButton(tr("Insert Context Field")), QStringLiteral("agent.insert"),
                     tr("Insert Context Field"))),
      m_menu(new QMenu(this)),
      m_refine(named(new BusyButton(tr("Refine Instructions"), ButtonKind::secondary),
                     QStringLiteral("agent.refine"), tr("Refine Instructions"))),
      m_error(new Banner(Tone::danger)),
      m_proposalSummary(new MessageText(TextRole::body, TextLabel::Ink::secondary)),
      m_proposalText(new MessageText), m_proposal(makeProposal()) {
    m_tokens->setObjectName(QStringLiteral("agent.instructions.tokens"));
    m_menu->setObjectName(QStringLiteral("agent.insert.menu"));
    m_insert->setIcon(themeIcon(QStringLiteral("chevron-down")));
    m_insert->setLayoutDirection(Qt::RightToLeft); // the icon behind the text
    connect(m_insert, &QPushButton::clicked, this, [this] {
        m_menu->popup(m_insert->mapToGlobal(QPoint(0, m_insert->height() + spacing::hair)));
    });
    m_refine->setIcon(themeIcon(QStringLiteral("sparkle")));
    m_error->setObjectName(QStringLiteral("agent.refine.error"));
    m_error->hide();
    auto* title = new SectionTitle(tr("INSTRUCTIONS"), {}, TextRole::overline);
    title->addControl(m_tokens);
    auto* handle =
        named(new HeightHandle(m_text, usualHeight, leastHeight, mostHeight),
              QStringLiteral("agent.instructions.handle"), tr("Height of the instructions"));
    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(spacing::small);
    buttons->addWidget(m_refine);
    buttons->addWidget(m_insert);
    buttons->addStretch(1);
    auto* card = new Card;
    card->content()->addWidget(title);
    card->content()->addWidget(m_text);
    card->content()->addWidget(handle);
    card->content()->addLayout(buttons);
    card->content()->addWidget(m_error);
    card->content()->addWidget(m_proposal);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(card);

    connect(m_text, &TextArea::edited, this, [this](const QString& text) {
        edit([&](Agent& edited) { edited.instructions = fromQt(text); });
    });
    connect(m_refine, &QPushButton::clicked, this, &InstructionsEditor::refine);
}

QWidget* InstructionsEditor::makeProposal() {
    auto* panel = new QFrame;
    panel->setObjectName(QStringLiteral("agent.refine.proposal"));
    panel->setProperty("card", "flat");
    m_proposalSummary->setObjectName(QStringLiteral("agent.refine.summary"));
    m_proposalText->setObjectName(QStringLiteral("agent.refine.text"));
    auto* use = named(makeButton(tr("Use This Version"), ButtonKind::primary),
                      QStringLiteral("agent.refine.use"), tr("Use This Version"));
    auto* discard =
        named(makeButton(tr("Discard")), QStringLiteral("agent.refine.discard"), tr("Discard"));
    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(spacing::small);
    buttons->addWidget(use);
    buttons->addWidget(discard);
    buttons->addStretch(1);
    auto* column = new QVBoxLayout(panel);
    column->setContentsMargins(spacing::medium, spacing::medium, spacing::medium, spacing::medium);
    column->setSpacing(spacing::small);
    column->addWidget(
        new TextLabel(tr("SUGGESTED REWRITE"), TextRole::overline, TextLabel::Ink::accent));
    column->addWidget(m_proposalText);
    column->addWidget(m_proposalSummary);
    column->addLayout(buttons);
    panel->hide();
    connect(use, &QPushButton::clicked, this, [this] {
        const std::string rewritten = m_refinement->instructions;
        m_refinement.reset();
        edit([&](Agent& edited) { edited.instructions = rewritten; });
        refresh();
    });
    connect(discard, &QPushButton::clicked, this, [this] {
        m_refinement.reset();
        refresh();
    });
    return panel;
}

void InstructionsEditor::refresh() {
    const Agent* shown = agent();
    if (!shown) {
        return;
    }
    m_text->showValue(toQt(shown->instructions));
    m_tokens->setText(toQt(instructionTokensText(*shown)));
    m_refine->setBusy(m_isRefining);
    m_refine->setEnabled(!m_isRefining && canRefineInstructions(*shown));
    m_error->showOrHide(m_refinementError ? toQt(*m_refinementError) : QString());
    if (m_refinement) {
        m_proposalText->setText(toQt(m_refinement->instructions));
        m_proposalSummary->setText(toQt(m_refinement->summary));
    }
    m_proposal->setVisible(m_refinement.has_value());
    showMenu(shown->contextFieldNames);
}

void InstructionsEditor::showMenu(const std::vector<std::string>& fieldNames) {
    if (m_menuNames == fieldNames) {
        return;
    }
    m_menuNames = fieldNames;
    m_menu->clear();
    if (fieldNames.empty()) {
        m_menu->addAction(toQt(noContextFieldsText))->setEnabled(false);
    }
    for (const std::string& name : fieldNames) {
        connect(m_menu->addAction(actionText(toQt(name))), &QAction::triggered, this,
                [this, name] { state().insertContextPlaceholder(agentID(), name); });
    }
}

void InstructionsEditor::refine() {
    const Agent* snapshot = agent();
    if (!snapshot) {
        return;
    }
    m_isRefining = true;
    m_refinement.reset();
    m_refinementError.reset();
    refresh();
    auto task = refineAndShow(state().platform().model, *snapshot, this);
    spawn(std::move(task));
}

Task<void> InstructionsEditor::refineAndShow(std::shared_ptr<OnDeviceModel> model, Agent snapshot,
                                             QPointer<InstructionsEditor> editor) {
    auto refining = AgentInstructionRefiner::refine(std::move(model), std::move(snapshot));
    const Refined refined = co_await std::move(refining);
    if (editor) {
        editor->takeRefined(refined);
    }
}

void InstructionsEditor::takeRefined(const Refined& refined) {
    m_isRefining = false;
    if (refined) {
        m_refinement = *refined;
    } else {
        m_refinementError = refined.error().message;
    }
    refreshLater();
}

} // namespace ombrel
