#include "shell/tabs/HitListModel.h"

#include "core/DocumentChunk.h"
#include "retrieval/PlaygroundTexts.h"
#include "shell/QtText.h"

#include <QStringList>

namespace ombrel {

void HitListModel::show(const std::vector<RetrievedChunk>& rows) {
    beginResetModel();
    m_rows = rows;
    endResetModel();
}

int HitListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

QVariant HitListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || (role != Qt::DisplayRole && role != Qt::AccessibleTextRole)) {
        return {};
    }
    const RetrievedChunk& hit = row(index.row());
    QStringList lines{
        QStringLiteral("%1. %2").arg(hit.rank).arg(toQt(breadcrumbText(hit.breadcrumb))),
        toQt(promptLabel(hit))};
    for (const std::string& label : scoreLabels(hit)) {
        lines.append(toQt(label));
    }
    lines.append(toQt(hit.snippet));
    if (hit.usedParent) {
        lines.append(toQt(usedParentNote));
    }
    return lines.join(QLatin1Char('\n'));
}

} // namespace ombrel
