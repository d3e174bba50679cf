#include "shell/design/Badge.h"

#include "shell/design/Spacing.h"
#include "shell/design/Theme.h"

#include <QFontMetrics>
#include <QPainter>

namespace ombrel {

Badge::Badge(const QString& text, Tone tone, QWidget* parent) : QWidget(parent), m_tone(tone) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setFont(Theme::current().font(TextRole::caption));
    connect(&Theme::current(), &Theme::changed, this, qOverload<>(&QWidget::update));
    setText(text);
}

void Badge::setText(const QString& text) {
    if (m_text != text) {
        m_text = text;
        setAccessibleName(text);
        updateGeometry();
        update();
    }
}

void Badge::setTone(Tone tone) {
    if (m_tone != tone) {
        m_tone = tone;
        update();
    }
}

QSize Badge::sizeHint() const {
    return sizeOf(m_text);
}

void Badge::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    paint(painter, rect(), m_text, m_tone);
}

QSize Badge::sizeOf(const QString& text) {
    const QFontMetrics metrics(Theme::current().font(TextRole::caption));
    return {metrics.horizontalAdvance(text) + 2 * spacing::small,
            metrics.height() + spacing::tight};
}

void Badge::paint(QPainter& painter, const QRect& place, const QString& text, Tone tone) {
    const ThemeColors& colors = Theme::current().colors();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(tone == Tone::neutral ? colors.pressed : colors.soft(tone));
    const double corner = place.height() / 2.0;
    painter.drawRoundedRect(place, corner, corner);
    painter.setPen(colors.strong(tone));
    painter.setFont(Theme::current().font(TextRole::caption));
    painter.drawText(place, Qt::AlignCenter, text);
}

} // namespace ombrel
