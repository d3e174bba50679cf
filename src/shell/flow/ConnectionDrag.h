#pragma once

#include "platform/Uuid.h"

#include <QPointF>

namespace ombrel {

// A wire that is being pulled out of a node, in units of the canvas.
struct ConnectionDrag {
    Uuid fromNodeID;
    QPointF start;
    QPointF current;
};

} // namespace ombrel
