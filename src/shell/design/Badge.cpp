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
    const QFontMetrics metrics(font());
    return {metrics.horizontalAdvance(m_text) + 2 * spacing::small,
            metrics.height() + spacing::tight};
}

void Badge::paintEvent(QPaintEvent*) {
    const ThemeColors& colors = Theme::current().colors();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(m_tone == Tone::neutral ? colors.pressed : colors.soft(m_tone));
    const double corner = height() / 2.0;
    painter.drawRoundedRect(rect(), corner, corner);
    painter.setPen(colors.strong(m_tone));
    painter.setFont(font());
    painter.drawText(rect(), Qt::AlignCenter, m_text);
}

} // namespace ombrel
