#pragma once

#include "core/FlowNode.h"

#include <optional>
#include <span>
#include <string>

namespace ombrel {

// A width and a height, or an offset.
struct CanvasSize {
    double width = 0;
    double height = 0;
    bool operator==(const CanvasSize&) const = default;
};

// Which part of a canvas is seen and how large: a point of the canvas is seen at itself times
// `zoomScale` plus `panOffset`.
struct CanvasView {
    static constexpr double smallestScale = 0.25;
    static constexpr double largestScale = 3.0;

    double zoomScale = 1;
    CanvasSize panOffset;

    CanvasPoint seen(CanvasPoint point) const;
    CanvasPoint onCanvas(CanvasPoint seen) const;

    // The buttons: a tenth larger or smaller, about the canvas's origin.
    CanvasView zoomedIn() const;
    CanvasView zoomedOut() const;
    // A pinch by a factor at the pointer: the offset follows the whole factor, the scale stops at
    // its ends.
    CanvasView pinched(double factor, CanvasPoint pointer) const;
    // A turn of the wheel at the pointer: what is under the pointer stays there also where the
    // scale stops.
    CanvasView zoomedAt(double factor, CanvasPoint pointer) const;
    CanvasView panned(double dx, double dy) const;
    // All of the points within the size, with a margin on every side (in units of the canvas), in
    // the middle and at most at full size; the start view when there are no points.
    static CanvasView fitting(std::span<const CanvasPoint> points, CanvasSize margin,
                              CanvasSize size);
    // The least pan that brings a box around the point wholly into the size.
    CanvasView revealing(CanvasPoint point, CanvasSize halfBox, CanvasSize size) const;

    // "100%".
    std::string readout() const;

    bool operator==(const CanvasView&) const = default;
};

} // namespace ombrel
