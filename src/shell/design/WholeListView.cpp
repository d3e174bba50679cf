#include "shell/design/WholeListView.h"

#include <QScrollBar>
#include <QWheelEvent>

#include <algorithm>

namespace ombrel {

WholeListView::WholeListView(int mostHeight, QWidget* parent)
    : QListView(parent), m_mostHeight(mostHeight) {
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollMode(ScrollPerPixel);
    setResizeMode(Adjust);
    setSelectionMode(SingleSelection);
    setEditTriggers(NoEditTriggers);
    setMouseTracking(true);
}

void WholeListView::setModel(QAbstractItemModel* model) {
    QListView::setModel(model);
    const auto changed = [this] { updateGeometry(); };
    connect(model, &QAbstractItemModel::modelReset, this, changed);
    connect(model, &QAbstractItemModel::rowsInserted, this, changed);
    connect(model, &QAbstractItemModel::rowsRemoved, this, changed);
}

QSize WholeListView::sizeHint() const {
    const int rows = model() ? model()->rowCount() : 0;
    QStyleOptionViewItem option;
    initViewItemOption(&option);
    int height = 0;
    for (int row = 0; row < rows && height < m_mostHeight; ++row) {
        height += itemDelegate()->sizeHint(option, model()->index(row, 0)).height();
    }
    return {400, std::min(height, m_mostHeight)};
}

void WholeListView::doItemsLayout() {
    QListView::doItemsLayout();
    updateGeometry(); // the heights of the rows go by the width
}

void WholeListView::wheelEvent(QWheelEvent* event) {
    if (verticalScrollBar()->maximum() == 0) {
        event->ignore(); // the page scrolls
        return;
    }
    QListView::wheelEvent(event);
}

} // namespace ombrel
