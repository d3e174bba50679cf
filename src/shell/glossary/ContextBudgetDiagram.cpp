#include "shell/glossary/ContextBudgetDiagram.h"

#include "shell/design/Spacing.h"
#include "shell/glossary/DiagramPen.h"

#include <QCoreApplication>

#include <array>

namespace ombrel {

namespace {

struct Words {
    Q_DECLARE_TR_FUNCTIONS(ContextBudgetDiagram)
};

struct Share {
    QString name;
    int tokens;
    QString amount;
    QColor color;
};

} // namespace

int ContextBudgetDiagram::draw(DiagramPen& pen, int width) const {
    constexpr int barHeight = 22;
    constexpr int budget = 3000;
    constexpr double narrowest = 6; // a small share can be seen all the same
    const ThemeColors& colors = pen.colors();
    const auto tokens = [](const QString& number) { return Words::tr("~%1 tokens").arg(number); };
    const std::array<Share, 4> shares = {{
        {Words::tr("Instructions"), 120, tokens(QStringLiteral("120")), colors.warning},
        {Words::tr("Retrieved chunks"), 2400, tokens(QStringLiteral("2,400")), colors.accent},
        {Words::tr("Question"), 40, tokens(QStringLiteral("40")), colors.danger},
        {Words::tr("Answer reserve"), 440, tokens(QStringLiteral("440")), colors.success},
    }};
    const double room = width - (shares.size() - 1.0) * spacing::hair;
    double narrow = 0; // the room that small shares get
    double rest = 0;   // the tokens of all others
    for (const Share& share : shares) {
        if (room * share.tokens / budget < narrowest) {
            narrow += narrowest;
        } else {
            rest += share.tokens;
        }
    }
    double x = 0;
    for (const Share& share : shares) {
        const double wide = room * share.tokens / budget < narrowest
                                ? narrowest
                                : (room - narrow) * share.tokens / rest;
        pen.box(QRectF(x, 0, wide, barHeight).adjusted(0.5, 0.5, -0.5, -0.5), share.color,
                share.color);
        x += wide + spacing::hair;
    }
    int y = barHeight + spacing::medium;
    for (const Share& share : shares) {
        const double middle = y + pen.lineHeight() / 2.0;
        pen.box(QRectF(0.5, middle - 5, 10, 10), share.color, share.color);
        pen.text(QPointF(spacing::large + spacing::tight, y), width / 2, share.name, colors.text);
        y += pen.text(QPointF(width / 2.0, y), width / 2, share.amount, colors.secondary,
                      Qt::AlignRight) +
             spacing::tight;
    }
    return y - spacing::tight;
}

} // namespace ombrel
