#include "shell/tabs/VariantTableModel.h"

#include "evaluation/EvaluationTexts.h"
#include "shell/QtText.h"
#include "shell/design/Icon.h"
#include "shell/design/Theme.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

namespace ombrel {

namespace {

// The figures of a variant under the headings, the greater the better.
std::array<std::optional<double>, 4> figures(const Variant& variant) {
    std::optional<double> latency = variant.medianLatency();
    if (latency) {
        latency = -*latency;
    }
    return {std::nullopt, variant.recallAt5, variant.mrr, latency};
}

} // namespace

void VariantTableModel::show(const RAGIndex& index) {
    std::array<std::optional<double>, 4> best;
    for (const Variant& variant : index.variants) {
        const auto ours = figures(variant);
        for (std::size_t i = 0; i < best.size(); ++i) {
            best[i] = std::max(best[i], ours[i]); // an absent one is the least
        }
    }
    std::vector<Row> rows;
    for (const Variant& variant : index.variants) {
        Row row{variant.id, variantTableRow(variant), {}, variant.id == index.selectedVariantID};
        const auto ours = figures(variant);
        for (std::size_t i = 0; i < best.size(); ++i) {
            row.isBest.push_back(index.variants.size() > 1 && ours[i] && ours[i] == best[i]);
        }
        rows.push_back(std::move(row));
    }
    if (rows == m_rows) {
        return;
    }
    if (rows.size() != m_rows.size()) {
        beginResetModel();
        m_rows = std::move(rows);
        endResetModel();
        return;
    }
    m_rows = std::move(rows);
    Q_EMIT dataChanged(createIndex(0, 0), createIndex(rowCount() - 1, columnCount() - 1));
}

int VariantTableModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

int VariantTableModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(variantTableHeadings().size());
}

QVariant VariantTableModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) {
        return {};
    }
    const Row& row = m_rows[static_cast<std::size_t>(index.row())];
    const auto column = static_cast<std::size_t>(index.column());
    switch (role) {
    case Qt::DisplayRole:
        return toQt(row.cells[column]);
    case Qt::ToolTipRole:
        return row.isCurrent ? tr("This variant is in force")
                             : tr("Double-click or press Enter to use this variant");
    case Qt::TextAlignmentRole:
        return static_cast<int>(Qt::AlignVCenter | (column == 0 ? Qt::AlignLeft : Qt::AlignRight));
    case Qt::FontRole:
        return Theme::current().font(row.isBest[column] || (column == 0 && row.isCurrent)
                                         ? TextRole::strong
                                         : TextRole::body);
    case Qt::ForegroundRole:
        return row.isBest[column] ? Theme::current().colors().success
                                  : Theme::current().colors().text;
    case Qt::DecorationRole:
        if (column == 0) {
            return themeIcon(row.isCurrent ? QStringLiteral("check-circle")
                                           : QStringLiteral("settings"),
                             row.isCurrent ? Tone::accent : Tone::neutral);
        }
        return {};
    default:
        return {};
    }
}

QVariant VariantTableModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal) {
        return {};
    }
    if (role == Qt::DisplayRole) {
        return toQt(variantTableHeadings()[static_cast<std::size_t>(section)]);
    }
    if (role == Qt::TextAlignmentRole) {
        return static_cast<int>(Qt::AlignVCenter | (section == 0 ? Qt::AlignLeft : Qt::AlignRight));
    }
    return {};
}

} // namespace ombrel
