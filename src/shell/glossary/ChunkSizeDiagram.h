#pragma once

#include "shell/glossary/Diagram.h"

namespace ombrel {

// Many small chunks, and few large ones.
class ChunkSizeDiagram final : public Diagram {
  public:
    int draw(DiagramPen& pen, int width) const override;
};

} // namespace ombrel
