#pragma once

#include "generable/GenerableImportWarning.h"

#include <QAbstractListModel>

#include <vector>

namespace ombrel {

// The warnings of an import for a list: the message is displayed, the line is in the role of the
// WarningDelegate.
class WarningsModel final : public QAbstractListModel {
    Q_OBJECT

  public:
    using QAbstractListModel::QAbstractListModel;
    void setWarnings(std::vector<GenerableImportWarning> warnings);
    const GenerableImportWarning& warning(int index) const {
        return m_warnings[static_cast<std::size_t>(index)];
    }

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;

  private:
    std::vector<GenerableImportWarning> m_warnings;
};

} // namespace ombrel
