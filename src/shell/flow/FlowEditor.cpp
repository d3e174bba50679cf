#include "shell/flow/FlowEditor.h"

#include "flows/FlowEditorTexts.h"
#include "flows/FlowValidator.h"
#include "shell/QtText.h"
#include "shell/ThingTitle.h"
#include "shell/design/Badge.h"
#include "shell/design/Button.h"
#include "shell/design/ElidedLabel.h"
#include "shell/design/Icon.h"
#include "shell/design/Named.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextLabel.h"
#include "shell/flow/FlowCanvas.h"
#include "shell/flow/FlowDebugArea.h"
#include "shell/flow/FlowExportAction.h"
#include "shell/flow/FlowInspector.h"

#include <QHBoxLayout>
#include <QShortcut>
#include <QSplitter>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace ombrel {

FlowEditor::FlowEditor(std::shared_ptr<AppState> shownState, StudioServices& services, Uuid flowID,
                       QWidget* parent)
    : StateView(std::move(shownState), parent), m_flowID(flowID),
      m_name(new ElidedLabel({}, TextRole::heading)), m_kind(new Badge),
      m_maxHops(new TextLabel({}, TextRole::caption, TextLabel::Ink::secondary)),
      m_readiness(new Badge),
      m_export(named(makeButton(tr("Export Package\u2026")), QStringLiteral("flow.export"),
                     tr("Export Package\u2026"))),
      m_canvas(new FlowCanvas(sharedState(), flowID)),
      m_inspector(new FlowInspector(sharedState(), flowID)),
      m_clearRun(new QShortcut(Qt::Key_Escape, this)) {
    named(this, QStringLiteral("flow"), tr("Flow editor"));
    auto* across = new QSplitter(Qt::Horizontal);
    across->setObjectName(QStringLiteral("flow.across"));
    across->setChildrenCollapsible(false);
    across->setHandleWidth(1);
    across->addWidget(m_canvas);
    across->addWidget(m_inspector);
    across->setStretchFactor(0, 1);
    across->setStretchFactor(1, 0);
    across->setSizes({700, 400});
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(makeHeader());
    column->addWidget(across, 1);
    auto* debug = new FlowDebugArea(sharedState(), services, flowID);
    column->addWidget(debug);
    new FlowExportAction(sharedState(), services, m_export);
    connect(debug, &FlowDebugArea::nodeChosen, this, [this](Uuid nodeID) {
        state().canvasSelection = CanvasSelection{CanvasSelection::Node{nodeID}};
    });

    connect(m_canvas, &FlowCanvas::shown, this, &FlowEditor::show);
    connect(m_canvas, &FlowCanvas::inspected, m_inspector, &FlowInspector::takeFocus);
    connect(m_inspector, &FlowInspector::shown, this, &FlowEditor::show);
    m_clearRun->setContext(Qt::WidgetWithChildrenShortcut);
    connect(m_clearRun, &QShortcut::activated, this, [this] { state().clearRunHighlight(); });
    watch(state().flows);
    watch(state().agents);
    watch(state().tools);
    watch(state().flowRunHighlight);
}

QWidget* FlowEditor::makeHeader() {
    auto* header = new QFrame;
    header->setProperty("bar", "true");
    auto* row = new QHBoxLayout(header);
    row->setContentsMargins(spacing::large, spacing::small, spacing::medium, spacing::small);
    row->setSpacing(spacing::medium);
    m_name->setObjectName(QStringLiteral("flow.name"));
    m_kind->setObjectName(QStringLiteral("flow.kind"));
    m_maxHops->setObjectName(QStringLiteral("flow.maxHops"));
    m_readiness->setObjectName(QStringLiteral("flow.readiness"));
    m_name->setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed);
    row->addWidget(m_name, 100);
    row->addWidget(m_kind);
    row->addWidget(m_maxHops);
    row->addWidget(m_readiness);
    row->addStretch(1);
    m_export->setIcon(themeIcon(QStringLiteral("export")));
    row->addWidget(m_export);
    return header;
}

void FlowEditor::refresh() {
    const Flow* flow = state().flow(m_flowID);
    if (!flow) {
        return;
    }
    m_name->setText(titleOf(*flow));
    m_kind->setText(toQt(rawValue(flow->kind)));
    m_kind->setTone(flow->kind == FlowKind::conversational ? Tone::accent : Tone::neutral);
    m_maxHops->setText(toQt(maxHopsText(*flow)));
    const auto issues = flowIssues(state(), m_flowID);
    m_readiness->setText(toQt(readinessText(issues)));
    const bool hasErrors = std::ranges::any_of(issues, [](const FlowIssue& issue) {
        return issue.severity == FlowIssue::Severity::error;
    });
    m_readiness->setTone(issues.empty() ? Tone::success : hasErrors ? Tone::danger : Tone::warning);
    const auto& highlight = *state().flowRunHighlight;
    m_clearRun->setEnabled(highlight && highlight->flowID == m_flowID);
}

void FlowEditor::show(const FlowNodeKind& kind) {
    if (const auto* agent = std::get_if<FlowNodeKind::Agent>(&kind.value);
        agent && state().agent(agent->agentID)) {
        state().setSelectedNavigatorItem({NavigatorSelection::Agent{agent->agentID}});
    } else if (const auto* tool = std::get_if<FlowNodeKind::Tool>(&kind.value);
               tool && state().tool(tool->toolID)) {
        state().setSelectedNavigatorItem({NavigatorSelection::Tool{tool->toolID}});
    }
}

} // namespace ombrel
