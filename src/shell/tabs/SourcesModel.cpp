#include "shell/tabs/SourcesModel.h"

#include "knowledge/SourceTexts.h"
#include "shell/QtText.h"
#include "shell/design/LongText.h"

#include <algorithm>
#include <iterator>
#include <ranges>
#include <utility>

namespace ombrel {

namespace {

SourcesModel::Row rowFor(const SourceDocument& source) {
    SourcesModel::Row row;
    row.id = source.id;
    row.name = toQt(source.name);
    row.icon = source.fileURL ? iconOf(source.type) : QStringLiteral("paste");
    row.type = toQt(sourceTypeText(source));
    row.status = toQt(source.status.label());
    row.place = source.fileURL ? toQt(*source.fileURL) : QString();
    row.chunkCount = source.chunkCount;
    row.tokenCount = source.tokenCount;
    row.tone = toneOf(source.status);
    return row;
}

} // namespace

Tone toneOf(const SourceStatus& status) {
    return std::holds_alternative<SourceStatus::Ready>(status.value) ? Tone::success
                                                                     : Tone::warning;
}

QString iconOf(SourceType type) {
    switch (type) {
    case SourceType::markdown:
        return QStringLiteral("document");
    case SourceType::pdf:
        return QStringLiteral("pdf");
    case SourceType::text:
        return QStringLiteral("text");
    }
    return {};
}

int SourcesModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

int SourcesModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : lastColumn + 1;
}

QVariant SourcesModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount()) {
        return {};
    }
    const Row& shown = row(index.row());
    switch (role) {
    case Qt::DisplayRole:
    case Qt::AccessibleTextRole:
        switch (index.column()) {
        case document:
            return shown.name;
        case type:
            return shown.type;
        case chunks:
            return numberText(shown.chunkCount);
        case tokens:
            return numberText(shown.tokenCount);
        case status:
            return shown.status;
        default:
            return {};
        }
    case Qt::ToolTipRole:
        return toolTipText(shown.place.isEmpty() ? shown.name : shown.place);
    case Qt::DecorationRole:
        return index.column() == document ? QVariant(shown.icon) : QVariant();
    case Qt::TextAlignmentRole:
        return static_cast<int>((index.column() == chunks || index.column() == tokens
                                     ? Qt::AlignRight
                                     : Qt::AlignLeft) |
                                Qt::AlignVCenter);
    case toneRole:
        return static_cast<int>(shown.tone);
    case sortRole:
        switch (index.column()) {
        case document:
            return shown.name;
        case type:
            return shown.type;
        case chunks:
            return static_cast<qlonglong>(shown.chunkCount);
        case tokens:
            return static_cast<qlonglong>(shown.tokenCount);
        case status:
            return shown.status;
        default:
            return {};
        }
    default:
        return {};
    }
}

QVariant SourcesModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal) {
        return {};
    }
    if (role == Qt::TextAlignmentRole) {
        return static_cast<int>(
            (section == chunks || section == tokens ? Qt::AlignRight : Qt::AlignLeft) |
            Qt::AlignVCenter);
    }
    if (role != Qt::DisplayRole) {
        return {};
    }
    switch (section) {
    case document:
        return tr("DOCUMENT");
    case type:
        return tr("TYPE");
    case chunks:
        return tr("CHUNKS");
    case tokens:
        return tr("TOKENS");
    case status:
        return tr("STATUS");
    default:
        return {};
    }
}

void SourcesModel::show(const RAGIndex& index) {
    std::vector<Row> rows;
    rows.reserve(index.sources.size());
    for (const SourceDocument& source : index.sources) {
        rows.push_back(rowFor(source));
    }
    if (rows == m_rows) {
        return;
    }
    const auto sameStart = [&] {
        return std::ranges::equal(m_rows, rows | std::views::take(m_rows.size()), {}, &Row::id,
                                  &Row::id);
    };
    if (rows.size() >= m_rows.size() && sameStart()) {
        const int known = rowCount();
        std::vector<Row> more(std::make_move_iterator(rows.begin() + known),
                              std::make_move_iterator(rows.end()));
        rows.resize(m_rows.size());
        if (rows != m_rows) {
            m_rows = std::move(rows);
            Q_EMIT dataChanged(this->index(0, 0), this->index(known - 1, columnCount() - 1));
        }
        if (!more.empty()) {
            beginInsertRows({}, known, known + static_cast<int>(more.size()) - 1);
            std::ranges::move(more, std::back_inserter(m_rows));
            endInsertRows();
        }
        return;
    }
    beginResetModel();
    m_rows = std::move(rows);
    endResetModel();
}

int SourcesModel::rowOf(const Uuid& id) const {
    const auto found = std::ranges::find(m_rows, id, &Row::id);
    return found == m_rows.end() ? -1 : static_cast<int>(found - m_rows.begin());
}

} // namespace ombrel
