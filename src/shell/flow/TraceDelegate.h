#pragma once

#include <QAbstractItemDelegate>

namespace ombrel {

class TraceModel;

// Draws a step of a run: when, what kind, which node, and the beginning of its detail. All rows are
// equally high.
class TraceDelegate final : public QAbstractItemDelegate {
    Q_OBJECT

  public:
    TraceDelegate(const TraceModel& model, QObject* parent);
    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

  private:
    const TraceModel& m_model;
};

} // namespace ombrel
