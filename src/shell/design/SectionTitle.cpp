#include "shell/design/SectionTitle.h"

#include "shell/design/Spacing.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

namespace ombrel {

SectionTitle::SectionTitle(const QString& title, const QString& note, TextRole role,
                           QWidget* parent)
    : QWidget(parent), m_row(new QHBoxLayout),
      m_title(new TextLabel(title, role,
                            role == TextRole::overline ? TextLabel::Ink::secondary
                                                       : TextLabel::Ink::text)),
      m_note((new TextLabel(note, TextRole::caption, TextLabel::Ink::secondary))->wrapping()) {
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(spacing::hair);
    m_row->setSpacing(spacing::tight);
    m_row->addWidget(m_title);
    m_row->addStretch(1);
    column->addLayout(m_row);
    column->addWidget(m_note);
    m_note->setVisible(!note.isEmpty());
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);
}

void SectionTitle::setTitle(const QString& title) {
    m_title->setText(title);
}

void SectionTitle::setNote(const QString& note) {
    m_note->setText(note);
    m_note->setVisible(!note.isEmpty());
}

void SectionTitle::setHelp(QWidget* button) {
    m_row->insertWidget(1, button);
}

void SectionTitle::addControl(QWidget* control) {
    m_row->addWidget(control);
}

} // namespace ombrel
