#include "shell/agents/WarningDelegate.h"

#include "shell/design/Icon.h"
#include "shell/design/Spacing.h"
#include "shell/design/Theme.h"

#include <QAbstractItemView>
#include <QFontMetrics>
#include <QPainter>

namespace ombrel {

namespace {

constexpr int textLeft = spacing::small + spacing::icon + spacing::small;

QFontMetrics metricsOf(TextRole role) {
    return QFontMetrics(Theme::current().font(role));
}

} // namespace

void WarningDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                            const QModelIndex& index) const {
    const Theme& theme = Theme::current();
    const ThemeColors& colors = theme.colors();
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    const QRect place = option.rect.adjusted(0, 0, 0, -spacing::tight);
    painter->setPen(option.state & QStyle::State_HasFocus ? QPen(colors.focus, 2) : Qt::NoPen);
    painter->setBrush(colors.warningSoft);
    painter->drawRoundedRect(QRectF(place).adjusted(1, 1, -1, -1), spacing::corner,
                             spacing::corner);
    themeIcon(QStringLiteral("alert"), Tone::warning)
        .paint(painter, QRect(place.left() + spacing::small, place.top() + spacing::small,
                              spacing::icon, spacing::icon));
    const QFontMetrics strong = metricsOf(TextRole::strong);
    QRect text = place.adjusted(textLeft, spacing::small, -spacing::small, -spacing::small);
    painter->setFont(theme.font(TextRole::strong));
    painter->setPen(colors.warning);
    painter->drawText(text, Qt::AlignLeft | Qt::AlignTop, index.data(lineRole).toString());
    text.setTop(text.top() + strong.height());
    painter->setFont(theme.font(TextRole::body));
    painter->setPen(colors.text);
    painter->drawText(text, Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap,
                      index.data(Qt::DisplayRole).toString());
    painter->restore();
}

QSize WarningDelegate::sizeHint(const QStyleOptionViewItem& option,
                                const QModelIndex& index) const {
    const auto* view = qobject_cast<const QAbstractItemView*>(option.widget);
    const int width = view ? view->viewport()->width() : option.rect.width();
    const QRect room(0, 0, width - textLeft - spacing::small, 100000);
    const int message =
        metricsOf(TextRole::body)
            .boundingRect(room, Qt::TextWordWrap, index.data(Qt::DisplayRole).toString())
            .height();
    return {0,
            message + metricsOf(TextRole::strong).height() + 2 * spacing::small + spacing::tight};
}

} // namespace ombrel
