#include "shell/design/WrapLayout.h"

#include <QWidget>

namespace ombrel {

WrapLayout::WrapLayout(int gap, int columnWidth, QWidget* parent)
    : QLayout(parent), m_gap(gap), m_columnWidth(columnWidth) {
    setContentsMargins(0, 0, 0, 0);
}

WrapLayout::~WrapLayout() {
    qDeleteAll(m_items);
}

void WrapLayout::setLastRowFills(bool fills) {
    m_lastRowFills = fills;
    invalidate();
}

void WrapLayout::addItem(QLayoutItem* item) {
    m_items.append(item);
}

int WrapLayout::count() const {
    return static_cast<int>(m_items.size());
}

QLayoutItem* WrapLayout::itemAt(int index) const {
    return m_items.value(index, nullptr);
}

QLayoutItem* WrapLayout::takeAt(int index) {
    return index >= 0 && index < count() ? m_items.takeAt(index) : nullptr;
}

int WrapLayout::heightForWidth(int width) const {
    return arrange({0, 0, width, 0}, false);
}

QSize WrapLayout::minimumSize() const {
    int width = 0;
    for (const QLayoutItem* item : m_items) {
        width = qMax(width, item->minimumSize().width());
    }
    const QMargins margins = contentsMargins();
    return {width + margins.left() + margins.right(), margins.top() + margins.bottom()};
}

QSize WrapLayout::sizeHint() const {
    int width = 0;
    for (const QLayoutItem* item : m_items) {
        width += item->sizeHint().width() + m_gap;
    }
    return {qMin(width, 600), heightForWidth(qMin(width, 600))};
}

void WrapLayout::setGeometry(const QRect& rect) {
    QLayout::setGeometry(rect);
    arrange(rect, true);
}

int WrapLayout::arrange(const QRect& whole, bool moves) const {
    const QRect rect = whole.marginsRemoved(contentsMargins());
    QList<QLayoutItem*> shown;
    for (QLayoutItem* item : m_items) {
        if (!item->isEmpty()) {
            shown.append(item);
        }
    }
    const int count = static_cast<int>(shown.size());
    int y = rect.y();
    for (int first = 0; first < count;) {
        // The row: which items, and how wide each.
        int last = first;
        int width = 0;
        int columns = 0;
        if (m_columnWidth > 0) {
            columns = qBound(1, (rect.width() + m_gap) / (m_columnWidth + m_gap), count);
            // The last row must not be short by more than needed: 3 and 1 become 2 and 2.
            const int rows = (count + columns - 1) / columns;
            columns = (count + rows - 1) / rows;
            width = (rect.width() - (columns - 1) * m_gap) / columns;
            last = qMin(count, first + columns);
            if (m_lastRowFills) {
                width = (rect.width() - (last - first - 1) * m_gap) / (last - first);
            }
        } else {
            int x = 0;
            while (last < count) {
                const int next = qMin(shown[last]->sizeHint().width(), rect.width());
                if (last > first && x + next > rect.width()) {
                    break;
                }
                x += next + m_gap;
                last += 1;
            }
        }
        int height = 0;
        for (int i = first; i < last; ++i) {
            const int itemWidth =
                columns > 0 ? width : qMin(shown[i]->sizeHint().width(), rect.width());
            height =
                qMax(height, shown[i]->hasHeightForWidth() ? shown[i]->heightForWidth(itemWidth)
                                                           : shown[i]->sizeHint().height());
        }
        int x = rect.x();
        for (int i = first; i < last; ++i) {
            const int itemWidth =
                columns > 0 ? width : qMin(shown[i]->sizeHint().width(), rect.width());
            if (moves) {
                shown[i]->setGeometry({x, y, itemWidth, height});
            }
            x += itemWidth + m_gap;
        }
        y += height + (last < count ? m_gap : 0);
        first = last;
    }
    return y - rect.y() + contentsMargins().top() + contentsMargins().bottom();
}

} // namespace ombrel
