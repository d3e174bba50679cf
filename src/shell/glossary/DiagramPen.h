#pragma once

#include "shell/design/TextRole.h"
#include "shell/design/ThemeColors.h"

#include <QFont>
#include <QPointF>
#include <QRectF>
#include <QString>
#include <QStringList>

class QPainter;

namespace ombrel {

// What diagrams are drawn with: the theme's colours and type, and a few shapes. Without a painter
// nothing is painted, and texts are measured all the same.
class DiagramPen {
  public:
    explicit DiagramPen(QPainter* painter = nullptr);

    const ThemeColors& colors() const;
    int lineHeight(TextRole role = TextRole::caption) const;
    int textWidth(const QString& text, TextRole role = TextRole::caption) const;

    // Text that wraps within the width; how high it is.
    int text(QPointF topLeft, int width, const QString& text, const QColor& color,
             Qt::Alignment alignment = Qt::AlignLeft, TextRole role = TextRole::caption);
    // The same from the left, with some of the words marked.
    int markedText(QPointF topLeft, int width, const QString& text, const QStringList& marked);
    // One line in the middle of the rectangle.
    void centered(const QRectF& rect, const QString& text, const QColor& color,
                  TextRole role = TextRole::caption);
    void box(const QRectF& rect, const QColor& fill, const QColor& border = Qt::transparent,
             Qt::PenStyle style = Qt::SolidLine);
    void line(QPointF from, QPointF to, const QColor& color, double width = 1.2,
              Qt::PenStyle style = Qt::SolidLine);
    void arrow(QPointF from, QPointF to, const QColor& color);
    void dot(QPointF center, double radius, const QColor& color);
    void ring(QPointF center, double radiusX, double radiusY, const QColor& color);
    // A bar that stands for a line of text.
    void textBar(const QRectF& rect, const QColor& color);

  private:
    QPainter* m_painter;
};

} // namespace ombrel
