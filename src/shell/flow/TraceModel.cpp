#include "shell/flow/TraceModel.h"

#include "shell/QtText.h"

#include <QStringList>

#include <string_view>

namespace ombrel {

void TraceModel::show(const std::vector<FlowTraceEvent>& events) {
    beginResetModel();
    m_events = events;
    m_longestTime.clear();
    m_longestKind.clear();
    m_longestNode.clear();
    const auto keepLonger = [](QString& longest, const QString& text) {
        if (text.size() > longest.size()) {
            longest = text;
        }
    };
    for (const FlowTraceEvent& event : m_events) {
        keepLonger(m_longestTime, timeText(event));
        keepLonger(m_longestKind, toQt(event.kind));
        if (event.node) {
            keepLonger(m_longestNode, toQt(*event.node));
        }
    }
    endResetModel();
}

int TraceModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_events.size());
}

QVariant TraceModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || (role != Qt::DisplayRole && role != Qt::AccessibleTextRole)) {
        return {};
    }
    const FlowTraceEvent& shown = event(index.row());
    QStringList parts{timeText(shown), toQt(shown.kind)};
    if (shown.node) {
        parts.append(toQt(*shown.node));
    }
    parts.append(detailLine(shown));
    return parts.join(QStringLiteral("  "));
}

QString TraceModel::timeText(const FlowTraceEvent& event) {
    return tr("%1 ms").arg(event.elapsedMS);
}

QString TraceModel::detailLine(const FlowTraceEvent& event) {
    constexpr std::size_t mostBytes = 1000;
    return toQt(std::string_view(event.detail).substr(0, mostBytes)).simplified();
}

} // namespace ombrel
