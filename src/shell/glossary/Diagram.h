#pragma once

namespace ombrel {

class DiagramPen;

// A small drawing that shows what a topic of the glossary means.
class Diagram {
  public:
    virtual ~Diagram() = default;
    // Draws it from the origin on, `width` wide; how high it is. The pen decides whether anything
    // is painted or only measured.
    virtual int draw(DiagramPen& pen, int width) const = 0;
};

} // namespace ombrel
