#pragma once

#include <QPointF>

#include <optional>

namespace ombrel {

// Where the pointer was last, in the coordinates of the canvas's widget. It is shared, so that
// following the pointer draws nothing anew.
struct CanvasHoverTracker {
    std::optional<QPointF> location; // none while the pointer is elsewhere
};

} // namespace ombrel
