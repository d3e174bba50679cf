#pragma once

#include "core/Agent.h"
#include "core/FlowNode.h"
#include "core/ToolDefinition.h"

#include <QFrame>

#include <utility>
#include <vector>

class QToolButton;

namespace ombrel {

// What can be put on the canvas of a flow.
class FlowPalette final : public QFrame {
    Q_OBJECT

  public:
    explicit FlowPalette(QWidget* parent = nullptr);
    // What its menus offer.
    void showOffers(const std::vector<Agent>& agents, const std::vector<ToolDefinition>& tools);

    // Shows icons without words, for want of room.
    void setCompact(bool isCompact);

  Q_SIGNALS:
    void asked(const ombrel::FlowNodeKind& kind);

  private:
    using Offers = std::vector<std::pair<Uuid, QString>>;

    QToolButton* addButton(const char* name, const char* icon, const QString& text,
                           const QString& help);
    template <class Kind>
    void fill(QToolButton* button, Offers& shown, const Offers& offers, const QString& none);

    QToolButton* m_agents;
    QToolButton* m_tools;
    Offers m_shownAgents;
    Offers m_shownTools;
};

} // namespace ombrel
