#pragma once

#include "shell/glossary/Diagram.h"

namespace ombrel {

// The same words, and a meaning that is near.
class IndexDiagram final : public Diagram {
  public:
    int draw(DiagramPen& pen, int width) const override;
};

} // namespace ombrel
