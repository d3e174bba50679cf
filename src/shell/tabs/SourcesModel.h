#pragma once

#include "core/RAGIndex.h"
#include "shell/design/Tone.h"

#include <QAbstractTableModel>

#include <vector>

namespace ombrel {

// The sources of an index as a table, in the index's order.
class SourcesModel final : public QAbstractTableModel {
    Q_OBJECT

  public:
    enum Column { document, type, chunks, tokens, status, lastColumn = status };
    enum Role {
        sortRole = Qt::UserRole, // what the column is sorted by
        toneRole,                // of the status, a Tone as an int
    };
    struct Row {
        Uuid id;
        QString name;
        QString icon; // its name
        QString type;
        QString status;
        QString place; // where the file lies; empty for pasted text
        std::int64_t chunkCount = 0;
        std::int64_t tokenCount = 0;
        Tone tone = Tone::neutral;
        bool operator==(const Row&) const = default;
    };

    using QAbstractTableModel::QAbstractTableModel;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

    // Shows the index as it is now. Rows that stay keep their place in views.
    void show(const RAGIndex& index);
    const Row& row(int row) const { return m_rows[static_cast<std::size_t>(row)]; }
    // -1 when it isn't listed.
    int rowOf(const Uuid& id) const;

  private:
    std::vector<Row> m_rows;
};

// How good a status is.
Tone toneOf(const SourceStatus& status);
QString iconOf(SourceType type);

} // namespace ombrel
