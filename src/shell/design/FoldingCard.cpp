#include "shell/design/FoldingCard.h"

#include "shell/design/ElidedLabel.h"
#include "shell/design/Icon.h"
#include "shell/design/Spacing.h"
#include "shell/design/Theme.h"

#include <QToolButton>

namespace ombrel {

FoldingCard::FoldingCard(const QString& name, const QString& title, QWidget* parent)
    : Card(parent), m_head(new QHBoxLayout), m_toggle(new QToolButton),
      m_summary(new ElidedLabel({}, TextRole::body, TextLabel::Ink::secondary)),
      m_folded(new QWidget), m_body(new QVBoxLayout(m_folded)) {
    setObjectName(name);
    content()->setContentsMargins(spacing::medium, spacing::small, spacing::large, spacing::small);
    content()->setSpacing(0);
    m_toggle->setObjectName(name + QStringLiteral(".toggle"));
    m_toggle->setFocusPolicy(Qt::TabFocus);
    m_toggle->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_toggle->setIconSize({spacing::medium, spacing::medium});
    m_toggle->setFont(Theme::current().font(TextRole::heading));
    connect(&Theme::current(), &Theme::changed, m_toggle,
            [button = m_toggle] { button->setFont(Theme::current().font(TextRole::heading)); });
    m_summary->setObjectName(name + QStringLiteral(".summary"));
    m_head->setSpacing(spacing::small);
    m_head->addWidget(m_toggle);
    m_head->addWidget(m_summary, 1);
    content()->addLayout(m_head);
    m_body->setContentsMargins(spacing::tight, spacing::small, 0, spacing::small);
    m_body->setSpacing(spacing::small);
    content()->addWidget(m_folded);
    connect(m_toggle, &QToolButton::clicked, this, [this] { setExpanded(!m_isExpanded); });
    setTitle(title);
    setExpanded(true);
}

void FoldingCard::setTitle(const QString& title) {
    m_toggle->setText(title);
    m_toggle->setAccessibleName(title);
    setAccessibleName(title);
}

void FoldingCard::setSummary(const QString& summary) {
    m_summary->setText(summary);
}

void FoldingCard::setExpanded(bool expanded) {
    m_isExpanded = expanded;
    m_toggle->setIcon(
        themeIcon(expanded ? QStringLiteral("chevron-down") : QStringLiteral("chevron-right")));
    m_toggle->setToolTip(expanded ? tr("Hide") : tr("Show"));
    m_toggle->setAccessibleDescription(expanded ? tr("Expanded") : tr("Collapsed"));
    m_folded->setVisible(expanded);
}

void FoldingCard::addControl(QWidget* control) {
    m_head->addWidget(control);
}

} // namespace ombrel
