#include "shell/glossary/ChunkSizeDiagram.h"

#include "shell/design/Spacing.h"
#include "shell/glossary/DiagramPen.h"

#include <QCoreApplication>

namespace ombrel {

namespace {

struct Words {
    Q_DECLARE_TR_FUNCTIONS(ChunkSizeDiagram)
};

struct Row {
    QString title;
    QString note;
    int chunks;
    Tone tone;
};

int drawRow(DiagramPen& pen, const Row& row, int top, int width) {
    constexpr int boxHeight = 26;
    constexpr int gap = spacing::tight;
    const ThemeColors& colors = pen.colors();
    int y = top + pen.text(QPointF(0, top), width, row.title, colors.text) + spacing::tight;
    const double each = (width - (row.chunks - 1) * gap) / static_cast<double>(row.chunks);
    for (int i = 0; i < row.chunks; ++i) {
        pen.box(QRectF(i * (each + gap), y, each, boxHeight), colors.soft(row.tone),
                colors.strong(row.tone));
    }
    y += boxHeight + spacing::tight;
    return y + pen.text(QPointF(0, y), width, row.note, colors.secondary);
}

} // namespace

int ChunkSizeDiagram::draw(DiagramPen& pen, int width) const {
    const int small = drawRow(pen,
                              {Words::tr("Small (~150 tokens)"),
                               Words::tr("more precise, more chunks"), 10, Tone::accent},
                              0, width);
    return drawRow(pen,
                   {Words::tr("Large (~800 tokens)"), Words::tr("more context, fewer chunks"), 2,
                    Tone::success},
                   small + spacing::medium, width);
}

} // namespace ombrel
