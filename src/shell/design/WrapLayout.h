#pragma once

#include <QLayout>
#include <QList>
#include <QRect>

namespace ombrel {

// Lays things out in rows, as many in a row as there is room for. With a column width, all are as
// wide as the columns, of which each is at least that wide; else each has its own width.
class WrapLayout final : public QLayout {
  public:
    explicit WrapLayout(int gap, int columnWidth = 0, QWidget* parent = nullptr);
    ~WrapLayout() override;
    // Of rows with columns, lets the things of a last row that is short share its whole width.
    void setLastRowFills(bool fills);

    void addItem(QLayoutItem* item) override;
    int count() const override;
    QLayoutItem* itemAt(int index) const override;
    QLayoutItem* takeAt(int index) override;
    Qt::Orientations expandingDirections() const override { return {}; }
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    QSize minimumSize() const override;
    QSize sizeHint() const override;
    void setGeometry(const QRect& rect) override;

  private:
    int arrange(const QRect& rect, bool moves) const;

    QList<QLayoutItem*> m_items;
    int m_gap;
    int m_columnWidth;
    bool m_lastRowFills = false;
};

} // namespace ombrel
