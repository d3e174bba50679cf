#include "shell/tabs/ChunkListModel.h"

#include "knowledge/IndexReport.h"
#include "shell/QtText.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace ombrel {

namespace {

std::vector<ChunkListModel::Section> sectionsOf(const RAGIndex& index) {
    std::vector<ChunkListModel::Section> sections;
    sections.reserve(index.sources.size());
    for (const SourceDocument& source : index.sources) {
        const auto found = index.chunksByDocument.find(source.id);
        sections.push_back({source.id, toQt(source.name), toQt(sectionTotals(source)),
                            found == index.chunksByDocument.end() ? ChunkArray() : found->second,
                            0});
    }
    return sections;
}

bool haveSameRows(const ChunkListModel::Section& a, const ChunkListModel::Section& b) {
    return a.id == b.id && a.rowCount() == b.rowCount();
}

bool looksTheSame(const ChunkListModel::Section& a, const ChunkListModel::Section& b) {
    return a.chunks.identity() == b.chunks.identity() && a.name == b.name && a.totals == b.totals;
}

} // namespace

void ChunkListModel::show(const RAGIndex& index, IndexKind kind) {
    std::vector<Section> shown = sectionsOf(index);
    const bool isOtherKind = std::exchange(m_kind, kind) != kind;
    const std::size_t most = std::min(shown.size(), m_sections.size());
    std::size_t before = 0;
    while (before < most && haveSameRows(shown[before], m_sections[before])) {
        before += 1;
    }
    std::size_t after = 0;
    while (after < most - before && haveSameRows(shown[shown.size() - 1 - after],
                                                 m_sections[m_sections.size() - 1 - after])) {
        after += 1;
    }

    const auto at = [](std::size_t i) { return static_cast<std::ptrdiff_t>(i); };
    const std::size_t oldEnd = m_sections.size() - after;
    const std::size_t newEnd = shown.size() - after;
    if (before < oldEnd) {
        beginRemoveRows({}, m_sections[before].firstRow,
                        m_sections[oldEnd - 1].firstRow + m_sections[oldEnd - 1].rowCount() - 1);
        m_sections.erase(m_sections.begin() + at(before), m_sections.begin() + at(oldEnd));
        number(before);
        endRemoveRows();
    }
    if (before < newEnd) {
        const int first =
            before == 0 ? 0 : m_sections[before - 1].firstRow + m_sections[before - 1].rowCount();
        int rows = 0;
        for (std::size_t i = before; i < newEnd; ++i) {
            rows += shown[i].rowCount();
        }
        beginInsertRows({}, first, first + rows - 1);
        m_sections.insert(m_sections.begin() + at(before),
                          std::make_move_iterator(shown.begin() + at(before)),
                          std::make_move_iterator(shown.begin() + at(newEnd)));
        number(before);
        endInsertRows();
    }
    for (std::size_t i = 0; i < m_sections.size(); ++i) {
        if (i >= before && i < newEnd) {
            continue;
        }
        Section& section = m_sections[i];
        const int first = section.firstRow;
        if (isOtherKind || !looksTheSame(section, shown[i])) {
            section = std::move(shown[i]);
            section.firstRow = first;
            Q_EMIT dataChanged(createIndex(first, 0),
                               createIndex(first + section.rowCount() - 1, 0));
        }
    }
}

void ChunkListModel::number(std::size_t from) {
    m_rowCount = from == 0 ? 0 : m_sections[from - 1].firstRow + m_sections[from - 1].rowCount();
    for (std::size_t i = from; i < m_sections.size(); ++i) {
        m_sections[i].firstRow = m_rowCount;
        m_rowCount += m_sections[i].rowCount();
    }
}

int ChunkListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : m_rowCount;
}

QVariant ChunkListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || role != Qt::DisplayRole) {
        return {};
    }
    switch (kindOf(index.row())) {
    case RowKind::header:
        return QStringLiteral("%1, %2").arg(sectionOf(index.row()).name,
                                            sectionOf(index.row()).totals);
    case RowKind::noChunks:
        return toQt(noChunksNote);
    case RowKind::card:
        break;
    }
    return toQt(cardOf(index.row()).wholeText());
}

Qt::ItemFlags ChunkListModel::flags(const QModelIndex& index) const {
    return index.isValid() ? Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren
                           : Qt::NoItemFlags;
}

ChunkListModel::RowKind ChunkListModel::kindOf(int row) const {
    const Section& section = sectionOf(row);
    if (row == section.firstRow) {
        return RowKind::header;
    }
    return section.chunks.empty() ? RowKind::noChunks : RowKind::card;
}

const ChunkListModel::Section& ChunkListModel::sectionOf(int row) const {
    const auto next = std::ranges::upper_bound(m_sections, row, {}, &Section::firstRow);
    return *std::prev(next);
}

ChunkCard ChunkListModel::cardOf(int row) const {
    const Section& section = sectionOf(row);
    return {section.chunks[static_cast<std::size_t>(row - section.firstRow - 1)], m_kind};
}

} // namespace ombrel
