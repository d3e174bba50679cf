#include "shell/design/Card.h"

#include "shell/design/Spacing.h"

#include <QResizeEvent>

namespace ombrel {

Card::Card(QWidget* parent) : QFrame(parent), m_content(new QVBoxLayout(this)) {
    setProperty("card", "true");
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);
    m_content->setContentsMargins(spacing::large, spacing::large, spacing::large, spacing::large);
    m_content->setSpacing(spacing::small);
}

QSize Card::sizeHint() const {
    QSize hint = QFrame::sizeHint();
    if (hasHeightForWidth()) {
        hint.setHeight(qMax(hint.height(), heightForWidth(width())));
    }
    return hint;
}

void Card::resizeEvent(QResizeEvent* event) {
    QFrame::resizeEvent(event);
    if (event->size().width() != event->oldSize().width() && hasHeightForWidth()) {
        updateGeometry();
    }
}

QFrame* makeRule(QWidget* parent) {
    auto* rule = new QFrame(parent);
    rule->setProperty("rule", "true");
    return rule;
}

} // namespace ombrel
