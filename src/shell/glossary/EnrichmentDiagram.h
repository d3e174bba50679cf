#pragma once

#include "shell/glossary/Diagram.h"

namespace ombrel {

// A small chunk that is found, and the section around it that is sent.
class EnrichmentDiagram final : public Diagram {
  public:
    int draw(DiagramPen& pen, int width) const override;
};

} // namespace ombrel
