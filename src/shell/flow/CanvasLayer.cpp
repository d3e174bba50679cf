#include "shell/flow/CanvasLayer.h"

#include <QPainter>
#include <QRegion>

#include <algorithm>
#include <cmath>

namespace ombrel {

namespace {

// Adds a part, as one with those that it overlaps: what lies in both is then drawn once, and a
// painter is quickest where it is clipped to a rectangle.
void add(std::vector<QRect>& parts, QRect part) {
    const auto overlaps = [&](const QRect& other) { return other.intersects(part); };
    for (auto other = std::ranges::find_if(parts, overlaps); other != parts.end();
         other = std::ranges::find_if(parts, overlaps)) {
        part |= *other;
        parts.erase(other);
    }
    parts.push_back(part);
}

} // namespace

void CanvasLayer::spoil(const QRectF& onCanvas) {
    constexpr std::size_t most = 128; // rather all of it than so many pieces
    if (m_spoiled.size() >= most) {
        spoilAll();
    }
    if (!m_isAllSpoiled) {
        m_spoiled.push_back(onCanvas);
    }
}

void CanvasLayer::spoilAll() {
    m_isAllSpoiled = true;
    m_spoiled.clear();
}

std::vector<QRect> CanvasLayer::bringTo(QSize size, const CanvasPlace& place) {
    const QRect whole({}, size);
    if (size != m_picture.size()) {
        m_picture = QPixmap(size);
        return {whole};
    }
    const QPointF moved = place.offset - m_place.offset;
    const bool isSame = !m_isAllSpoiled && place.unit == m_place.unit &&
                        place.ratio == m_place.ratio && std::abs(moved.x()) < size.width() &&
                        std::abs(moved.y()) < size.height();
    if (!isSame) {
        return {whole};
    }
    std::vector<QRect> parts;
    if (!moved.isNull()) {
        QRegion bared;
        m_picture.scroll(static_cast<int>(moved.x()), static_cast<int>(moved.y()), whole, &bared);
        parts.assign(bared.begin(), bared.end());
    }
    for (const QRectF& spoiled : m_spoiled) {
        const QRect part = place.seen(spoiled).intersected(whole).toAlignedRect();
        if (!part.isEmpty()) {
            add(parts, part);
        }
    }
    return parts;
}

const QPixmap& CanvasLayer::picture(QSize size, const CanvasPlace& place, const Draw& draw) {
    const std::vector<QRect> parts = bringTo(size, place);
    m_place = place;
    m_spoiled.clear();
    m_isAllSpoiled = false;
    for (const QRect& part : parts) {
        QPainter painter(&m_picture);
        painter.setClipRect(part);
        draw(painter, part);
    }
    return m_picture;
}

} // namespace ombrel
