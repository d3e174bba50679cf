#pragma once

#include "shell/design/TextRole.h"

#include <QColor>
#include <QGlyphRun>
#include <QHash>
#include <QList>
#include <QPointF>
#include <QString>

class QPainter;

namespace ombrel {

// Draws lines of text that were laid out once, at any scale.
class CanvasText {
  public:
    // A line that begins at the point, whose y is that of its middle, cut with "…" at the width.
    void draw(QPainter& painter, QPointF at, const QString& text, TextRole role, double width,
              const QColor& color);
    // How wide the line is, at most `width`.
    double width(const QString& text, TextRole role, double width);
    void clear() { m_lines.clear(); }

  private:
    struct Line {
        QList<QGlyphRun> runs;
        double width = 0;
        double middle = 0; // from the top of the line
    };
    const Line& line(const QString& text, TextRole role, double width);

    QHash<QString, Line> m_lines;
};

} // namespace ombrel
