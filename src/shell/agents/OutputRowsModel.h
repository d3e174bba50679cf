#pragma once

#include "shell/agents/OutputRow.h"

#include <QAbstractListModel>

#include <vector>

namespace ombrel {

// Rows of an output for a list. What is displayed of a row is its name and its type.
class OutputRowsModel final : public QAbstractListModel {
    Q_OBJECT

  public:
    using QAbstractListModel::QAbstractListModel;
    void setRows(std::vector<OutputRow> rows);
    const OutputRow& row(int index) const { return m_rows[static_cast<std::size_t>(index)]; }

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;

  private:
    std::vector<OutputRow> m_rows;
};

} // namespace ombrel
