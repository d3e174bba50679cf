#include "shell/agents/OutputRowsModel.h"

#include "shell/QtText.h"
#include "shell/design/LongText.h"

#include <iterator>
#include <utility>

namespace ombrel {

void OutputRowsModel::setRows(std::vector<OutputRow> rows) {
    if (rows == m_rows) {
        return;
    }
    beginResetModel();
    m_rows = std::move(rows);
    endResetModel();
}

int OutputRowsModel::rowCount(const QModelIndex& parentIndex) const {
    return parentIndex.isValid() ? 0 : static_cast<int>(std::ssize(m_rows));
}

QVariant OutputRowsModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) {
        return {};
    }
    const OutputRow& shown = row(index.row());
    const QString title = toQt(shown.type.empty() ? shown.name : shown.name + ": " + shown.type);
    switch (role) {
    case Qt::DisplayRole:
    case Qt::AccessibleTextRole:
        return title;
    case Qt::ToolTipRole:
        return toolTipText(
            toQt(shown.description).prepend(shown.description.empty() ? title : title + u'\n'));
    case Qt::AccessibleDescriptionRole:
        return toQt(shown.description);
    default:
        return {};
    }
}

} // namespace ombrel
