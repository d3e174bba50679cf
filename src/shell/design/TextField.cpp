#include "shell/design/TextField.h"

#include <QKeyEvent>

namespace ombrel {

TextField::TextField(const QString& placeholder, QWidget* parent) : QLineEdit(parent) {
    setPlaceholderText(placeholder);
    connect(this, &QLineEdit::textEdited, this, &TextField::edited);
}

void TextField::showValue(const QString& text) {
    if (text != this->text()) {
        const int cursor = cursorPosition();
        setText(text);
        setCursorPosition(hasFocus() ? cursor : 0);
    }
}

bool TextField::event(QEvent* event) {
    if (event->type() == QEvent::ShortcutOverride) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (key->matches(QKeySequence::Undo) || key->matches(QKeySequence::Redo)) {
            event->ignore(); // so that the window's command takes it
            return false;
        }
    }
    return QLineEdit::event(event);
}

} // namespace ombrel
