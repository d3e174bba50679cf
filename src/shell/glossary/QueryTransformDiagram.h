#pragma once

#include "shell/glossary/Diagram.h"

namespace ombrel {

// One question, and what each transform makes of it.
class QueryTransformDiagram final : public Diagram {
  public:
    int draw(DiagramPen& pen, int width) const override;
};

} // namespace ombrel
