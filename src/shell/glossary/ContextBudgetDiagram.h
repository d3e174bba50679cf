#pragma once

#include "shell/glossary/Diagram.h"

namespace ombrel {

// What the prompt is made of, as parts of a bar.
class ContextBudgetDiagram final : public Diagram {
  public:
    int draw(DiagramPen& pen, int width) const override;
};

} // namespace ombrel
