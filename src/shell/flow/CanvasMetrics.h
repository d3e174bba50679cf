#pragma once

#include <QPointF>
#include <QRectF>
#include <QSizeF>

// Sizes of what the canvas of a flow shows, in units of the canvas (a device-independent pixel at
// full size).
namespace ombrel::canvas {

inline constexpr double cardWidth = 176;
inline constexpr double cardHeight = 64;
inline constexpr double cardCorner = 12;
inline constexpr double handleRadius = 6;
inline constexpr double bubbleHeight = 22;
inline constexpr double bubbleGap = 7;
inline constexpr double gridStep = 20;
// What is drawn around a card: its shadow, its handles, its bubble.
inline constexpr double cardMargin = 34;
inline constexpr double portWidth = 96; // of the words on a wire, at most

// Where the canvas's own origin is seen at first, so that the first column of nodes stands clear.
inline constexpr QPointF origin{24, 8};

inline QRectF cardRect(QPointF centre) {
    return {centre.x() - cardWidth / 2, centre.y() - cardHeight / 2, cardWidth, cardHeight};
}
// All that is drawn of a card.
inline QRectF cardReach(QPointF centre) {
    return cardRect(centre).adjusted(-cardMargin, -cardMargin, cardMargin, cardMargin);
}
// All that is drawn of a port, around the middle of its wire.
inline QRectF portReach(QPointF middle) {
    constexpr double halfWidth = portWidth / 2 + 10;
    constexpr double halfHeight = 11;
    return {middle.x() - halfWidth, middle.y() - halfHeight, 2 * halfWidth, 2 * halfHeight};
}
inline QPointF outputHandle(QPointF centre) {
    return {centre.x() + cardWidth / 2, centre.y()};
}
inline QPointF inputHandle(QPointF centre) {
    return {centre.x() - cardWidth / 2, centre.y()};
}
inline QRectF bubbleRect(QPointF centre) {
    return {centre.x() - cardWidth / 2, centre.y() + cardHeight / 2 + bubbleGap, cardWidth,
            bubbleHeight};
}
// The mark of a card's issues.
inline QRectF markRect(QPointF centre) {
    constexpr double side = 20;
    return {centre.x() + cardWidth / 2 - side * 0.75, centre.y() - cardHeight / 2 - side * 0.25,
            side, side};
}
// The mark of an agent with knowledge.
inline QRectF knowledgeRect(QPointF centre) {
    constexpr double side = 15;
    return {centre.x() + cardWidth / 2 - 14 - side, centre.y() + 5.5, side, side};
}

} // namespace ombrel::canvas
