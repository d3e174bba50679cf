#include "shell/design/Card.h"

#include "shell/design/Spacing.h"

namespace ombrel {

Card::Card(QWidget* parent) : QFrame(parent), m_content(new QVBoxLayout(this)) {
    setProperty("card", "true");
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);
    m_content->setContentsMargins(spacing::large, spacing::large, spacing::large, spacing::large);
    m_content->setSpacing(spacing::small);
}

QFrame* makeRule(QWidget* parent) {
    auto* rule = new QFrame(parent);
    rule->setProperty("rule", "true");
    return rule;
}

} // namespace ombrel
