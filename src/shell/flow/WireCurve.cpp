#include "shell/flow/WireCurve.h"

#include <QLineF>

#include <algorithm>
#include <cmath>

namespace ombrel {

namespace {

double distance(QPointF point, QPointF from, QPointF to) {
    const QPointF along = to - from;
    const double length = QPointF::dotProduct(along, along);
    const double t =
        length > 0 ? std::clamp(QPointF::dotProduct(point - from, along) / length, 0.0, 1.0) : 0;
    return QLineF(point, from + t * along).length();
}

} // namespace

WireCurve::WireCurve(QPointF from, QPointF to) : m_from(from), m_to(to) {
    const double dx = to.x() - from.x();
    const double dy = std::abs(to.y() - from.y());
    // One that goes back swings wide, so that it is seen beside the cards.
    const double reach = dx >= 0 ? std::clamp(dx / 2, std::min(24.0, dy / 2 + dx / 3), 160.0)
                                 : std::min(220.0, 60 - dx / 3);
    m_out = from + QPointF(reach, dx < 0 && dy < 1 ? 90 : 0);
    m_in = to - QPointF(reach, dx < 0 && dy < 1 ? -90 : 0);
}

QPointF WireCurve::at(double t) const {
    const double u = 1 - t;
    return u * u * u * m_from + 3 * u * u * t * m_out + 3 * u * t * t * m_in + t * t * t * m_to;
}

QRectF WireCurve::bounds() const {
    const auto [left, right] = std::minmax({m_from.x(), m_out.x(), m_in.x(), m_to.x()});
    const auto [top, bottom] = std::minmax({m_from.y(), m_out.y(), m_in.y(), m_to.y()});
    return {QPointF(left, top), QPointF(right, bottom)};
}

QPainterPath WireCurve::path() const {
    QPainterPath path(m_from);
    path.cubicTo(m_out, m_in, m_to);
    return path;
}

QPolygonF WireCurve::flattened(int pieces) const {
    QPolygonF line;
    line.reserve(pieces + 1);
    for (int i = 0; i <= pieces; ++i) {
        line.append(at(static_cast<double>(i) / pieces));
    }
    return line;
}

QPainterPath WireCurve::pathWithin(const QRectF& seen, int pieces) const {
    QPainterPath path;
    QPointF from = m_from;
    bool isDrawn = false; // up to `from`
    for (int i = 1; i <= pieces; ++i) {
        const QPointF to = at(static_cast<double>(i) / pieces);
        const bool isSeen = std::min(from.x(), to.x()) <= seen.right() &&
                            std::max(from.x(), to.x()) >= seen.left() &&
                            std::min(from.y(), to.y()) <= seen.bottom() &&
                            std::max(from.y(), to.y()) >= seen.top();
        if (isSeen) {
            if (!isDrawn) {
                path.moveTo(from);
            }
            path.lineTo(to);
        }
        isDrawn = isSeen;
        from = to;
    }
    return path;
}

double WireCurve::distanceTo(QPointF point) const {
    constexpr int pieces = 32;
    const QPolygonF line = flattened(pieces);
    double nearest = QLineF(point, line.first()).length();
    for (int i = 0; i < pieces; ++i) {
        nearest = std::min(nearest, distance(point, line[i], line[i + 1]));
    }
    return nearest;
}

} // namespace ombrel
