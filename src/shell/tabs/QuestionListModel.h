#pragma once

#include "core/TestQuestion.h"

#include <QAbstractListModel>

#include <optional>
#include <vector>

namespace ombrel {

// The test questions of an index, all or some of them.
class QuestionListModel final : public QAbstractListModel {
    Q_OBJECT

  public:
    enum class Filter { all, failing, drafts };

    using QAbstractListModel::QAbstractListModel;

    // Rows keep their place when only what they say has changed.
    void show(const std::vector<TestQuestion>& questions, Filter filter);
    const TestQuestion& question(int row) const {
        return m_questions[static_cast<std::size_t>(row)];
    }
    std::optional<int> rowOf(Uuid id) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    // Qt::DisplayRole: all that the row says, a line for each thing.
    QVariant data(const QModelIndex& index, int role) const override;

  private:
    std::vector<TestQuestion> m_questions;
};

} // namespace ombrel
