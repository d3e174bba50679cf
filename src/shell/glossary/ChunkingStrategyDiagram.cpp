#include "shell/glossary/ChunkingStrategyDiagram.h"

#include "shell/design/Spacing.h"
#include "shell/glossary/ChunkColumn.h"
#include "shell/glossary/DiagramPen.h"

#include <QCoreApplication>

#include <algorithm>
#include <array>
#include <cstddef>

namespace ombrel {

namespace {

struct Words {
    Q_DECLARE_TR_FUNCTIONS(ChunkingStrategyDiagram)
};

// The text: how long each of its lines is, and which of them are headings.
constexpr std::array<double, 12> lines = {0.5, 1, 0.85, 1, 0.6, 0.45, 1, 0.7, 0.55, 1, 0.9, 0.5};
constexpr std::array<std::size_t, 3> headings = {0, 5, 8};

constexpr int linePitch = 9;

int drawColumn(DiagramPen& pen, const ChunkColumn& column, int left, int width) {
    const ThemeColors& colors = pen.colors();
    int y = pen.text(QPointF(left, 0), width, column.title, colors.text, Qt::AlignHCenter,
                     TextRole::caption) +
            spacing::small;
    std::size_t at = 0;
    for (const int size : column.groupSizes) {
        const int height = size * linePitch + spacing::tight;
        pen.box(QRectF(left, y, width, height), colors.soft(column.color),
                colors.strong(column.color));
        for (int i = 0; i < size; ++i, ++at) {
            const bool isHeading =
                std::find(headings.begin(), headings.end(), at) != headings.end();
            const double length = (width - 2 * spacing::small) * lines[at];
            const QRectF bar(left + spacing::small, y + 5 + i * linePitch, length,
                             isHeading ? 5 : 3);
            const bool stands = isHeading && column.headerPerGroup && i == 0;
            pen.textBar(bar, stands      ? colors.strong(column.color)
                             : isHeading ? colors.secondary
                                         : colors.faint);
        }
        y += height + column.gapBetweenGroups;
    }
    return y - column.gapBetweenGroups;
}

} // namespace

int ChunkingStrategyDiagram::draw(DiagramPen& pen, int width) const {
    const std::array<ChunkColumn, 3> columns = {{
        {Words::tr("Fixed"), {4, 4, 4}, false, 8, Tone::warning},
        {Words::tr("Paragraph"), {3, 2, 2, 1, 3, 1}, false, 4, Tone::success},
        {Words::tr("Heading-aware"), {5, 3, 4}, true, 8, Tone::accent},
    }};
    const int each = (width - 2 * spacing::large) / 3;
    int height = 0;
    int left = 0;
    for (const ChunkColumn& column : columns) {
        height = std::max(height, drawColumn(pen, column, left, each));
        left += each + spacing::large;
    }
    return height + 1;
}

} // namespace ombrel
