#include "shell/tabs/QuestionListModel.h"

#include "core/DocumentChunk.h"
#include "evaluation/EvaluationTexts.h"
#include "shell/QtText.h"
#include "shell/design/LongText.h"

#include <QStringList>

#include <algorithm>
#include <utility>

namespace ombrel {

void QuestionListModel::show(const std::vector<TestQuestion>& questions, Filter filter) {
    std::vector<TestQuestion> shown;
    for (const TestQuestion& question : questions) {
        if (filter == Filter::all ||
            (filter == Filter::failing && question.status == QuestionStatus::failing) ||
            (filter == Filter::drafts && question.isDrafted)) {
            shown.push_back(question);
        }
    }
    if (shown == m_questions) {
        return;
    }
    const bool areSame =
        std::ranges::equal(shown, m_questions, {}, &TestQuestion::id, &TestQuestion::id);
    if (areSame) {
        m_questions = std::move(shown);
        Q_EMIT dataChanged(createIndex(0, 0), createIndex(rowCount() - 1, 0));
        return;
    }
    beginResetModel();
    m_questions = std::move(shown);
    endResetModel();
}

std::optional<int> QuestionListModel::rowOf(Uuid id) const {
    const auto found = std::ranges::find(m_questions, id, &TestQuestion::id);
    if (found == m_questions.end()) {
        return std::nullopt;
    }
    return static_cast<int>(found - m_questions.begin());
}

int QuestionListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_questions.size());
}

QVariant QuestionListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) {
        return {};
    }
    const TestQuestion& shown = question(index.row());
    if (role == Qt::ToolTipRole) {
        return toolTipText(toQt(shown.question));
    }
    if (role != Qt::DisplayRole && role != Qt::AccessibleTextRole) {
        return {};
    }
    QStringList lines{toQt(shown.question),
                      tr("Expected %1").arg(toQt(breadcrumbText(shown.expectedBreadcrumb))),
                      toQt(questionStatusText(shown))};
    if (shown.isDrafted) {
        lines.append(toQt(draftBadge));
    }
    return lines.join(QLatin1Char('\n'));
}

} // namespace ombrel
