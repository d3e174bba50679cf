#pragma once

#include "shell/glossary/Diagram.h"

namespace ombrel {

// A list, and the same list in a better order.
class RerankDiagram final : public Diagram {
  public:
    int draw(DiagramPen& pen, int width) const override;
};

} // namespace ombrel
