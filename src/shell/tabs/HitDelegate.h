#pragma once

#include <QAbstractItemDelegate>

namespace ombrel {

class HitListModel;
struct RetrievedChunk;

// Draws what a question retrieved: rank, section, whether it came into the prompt, the beginning of
// its text and its scores as bars.
class HitDelegate final : public QAbstractItemDelegate {
    Q_OBJECT

  public:
    HitDelegate(const HitListModel& model, QObject* owner);
    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    // As high as its text is in the width of the list.
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

  private:
    const HitListModel& m_model;
};

} // namespace ombrel
