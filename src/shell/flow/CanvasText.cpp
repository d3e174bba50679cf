#include "shell/flow/CanvasText.h"

#include "shell/design/Theme.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QTextLayout>

#include <cmath>

namespace ombrel {

const CanvasText::Line& CanvasText::line(const QString& text, TextRole role, double width) {
    const QString key = QString::number(static_cast<int>(role)) + QLatin1Char('/') +
                        QString::number(std::lround(width)) + QLatin1Char('/') + text;
    if (const auto known = m_lines.constFind(key); known != m_lines.constEnd()) {
        return *known;
    }
    constexpr qsizetype most = 8192;
    if (m_lines.size() >= most) {
        m_lines.clear();
    }
    QFont font = Theme::current().font(role);
    font.setHintingPreference(QFont::PreferNoHinting); // it is drawn at many scales
    const QFontMetricsF metrics(font);
    QTextLayout layout(metrics.elidedText(text, Qt::ElideRight, width), font);
    layout.beginLayout();
    const QTextLine laidOut = layout.createLine();
    layout.endLayout();
    Line made;
    made.runs = layout.glyphRuns();
    made.width = laidOut.isValid() ? laidOut.naturalTextWidth() : 0;
    // The middle of small letters and capitals alike.
    made.middle = metrics.ascent() - metrics.capHeight() / 2;
    return *m_lines.insert(key, made);
}

void CanvasText::draw(QPainter& painter, QPointF at, const QString& text, TextRole role,
                      double width, const QColor& color) {
    if (text.isEmpty() || width <= 0) {
        return;
    }
    const Line& shown = line(text, role, width);
    painter.setPen(color);
    for (const QGlyphRun& run : shown.runs) {
        painter.drawGlyphRun(at - QPointF(0, shown.middle), run);
    }
}

double CanvasText::width(const QString& text, TextRole role, double width) {
    return text.isEmpty() ? 0 : line(text, role, width).width;
}

} // namespace ombrel
