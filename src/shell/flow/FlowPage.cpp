#include "shell/flow/FlowPage.h"

#include "flows/Conversation.h"
#include "flows/FlowValidator.h"
#include "shell/QtText.h"
#include "shell/agents/PropertyListEditor.h"
#include "shell/design/Card.h"
#include "shell/design/Named.h"
#include "shell/design/SectionTitle.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextField.h"
#include "shell/design/TextLabel.h"
#include "shell/flow/FormField.h"
#include "shell/flow/IssueList.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace ombrel {

namespace {

SectionTitle* sectionTitle(const QString& text, const char* name) {
    auto* title = new SectionTitle(text, {}, TextRole::overline);
    title->setObjectName(QLatin1String(name));
    return title;
}

void showNumber(QSpinBox* box, std::int64_t number) {
    const QSignalBlocker quiet(box);
    // A file may hold any number; the box shows the nearest that it can.
    const auto shown = std::clamp<std::int64_t>(number, box->minimum(), box->maximum());
    if (box->value() != shown) {
        box->setValue(static_cast<int>(shown));
    }
}

} // namespace

FlowPage::FlowPage(std::shared_ptr<AppState> state, Uuid flowID, QWidget* parent)
    : QWidget(parent), m_state(std::move(state)), m_flowID(flowID),
      m_name(named(new TextField, QStringLiteral("inspector.flow.name"), tr("Flow name"))),
      m_kind(named(new QComboBox, QStringLiteral("inspector.flow.kind"), tr("Kind"))),
      m_maxHops(named(new QSpinBox, QStringLiteral("inspector.flow.maxHops"), tr("Max hops (F9)"))),
      m_maxHistory(named(new QSpinBox, QStringLiteral("inspector.flow.maxHistory"),
                         tr("Max history (tokens)"))),
      m_startInput(new PropertyListEditor(QStringLiteral("inspector.flow.startInput"), {}, true)),
      m_conversationNote(
          (new TextLabel(toQt(conversationInputNote), TextRole::caption, TextLabel::Ink::secondary))
              ->wrapping()),
      m_context(new PropertyListEditor(QStringLiteral("inspector.flow.context"), {}, true)),
      m_issuesTitle(sectionTitle({}, "inspector.flow.issues.title")), m_issues(new IssueList) {
    setObjectName(QStringLiteral("inspector.flow"));
    QVBoxLayout* column = makeInspectorColumn(this);

    column->addWidget(sectionTitle(tr("FLOW"), "inspector.flow.title"));
    column->addWidget(makeFormField(tr("Flow name"), m_name));
    for (const auto& [kind, label] : rawValues(FlowKind{})) {
        m_kind->addItem(toQt(label), static_cast<int>(kind));
    }
    m_maxHops->setRange(1, 50);
    m_maxHistory->setRange(200, 20'000);
    m_maxHistory->setSingleStep(200);
    m_maxHistoryField = makeFormField(tr("Max history (tokens)"), m_maxHistory);
    auto* row = new QHBoxLayout;
    row->setSpacing(spacing::medium);
    row->addWidget(makeFormField(tr("Kind"), m_kind), 3);
    row->addWidget(makeFormField(tr("Max hops (F9)"), m_maxHops), 2);
    column->addLayout(row);
    column->addWidget(m_maxHistoryField);

    column->addWidget(makeRule());
    column->addWidget(sectionTitle(tr("START INPUT"), "inspector.flow.startInput.title"));
    m_conversationNote->setObjectName(QStringLiteral("inspector.flow.conversationNote"));
    column->addWidget(m_conversationNote);
    column->addWidget(m_startInput);
    column->addWidget(makeRule());
    column->addWidget(sectionTitle(tr("FLOW CONTEXT (F6)"), "inspector.flow.context.title"));
    column->addWidget(m_context);
    column->addWidget(m_issuesTitle);
    m_issues->setObjectName(QStringLiteral("inspector.flow.issues"));
    column->addWidget(m_issues);
    column->addStretch(1);

    connect(m_startInput, &PropertyListEditor::changed, this,
            [this] { edit([&](Flow& flow) { flow.startInput = m_startInput->properties(); }); });
    connect(m_context, &PropertyListEditor::changed, this,
            [this] { edit([&](Flow& flow) { flow.contextFields = m_context->properties(); }); });
    connect(m_name, &TextField::edited, this,
            [this](const QString& text) { edit([&](Flow& flow) { flow.name = fromQt(text); }); });
    connect(m_kind, &QComboBox::activated, this, [this](int index) {
        edit([&](Flow& flow) {
            flow.kind = static_cast<FlowKind>(m_kind->itemData(index).toInt());
        });
    });
    connect(m_maxHops, &QSpinBox::valueChanged, this,
            [this](int value) { edit([&](Flow& flow) { flow.maxHops = value; }); });
    connect(m_maxHistory, &QSpinBox::valueChanged, this,
            [this](int value) { edit([&](Flow& flow) { flow.maxHistoryTokens = value; }); });
}

void FlowPage::edit(const std::function<void(Flow&)>& write) {
    const Flow* stored = m_state->flow(m_flowID);
    if (!stored) {
        return;
    }
    Flow edited = *stored;
    write(edited);
    if (edited != *stored) {
        m_state->updateFlow(edited);
    }
}

void FlowPage::showFlow(const Flow& flow) {
    const bool isConversation = flow.kind == FlowKind::conversational;
    m_name->showValue(toQt(flow.name));
    m_kind->setCurrentIndex(m_kind->findData(static_cast<int>(flow.kind)));
    showNumber(m_maxHops, flow.maxHops);
    showNumber(m_maxHistory, flow.maxHistoryTokens);
    m_maxHistoryField->setVisible(isConversation);
    m_conversationNote->setVisible(isConversation);
    m_startInput->setVisible(!isConversation);
    m_startInput->setProperties(flow.startInput);
    m_context->setProperties(flow.contextFields);
    const auto issues = flowIssues(*m_state, m_flowID);
    m_issuesTitle->setTitle(tr("ISSUES (%1)").arg(issues.size()));
    m_issuesTitle->setVisible(!issues.empty());
    m_issues->setVisible(!issues.empty());
    m_issues->showIssues(issues);
}

} // namespace ombrel
