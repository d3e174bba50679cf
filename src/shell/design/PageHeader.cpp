#include "shell/design/PageHeader.h"

#include "shell/design/Spacing.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

namespace ombrel {

PageHeader::PageHeader(const QString& title, const QString& subtitle, QWidget* parent)
    : QWidget(parent), m_controls(new QHBoxLayout), m_title(new TextLabel(title, TextRole::title)),
      m_subtitle((new TextLabel(subtitle, TextRole::body, TextLabel::Ink::secondary))->wrapping()) {
    m_title->setObjectName(QStringLiteral("page.title"));
    m_subtitle->setObjectName(QStringLiteral("page.subtitle"));
    auto* texts = new QVBoxLayout;
    texts->setSpacing(spacing::tight);
    texts->addWidget(m_title);
    texts->addWidget(m_subtitle);
    m_controls->setSpacing(spacing::small);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(spacing::wide);
    row->addLayout(texts, 1);
    row->addLayout(m_controls);
}

void PageHeader::setTitle(const QString& title) {
    m_title->setText(title);
}

void PageHeader::setSubtitle(const QString& subtitle) {
    m_subtitle->setText(subtitle);
    m_subtitle->setVisible(!subtitle.isEmpty());
}

void PageHeader::addControl(QWidget* control) {
    m_controls->addWidget(control, 0, Qt::AlignTop);
}

} // namespace ombrel
