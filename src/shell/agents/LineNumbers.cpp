#include "shell/agents/LineNumbers.h"

#include "shell/agents/SwiftSourceEditor.h"
#include "shell/design/LongText.h"

#include <QHelpEvent>
#include <QToolTip>

namespace ombrel {

LineNumbers::LineNumbers(SwiftSourceEditor* editor) : QWidget(editor), m_editor(editor) {}

bool LineNumbers::event(QEvent* event) {
    if (event->type() == QEvent::ToolTip) {
        const auto* help = static_cast<QHelpEvent*>(event);
        QToolTip::showText(help->globalPos(), toolTipText(m_editor->warningAt(help->y())), this);
        return true;
    }
    return QWidget::event(event);
}

void LineNumbers::paintEvent(QPaintEvent* event) {
    m_editor->paintNumbers(event);
}

} // namespace ombrel
