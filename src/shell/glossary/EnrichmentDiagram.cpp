#include "shell/glossary/EnrichmentDiagram.h"

#include "shell/design/Spacing.h"
#include "shell/glossary/DiagramPen.h"

#include <QCoreApplication>

namespace ombrel {

namespace {

struct Words {
    Q_DECLARE_TR_FUNCTIONS(EnrichmentDiagram)
};

} // namespace

int EnrichmentDiagram::draw(DiagramPen& pen, int width) const {
    const ThemeColors& colors = pen.colors();
    const int chunkHeight = pen.lineHeight() + spacing::medium;
    const int sectionHeight = pen.lineHeight() + chunkHeight + 3 * spacing::small;
    pen.box(QRectF(0, 0, width, sectionHeight).adjusted(1, 1, -1, -1), colors.successSoft,
            colors.success, Qt::DashLine);
    int y = spacing::small;
    y += pen.text(QPointF(spacing::medium, y), width - 2 * spacing::medium,
                  Words::tr("parent section"), colors.success) +
         spacing::small;
    constexpr int chunks = 3;
    constexpr int found = 1;
    const double each = (width - 2 * spacing::medium - 2 * spacing::small) / 3.0;
    for (int i = 0; i < chunks; ++i) {
        const QRectF chunk(spacing::medium + i * (each + spacing::small), y, each, chunkHeight);
        if (i == found) {
            pen.box(chunk, colors.accent, colors.accent);
            pen.centered(chunk, Words::tr("match"), colors.onAccent);
            continue;
        }
        pen.box(chunk, colors.surface, colors.strongBorder);
        pen.textBar(QRectF(chunk.left() + 10, chunk.center().y() - 5, each * 0.7, 3), colors.faint);
        pen.textBar(QRectF(chunk.left() + 10, chunk.center().y() + 3, each * 0.5, 3), colors.faint);
    }
    y = sectionHeight + spacing::small;
    y +=
        pen.text(QPointF(0, y), width, Words::tr("small chunk matches search"), colors.accentText) +
        spacing::hair;
    return y + pen.text(QPointF(0, y), width, Words::tr("→ whole parent sent to model"),
                        colors.success);
}

} // namespace ombrel
