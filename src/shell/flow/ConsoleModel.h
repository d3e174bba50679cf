#pragma once

#include "core/FlowConsoleLine.h"

#include <QAbstractListModel>

#include <vector>

namespace ombrel {

// The lines of the console.
class ConsoleModel final : public QAbstractListModel {
    Q_OBJECT

  public:
    using QAbstractListModel::QAbstractListModel;

    // Takes over the lines as they are now. Lines that went at the front and came at the end are
    // told as such.
    void show(const std::vector<FlowConsoleLine>& lines);
    const FlowConsoleLine& line(int row) const { return m_lines[static_cast<std::size_t>(row)]; }
    // How many columns the longest line takes, up to the most that are shown of a line.
    int columns() const { return m_columns; }

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;

    // How much is shown of a line.
    static constexpr int mostColumns = 4000;

  private:
    void measure(std::size_t from);

    std::vector<FlowConsoleLine> m_lines;
    int m_columns = 0;
};

} // namespace ombrel
