#include "shell/design/EmptyState.h"

#include "shell/design/IconView.h"
#include "shell/design/Spacing.h"

#include <QVBoxLayout>

namespace ombrel {

EmptyState::EmptyState(const QString& iconName, const QString& title, const QString& text,
                       QWidget* parent)
    : QWidget(parent), m_column(new QVBoxLayout),
      m_icon(new IconView(iconName, Tone::neutral, spacing::largeIcon)),
      m_title((new TextLabel(title, TextRole::heading))->wrapping()),
      m_text((new TextLabel(text, TextRole::body, TextLabel::Ink::secondary))->wrapping()) {
    m_title->setObjectName(QStringLiteral("empty.title"));
    m_text->setObjectName(QStringLiteral("empty.text"));
    m_title->setAlignment(Qt::AlignHCenter);
    m_text->setAlignment(Qt::AlignHCenter);
    m_text->setVisible(!text.isEmpty());
    m_column->setSpacing(spacing::small);
    m_column->addWidget(m_icon, 0, Qt::AlignHCenter);
    m_column->addSpacing(spacing::tight);
    m_column->addWidget(m_title);
    m_column->addWidget(m_text);
    auto* middle = new QWidget;
    middle->setMaximumWidth(420);
    middle->setLayout(m_column);
    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(spacing::large, spacing::wide, spacing::large, spacing::wide);
    outer->addStretch(2);
    auto* row = new QHBoxLayout;
    row->addStretch(1);
    row->addWidget(middle, 20);
    row->addStretch(1);
    outer->addLayout(row);
    outer->addStretch(3);
}

void EmptyState::setIcon(const QString& iconName) {
    m_icon->setIcon(iconName, Tone::neutral);
}

void EmptyState::setTexts(const QString& title, const QString& text) {
    m_title->setText(title);
    m_title->setVisible(!title.isEmpty());
    m_text->setText(text);
    m_text->setVisible(!text.isEmpty());
}

void EmptyState::addControl(QWidget* control) {
    m_column->addSpacing(spacing::small);
    m_column->addWidget(control, 0, Qt::AlignHCenter);
}

} // namespace ombrel
