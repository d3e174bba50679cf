#include "shell/glossary/QueryTransformDiagram.h"

#include "core/QueryTransform.h"
#include "shell/QtText.h"
#include "shell/design/Spacing.h"
#include "shell/glossary/DiagramPen.h"

#include <QCoreApplication>

#include <algorithm>
#include <vector>

namespace ombrel {

namespace {

struct Words {
    Q_DECLARE_TR_FUNCTIONS(QueryTransformDiagram)
};

struct Row {
    QueryTransform transform;
    QStringList results;
};

} // namespace

int QueryTransformDiagram::draw(DiagramPen& pen, int width) const {
    const std::vector<Row> rows = {
        {QueryTransform::rewrite, {Words::tr("causes of device overheating")}},
        {QueryTransform::multiQuery, {Words::tr("3 phrasings, merged")}},
        {QueryTransform::hyde, {Words::tr("a drafted, hypothetical answer")}},
        {QueryTransform::tool,
         {Words::tr("call 1: \"battery overheating causes\""),
          Words::tr("call 2: \"charging habits and heat\"")}},
    };
    const ThemeColors& colors = pen.colors();
    const QString question = Words::tr("Why is my phone hot?");
    const int boxHeight = pen.lineHeight() + spacing::small;
    const double questionWidth = pen.textWidth(question) + 2 * spacing::medium;
    const QRectF asked(0.5, 0.5, questionWidth, boxHeight);
    pen.box(asked, colors.accent, colors.accent);
    pen.centered(asked, question, colors.onAccent);

    int labelWidth = 0;
    for (const Row& row : rows) {
        labelWidth = std::max(labelWidth, pen.textWidth(toQt(rawValue(row.transform))));
    }
    const double trunk = spacing::large;
    const double labelLeft = trunk + spacing::large + spacing::tight;
    const double resultLeft = labelLeft + labelWidth + spacing::medium;
    const double resultWidth = width - resultLeft;
    double y = boxHeight + spacing::medium;
    double last = boxHeight;
    for (const Row& row : rows) {
        const double middle = y + boxHeight / 2.0;
        pen.arrow(QPointF(trunk, middle), QPointF(labelLeft - spacing::tight, middle),
                  colors.strongBorder);
        last = middle;
        pen.text(QPointF(labelLeft, middle - pen.lineHeight() / 2.0), labelWidth + 2,
                 toQt(rawValue(row.transform)), colors.text);
        for (const QString& result : row.results) {
            // A long one wraps inside of its box.
            DiagramPen ruler;
            const int inner = static_cast<int>(resultWidth) - 2 * spacing::small;
            const int textHeight = ruler.text({}, inner, result, colors.text);
            const int height = textHeight + spacing::small;
            pen.box(QRectF(resultLeft, y, resultWidth - 0.5, height), colors.surface,
                    colors.border);
            pen.text(QPointF(resultLeft + spacing::small, y + spacing::tight), inner, result,
                     colors.secondary);
            y += height + spacing::tight;
        }
        y += spacing::tight;
    }
    pen.line(QPointF(trunk, boxHeight + 1), QPointF(trunk, last), colors.strongBorder);
    return static_cast<int>(y) - 2 * spacing::tight + 1;
}

} // namespace ombrel
