#pragma once

#include <QStyledItemDelegate>

namespace ombrel {

// Draws the rows of an OutputRowsModel: the name and its type, and below them the description.
class OutputRowDelegate final : public QStyledItemDelegate {
    Q_OBJECT

  public:
    using QStyledItemDelegate::QStyledItemDelegate;
    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
};

} // namespace ombrel
