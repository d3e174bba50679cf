#pragma once

#include "shell/flow/CanvasPlace.h"

#include <QPixmap>
#include <QRect>
#include <QSize>

#include <functional>
#include <vector>

class QPainter;

namespace ombrel {

// The picture of a canvas, kept from frame to frame, so that only what is new is drawn: a pan
// moves the picture, and then the strips that come into view and what was spoiled are drawn.
class CanvasLayer {
  public:
    // Draws all that touches the part; both are in device pixels, and nothing else is painted on.
    using Draw = std::function<void(QPainter&, const QRect& part)>;

    // This part of the canvas, or all of it, no longer looks as it was drawn.
    void spoil(const QRectF& onCanvas);
    void spoilAll();

    // The canvas at that place, of a size in device pixels, which isn't empty.
    const QPixmap& picture(QSize size, const CanvasPlace& place, const Draw& draw);

  private:
    // What has to be drawn after the picture was brought to its place.
    std::vector<QRect> bringTo(QSize size, const CanvasPlace& place);

    QPixmap m_picture;
    CanvasPlace m_place;
    std::vector<QRectF> m_spoiled; // on the canvas
    bool m_isAllSpoiled = true;
};

} // namespace ombrel
