#include "shell/tabs/SourceDelegate.h"

#include "shell/design/Icon.h"
#include "shell/design/Spacing.h"
#include "shell/design/Theme.h"
#include "shell/tabs/SourcesModel.h"

#include <QIcon>
#include <QPainter>

namespace ombrel {

namespace {

void paintBadge(QPainter& painter, const QRect& cell, const QString& text, Tone tone) {
    const Theme& theme = Theme::current();
    painter.setFont(theme.font(TextRole::caption));
    const QFontMetrics metrics = painter.fontMetrics();
    const int room = cell.width() - 2 * spacing::small;
    const QString shown = metrics.elidedText(text, Qt::ElideRight, room);
    const int height = metrics.height() + spacing::tight;
    const QRect badge(cell.left(), cell.top() + (cell.height() - height) / 2,
                      metrics.horizontalAdvance(shown) + 2 * spacing::small, height);
    painter.setPen(Qt::NoPen);
    painter.setBrush(theme.colors().soft(tone));
    painter.drawRoundedRect(badge, height / 2.0, height / 2.0);
    painter.setPen(theme.colors().strong(tone));
    painter.drawText(badge, Qt::AlignCenter, shown);
}

} // namespace

void SourceDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                           const QModelIndex& index) const {
    const Theme& theme = Theme::current();
    const ThemeColors& colors = theme.colors();
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    if (option.state.testFlag(QStyle::State_Selected)) {
        painter->fillRect(option.rect, colors.accentSoft);
    } else if (option.state.testFlag(QStyle::State_MouseOver)) {
        painter->fillRect(option.rect, colors.hover);
    }
    painter->fillRect(QRect(option.rect.left(), option.rect.bottom(), option.rect.width(), 1),
                      colors.border);
    if (index.column() == SourcesModel::document && option.state.testFlag(QStyle::State_HasFocus) &&
        option.state.testFlag(QStyle::State_KeyboardFocusChange)) {
        painter->fillRect(QRect(option.rect.left(), option.rect.top(), 3, option.rect.height()),
                          colors.focus);
    }
    QRect cell = option.rect.adjusted(spacing::small, 0, -spacing::small, -1);
    const QString text = index.data(Qt::DisplayRole).toString();
    if (index.column() == SourcesModel::status) {
        paintBadge(*painter, cell, text,
                   static_cast<Tone>(index.data(SourcesModel::toneRole).toInt()));
        painter->restore();
        return;
    }
    const bool isDocument = index.column() == SourcesModel::document;
    if (isDocument) {
        constexpr int side = 18;
        themeIcon(index.data(Qt::DecorationRole).toString())
            .paint(painter, QRect(cell.left(), cell.top() + (cell.height() - side) / 2, side, side),
                   Qt::AlignCenter, QIcon::Normal,
                   option.state.testFlag(QStyle::State_Selected) ? QIcon::On : QIcon::Off);
        cell.setLeft(cell.left() + side + spacing::small);
    }
    painter->setFont(theme.font(TextRole::body));
    painter->setPen(isDocument ? colors.text : colors.secondary);
    painter->drawText(
        cell, index.data(Qt::TextAlignmentRole).toInt() | Qt::TextSingleLine,
        painter->fontMetrics().elidedText(text.left(400), Qt::ElideMiddle, cell.width()));
    painter->restore();
}

QSize SourceDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const {
    return {option.rect.width(),
            QFontMetrics(Theme::current().font(TextRole::body)).height() + 2 * spacing::small + 3};
}

} // namespace ombrel
