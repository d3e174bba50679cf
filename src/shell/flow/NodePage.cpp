#include "shell/flow/NodePage.h"

#include "core/FindByID.h"
#include "flows/FlowEditorTexts.h"
#include "flows/FlowValidator.h"
#include "shell/QtText.h"
#include "shell/ThingTitle.h"
#include "shell/design/Button.h"
#include "shell/design/Card.h"
#include "shell/design/LongText.h"
#include "shell/design/Named.h"
#include "shell/design/SectionTitle.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextField.h"
#include "shell/design/TextLabel.h"
#include "shell/flow/ConnectionList.h"
#include "shell/flow/FormField.h"
#include "shell/flow/IssueList.h"

#include <QCheckBox>
#include <QComboBox>
#include <QPushButton>
#include <QVBoxLayout>

#include <utility>

namespace ombrel {

NodePage::NodePage(std::shared_ptr<AppState> state, Uuid flowID, QWidget* parent)
    : QWidget(parent), m_state(std::move(state)), m_flowID(flowID),
      m_title(new SectionTitle({}, {}, TextRole::overline)),
      m_name((new TextLabel({}, TextRole::heading))->wrapping()),
      m_note((new TextLabel({}, TextRole::body, TextLabel::Ink::secondary))->wrapping()),
      m_edit(named(makeButton({}), QStringLiteral("inspector.node.edit"), tr("Edit"))),
      m_field(named(new TextField, QStringLiteral("inspector.branch.field"), tr("field"))),
      m_operator(named(new QComboBox, QStringLiteral("inspector.branch.operator"), tr("Operator"))),
      m_value(named(new TextField, QStringLiteral("inspector.branch.value"), tr("value"))),
      m_branch(makeBranchForm()),
      m_caseName(named(new TextField, QStringLiteral("inspector.end.caseName"), tr("caseName"))),
      m_carries(named(new QCheckBox(tr("Carries the preceding value")),
                      QStringLiteral("inspector.end.carries"), tr("Carries the preceding value"))),
      m_end(makeEndForm()), m_issues(new IssueList),
      m_unconnected(
          new TextLabel(tr("No connections yet."), TextRole::caption, TextLabel::Ink::secondary)),
      m_connections(new ConnectionList),
      m_delete(named(makeButton(tr("Delete Node"), ButtonKind::danger),
                     QStringLiteral("inspector.node.delete"), tr("Delete Node"))) {
    setObjectName(QStringLiteral("inspector.node"));
    m_title->setObjectName(QStringLiteral("inspector.node.title"));
    m_name->setObjectName(QStringLiteral("inspector.node.name"));
    m_note->setObjectName(QStringLiteral("inspector.node.note"));
    m_issues->setObjectName(QStringLiteral("inspector.node.issues"));
    m_connections->setObjectName(QStringLiteral("inspector.node.connections"));
    QVBoxLayout* column = makeInspectorColumn(this);
    for (QWidget* part : {static_cast<QWidget*>(m_title), static_cast<QWidget*>(m_name),
                          static_cast<QWidget*>(m_note)}) {
        column->addWidget(part);
    }
    column->addWidget(m_edit, 0, Qt::AlignLeft);
    column->addWidget(m_branch);
    column->addWidget(m_end);
    column->addWidget(m_issues);
    column->addWidget(makeRule());
    column->addWidget(new SectionTitle(tr("CONNECTIONS"), {}, TextRole::overline));
    column->addWidget(m_unconnected);
    column->addWidget(m_connections);
    column->addSpacing(spacing::small);
    column->addWidget(m_delete, 0, Qt::AlignLeft);
    column->addStretch(1);

    connect(m_edit, &QPushButton::clicked, this, [this] {
        const Flow* flow = m_state->flow(m_flowID);
        const FlowNode* node = flow ? flow->node(m_nodeID) : nullptr;
        if (node) {
            const FlowNodeKind kind = node->kind;
            Q_EMIT shown(kind);
        }
    });
    connect(m_delete, &QPushButton::clicked, this, [this] {
        if (m_nodeID) {
            m_state->deleteFlowNode(*m_nodeID, m_flowID);
        }
    });
}

QWidget* NodePage::makeBranchForm() {
    auto* form = new QWidget;
    auto* column = new QVBoxLayout(form);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(spacing::medium);
    for (const auto& [operation, name] : rawValues(WireBranchOperator{})) {
        m_operator->addItem(toQt(operatorLabel(operation)), static_cast<int>(operation));
    }
    m_valueField = makeFormField(tr("value"), m_value);
    column->addWidget(makeFormField(tr("field"), m_field));
    column->addWidget(makeFormField(tr("Operator"), m_operator));
    column->addWidget(m_valueField);
    using Branch = FlowNodeKind::Branch;
    connect(m_field, &TextField::edited, this, [this](const QString& text) {
        edit<Branch>([&](Branch& branch) { branch.field = fromQt(text); });
    });
    connect(m_operator, &QComboBox::activated, this, [this](int index) {
        edit<Branch>([&](Branch& branch) {
            branch.operation = static_cast<WireBranchOperator>(m_operator->itemData(index).toInt());
        });
    });
    connect(m_value, &TextField::edited, this, [this](const QString& text) {
        edit<Branch>([&](Branch& branch) { branch.value = fromQt(text); });
    });
    return form;
}

QWidget* NodePage::makeEndForm() {
    auto* form = new QWidget;
    auto* column = new QVBoxLayout(form);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(spacing::medium);
    column->addWidget(makeFormField(tr("caseName"), m_caseName));
    column->addWidget(m_carries);
    using End = FlowNodeKind::End;
    connect(m_caseName, &TextField::edited, this, [this](const QString& text) {
        edit<End>([&](End& end) { end.caseName = fromQt(text); });
    });
    connect(m_carries, &QCheckBox::clicked, this,
            [this](bool carries) { edit<End>([&](End& end) { end.carriesOutput = carries; }); });
    return form;
}

template <class Kind>
void NodePage::edit(const std::function<void(Kind&)>& write) {
    const Flow* stored = m_state->flow(m_flowID);
    if (!stored || !m_nodeID) {
        return;
    }
    Flow edited = *stored;
    FlowNode* node = findByID(edited.nodes, *m_nodeID);
    Kind* kind = node ? std::get_if<Kind>(&node->kind.value) : nullptr;
    if (kind) {
        write(*kind);
        if (edited != *stored) {
            m_state->updateFlow(edited);
        }
    }
}

void NodePage::showTexts(const QString& title, const QString& name, const QString& note,
                         const QString& edit) {
    m_title->setTitle(title);
    constexpr qsizetype most = 240;
    m_name->setText(breakable(name.size() > most ? name.left(most - 1) + QChar(0x2026) : name));
    m_name->setToolTip(name.size() > most ? toolTipText(name) : QString());
    m_name->setVisible(!name.isEmpty());
    m_note->setText(note);
    m_note->setVisible(!note.isEmpty());
    m_edit->setText(edit);
    m_edit->setAccessibleName(edit);
    m_edit->setVisible(!edit.isEmpty());
}

void NodePage::show(const FlowNodeKind::Start& /*start*/) {
    showTexts(tr("START"), {}, toQt(startNodeNote), {});
}

void NodePage::show(const FlowNodeKind::Agent& reference) {
    if (const Agent* agent = m_state->agent(reference.agentID)) {
        showTexts(tr("AGENT NODE"), titleOf(*agent),
                  tr("Output: %1").arg(toQt(rawValue(agent->output.kind()))),
                  tr("Edit Agent\u2026"));
    } else {
        showTexts(tr("AGENT NODE"), {}, tr("This agent was deleted."), {});
    }
}

void NodePage::show(const FlowNodeKind::Tool& reference) {
    if (const ToolDefinition* tool = m_state->tool(reference.toolID)) {
        showTexts(tr("TOOL NODE"), titleOf(*tool), toQt(toolNodeNote), tr("Edit Tool\u2026"));
    } else {
        showTexts(tr("TOOL NODE"), {}, tr("This tool was deleted."), {});
    }
}

void NodePage::show(const FlowNodeKind::Branch& branch) {
    showTexts(tr("BRANCH (F5)"), {}, {}, {});
    m_field->showValue(toQt(branch.field));
    m_operator->setCurrentIndex(m_operator->findData(static_cast<int>(branch.operation)));
    m_value->showValue(toQt(branch.value));
    m_valueField->setVisible(branch.operation != WireBranchOperator::isEmpty);
}

void NodePage::show(const FlowNodeKind::End& end) {
    showTexts(tr("END"), {}, {}, {});
    m_caseName->showValue(toQt(end.caseName));
    m_carries->setChecked(end.carriesOutput);
}

void NodePage::showNode(const Flow& flow, const FlowNode& node) {
    m_nodeID = node.id;
    const auto& kind = node.kind.value;
    m_branch->setVisible(std::holds_alternative<FlowNodeKind::Branch>(kind));
    m_end->setVisible(std::holds_alternative<FlowNodeKind::End>(kind));
    std::visit([this](const auto& payload) { show(payload); }, kind);

    std::vector<FlowIssue> issues = flowIssues(*m_state, m_flowID);
    std::erase_if(issues, [&](const FlowIssue& issue) { return issue.nodeID != node.id; });
    m_issues->showIssues(issues);
    m_issues->setVisible(!issues.empty());

    ConnectionList::Rows rows;
    for (const FlowEdge& edge : flow.outgoingEdges(node.id)) {
        rows.emplace_back(edge.fromPort ? toQt(*edge.fromPort) : QString(),
                          toQt(nodeTitle(flow, edge.toNodeID, *m_state->agents, *m_state->tools)));
    }
    m_unconnected->setVisible(rows.empty());
    m_connections->setVisible(!rows.empty());
    m_connections->showRows(rows);
    m_delete->setVisible(!std::holds_alternative<FlowNodeKind::Start>(kind));
}

} // namespace ombrel
