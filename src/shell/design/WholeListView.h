#pragma once

#include <QListView>

namespace ombrel {

// A list on a page that scrolls: as high as all its rows, up to a most, beyond which it scrolls
// inside. It draws the rows that are seen.
class WholeListView final : public QListView {
    Q_OBJECT

  public:
    explicit WholeListView(int mostHeight, QWidget* parent = nullptr);
    void setModel(QAbstractItemModel* model) override;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return {0, sizeHint().height()}; }

  protected:
    void doItemsLayout() override;
    void wheelEvent(QWheelEvent* event) override;

  private:
    int m_mostHeight;
};

} // namespace ombrel
