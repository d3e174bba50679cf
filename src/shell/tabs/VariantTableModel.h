#pragma once

#include "core/RAGIndex.h"

#include <QAbstractTableModel>

#include <optional>
#include <vector>

namespace ombrel {

// The variants of an index with their scores. The best of each column is emphasised, and the
// variant in force is marked.
class VariantTableModel final : public QAbstractTableModel {
    Q_OBJECT

  public:
    using QAbstractTableModel::QAbstractTableModel;

    void show(const RAGIndex& index);
    Uuid variantID(int row) const { return m_rows[static_cast<std::size_t>(row)].id; }

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

  private:
    struct Row {
        Uuid id;
        std::vector<std::string> cells;
        std::vector<bool> isBest; // by column
        bool isCurrent = false;
        bool operator==(const Row&) const = default;
    };
    std::vector<Row> m_rows;
};

} // namespace ombrel
