#pragma once

#include "platform/Uuid.h"

#include <QString>

#include <cstddef>

namespace ombrel {

// A connection whose two ends are there.
struct CanvasWire {
    Uuid id;
    std::size_t from = 0; // places among the cards
    std::size_t to = 0;
    QString port; // empty for the unnamed one
    bool isTaken = false;
    bool isLast = false; // the last one that the run took
};

} // namespace ombrel
