#include "shell/glossary/OverlapDiagram.h"

#include "shell/design/Spacing.h"
#include "shell/glossary/DiagramPen.h"

#include <QCoreApplication>

namespace ombrel {

namespace {

struct Words {
    Q_DECLARE_TR_FUNCTIONS(OverlapDiagram)
};

} // namespace

int OverlapDiagram::draw(DiagramPen& pen, int width) const {
    const ThemeColors& colors = pen.colors();
    const double sharedLeft = width * 0.4;
    const double sharedWidth = width * 0.2;
    const double sharedRight = sharedLeft + sharedWidth;
    const int rowHeight = pen.lineHeight() + spacing::medium;
    const int labelHeight = pen.lineHeight() + spacing::tight;
    const int second = rowHeight + labelHeight;

    const auto chunk = [&](double left, double right, double top, double labelLeft,
                           double labelRight, const QString& name) {
        pen.box(QRectF(left, top, right - left, rowHeight), colors.accentSoft, colors.accentText);
        pen.box(QRectF(sharedLeft, top, sharedWidth, rowHeight), colors.warningSoft,
                colors.warning);
        pen.centered(QRectF(labelLeft, top, labelRight - labelLeft, rowHeight), name,
                     colors.accentText);
    };
    chunk(1, sharedRight, 1, 0, sharedLeft, Words::tr("Chunk 1"));
    chunk(sharedLeft, width - 1, second, sharedRight, width, Words::tr("Chunk 2"));
    for (const double x : {sharedLeft, sharedRight}) {
        pen.line(QPointF(x, rowHeight + 2), QPointF(x, second - 1), colors.warning, 1.2,
                 Qt::DashLine);
    }
    pen.centered(QRectF(sharedLeft, rowHeight, sharedWidth, labelHeight), Words::tr("shared"),
                 colors.warning);
    const int bottom = second + rowHeight + spacing::small;
    return bottom + pen.text(QPointF(0, bottom), width,
                             Words::tr("the overlap text appears in both chunks"), colors.secondary,
                             Qt::AlignHCenter);
}

} // namespace ombrel
