#include "shell/design/ChoiceTile.h"

#include "shell/design/Spacing.h"
#include "shell/design/Theme.h"

#include <QFontMetrics>
#include <QPainter>

namespace ombrel {

namespace {

constexpr int mark = 16;

int textLeft() {
    return spacing::medium + mark + spacing::small;
}

QRect subtitleRect(const QString& text, int width) {
    const QFontMetrics metrics(Theme::current().font(TextRole::caption));
    const int room = qMax(40, width - textLeft() - spacing::medium);
    return metrics.boundingRect(0, 0, room, 1000, Qt::TextWordWrap, text);
}

int titleHeight() {
    return QFontMetrics(Theme::current().font(TextRole::strong)).height();
}

} // namespace

ChoiceTile::ChoiceTile(const QString& title, const QString& subtitle, QWidget* parent)
    : QAbstractButton(parent), m_subtitle(subtitle) {
    setText(title);
    setAccessibleName(title);
    setAccessibleDescription(subtitle);
    setCheckable(true);
    setFocusPolicy(Qt::TabFocus);
    QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Minimum);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    connect(&Theme::current(), &Theme::changed, this, qOverload<>(&QWidget::update));
}

void ChoiceTile::setMark(Mark newMark) {
    m_mark = newMark;
    update();
}

void ChoiceTile::setDisabledReason(const QString& reason) {
    if (m_disabledReason != reason) {
        m_disabledReason = reason;
        updateGeometry();
        update();
    }
    setEnabled(reason.isEmpty());
    setAccessibleDescription(subtitle());
}

QSize ChoiceTile::sizeHint() const {
    return {190, heightForWidth(190)};
}

QSize ChoiceTile::minimumSizeHint() const {
    return {140, heightForWidth(140)};
}

int ChoiceTile::heightForWidth(int width) const {
    const int text =
        subtitle().isEmpty() ? 0 : spacing::hair + subtitleRect(subtitle(), width).height();
    return 2 * spacing::medium - 2 + titleHeight() + text;
}

void ChoiceTile::paintEvent(QPaintEvent*) {
    const Theme& theme = Theme::current();
    const ThemeColors& colors = theme.colors();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF frame = QRectF(rect()).adjusted(1, 1, -1, -1);

    QColor fill = colors.surface;
    QColor line = colors.border;
    if (isChecked()) {
        fill = colors.accentSoft;
        line = isEnabled() ? colors.accentText : colors.strongBorder;
    } else if (!isEnabled()) {
        fill = colors.window;
    }
    if (hasFocus()) {
        line = colors.focus;
    }
    painter.setPen(QPen(line, hasFocus() ? 2 : (isChecked() ? 1.5 : 1)));
    painter.setBrush(fill);
    painter.drawRoundedRect(frame, spacing::small, spacing::small);
    if (isEnabled() && underMouse()) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(isDown() ? colors.pressed : colors.hover);
        painter.drawRoundedRect(frame, spacing::small, spacing::small);
    }

    const int top = spacing::medium - 1;
    const QRectF place(spacing::medium, top + (titleHeight() - mark) / 2.0, mark, mark);
    paintMark(painter, place.adjusted(1, 1, -1, -1));

    const int room = width() - textLeft() - spacing::medium;
    painter.setPen(isEnabled() ? colors.text : colors.faint);
    painter.setFont(theme.font(TextRole::strong));
    const QString title = painter.fontMetrics().elidedText(text(), Qt::ElideRight, room);
    painter.drawText(QRect(textLeft(), top, room, titleHeight()), Qt::AlignVCenter, title);
    painter.setFont(theme.font(TextRole::caption));
    // Why it can't be chosen has to be read.
    const bool isRead = isEnabled() || !m_disabledReason.isEmpty();
    painter.setPen(isRead ? colors.secondary : colors.faint);
    painter.drawText(QRect(textLeft(), top + titleHeight() + spacing::hair, room, height()),
                     Qt::TextWordWrap, subtitle());
}

void ChoiceTile::paintMark(QPainter& painter, const QRectF& place) const {
    const ThemeColors& colors = Theme::current().colors();
    const bool isOn = isChecked() && isEnabled();
    painter.setBrush(isOn ? colors.accent : colors.surface);
    painter.setPen(QPen(isOn ? colors.accent : colors.strongBorder, 1.2));
    const QColor ink = isEnabled() ? colors.onAccent : colors.faint;
    if (m_mark == Mark::radio) {
        painter.drawEllipse(place);
        if (isChecked()) {
            painter.setPen(Qt::NoPen);
            painter.setBrush(ink);
            painter.drawEllipse(place.center(), 3, 3);
        }
        return;
    }
    painter.drawRoundedRect(place, spacing::tight - 1, spacing::tight - 1);
    if (isChecked()) {
        painter.setPen(QPen(ink, 1.8, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        const QPointF tick[] = {place.topLeft() + QPointF(3.4, 7.2),
                                place.topLeft() + QPointF(6, 10),
                                place.topLeft() + QPointF(10.6, 4.4)};
        painter.drawPolyline(tick, 3);
    }
}

void ChoiceTile::enterEvent(QEnterEvent* event) {
    QAbstractButton::enterEvent(event);
    update();
}

void ChoiceTile::leaveEvent(QEvent* event) {
    QAbstractButton::leaveEvent(event);
    update();
}

} // namespace ombrel
