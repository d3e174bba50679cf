#pragma once

#include <QStyledItemDelegate>

namespace ombrel {

// Draws a row of a list as an icon (Qt::DecorationRole), a title (Qt::DisplayRole) and a line below
// (Qt::UserRole), each elided.
class TwoLineDelegate final : public QStyledItemDelegate {
    Q_OBJECT

  public:
    using QStyledItemDelegate::QStyledItemDelegate;
    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
};

} // namespace ombrel
