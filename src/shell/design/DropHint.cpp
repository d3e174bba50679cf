#include "shell/design/DropHint.h"

#include "shell/design/Icon.h"
#include "shell/design/Spacing.h"
#include "shell/design/Theme.h"

#include <QFontMetrics>
#include <QIcon>
#include <QPainter>

namespace ombrel {

DropHint::DropHint(const QString& text, QWidget* parent) : QAbstractButton(parent) {
    setText(text);
    setAccessibleName(text);
    setToolTip(text);
    setFocusPolicy(Qt::TabFocus);
    setCursor(Qt::PointingHandCursor);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    connect(&Theme::current(), &Theme::changed, this, qOverload<>(&QWidget::update));
}

QSize DropHint::sizeHint() const {
    const QFontMetrics metrics(Theme::current().font(TextRole::caption));
    return {metrics.horizontalAdvance(text()) + spacing::icon + 4 * spacing::large,
            metrics.height() + 2 * spacing::medium};
}

QSize DropHint::minimumSizeHint() const {
    return {160, sizeHint().height()};
}

void DropHint::paintEvent(QPaintEvent*) {
    const Theme& theme = Theme::current();
    const ThemeColors& colors = theme.colors();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF frame = QRectF(rect()).adjusted(1, 1, -1, -1);
    if (isDown() || underMouse()) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(isDown() ? colors.pressed : colors.hover);
        painter.drawRoundedRect(frame, spacing::small, spacing::small);
    }
    painter.setBrush(Qt::NoBrush);
    painter.setPen(hasFocus() ? QPen(colors.focus, 2)
                              : QPen(colors.strongBorder, 1.25, Qt::DashLine));
    painter.drawRoundedRect(frame, spacing::small, spacing::small);

    painter.setFont(theme.font(TextRole::caption));
    const QFontMetrics metrics = painter.fontMetrics();
    const int room = width() - spacing::icon - 3 * spacing::large;
    const QString shown = metrics.elidedText(text(), Qt::ElideRight, room);
    const int used = spacing::icon + spacing::small + metrics.horizontalAdvance(shown);
    const int left = (width() - used) / 2;
    themeIcon(QStringLiteral("download"))
        .paint(&painter, QRect(left, (height() - spacing::icon) / 2, spacing::icon, spacing::icon));
    painter.setPen(colors.secondary);
    painter.drawText(QRect(left + spacing::icon + spacing::small, 0, room, height()),
                     Qt::AlignVCenter | Qt::TextSingleLine, shown);
}

void DropHint::enterEvent(QEnterEvent* event) {
    QAbstractButton::enterEvent(event);
    update();
}

void DropHint::leaveEvent(QEvent* event) {
    QAbstractButton::leaveEvent(event);
    update();
}

} // namespace ombrel
