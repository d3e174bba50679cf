#pragma once

#include <QAbstractItemDelegate>

namespace ombrel {

class ConsoleModel;

// Draws a line of the console in the colour of its kind. All rows are equally large.
class ConsoleDelegate final : public QAbstractItemDelegate {
    Q_OBJECT

  public:
    ConsoleDelegate(const ConsoleModel& model, QObject* parent);
    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

  private:
    const ConsoleModel& m_model;
};

} // namespace ombrel
