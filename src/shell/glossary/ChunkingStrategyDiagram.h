#pragma once

#include "shell/glossary/Diagram.h"

namespace ombrel {

// The same text, cut three ways.
class ChunkingStrategyDiagram final : public Diagram {
  public:
    int draw(DiagramPen& pen, int width) const override;
};

} // namespace ombrel
