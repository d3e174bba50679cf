#pragma once

#include "core/PlaygroundResult.h"

#include <QAbstractListModel>

#include <vector>

namespace ombrel {

// What a question retrieved, by rank.
class HitListModel final : public QAbstractListModel {
    Q_OBJECT

  public:
    using QAbstractListModel::QAbstractListModel;

    void show(const std::vector<RetrievedChunk>& rows);
    const RetrievedChunk& row(int place) const { return m_rows[static_cast<std::size_t>(place)]; }

    int rowCount(const QModelIndex& parent = {}) const override;
    // Qt::DisplayRole: all that the row says, a line for each thing.
    QVariant data(const QModelIndex& index, int role) const override;

  private:
    std::vector<RetrievedChunk> m_rows;
};

} // namespace ombrel
