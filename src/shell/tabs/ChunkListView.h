#pragma once

#include "shell/tabs/RowHeights.h"

#include <QAbstractItemView>

namespace ombrel {

class ChunkCardDelegate;
class ChunkListModel;

// A list of rows of different heights, of which it lays out those that are seen. What the user
// looks at stays where it is when rows above it turn out higher or lower, or come and go.
class ChunkListView final : public QAbstractItemView {
    Q_OBJECT

  public:
    explicit ChunkListView(QWidget* parent = nullptr);
    void setModel(QAbstractItemModel* model) override; // a ChunkListModel, once

    QRect visualRect(const QModelIndex& index) const override;
    void scrollTo(const QModelIndex& index, ScrollHint hint = EnsureVisible) override;
    QModelIndex indexAt(const QPoint& point) const override;

    // Marks the words in the texts that are shown.
    void setMarkedWords(const QString& words);
    // Makes the row the current one and shows it.
    void goTo(int row);
    // The texts of the selected cards, a blank line between.
    QString selectedTexts() const;

    const RowHeights& rowHeights() const { return m_heights; }
    // How many times a row was laid out until now.
    int layoutCount() const;

  public Q_SLOTS:
    // Puts the texts of the selected cards on the clipboard; what Copy in the menu calls.
    void copy() const;

  Q_SIGNALS:
    // The user wants to read the whole card, or use a menu for it.
    void opened(int row);

  protected:
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    int horizontalOffset() const override { return 0; }
    int verticalOffset() const override;
    bool isIndexHidden(const QModelIndex&) const override { return false; }
    void setSelection(const QRect& rect, QItemSelectionModel::SelectionFlags flags) override;
    QRegion visualRegionForSelection(const QItemSelection& selection) const override;
    void updateGeometries() override;
    void scrollContentsBy(int dx, int dy) override;
    void reset() override;
    void dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                     const QList<int>& roles) override;
    void rowsInserted(const QModelIndex& parent, int start, int end) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

  private:
    void rowsAreGone(int first, int last);
    int rowWidth() const;
    std::vector<int> estimates(int first, int last) const;
    QStyleOptionViewItem optionFor(int row, const QRect& rect) const;
    void measure(int row);
    // Puts the row's top at the position of the viewport, or as near as the ends allow, measures
    // what is seen then and brings the scroll bar in line.
    void place(int row, std::int64_t y);
    void placeLater();

    ChunkListModel* m_model = nullptr;
    ChunkCardDelegate* m_delegate = nullptr;
    RowHeights m_heights;
    // What the viewport stands at: the first row that is seen, and where its top is.
    int m_row = 0;
    std::int64_t m_y = 0;
    int m_width = 0; // that the heights are for
    bool m_isPlacing = false;
};

} // namespace ombrel
