#include "shell/glossary/RerankDiagram.h"

#include "shell/design/Spacing.h"
#include "shell/glossary/DiagramPen.h"

#include <QCoreApplication>

#include <array>
#include <cstddef>

namespace ombrel {

namespace {

struct Words {
    Q_DECLARE_TR_FUNCTIONS(RerankDiagram)
};

// The place in the index's list of each chunk of the new one.
constexpr std::array<int, 6> order = {4, 1, 3, 2, 6, 5};
constexpr int best = 4;

} // namespace

int RerankDiagram::draw(DiagramPen& pen, int width) const {
    const ThemeColors& colors = pen.colors();
    const int rowHeight = pen.lineHeight() + spacing::tight;
    const int pitch = rowHeight + spacing::tight;
    const double column = width * 0.34;
    const double right = width - column;
    const int titleHeight = pen.text({}, static_cast<int>(column), Words::tr("From index"),
                                     colors.secondary, Qt::AlignHCenter);
    pen.text(QPointF(right, 0), static_cast<int>(column), Words::tr("After rerank"),
             colors.secondary, Qt::AlignHCenter);
    const int top = titleHeight + spacing::small;

    const auto chunk = [&](double left, std::size_t row, int place) {
        const QRectF rect(left + 1, top + static_cast<int>(row) * pitch, column - 2, rowHeight);
        const bool isBest = place == best;
        pen.box(rect, isBest ? colors.accent : colors.surface,
                isBest ? colors.accent : colors.strongBorder);
        pen.centered(QRectF(rect.left(), rect.top(), 28, rowHeight),
                     QStringLiteral("#%1").arg(place), isBest ? colors.onAccent : colors.secondary);
        pen.textBar(QRectF(rect.left() + 32, rect.center().y() - 1.5, rect.width() * 0.55, 3),
                    isBest ? colors.onAccent : colors.faint);
    };
    for (std::size_t row = 0; row < order.size(); ++row) {
        chunk(0, row, static_cast<int>(row) + 1);
        chunk(right, row, order[row]);
        const double from = top + (order[row] - 1) * pitch + rowHeight / 2.0;
        const double to = top + static_cast<int>(row) * pitch + rowHeight / 2.0;
        const bool isBest = order[row] == best;
        pen.arrow(QPointF(column + 4, from), QPointF(right - 4, to),
                  isBest ? colors.accentText : colors.strongBorder);
    }
    return top + static_cast<int>(order.size()) * pitch - spacing::tight + 1;
}

} // namespace ombrel
