#include "shell/glossary/IndexDiagram.h"

#include "shell/design/Spacing.h"
#include "shell/glossary/DiagramPen.h"

#include <QCoreApplication>

#include <algorithm>
#include <array>

namespace ombrel {

namespace {

struct Words {
    Q_DECLARE_TR_FUNCTIONS(IndexDiagram)
};

constexpr int padding = spacing::small;

// The words of the query, marked where the sample has them.
int drawKeywords(DiagramPen& pen, int left, int width) {
    const ThemeColors& colors = pen.colors();
    const int inner = width - 2 * padding;
    int y = padding;
    y += pen.text(QPointF(left + padding, y), inner, Words::tr("Keyword"), colors.text) +
         spacing::small;
    y += pen.text(QPointF(left + padding, y), inner, Words::tr("Query: “battery drain”"),
                  colors.secondary) +
         spacing::small;
    y += pen.markedText(QPointF(left + padding, y), inner,
                        Words::tr("...the battery may drain faster..."),
                        {Words::tr("battery"), Words::tr("drain")});
    return y + padding;
}

// Points of which some are near each other.
int drawVectors(DiagramPen& pen, int left, int width) {
    constexpr int field = 60;
    constexpr std::array<QPointF, 4> near = {QPointF(0.24, 0.38), QPointF(0.3, 0.62),
                                             QPointF(0.35, 0.36), QPointF(0.41, 0.56)};
    constexpr std::array<QPointF, 4> far = {QPointF(0.68, 0.2), QPointF(0.92, 0.5),
                                            QPointF(0.74, 0.82), QPointF(0.06, 0.95)};
    const ThemeColors& colors = pen.colors();
    const int inner = width - 2 * padding;
    int y = padding;
    y += pen.text(QPointF(left + padding, y), inner, Words::tr("Vector"), colors.text) +
         spacing::tight;
    const auto at = [&](QPointF point) {
        return QPointF(left + padding + point.x() * inner, y + point.y() * field);
    };
    for (const QPointF point : far) {
        pen.dot(at(point), 3.5, colors.faint);
    }
    for (const QPointF point : near) {
        pen.dot(at(point), 3.5, colors.accentText);
    }
    pen.ring(at({0.325, 0.49}), inner * 0.17, field * 0.38, colors.accentText);
    y += field + spacing::tight;
    y += pen.text(QPointF(left + padding, y), inner, Words::tr("close in meaning = close together"),
                  colors.secondary);
    return y + padding;
}

} // namespace

int IndexDiagram::draw(DiagramPen& pen, int width) const {
    DiagramPen ruler;
    const int each = (width - spacing::medium) / 2;
    const int right = each + spacing::medium;
    const int height = std::max(drawKeywords(ruler, 0, each), drawVectors(ruler, right, each));
    for (const int left : {0, right}) {
        pen.box(QRectF(left, 0, each, height).adjusted(0.5, 0.5, -0.5, -0.5), pen.colors().surface,
                pen.colors().border);
    }
    drawKeywords(pen, 0, each);
    drawVectors(pen, right, each);
    return height;
}

} // namespace ombrel
