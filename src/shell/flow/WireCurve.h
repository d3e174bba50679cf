#pragma once

#include <QPainterPath>
#include <QPointF>
#include <QPolygonF>
#include <QRectF>

namespace ombrel {

// The curve of a wire, which leaves to the right and arrives from the left.
class WireCurve {
  public:
    WireCurve(QPointF from, QPointF to);

    QPointF at(double t) const; // 0 where it leaves, 1 where it arrives
    QRectF bounds() const;
    QPainterPath path() const;
    // As a line of this many straight pieces.
    QPolygonF flattened(int pieces) const;
    // The same without the pieces that lie outside of the rectangle.
    QPainterPath pathWithin(const QRectF& seen, int pieces) const;
    double distanceTo(QPointF point) const;

  private:
    QPointF m_from;
    QPointF m_out;
    QPointF m_in;
    QPointF m_to;
};

} // namespace ombrel
