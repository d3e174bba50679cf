#pragma once

#include "core/FlowTraceEvent.h"

#include <QAbstractListModel>

#include <vector>

namespace ombrel {

// The steps that a finished run reported, in order.
class TraceModel final : public QAbstractListModel {
    Q_OBJECT

  public:
    using QAbstractListModel::QAbstractListModel;

    void show(const std::vector<FlowTraceEvent>& events);
    const FlowTraceEvent& event(int row) const { return m_events[static_cast<std::size_t>(row)]; }
    // The columns are as wide as the widest of these.
    const QString& longestTime() const { return m_longestTime; }
    const QString& longestKind() const { return m_longestKind; }
    const QString& longestNode() const { return m_longestNode; }

    int rowCount(const QModelIndex& parent = {}) const override;
    // Qt::DisplayRole: all that the row says.
    QVariant data(const QModelIndex& index, int role) const override;

    // "12 ms".
    static QString timeText(const FlowTraceEvent& event);
    // The detail in one line, and no more of it than a row can show.
    static QString detailLine(const FlowTraceEvent& event);

  private:
    std::vector<FlowTraceEvent> m_events;
    QString m_longestTime;
    QString m_longestKind;
    QString m_longestNode;
};

} // namespace ombrel
