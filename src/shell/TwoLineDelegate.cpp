#include "shell/TwoLineDelegate.h"

#include "shell/design/Spacing.h"
#include "shell/design/Theme.h"

#include <QIcon>
#include <QPainter>

namespace ombrel {

namespace {

constexpr int iconSide = 18;

int lineHeight(TextRole role) {
    return QFontMetrics(Theme::current().font(role)).height();
}

} // namespace

void TwoLineDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                            const QModelIndex& index) const {
    const Theme& theme = Theme::current();
    const ThemeColors& colors = theme.colors();
    const bool isSelected = option.state.testFlag(QStyle::State_Selected);
    const bool hasKeyboard = option.state.testFlag(QStyle::State_HasFocus) &&
                             option.state.testFlag(QStyle::State_KeyboardFocusChange);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    const QRectF row = QRectF(option.rect).adjusted(0.5, 1.5, -0.5, -1.5);
    if (isSelected) {
        painter->setPen(Qt::NoPen);
        painter->setBrush(colors.accentSoft);
        painter->drawRoundedRect(row, spacing::corner, spacing::corner);
    } else if (option.state.testFlag(QStyle::State_MouseOver)) {
        painter->setPen(Qt::NoPen);
        painter->setBrush(colors.hover);
        painter->drawRoundedRect(row, spacing::corner, spacing::corner);
    }
    if (hasKeyboard) {
        painter->setPen(QPen(colors.focus, 2));
        painter->setBrush(Qt::NoBrush);
        painter->drawRoundedRect(row.adjusted(0.5, 0.5, -0.5, -0.5), spacing::corner,
                                 spacing::corner);
    }
    const int left = option.rect.left() + spacing::small;
    const QRect iconRect(left, option.rect.top() + (option.rect.height() - iconSide) / 2, iconSide,
                         iconSide);
    qvariant_cast<QIcon>(index.data(Qt::DecorationRole))
        .paint(painter, iconRect, Qt::AlignCenter, QIcon::Normal,
               isSelected ? QIcon::On : QIcon::Off);

    const int textLeft = left + iconSide + spacing::small;
    const int room = option.rect.right() - textLeft - spacing::small;
    const int titleHeight = lineHeight(TextRole::body);
    const int detailHeight = lineHeight(TextRole::caption);
    int y = option.rect.top() + (option.rect.height() - titleHeight - detailHeight) / 2;
    const auto line = [&](TextRole role, const QColor& color, const QString& text, int height) {
        painter->setFont(theme.font(role));
        painter->setPen(color);
        painter->drawText(QRect(textLeft, y, room, height), Qt::AlignVCenter | Qt::TextSingleLine,
                          painter->fontMetrics().elidedText(text.left(400), Qt::ElideRight, room));
        y += height;
    };
    line(TextRole::body, colors.text, index.data(Qt::DisplayRole).toString(), titleHeight);
    line(TextRole::caption, colors.secondary, index.data(Qt::UserRole).toString(), detailHeight);
    painter->restore();
}

QSize TwoLineDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const {
    return {option.rect.width(),
            lineHeight(TextRole::body) + lineHeight(TextRole::caption) + 2 * spacing::small};
}

} // namespace ombrel
