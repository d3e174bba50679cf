#include "shell/design/ElidedCheckBox.h"

#include "shell/design/LongText.h"
#include "shell/design/Spacing.h"

#include <QFontMetrics>

namespace ombrel {

namespace {

constexpr int besideText = spacing::icon + spacing::small + 3 * spacing::tight;
constexpr qsizetype measured = 400; // characters of a name without end

} // namespace

ElidedCheckBox::ElidedCheckBox(QWidget* parent) : QCheckBox(parent) {
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void ElidedCheckBox::setName(const QString& name) {
    if (name == m_name) {
        return;
    }
    m_name = name;
    setAccessibleName(name);
    updateGeometry();
    applyElision();
}

QSize ElidedCheckBox::sizeHint() const {
    return {besideText + fontMetrics().horizontalAdvance(m_name.left(measured)),
            QCheckBox::sizeHint().height()};
}

QSize ElidedCheckBox::minimumSizeHint() const {
    const int least = besideText + 4 * fontMetrics().averageCharWidth();
    return {qMin(sizeHint().width(), least), sizeHint().height()};
}

void ElidedCheckBox::resizeEvent(QResizeEvent* event) {
    QCheckBox::resizeEvent(event);
    applyElision();
}

void ElidedCheckBox::applyElision() {
    const QString line = m_name.left(measured).replace(QLatin1Char('\n'), QLatin1Char(' '));
    const QString elided = fontMetrics().elidedText(line, Qt::ElideRight, width() - besideText);
    const bool isWhole = elided == m_name;
    setText(QString(elided).replace(QLatin1Char('&'), QLatin1String("&&")));
    setToolTip(isWhole ? QString() : toolTipText(m_name));
}

} // namespace ombrel
