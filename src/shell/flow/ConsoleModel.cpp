#include "shell/flow/ConsoleModel.h"

#include "shell/QtText.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace ombrel {

namespace {

// What can be shown in one line: without breaks and tabs.
QString shownText(const FlowConsoleLine& line) {
    QString text = toQt(std::string_view(line.text).substr(0, 4 * ConsoleModel::mostColumns));
    text.truncate(ConsoleModel::mostColumns);
    for (QChar& character : text) {
        if (character.category() == QChar::Other_Control || character == QChar::LineSeparator ||
            character == QChar::ParagraphSeparator) {
            character = QLatin1Char(' ');
        }
    }
    return text;
}

QString spokenKind(FlowConsoleLine::Kind kind) {
    using Kind = FlowConsoleLine::Kind;
    switch (kind) {
    case Kind::step:
        return ConsoleModel::tr("Step: ");
    case Kind::success:
        return ConsoleModel::tr("Success: ");
    case Kind::failure:
        return ConsoleModel::tr("Failure: ");
    case Kind::info:
    case Kind::output:
        break;
    }
    return {};
}

// At most; characters of other scripts may be twice as wide.
int columnsOf(const std::string& text) {
    return static_cast<int>(
        std::min<std::size_t>(text.size(), std::size_t{ConsoleModel::mostColumns}));
}

} // namespace

void ConsoleModel::show(const std::vector<FlowConsoleLine>& lines) {
    const auto kept = lines.empty()
                          ? m_lines.end()
                          : std::ranges::find(m_lines, lines.front().id, &FlowConsoleLine::id);
    const auto keptCount = static_cast<std::size_t>(m_lines.end() - kept);
    const bool goesOn =
        keptCount > 0 && keptCount <= lines.size() && lines[keptCount - 1].id == m_lines.back().id;
    if (!goesOn) {
        if (lines.empty() && m_lines.empty()) {
            return;
        }
        beginResetModel();
        m_lines = lines;
        m_columns = 0;
        measure(0);
        endResetModel();
        return;
    }
    if (kept != m_lines.begin()) {
        beginRemoveRows({}, 0, static_cast<int>(kept - m_lines.begin()) - 1);
        m_lines.erase(m_lines.begin(), kept);
        endRemoveRows();
    }
    if (lines.size() > keptCount) {
        // Told before the view lays the rows out.
        beginInsertRows({}, static_cast<int>(keptCount), static_cast<int>(lines.size()) - 1);
        m_lines.insert(m_lines.end(), lines.begin() + static_cast<std::ptrdiff_t>(keptCount),
                       lines.end());
        measure(keptCount);
        endInsertRows();
    }
}

void ConsoleModel::measure(std::size_t from) {
    for (std::size_t i = from; i < m_lines.size(); ++i) {
        m_columns = std::max(m_columns, columnsOf(m_lines[i].text));
    }
}

int ConsoleModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_lines.size());
}

QVariant ConsoleModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) {
        return {};
    }
    const FlowConsoleLine& shown = line(index.row());
    if (role == Qt::DisplayRole) {
        return shownText(shown);
    }
    if (role == Qt::AccessibleTextRole) {
        return spokenKind(shown.kind) + shownText(shown);
    }
    return {};
}

} // namespace ombrel
