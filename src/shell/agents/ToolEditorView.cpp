#include "shell/agents/ToolEditorView.h"

#include "agents/OutputTexts.h"
#include "shell/QtText.h"
#include "shell/agents/OutputKindEditor.h"
#include "shell/agents/PropertyListEditor.h"
#include "shell/design/Card.h"
#include "shell/design/IconView.h"
#include "shell/design/Named.h"
#include "shell/design/SectionTitle.h"
#include "shell/design/Spacing.h"
#include "shell/design/TabOrder.h"
#include "shell/design/TextArea.h"
#include "shell/design/TextField.h"
#include "shell/design/TextLabel.h"
#include "shell/design/Theme.h"

#include <QFrame>
#include <QHBoxLayout>
#include <QScrollArea>
#include <QVBoxLayout>

#include <utility>

namespace ombrel {

namespace {

constexpr int mockHeight = 180;

} // namespace

ToolEditorView::ToolEditorView(std::shared_ptr<AppState> shownState, Uuid id, QWidget* parentWidget)
    : StateView(std::move(shownState), parentWidget), m_toolID(id),
      m_name(named(new TextField(tr("toolName")), QStringLiteral("tool.name"), tr("Tool name"))),
      m_description(named(new TextField(tr("What this tool does")),
                          QStringLiteral("tool.description"), tr("What this tool does"))),
      m_usage(new TextLabel({}, TextRole::caption, TextLabel::Ink::secondary)),
      m_arguments(new PropertyListEditor(QStringLiteral("tool.arguments"), {}, true)),
      m_output(new OutputKindEditor(QStringLiteral("tool.output"), state().platform().executor)),
      m_mock(named(new TextArea, QStringLiteral("tool.mock"), tr("Mock response"))),
      m_verdictIcon(new IconView(QStringLiteral("check-circle"), Tone::success, spacing::icon)),
      m_verdict(new TextLabel) {
    setObjectName(QStringLiteral("tool"));
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(makeHeader());
    column->addWidget(makeBody(), 1);
    watch(state().tools);
    watch(state().agents);
    connect(m_name, &TextField::edited, this, [this](const QString& text) {
        edit([&](ToolDefinition& tool) { tool.name = fromQt(text); });
    });
    connect(m_description, &TextField::edited, this, [this](const QString& text) {
        edit([&](ToolDefinition& tool) { tool.description = fromQt(text); });
    });
    connect(m_arguments, &PropertyListEditor::changed, this, [this] {
        edit([this](ToolDefinition& tool) { tool.arguments = m_arguments->properties(); });
    });
    connect(m_output, &OutputKindEditor::edited, this, [this](const AgentOutputKind& output) {
        edit([&](ToolDefinition& tool) { tool.output = output; });
    });
    connect(m_mock, &TextArea::edited, this, [this](const QString& text) {
        edit([&](ToolDefinition& tool) { tool.mockResponseJSON = fromQt(text); });
    });
}

QWidget* ToolEditorView::makeHeader() {
    auto* bar = new QFrame;
    bar->setProperty("bar", "true");
    m_name->setProperty("kind", "name");
    m_name->setFont(Theme::current().font(TextRole::heading));
    m_description->setProperty("kind", "name");
    m_usage->setObjectName(QStringLiteral("tool.usage"));
    auto* title = new QHBoxLayout;
    title->setSpacing(spacing::medium);
    title->addWidget(new IconView(QStringLiteral("tool"), Tone::accent, 20));
    title->addWidget(m_name, 1);
    title->addWidget(m_usage);
    auto* about = new QHBoxLayout;
    about->setSpacing(spacing::medium);
    about->addSpacing(20 + spacing::medium);
    about->addWidget(m_description, 1);
    auto* column = new QVBoxLayout(bar);
    column->setContentsMargins(spacing::wide, spacing::medium, spacing::wide, spacing::medium);
    column->setSpacing(spacing::hair);
    column->addLayout(title);
    column->addLayout(about);
    return bar;
}

QWidget* ToolEditorView::makeBody() {
    m_mock->setFont(Theme::current().font(TextRole::code));
    m_mock->setFixedHeight(mockHeight);
    m_verdict->setObjectName(QStringLiteral("tool.mock.verdict"));
    auto* note =
        (new TextLabel(toQt(mockResponseNote), TextRole::caption, TextLabel::Ink::secondary))
            ->wrapping();
    note->setObjectName(QStringLiteral("tool.mock.note"));

    auto* page = new QWidget;
    page->setProperty("page", "true");
    page->setMaximumWidth(spacing::readable);
    auto* column = new QVBoxLayout(page);
    column->setContentsMargins(spacing::wide, spacing::wide, spacing::wide, spacing::wide);
    column->setSpacing(spacing::large);
    const auto addCard = [column](const QString& title, QWidget* inside) {
        auto* card = new Card;
        card->content()->addWidget(new SectionTitle(title, {}, TextRole::overline));
        card->content()->addWidget(inside);
        column->addWidget(card);
        return card;
    };
    addCard(tr("ARGUMENTS"), m_arguments);
    addCard(tr("OUTPUT"), m_output);
    auto* verdict = new QHBoxLayout;
    verdict->setSpacing(spacing::small);
    verdict->addWidget(m_verdictIcon);
    verdict->addWidget(m_verdict);
    verdict->addStretch(1);
    auto* mock = addCard(tr("MOCK RESPONSE"), m_mock);
    mock->content()->addLayout(verdict);
    mock->content()->addWidget(note);
    column->addStretch(1);
    auto* area = new QScrollArea;
    area->setObjectName(QStringLiteral("tool.scroll"));
    area->setWidgetResizable(true);
    area->setFocusPolicy(Qt::NoFocus);
    area->setWidget(page);
    return area;
}

template <class Change>
void ToolEditorView::edit(Change change) {
    const ToolDefinition* current = state().tool(m_toolID);
    if (!current) {
        return;
    }
    ToolDefinition edited = *current;
    change(edited);
    if (!(edited == *current)) {
        state().updateTool(edited);
    }
}

bool ToolEditorView::focusNextPrevChild(bool next) {
    orderTabsByLayout(*this);
    return StateView::focusNextPrevChild(next);
}

void ToolEditorView::refresh() {
    const ToolDefinition* tool = state().tool(m_toolID);
    if (!tool) {
        return;
    }
    m_name->showValue(toQt(tool->name));
    m_description->showValue(toQt(tool->description));
    m_usage->setText(toQt(attachmentLine(*state().agents, m_toolID)));
    m_arguments->setProperties(tool->arguments);
    m_output->showOutput(tool->output);
    m_mock->showValue(toQt(tool->mockResponseJSON));
    const bool isValid = isValidMockResponse(tool->mockResponseJSON);
    m_verdict->setText(toQt(mockResponseVerdict(tool->mockResponseJSON)));
    m_verdict->setInk(isValid ? TextLabel::Ink::success : TextLabel::Ink::warning);
    m_verdictIcon->setIcon(isValid ? QStringLiteral("check-circle") : QStringLiteral("alert"),
                           isValid ? Tone::success : Tone::warning);
}

} // namespace ombrel
