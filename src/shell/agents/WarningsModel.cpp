#include "shell/agents/WarningsModel.h"

#include "shell/QtText.h"
#include "shell/agents/WarningDelegate.h"

#include <iterator>
#include <utility>

namespace ombrel {

void WarningsModel::setWarnings(std::vector<GenerableImportWarning> warnings) {
    if (warnings == m_warnings) {
        return;
    }
    beginResetModel();
    m_warnings = std::move(warnings);
    endResetModel();
}

int WarningsModel::rowCount(const QModelIndex& parentIndex) const {
    return parentIndex.isValid() ? 0 : static_cast<int>(std::ssize(m_warnings));
}

QVariant WarningsModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) {
        return {};
    }
    const GenerableImportWarning& shown = warning(index.row());
    const QString line = shown.line ? tr("Line %1").arg(*shown.line) : QString();
    switch (role) {
    case Qt::DisplayRole:
        return toQt(shown.message);
    case Qt::AccessibleTextRole:
        return line.isEmpty() ? toQt(shown.message)
                              : line + QStringLiteral(": ") + toQt(shown.message);
    case WarningDelegate::lineRole:
        return line;
    default:
        return {};
    }
}

} // namespace ombrel
