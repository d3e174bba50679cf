#pragma once

#include <QAbstractItemDelegate>

namespace ombrel {

class QuestionListModel;

// Draws a test question: the question, the section that it expects, and how it stands.
class QuestionDelegate final : public QAbstractItemDelegate {
    Q_OBJECT

  public:
    QuestionDelegate(const QuestionListModel& model, QObject* owner);
    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

  private:
    const QuestionListModel& m_model;
};

} // namespace ombrel
