#include "flows/CanvasView.h"

#include <algorithm>
#include <cmath>

namespace ombrel {

namespace {

double clampedScale(double scale) {
    return std::clamp(scale, CanvasView::smallestScale, CanvasView::largestScale);
}

CanvasSize scaledOffset(CanvasSize offset, double factor, CanvasPoint pointer) {
    return {factor * offset.width + (1 - factor) * pointer.x,
            factor * offset.height + (1 - factor) * pointer.y};
}

// How far a stretch has to move to lie within 0 and `length`; its beginning wins.
double shiftInto(double from, double to, double length) {
    if (to > length) {
        const double shift = length - to;
        return from + shift < 0 ? -from : shift;
    }
    return from < 0 ? -from : 0;
}

} // namespace

CanvasPoint CanvasView::seen(CanvasPoint point) const {
    return {point.x * zoomScale + panOffset.width, point.y * zoomScale + panOffset.height};
}

CanvasPoint CanvasView::onCanvas(CanvasPoint seenPoint) const {
    return {(seenPoint.x - panOffset.width) / zoomScale,
            (seenPoint.y - panOffset.height) / zoomScale};
}

CanvasView CanvasView::zoomedIn() const {
    return {clampedScale(zoomScale + 0.1), panOffset};
}

CanvasView CanvasView::zoomedOut() const {
    return {clampedScale(zoomScale - 0.1), panOffset};
}

CanvasView CanvasView::pinched(double factor, CanvasPoint pointer) const {
    return {clampedScale(factor * zoomScale), scaledOffset(panOffset, factor, pointer)};
}

CanvasView CanvasView::zoomedAt(double factor, CanvasPoint pointer) const {
    return pinched(clampedScale(factor * zoomScale) / zoomScale, pointer);
}

CanvasView CanvasView::panned(double dx, double dy) const {
    return {zoomScale, {panOffset.width + dx, panOffset.height + dy}};
}

CanvasView CanvasView::fitting(std::span<const CanvasPoint> points, CanvasSize margin,
                               CanvasSize size) {
    if (points.empty()) {
        return {};
    }
    const auto [left, right] = std::ranges::minmax(points, {}, &CanvasPoint::x);
    const auto [top, bottom] = std::ranges::minmax(points, {}, &CanvasPoint::y);
    const double width = right.x - left.x + 2 * margin.width;
    const double height = bottom.y - top.y + 2 * margin.height;
    const double scale = clampedScale(std::min({1.0, size.width / width, size.height / height}));
    return {scale,
            {size.width / 2 - scale * (left.x + right.x) / 2,
             size.height / 2 - scale * (top.y + bottom.y) / 2}};
}

CanvasView CanvasView::revealing(CanvasPoint point, CanvasSize halfBox, CanvasSize size) const {
    const CanvasPoint from = seen({point.x - halfBox.width, point.y - halfBox.height});
    const CanvasPoint to = seen({point.x + halfBox.width, point.y + halfBox.height});
    return panned(shiftInto(from.x, to.x, size.width), shiftInto(from.y, to.y, size.height));
}

std::string CanvasView::readout() const {
    return std::to_string(std::lround(zoomScale * 100)) + "%";
}

} // namespace ombrel
