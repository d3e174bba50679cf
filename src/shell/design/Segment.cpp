#include "shell/design/Segment.h"

#include "shell/design/Icon.h"
#include "shell/design/Spacing.h"
#include "shell/design/Theme.h"

#include <QPainter>

namespace ombrel {

namespace {
constexpr int iconGap = 6;
} // namespace

Segment::Segment(const QString& text, const QString& iconName, bool isTab, QWidget* parent)
    : QAbstractButton(parent), m_isTab(isTab), m_showsIcon(!iconName.isEmpty()) {
    setText(text);
    setAccessibleName(text);
    setCheckable(true);
    setFocusPolicy(Qt::NoFocus); // until it is chosen
    setSizePolicy(isTab ? QSizePolicy::Fixed : QSizePolicy::MinimumExpanding, QSizePolicy::Fixed);
    if (!iconName.isEmpty()) {
        setIcon(themeIcon(iconName));
    }
    connect(&Theme::current(), &Theme::changed, this, qOverload<>(&QWidget::update));
}

void Segment::setIconShown(bool shown) {
    const bool shows = shown && !icon().isNull();
    if (m_showsIcon != shows) {
        m_showsIcon = shows;
        updateGeometry();
        update();
    }
}

int Segment::contentWidth() const {
    const int textWidth =
        QFontMetrics(Theme::current().font(TextRole::body)).horizontalAdvance(text());
    return textWidth + (m_showsIcon ? spacing::icon + iconGap : 0);
}

QSize Segment::sizeHint() const {
    const int height = QFontMetrics(Theme::current().font(TextRole::body)).height();
    const int side = m_isTab ? spacing::small + 2 : spacing::small - 2;
    return {contentWidth() + 2 * side, height + (m_isTab ? 14 : 12)};
}

void Segment::paintEvent(QPaintEvent*) {
    const Theme& theme = Theme::current();
    const ThemeColors& colors = theme.colors();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF shape = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    painter.setPen(Qt::NoPen);
    if (isChecked()) {
        if (m_isTab) {
            painter.setBrush(colors.accentSoft);
        } else {
            painter.setPen(QPen(colors.border, 1));
            painter.setBrush(theme.isDark() ? colors.strongBorder : colors.surface);
        }
        painter.drawRoundedRect(shape, spacing::corner, spacing::corner);
    } else if (underMouse() && isEnabled()) {
        painter.setBrush(isDown() ? colors.pressed : colors.hover);
        painter.drawRoundedRect(shape, spacing::corner, spacing::corner);
    }
    if (hasFocus()) {
        painter.setPen(QPen(colors.focus, 2));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(shape.adjusted(0.5, 0.5, -0.5, -0.5), spacing::corner,
                                spacing::corner);
    }
    QColor ink = isChecked() ? (m_isTab ? colors.accentText : colors.text) : colors.secondary;
    if (!isEnabled()) {
        ink = colors.faint;
    }
    int x = (width() - contentWidth()) / 2;
    if (m_showsIcon) {
        icon().paint(&painter,
                     QRect(x, (height() - spacing::icon) / 2, spacing::icon, spacing::icon),
                     Qt::AlignCenter, isEnabled() ? QIcon::Normal : QIcon::Disabled,
                     isChecked() ? QIcon::On : QIcon::Off);
        x += spacing::icon + iconGap;
    }
    painter.setFont(theme.font(TextRole::body));
    painter.setPen(ink);
    painter.drawText(QRect(x, 0, width() - x, height()), Qt::AlignVCenter | Qt::TextSingleLine,
                     text());
}

void Segment::enterEvent(QEnterEvent* event) {
    QAbstractButton::enterEvent(event);
    update();
}

void Segment::leaveEvent(QEvent* event) {
    QAbstractButton::leaveEvent(event);
    update();
}

} // namespace ombrel
