#include "shell/glossary/TopKDiagram.h"

#include "shell/design/Spacing.h"
#include "shell/glossary/DiagramPen.h"

#include <QCoreApplication>

#include <array>
#include <cstddef>

namespace ombrel {

namespace {

struct Words {
    Q_DECLARE_TR_FUNCTIONS(TopKDiagram)
};

constexpr std::array<double, 9> scores = {0.96, 0.88, 0.83, 0.74, 0.7, 0.62, 0.55, 0.41, 0.3};
constexpr std::size_t used = 6;

} // namespace

int TopKDiagram::draw(DiagramPen& pen, int width) const {
    constexpr int barHeight = 9;
    constexpr int pitch = 14;
    const ThemeColors& colors = pen.colors();
    int y = 0;
    for (std::size_t i = 0; i < scores.size(); ++i) {
        if (i == used) {
            pen.line(QPointF(0, y + 3), QPointF(width, y + 3), colors.warning, 1.2, Qt::DashLine);
            y += spacing::medium;
        }
        pen.textBar(QRectF(0, y, width * scores[i], barHeight),
                    i < used ? colors.accent : colors.strongBorder);
        y += pitch;
    }
    y += spacing::tight;
    return y +
           pen.text(QPointF(0, y), width,
                    Words::tr("top-k = %1: only the %1 highest-scoring chunks are used").arg(used),
                    colors.secondary);
}

} // namespace ombrel
