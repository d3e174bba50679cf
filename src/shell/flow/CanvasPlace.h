#pragma once

#include "flows/CanvasView.h"

#include <QPointF>
#include <QRectF>
#include <QTransform>

namespace ombrel {

// How a canvas lies on device pixels: a point of it is seen at itself times `unit` plus `offset`.
// The offset is whole, so that what was drawn can be moved along with a pan.
struct CanvasPlace {
    double unit = 1;
    QPointF offset;
    double ratio = 1; // device pixels to a device-independent one

    static CanvasPlace of(const CanvasView& view, double ratio);

    double zoomScale() const { return unit / ratio; }
    QPointF seen(QPointF onCanvas) const { return onCanvas * unit + offset; }
    QRectF seen(const QRectF& onCanvas) const {
        return {seen(onCanvas.topLeft()), onCanvas.size() * unit};
    }
    QRectF onCanvas(const QRectF& seenRect) const {
        return {(seenRect.topLeft() - offset) / unit, seenRect.size() / unit};
    }
    QTransform transform() const { return {unit, 0, 0, unit, offset.x(), offset.y()}; }
};

} // namespace ombrel
