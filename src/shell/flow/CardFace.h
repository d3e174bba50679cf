#pragma once

#include "core/FlowRunHighlight.h"

#include <QColor>
#include <QIcon>
#include <QPixmap>

#include <compare>
#include <cstddef>
#include <map>

namespace ombrel {

// What a card looks like without its words. Cards that look alike share one.
struct CardFace {
    std::size_t kind = 0;
    FlowRunHighlight::NodeState runState = FlowRunHighlight::NodeState::notReached;
    bool isFaint = false; // a run goes or went elsewhere
    bool isSelected = false;
    bool hasFocus = false;
    bool isHovered = false;
    bool isTarget = false; // a wire would connect to it
    int titleBar = 0; // where words are too small to be read: the length of the title, in steps
    int subtitleBar = 0;

    auto operator<=>(const CardFace&) const = default;

    // Colours of a kind of node: of its icon, and what lies behind that.
    static QColor ink(std::size_t kind);
    static QColor soft(std::size_t kind);

    // Draws it around the origin, at full size.
    void draw(QPainter& painter, bool withBars) const;
};

// The icon in so many pixels, without the jags of a picture that is drawn much smaller than it is.
QPixmap scaledIcon(const QIcon& icon, double side);

// Faces as pictures, at one scale, in device pixels.
class CardFaces {
  public:
    // Forgets the pictures when a unit of the canvas has another number of device pixels than
    // before.
    void setScale(double unit, bool withBars);
    void clear() { m_pictures.clear(); }
    const QPixmap& picture(const CardFace& face);
    // From a picture's corner to the centre of the card.
    QPoint centre() const { return m_centre; }

  private:
    std::map<CardFace, QPixmap> m_pictures;
    double m_unit = 0;
    bool m_withBars = false;
    QSize m_size;
    QPoint m_centre;
};

} // namespace ombrel
