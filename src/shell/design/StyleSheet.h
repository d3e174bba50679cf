#pragma once

#include "shell/design/ThemeColors.h"

#include <QString>

namespace ombrel {

// How Qt's own controls are drawn in these colours. What a control is for is told by dynamic
// properties that the design's own constructors set ("kind", "segment").
QString styleSheet(const ThemeColors& colors);

} // namespace ombrel
