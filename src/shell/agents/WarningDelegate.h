#pragma once

#include <QStyledItemDelegate>

namespace ombrel {

// Draws warnings: the line that each is about, and the message, wrapped.
class WarningDelegate final : public QStyledItemDelegate {
    Q_OBJECT

  public:
    // What the items hold beside the message, which is displayed.
    enum Role { lineRole = Qt::UserRole };

    using QStyledItemDelegate::QStyledItemDelegate;
    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
};

} // namespace ombrel
