#pragma once

#include "core/FlowNode.h"
#include "core/FlowRunHighlight.h"
#include "flows/FlowIssue.h"
#include "platform/Uuid.h"

#include <QPointF>
#include <QString>

#include <cstdint>
#include <optional>

namespace ombrel {

// What the card of a node shows.
struct CanvasCard {
    Uuid id;
    std::size_t kind = 0; // the index in FlowNodeKind
    QString title;
    QString subtitle;
    QPointF centre; // as stored
    bool drawsOnKnowledge = false;
    std::optional<FlowIssue::Severity> mark; // of its most severe issue
    QString issues;                          // a line each
    FlowRunHighlight::NodeState runState = FlowRunHighlight::NodeState::notReached;
    std::int64_t step = 0; // 0 when the run has not reached it
    QString runValue;      // a line of what it gave

    bool isStart() const { return kind == 0; }
};

} // namespace ombrel
