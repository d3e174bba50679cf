#include "shell/flow/CanvasPlace.h"

#include "shell/flow/CanvasMetrics.h"

#include <cmath>

namespace ombrel {

CanvasPlace CanvasPlace::of(const CanvasView& view, double ratio) {
    const QPointF offset = canvas::origin + QPointF(view.panOffset.width, view.panOffset.height);
    return {view.zoomScale * ratio,
            {std::round(offset.x() * ratio), std::round(offset.y() * ratio)},
            ratio};
}

} // namespace ombrel
