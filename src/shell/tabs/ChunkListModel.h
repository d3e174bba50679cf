#pragma once

#include "core/IndexKind.h"
#include "core/RAGIndex.h"
#include "knowledge/ChunkCard.h"

#include <QAbstractListModel>

#include <vector>

namespace ombrel {

// The chunks of an index as rows: for each source a header, and below it a card for each chunk, or
// a note that there is none. It shares the chunks with the workspace.
class ChunkListModel final : public QAbstractListModel {
    Q_OBJECT

  public:
    enum class RowKind { header, noChunks, card };
    struct Section {
        Uuid id;
        QString name;
        QString totals;
        ChunkArray chunks;
        int firstRow = 0; // the header's

        int rowCount() const { return 1 + std::max(1, static_cast<int>(chunks.size())); }
    };

    using QAbstractListModel::QAbstractListModel;

    // Shows the index. Rows that stay keep their place: those of the sections before and after
    // what has more or fewer rows.
    void show(const RAGIndex& index, IndexKind kind);

    int rowCount(const QModelIndex& parent = {}) const override;
    // Qt::DisplayRole: the row in a line or as a whole text. The views draw from what follows.
    QVariant data(const QModelIndex& index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    RowKind kindOf(int row) const;
    const Section& sectionOf(int row) const;
    // Of a row of the kind `card`.
    ChunkCard cardOf(int row) const;
    // All sections, for work on another thread.
    const std::vector<Section>& sections() const { return m_sections; }

  private:
    void number(std::size_t from);

    std::vector<Section> m_sections;
    IndexKind m_kind = IndexKind::keyword;
    int m_rowCount = 0;
};

} // namespace ombrel
