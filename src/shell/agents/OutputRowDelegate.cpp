#include "shell/agents/OutputRowDelegate.h"

#include "shell/QtText.h"
#include "shell/agents/OutputRowsModel.h"
#include "shell/design/Spacing.h"
#include "shell/design/Theme.h"

#include <QFontMetrics>
#include <QPainter>

namespace ombrel {

void OutputRowDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                              const QModelIndex& index) const {
    const auto& model = static_cast<const OutputRowsModel&>(*index.model());
    const OutputRow& row = model.row(index.row());
    const Theme& theme = Theme::current();
    const ThemeColors& colors = theme.colors();
    painter->save();
    if (option.state & QStyle::State_HasFocus && option.state & QStyle::State_Selected) {
        painter->setPen(Qt::NoPen);
        painter->setBrush(colors.accentSoft);
        painter->drawRoundedRect(option.rect, spacing::corner, spacing::corner);
    }
    QRect line = option.rect.adjusted(spacing::tight + row.depth * spacing::large, spacing::tight,
                                      -spacing::tight, -spacing::tight);
    const QFont code = theme.font(TextRole::code);
    const QFontMetrics metrics(code);
    line.setHeight(metrics.height());
    painter->setFont(code);
    painter->setPen(colors.text);
    const QString name = metrics.elidedText(toQt(row.name), Qt::ElideRight, line.width());
    painter->drawText(line, Qt::AlignLeft | Qt::AlignVCenter, name);
    const int used = metrics.horizontalAdvance(name) + spacing::medium;
    if (!row.type.empty() && used < line.width()) {
        painter->setPen(colors.accentText);
        const QRect place = line.adjusted(used, 0, 0, 0);
        painter->drawText(place, Qt::AlignLeft | Qt::AlignVCenter,
                          metrics.elidedText(toQt(row.type), Qt::ElideRight, place.width()));
    }
    if (!row.description.empty()) {
        const QFont caption = theme.font(TextRole::caption);
        const QFontMetrics small(caption);
        const QRect below(line.left(), line.bottom() + spacing::hair, line.width(), small.height());
        painter->setFont(caption);
        painter->setPen(colors.secondary);
        const QString text = toQt(row.description).simplified();
        painter->drawText(below, Qt::AlignLeft | Qt::AlignVCenter,
                          small.elidedText(text, Qt::ElideRight, below.width()));
    }
    painter->restore();
}

QSize OutputRowDelegate::sizeHint(const QStyleOptionViewItem& /*option*/,
                                  const QModelIndex& index) const {
    const auto& model = static_cast<const OutputRowsModel&>(*index.model());
    const Theme& theme = Theme::current();
    int height = QFontMetrics(theme.font(TextRole::code)).height() + 2 * spacing::tight;
    if (!model.row(index.row()).description.empty()) {
        height += QFontMetrics(theme.font(TextRole::caption)).height() + spacing::hair;
    }
    return {0, height};
}

} // namespace ombrel
