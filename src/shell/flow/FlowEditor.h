#pragma once

#include "shell/StateView.h"

class QPushButton;
class QShortcut;
class QSplitter;

namespace ombrel {

class Badge;
class ElidedLabel;
class FlowCanvas;
class FlowInspector;
class StudioServices;
class TextLabel;

// The editor of a flow: its canvas, the inspector beside it and the debug area below. It shows one
// flow as long as it lives.
class FlowEditor final : public StateView {
    Q_OBJECT

  public:
    FlowEditor(std::shared_ptr<AppState> state, StudioServices& services, Uuid flowID,
               QWidget* parent = nullptr);

    Uuid flowID() const { return m_flowID; }

  protected:
    void refresh() override;

  private:
    QWidget* makeHeader();
    void show(const FlowNodeKind& kind);

    Uuid m_flowID;
    ElidedLabel* m_name;
    Badge* m_kind;
    TextLabel* m_maxHops;
    Badge* m_readiness;
    QPushButton* m_export;
    FlowCanvas* m_canvas;
    FlowInspector* m_inspector;
    QShortcut* m_clearRun;
};

} // namespace ombrel
