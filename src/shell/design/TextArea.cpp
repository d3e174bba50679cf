#include "shell/design/TextArea.h"

#include <QKeyEvent>
#include <QScopedValueRollback>

namespace ombrel {

TextArea::TextArea(const QString& placeholder, QWidget* parent) : QPlainTextEdit(parent) {
    setPlaceholderText(placeholder);
    setTabChangesFocus(true);
    setUndoRedoEnabled(false);
    connect(this, &QPlainTextEdit::textChanged, this, [this] {
        if (!m_isShowing) {
            Q_EMIT edited(toPlainText());
        }
    });
}

void TextArea::showValue(const QString& text) {
    if (text == toPlainText()) {
        return;
    }
    const QScopedValueRollback showing(m_isShowing, true);
    const int position = textCursor().position();
    setPlainText(text);
    if (hasFocus()) {
        QTextCursor cursor = textCursor();
        cursor.setPosition(qMin(position, static_cast<int>(toPlainText().size())));
        setTextCursor(cursor);
    }
}

bool TextArea::event(QEvent* event) {
    if (event->type() == QEvent::ShortcutOverride) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (key->matches(QKeySequence::Undo) || key->matches(QKeySequence::Redo)) {
            event->ignore(); // so that the window's command takes it
            return false;
        }
    }
    return QPlainTextEdit::event(event);
}

} // namespace ombrel
