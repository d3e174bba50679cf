#include "shell/design/ChoiceBox.h"

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

void ChoiceBox::wheelEvent(QWheelEvent* event) {
    event->ignore();
}

} // namespace ombrel
