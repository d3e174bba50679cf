#include "shell/flow/IssueList.h"

#include "shell/QtText.h"
#include "shell/design/IconView.h"
#include "shell/design/LongText.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextLabel.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

namespace ombrel {

IssueList::IssueList(QWidget* parent) : QWidget(parent) {
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(spacing::small);
}

void IssueList::showIssues(const std::vector<FlowIssue>& issues) {
    std::vector<std::pair<FlowIssue::Severity, std::string>> shown;
    for (const FlowIssue& issue : issues) {
        shown.emplace_back(issue.severity, issue.message);
    }
    if (shown == m_shown) {
        return;
    }
    m_shown = std::move(shown);
    while (QLayoutItem* item = layout()->takeAt(0)) {
        item->widget()->deleteLater();
        item->widget()->hide();
        item->widget()->setObjectName({});
        delete item;
    }
    // A broken flow of a thousand nodes is no reason for a thousand rows; the Issues tab has all.
    constexpr std::size_t mostRows = 40;
    for (std::size_t i = 0; i < m_shown.size() && i < mostRows; ++i) {
        const bool isError = m_shown[i].first == FlowIssue::Severity::error;
        auto* row = new QWidget;
        auto* line = new QHBoxLayout(row);
        line->setContentsMargins(0, 0, 0, 0);
        line->setSpacing(spacing::small);
        line->addWidget(new IconView(QStringLiteral("alert"),
                                     isError ? Tone::danger : Tone::warning, spacing::icon),
                        0, Qt::AlignTop);
        auto* text =
            (new TextLabel(breakable(toQt(m_shown[i].second)), TextRole::caption))->wrapping();
        text->setObjectName(QStringLiteral("issue.%1").arg(i));
        line->addWidget(text, 1);
        layout()->addWidget(row);
    }
    if (m_shown.size() > mostRows) {
        layout()->addWidget(
            new TextLabel(tr("and %1 more, in the Issues tab").arg(m_shown.size() - mostRows),
                          TextRole::caption, TextLabel::Ink::secondary));
    }
}

} // namespace ombrel
