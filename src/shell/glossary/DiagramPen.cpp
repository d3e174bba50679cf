#include "shell/glossary/DiagramPen.h"

#include "shell/design/Spacing.h"
#include "shell/design/Theme.h"

#include <QFontMetrics>
#include <QPainter>
#include <QPolygonF>

#include <cmath>

namespace ombrel {

DiagramPen::DiagramPen(QPainter* painter) : m_painter(painter) {
    if (m_painter) {
        m_painter->setRenderHint(QPainter::Antialiasing);
    }
}

const ThemeColors& DiagramPen::colors() const {
    return Theme::current().colors();
}

int DiagramPen::lineHeight(TextRole role) const {
    return QFontMetrics(Theme::current().font(role)).height();
}

int DiagramPen::textWidth(const QString& text, TextRole role) const {
    return QFontMetrics(Theme::current().font(role)).horizontalAdvance(text);
}

int DiagramPen::text(QPointF topLeft, int width, const QString& text, const QColor& color,
                     Qt::Alignment alignment, TextRole role) {
    constexpr int unlimited = 10'000;
    const QFont font = Theme::current().font(role);
    const int height =
        QFontMetrics(font).boundingRect(0, 0, width, unlimited, Qt::TextWordWrap, text).height();
    if (m_painter) {
        m_painter->setFont(font);
        m_painter->setPen(color);
        m_painter->drawText(QRectF(topLeft, QSizeF(width, height)),
                            static_cast<int>(alignment) | Qt::TextWordWrap, text);
    }
    return height;
}

int DiagramPen::markedText(QPointF topLeft, int width, const QString& text,
                           const QStringList& marked) {
    const int height = lineHeight();
    const int blank = textWidth(QStringLiteral(" "));
    QPointF at = topLeft;
    const QStringList words = text.split(QLatin1Char(' '));
    for (const QString& word : words) {
        const int wide = textWidth(word);
        if (at.x() > topLeft.x() && at.x() + wide > topLeft.x() + width) {
            at = {topLeft.x(), at.y() + height + spacing::hair};
        }
        const QRectF rect(at, QSizeF(wide, height));
        const bool isMarked = marked.contains(word);
        if (isMarked) {
            box(rect.adjusted(-2, 0, 2, 0), colors().warningSoft);
        }
        centered(rect, word, isMarked ? colors().warning : colors().text);
        at.rx() += wide + blank;
    }
    return static_cast<int>(at.y() - topLeft.y()) + height;
}

void DiagramPen::centered(const QRectF& rect, const QString& text, const QColor& color,
                          TextRole role) {
    if (m_painter) {
        m_painter->setFont(Theme::current().font(role));
        m_painter->setPen(color);
        m_painter->drawText(rect, Qt::AlignCenter | Qt::TextSingleLine | Qt::TextDontClip, text);
    }
}

void DiagramPen::box(const QRectF& rect, const QColor& fill, const QColor& border,
                     Qt::PenStyle style) {
    if (m_painter) {
        m_painter->setPen(QPen(border, 1.2, style));
        m_painter->setBrush(fill);
        m_painter->drawRoundedRect(rect, spacing::tight, spacing::tight);
    }
}

void DiagramPen::line(QPointF from, QPointF to, const QColor& color, double width,
                      Qt::PenStyle style) {
    if (m_painter) {
        m_painter->setPen(QPen(color, width, style, Qt::RoundCap));
        m_painter->drawLine(from, to);
    }
}

void DiagramPen::arrow(QPointF from, QPointF to, const QColor& color) {
    if (!m_painter) {
        return;
    }
    line(from, to, color);
    const double angle = std::atan2(to.y() - from.y(), to.x() - from.x());
    constexpr double length = 6;
    constexpr double spread = 0.45;
    const auto corner = [&](double side) {
        return to - QPointF(std::cos(angle + side), std::sin(angle + side)) * length;
    };
    m_painter->setPen(Qt::NoPen);
    m_painter->setBrush(color);
    m_painter->drawPolygon(QPolygonF({to, corner(spread), corner(-spread)}));
}

void DiagramPen::dot(QPointF center, double radius, const QColor& color) {
    if (m_painter) {
        m_painter->setPen(Qt::NoPen);
        m_painter->setBrush(color);
        m_painter->drawEllipse(center, radius, radius);
    }
}

void DiagramPen::ring(QPointF center, double radiusX, double radiusY, const QColor& color) {
    if (m_painter) {
        m_painter->setPen(QPen(color, 1.2, Qt::DashLine));
        m_painter->setBrush(Qt::NoBrush);
        m_painter->drawEllipse(center, radiusX, radiusY);
    }
}

void DiagramPen::textBar(const QRectF& rect, const QColor& color) {
    if (m_painter) {
        m_painter->setPen(Qt::NoPen);
        m_painter->setBrush(color);
        m_painter->drawRoundedRect(rect, rect.height() / 2, rect.height() / 2);
    }
}

} // namespace ombrel
