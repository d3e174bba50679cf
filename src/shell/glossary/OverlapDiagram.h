#pragma once

#include "shell/glossary/Diagram.h"

namespace ombrel {

// Two chunks that share a stretch of text.
class OverlapDiagram final : public Diagram {
  public:
    int draw(DiagramPen& pen, int width) const override;
};

} // namespace ombrel
