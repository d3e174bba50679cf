#include "shell/design/LongTextView.h"

#include "shell/design/Theme.h"

namespace ombrel {

LongTextView::LongTextView(QWidget* parentWidget) : QPlainTextEdit(parentWidget) {
    setReadOnly(true);
    setUndoRedoEnabled(false);
    setTabChangesFocus(true);
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    applyTheme();
    connect(&Theme::current(), &Theme::changed, this, &LongTextView::applyTheme);
}

void LongTextView::setText(const QString& text) {
    if (m_text != text) {
        m_text = text;
        setPlainText(text);
    }
}

void LongTextView::applyTheme() {
    setFont(Theme::current().font(TextRole::code));
}

} // namespace ombrel
