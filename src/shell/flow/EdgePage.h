#pragma once

#include "core/AppState.h"

#include <QWidget>

#include <memory>
#include <optional>

namespace ombrel {

class FactList;

// The inspector of a connection.
class EdgePage final : public QWidget {
    Q_OBJECT

  public:
    EdgePage(std::shared_ptr<AppState> state, Uuid flowID, QWidget* parent = nullptr);
    void showEdge(const Flow& flow, const FlowEdge& edge);

  private:
    std::shared_ptr<AppState> m_state;
    Uuid m_flowID;
    std::optional<Uuid> m_edgeID;
    FactList* m_facts;
};

} // namespace ombrel
