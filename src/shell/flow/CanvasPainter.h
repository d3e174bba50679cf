#pragma once

#include "flows/CanvasView.h"
#include "shell/flow/CanvasScene.h"
#include "shell/flow/CanvasText.h"
#include "shell/flow/CardFace.h"

#include <QRectF>

#include <optional>
#include <set>
#include <vector>

class QPainter;

namespace ombrel {

// Draws the canvas of a flow.
class CanvasPainter {
  public:
    // What is seen beside the drawing itself.
    struct Marks {
        std::set<Uuid> selectedNodes;
        std::optional<Uuid> selectedWire;
        std::optional<Uuid> hoveredNode;
        std::optional<Uuid> hoveredWire;
        std::optional<Uuid> targetNode; // of the wire that is being pulled
        struct Pulled {
            QPointF from;
            QPointF to;
            bool canConnect = true; // its node has an output
        };
        std::optional<Pulled> pulledWire;
        std::optional<double> guideX;
        std::optional<double> guideY;
        std::optional<QRectF> rubberBand; // on the canvas
        bool hasFocus = false;
        double pulse = 0; // from 0 to 1 and again, while a run goes on
    };

    // Draws what lies within `exposed` (in the coordinates of the widget).
    void draw(QPainter& painter, const CanvasScene& scene, const CanvasView& view,
              const Marks& marks, const QRectF& exposed);
    // Forgets what was drawn in other colours or type.
    void themeChanged();

  private:
    void drawGrid(QPainter& painter, const CanvasView& view, const QRectF& exposed) const;
    void drawWires(QPainter& painter, const CanvasScene& scene, const Marks& marks,
                   const QRectF& seen, double scale) const;
    void drawPulled(QPainter& painter, const Marks::Pulled& pulled) const;
    void drawPorts(QPainter& painter, const CanvasScene& scene, const Marks& marks,
                   const QRectF& seen);
    void drawFaces(QPainter& painter, const CanvasScene& scene, const CanvasView& view,
                   const Marks& marks, const std::vector<const CanvasCard*>& cards);
    void drawWords(QPainter& painter, const CanvasScene& scene,
                   const std::vector<const CanvasCard*>& cards);
    void drawMarks(QPainter& painter, const CanvasScene& scene,
                   const std::vector<const CanvasCard*>& cards, double scale);
    void drawBubble(QPainter& painter, const CanvasCard& card, const QRectF& place, double scale);

    CardFaces m_faces;
    CanvasText m_text;
    QPixmap m_knowledge;
};

} // namespace ombrel
