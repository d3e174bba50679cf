#pragma once

#include "shell/flow/CanvasPlace.h"
#include "shell/flow/CanvasScene.h"
#include "shell/flow/CanvasText.h"
#include "shell/flow/CardFace.h"

#include <QRect>
#include <QRectF>

#include <optional>
#include <set>
#include <vector>

class QPainter;

namespace ombrel {

// Draws the canvas of a flow. All coordinates that it is given are those of the canvas, but for
// `part`, which is in device pixels.
class CanvasPainter {
  public:
    // How the drawing is marked.
    struct Marks {
        std::set<Uuid> selectedNodes;
        std::optional<Uuid> selectedWire;
        std::optional<Uuid> hoveredNode;
        std::optional<Uuid> hoveredWire;
        std::optional<Uuid> targetNode; // of the wire that is being pulled
        bool hasFocus = false;
    };
    // What is seen above the drawing, and changes often.
    struct Overlay {
        struct Pulled {
            QPointF from;
            QPointF to;
            bool canConnect = true; // its node has an output
        };
        std::optional<Pulled> pulledWire;
        std::optional<double> guideX;
        std::optional<double> guideY;
        std::optional<QRectF> rubberBand;
        double pulse = 0; // from 0 to 1 and again, while a run goes on
    };

    // Draws what touches the part. The painter paints on device pixels as they are.
    void draw(QPainter& painter, const CanvasScene& scene, const CanvasPlace& place,
              const Marks& marks, const QRect& part);
    // Draws what lies above, within `seen`. The painter is one of the canvas.
    void drawOverlay(QPainter& painter, const CanvasScene& scene, const Overlay& overlay,
                     const QRectF& seen) const;
    // Forgets what was drawn in other colours or type.
    void themeChanged();

  private:
    struct Drawn; // what a part is drawn from

    void drawGrid(QPainter& painter, const Drawn& drawn) const;
    void drawWires(QPainter& painter, const Drawn& drawn) const;
    void drawPorts(QPainter& painter, const Drawn& drawn);
    void drawFaces(QPainter& painter, const Drawn& drawn);
    void drawWords(QPainter& painter, const Drawn& drawn);
    void drawMarks(QPainter& painter, const Drawn& drawn);
    void drawBubble(QPainter& painter, const CanvasCard& card, const QRectF& box, bool isReadable);
    void drawPulled(QPainter& painter, const Overlay::Pulled& pulled) const;

    CardFaces m_faces;
    CanvasText m_text;
    QPixmap m_knowledge;
    double m_knowledgeSide = 0; // in pixels
};

} // namespace ombrel
