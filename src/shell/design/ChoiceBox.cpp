#include "shell/design/ChoiceBox.h"

#include "shell/design/LongText.h"
#include "shell/design/Spacing.h"

#include <QHelpEvent>
#include <QStyleOptionComboBox>
#include <QStylePainter>
#include <QToolTip>
#include <QWheelEvent>

namespace ombrel {

ChoiceBox::ChoiceBox(QWidget* parent) : QComboBox(parent) {
    setFocusPolicy(Qt::StrongFocus);
    setSizeAdjustPolicy(QComboBox::AdjustToContents);
}

void ChoiceBox::showEntries(const QStringList& entries) {
    if (entries == m_entries) {
        return;
    }
    m_entries = entries;
    const QSignalBlocker silent(this);
    clear();
    addItems(entries);
}

void ChoiceBox::showChoice(int index, const QString& otherwise) {
    if (placeholderText() != otherwise) {
        setPlaceholderText(otherwise);
    }
    if (currentIndex() != index) {
        const QSignalBlocker silent(this);
        setCurrentIndex(index);
    }
}

QSize ChoiceBox::minimumSizeHint() const {
    constexpr int leastWidth = 160;
    const QSize least = QComboBox::minimumSizeHint();
    return {qMin(least.width(), leastWidth), least.height()};
}

QString ChoiceBox::elided(const QStyleOptionComboBox& option) const {
    const QRect room =
        style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, this);
    return fontMetrics().elidedText(shownText(), Qt::ElideRight, room.width() - spacing::tight);
}

bool ChoiceBox::event(QEvent* event) {
    if (event->type() == QEvent::ToolTip && toolTip().isEmpty()) {
        QStyleOptionComboBox option;
        initStyleOption(&option);
        const bool isWhole = elided(option) == shownText();
        QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(),
                           isWhole ? QString() : toolTipText(shownText()), this);
        return true;
    }
    return QComboBox::event(event);
}

void ChoiceBox::paintEvent(QPaintEvent* /*event*/) {
    QStylePainter painter(this);
    QStyleOptionComboBox option;
    initStyleOption(&option);
    painter.drawComplexControl(QStyle::CC_ComboBox, option);
    option.currentText = elided(option);
    painter.drawControl(QStyle::CE_ComboBoxLabel, option);
}

void ChoiceBox::wheelEvent(QWheelEvent* event) {
    event->ignore();
}

} // namespace ombrel
