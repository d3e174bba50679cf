#include "shell/design/ElidedLabel.h"

#include "shell/design/LongText.h"

#include <QFontMetrics>
#include <QResizeEvent>

namespace ombrel {

ElidedLabel::ElidedLabel(const QString& text, TextRole role, TextLabel::Ink ink, QWidget* parent)
    : QWidget(parent), m_label(new TextLabel({}, role, ink, this)) {
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    setText(text);
}

void ElidedLabel::setText(const QString& text) {
    QString line = text;
    line.replace(QLatin1Char('\n'), QLatin1Char(' '));
    if (line == m_text) {
        return;
    }
    m_text = line;
    setAccessibleName(line);
    updateGeometry();
    applyElision();
}

void ElidedLabel::setInk(TextLabel::Ink ink) {
    m_label->setInk(ink);
}

void ElidedLabel::setElideMode(Qt::TextElideMode mode) {
    m_mode = mode;
    applyElision();
}

QSize ElidedLabel::sizeHint() const {
    const QFontMetrics metrics(m_label->font());
    // A text without end is not measured to its end.
    constexpr qsizetype measured = 400;
    return {metrics.horizontalAdvance(m_text.left(measured)) + 2, metrics.height()};
}

QSize ElidedLabel::minimumSizeHint() const {
    const QFontMetrics metrics(m_label->font());
    return {qMin(sizeHint().width(), metrics.averageCharWidth() * 4), metrics.height()};
}

void ElidedLabel::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    m_label->setGeometry(rect());
    applyElision();
}

void ElidedLabel::applyElision() {
    const QFontMetrics metrics(m_label->font());
    constexpr qsizetype shown = 2000;
    const QString elided = metrics.elidedText(m_text.left(shown), m_mode, width());
    m_label->setText(elided);
    setToolTip(elided == m_text ? QString() : toolTipText(m_text));
}

} // namespace ombrel
