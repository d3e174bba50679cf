#include "shell/design/ProgressRow.h"

#include "shell/design/ElidedLabel.h"
#include "shell/design/Spacing.h"

#include <QHBoxLayout>
#include <QProgressBar>
#include <QVBoxLayout>

#include <algorithm>

namespace ombrel {

ProgressRow::ProgressRow(QWidget* parent)
    : QFrame(parent), m_row(new QHBoxLayout(this)), m_text(new ElidedLabel),
      m_bar(new QProgressBar) {
    setProperty("card", "true");
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    m_text->setObjectName(QStringLiteral("progress.text"));
    m_bar->setObjectName(QStringLiteral("progress.bar"));
    m_bar->setTextVisible(false);
    m_row->setContentsMargins(spacing::large, spacing::medium, spacing::large, spacing::medium);
    m_row->setSpacing(spacing::large);
    auto* column = new QVBoxLayout;
    column->setSpacing(spacing::small);
    column->addWidget(m_text);
    column->addWidget(m_bar);
    m_row->addLayout(column, 1);
}

QString ProgressRow::text() const {
    return m_text->text();
}

void ProgressRow::setProgress(const QString& text, std::int64_t completed, std::int64_t total) {
    m_text->setText(text);
    m_bar->setAccessibleName(text);
    // The bar counts in int; what is shown needs no more than a thousand steps.
    constexpr std::int64_t steps = 1000;
    const double share = total > 0
                             ? static_cast<double>(std::clamp<std::int64_t>(completed, 0, total)) /
                                   static_cast<double>(total)
                             : 0;
    m_bar->setRange(0, total > 0 ? static_cast<int>(steps) : 0);
    m_bar->setValue(static_cast<int>(share * static_cast<double>(steps)));
}

void ProgressRow::addAction(QWidget* control) {
    m_row->addWidget(control, 0, Qt::AlignVCenter);
}

} // namespace ombrel
