#include "shell/agents/PagedRows.h"

#include "shell/QtText.h"
#include "shell/design/Button.h"
#include "shell/design/Icon.h"
#include "shell/design/Named.h"
#include "shell/design/Reveal.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextLabel.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>

namespace ombrel {

PagedRows::PagedRows(const QString& name, const Texts& texts, QWidget* parent)
    : QWidget(parent), m_title(new TextLabel({}, TextRole::strong)),
      m_empty((new TextLabel(texts.empty, TextRole::body, TextLabel::Ink::secondary))->wrapping()),
      m_column(new QVBoxLayout),
      m_add(named(makeButton(texts.add), name + QStringLiteral(".add"), texts.add)),
      m_pager(new QWidget),
      m_pages(new TextLabel({}, TextRole::caption, TextLabel::Ink::secondary)),
      m_previous(makeIconButton(QStringLiteral("chevron-left"), tr("Previous rows"))),
      m_next(makeIconButton(QStringLiteral("chevron-right"), tr("Next rows"))) {
    setObjectName(name);
    setAccessibleName(texts.title);
    m_title->setObjectName(name + QStringLiteral(".title"));
    m_empty->setObjectName(name + QStringLiteral(".empty"));
    m_pages->setObjectName(name + QStringLiteral(".pages"));
    m_previous->setObjectName(name + QStringLiteral(".previous"));
    m_next->setObjectName(name + QStringLiteral(".next"));
    m_add->setIcon(themeIcon(QStringLiteral("plus")));
    m_add->setAutoDefault(false);

    auto* pager = new QHBoxLayout(m_pager);
    pager->setContentsMargins(0, 0, 0, 0);
    pager->setSpacing(spacing::tight);
    pager->addWidget(m_pages);
    pager->addWidget(m_previous);
    pager->addWidget(m_next);
    auto* foot = new QHBoxLayout;
    foot->setSpacing(spacing::small);
    foot->addWidget(m_add);
    foot->addStretch(1);
    foot->addWidget(m_pager);
    auto* whole = new QVBoxLayout(this);
    whole->setContentsMargins(0, 0, 0, 0);
    whole->setSpacing(spacing::small);
    whole->addWidget(m_title);
    whole->addWidget(m_empty);
    m_column->setSpacing(spacing::small);
    whole->addLayout(m_column);
    whole->addLayout(foot);
    setTitle(texts.title);

    connect(m_add, &QPushButton::clicked, this, &PagedRows::add);
    connect(m_previous, &QToolButton::clicked, this, [this] { showPage(m_page - 1); });
    connect(m_next, &QToolButton::clicked, this, [this] { showPage(m_page + 1); });
}

void PagedRows::setTitle(const QString& title) {
    m_title->setText(title);
    m_title->setVisible(!title.isEmpty());
}

int PagedRows::pageCount() const {
    return std::max(1, (rowCount() + rowsOfPage - 1) / rowsOfPage);
}

void PagedRows::showPage(int page) {
    m_page = page;
    showRows();
}

void PagedRows::showRows() {
    const int count = rowCount();
    m_page = std::clamp(m_page, 0, pageCount() - 1);
    const int first = m_page * rowsOfPage;
    const int shown = std::min(count - first, rowsOfPage);
    while (m_rows.size() > shown) {
        QWidget* row = m_rows.takeLast();
        row->hide();
        row->deleteLater();
    }
    for (int i = 0; i < shown; ++i) {
        if (i == m_rows.size()) {
            m_rows.append(makeRow(objectName() + QLatin1Char('.') + QString::number(i)));
            m_column->addWidget(m_rows.back());
        }
        showRow(m_rows[i], first + i);
    }
    m_empty->setVisible(count == 0 && !m_empty->text().isEmpty());
    m_pager->setVisible(pageCount() > 1);
    m_pages->setText(tr("%1\u2013%2 of %3")
                         .arg(numberText(first + 1), numberText(first + shown), numberText(count)));
    m_previous->setEnabled(m_page > 0);
    m_next->setEnabled(m_page + 1 < pageCount());
}

int PagedRows::indexOf(const QWidget* row) const {
    return m_page * rowsOfPage + static_cast<int>(m_rows.indexOf(row));
}

void PagedRows::add() {
    m_page = rowCount() / rowsOfPage;
    appendRow();
    if (!m_rows.isEmpty()) {
        focusAndReveal(m_rows.back());
    }
}

} // namespace ombrel
