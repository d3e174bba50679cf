#pragma once

#include <QStyledItemDelegate>

namespace ombrel {

// Draws the cells of the table of sources: the document with its icon, the status as a badge.
class SourceDelegate final : public QStyledItemDelegate {
    Q_OBJECT

  public:
    using QStyledItemDelegate::QStyledItemDelegate;
    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
};

} // namespace ombrel
