#pragma once

#include "shell/glossary/Diagram.h"

namespace ombrel {

// Scores from the highest down, and where the list is cut.
class TopKDiagram final : public Diagram {
  public:
    int draw(DiagramPen& pen, int width) const override;
};

} // namespace ombrel
