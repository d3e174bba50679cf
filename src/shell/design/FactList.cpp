#include "shell/design/FactList.h"

#include "shell/design/ElidedLabel.h"
#include "shell/design/Spacing.h"

#include <QGridLayout>

namespace ombrel {

FactList::FactList(QWidget* parent) : QWidget(parent), m_grid(new QGridLayout(this)) {
    m_grid->setContentsMargins(0, 0, 0, 0);
    m_grid->setHorizontalSpacing(spacing::wide);
    m_grid->setVerticalSpacing(spacing::small);
    m_grid->setColumnStretch(1, 1);
}

void FactList::setFact(const QString& name, const QString& label, const QString& value) {
    auto found = m_rows.find(name);
    if (found == m_rows.end()) {
        const Row row{new ElidedLabel({}, TextRole::body, TextLabel::Ink::secondary),
                      new ElidedLabel};
        row.label->setMinimumWidth(120);
        row.value->setObjectName(QStringLiteral("fact.") + name);
        const int line = m_grid->rowCount();
        m_grid->addWidget(row.label, line, 0);
        m_grid->addWidget(row.value, line, 1);
        found = m_rows.emplace(name, row).first;
    }
    found->second.label->setText(label);
    found->second.value->setText(value);
}

void FactList::removeFact(const QString& name) {
    const auto found = m_rows.find(name);
    if (found != m_rows.end()) {
        delete found->second.label;
        delete found->second.value;
        m_rows.erase(found);
    }
}

} // namespace ombrel
