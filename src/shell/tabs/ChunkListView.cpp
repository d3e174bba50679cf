#include "shell/tabs/ChunkListView.h"

#include "shell/QtText.h"
#include "shell/design/Spacing.h"
#include "shell/design/Theme.h"
#include "shell/tabs/ChunkCardDelegate.h"
#include "shell/tabs/ChunkListModel.h"

#include <QClipboard>
#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMenu>
#include <QPainter>
#include <QScrollBar>

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace ombrel {

namespace {

constexpr int beside = spacing::small; // between the cards and the scroll bar
constexpr int step = 24;               // of the wheel and the arrow keys

} // namespace

ChunkListView::ChunkListView(QWidget* parentWidget) : QAbstractItemView(parentWidget) {
    setSelectionMode(ExtendedSelection);
    setVerticalScrollMode(ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setEditTriggers(NoEditTriggers);
    setFrameShape(NoFrame);
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent); // so that it scrolls by moving pixels
    connect(&Theme::current(), &Theme::changed, this, [this] {
        if (m_delegate) {
            m_delegate->forget();
        }
        viewport()->update();
    });
    connect(this, &QAbstractItemView::doubleClicked, this, [this](const QModelIndex& index) {
        if (m_model->kindOf(index.row()) == ChunkListModel::RowKind::card) {
            Q_EMIT opened(index.row());
        }
    });
}

void ChunkListView::setModel(QAbstractItemModel* model) {
    m_model = qobject_cast<ChunkListModel*>(model);
    m_delegate = new ChunkCardDelegate(*m_model, this);
    setItemDelegate(m_delegate);
    connect(model, &QAbstractItemModel::rowsRemoved, this,
            [this](const QModelIndex&, int first, int last) { rowsAreGone(first, last); });
    QAbstractItemView::setModel(model);
}

int ChunkListView::layoutCount() const {
    return m_delegate->layoutCount();
}

// The rows.

int ChunkListView::rowWidth() const {
    return std::max(0, viewport()->width() - beside);
}

std::vector<int> ChunkListView::estimates(int first, int last) const {
    std::vector<int> heights;
    heights.reserve(static_cast<std::size_t>(last - first + 1));
    for (int row = first; row <= last; ++row) {
        heights.push_back(m_delegate->estimatedHeight(row, rowWidth()));
    }
    return heights;
}

void ChunkListView::reset() {
    QAbstractItemView::reset();
    if (m_model) {
        m_delegate->forget();
        m_width = rowWidth();
        m_heights.estimateAnew(estimates(0, m_model->rowCount() - 1));
        place(0, 0);
    }
}

void ChunkListView::rowsInserted(const QModelIndex& parentIndex, int start, int end) {
    QAbstractItemView::rowsInserted(parentIndex, start, end);
    m_delegate->forget();
    m_heights.splice(start, 0, estimates(start, end));
    // What comes above what the user looks at moves along with it; at the very top one sees it.
    const bool isAtTop = m_row == 0 && m_y == 0;
    if (start <= m_row && !isAtTop) {
        m_row += end - start + 1;
    }
    placeLater();
}

void ChunkListView::rowsAreGone(int first, int last) {
    m_delegate->forget();
    m_heights.splice(first, last - first + 1, {});
    if (m_row > last) {
        m_row -= last - first + 1;
    } else if (m_row >= first) {
        m_row = std::max(0, first - 1);
        m_y = 0;
    }
    placeLater();
}

void ChunkListView::dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                                const QList<int>& roles) {
    QAbstractItemView::dataChanged(topLeft, bottomRight, roles);
    m_delegate->forget();
    m_heights.forget(topLeft.row(), bottomRight.row());
    placeLater();
}

void ChunkListView::placeLater() {
    scheduleDelayedItemsLayout(); // calls updateGeometries
    viewport()->update();
}

void ChunkListView::updateGeometries() {
    QAbstractItemView::updateGeometries();
    if (m_model && !m_isPlacing) {
        place(m_row, m_y);
    }
}

void ChunkListView::resizeEvent(QResizeEvent* event) {
    QAbstractItemView::resizeEvent(event);
    if (!m_model || m_width == rowWidth()) {
        return;
    }
    m_width = rowWidth();
    m_delegate->forget();
    m_heights.estimateAnew(estimates(0, m_model->rowCount() - 1));
    place(m_row, m_y);
}

// Where the rows are.

QStyleOptionViewItem ChunkListView::optionFor(int row, const QRect& rect) const {
    QStyleOptionViewItem option;
    initViewItemOption(&option);
    const QModelIndex index = m_model->index(row);
    option.rect = rect;
    option.state.setFlag(QStyle::State_Selected, selectionModel()->isSelected(index));
    option.state.setFlag(QStyle::State_HasFocus, hasFocus() && index == currentIndex());
    return option;
}

void ChunkListView::measure(int row) {
    if (!m_heights.isMeasured(row)) {
        QStyleOptionViewItem option;
        option.rect = QRect(0, 0, rowWidth(), 0);
        m_heights.measure(row, m_delegate->sizeHint(option, m_model->index(row)).height());
    }
}

void ChunkListView::place(int row, std::int64_t y) {
    const int count = m_heights.count();
    const int room = viewport()->height();
    if (count == 0) {
        m_row = 0;
        m_y = 0;
        verticalScrollBar()->setRange(0, 0);
        viewport()->update();
        return;
    }
    row = std::clamp(row, 0, count - 1);
    const auto upwards = [&] {
        while (y > 0 && row > 0) {
            row -= 1;
            measure(row);
            y -= m_heights.height(row);
        }
        y = std::min<std::int64_t>(y, 0);
    };
    measure(row);
    upwards();
    while (row + 1 < count && y + m_heights.height(row) <= 0) {
        y += m_heights.height(row);
        row += 1;
        measure(row);
    }
    std::int64_t bottom = y;
    for (int below = row; below < count && bottom < room; ++below) {
        measure(below);
        bottom += m_heights.height(below);
    }
    if (bottom < room) { // the end stands at the bottom, where there is as much
        y += room - bottom;
        upwards();
    }
    m_row = row;
    m_y = y;

    constexpr std::int64_t most = std::numeric_limits<int>::max();
    QScrollBar* const bar = verticalScrollBar();
    m_isPlacing = true;
    bar->setSingleStep(step);
    bar->setPageStep(std::max(step, room - step));
    bar->setRange(0, static_cast<int>(std::clamp<std::int64_t>(m_heights.total() - room, 0, most)));
    bar->setValue(static_cast<int>(std::min(m_heights.top(row) - y, most)));
    m_isPlacing = false;
}

void ChunkListView::scrollContentsBy(int, int dy) {
    if (m_isPlacing || m_heights.count() == 0) {
        return;
    }
    const int room = viewport()->height();
    if (std::abs(dy) >= room) {
        const std::int64_t value = verticalScrollBar()->value();
        const int row = m_heights.rowAt(value);
        place(row, m_heights.top(row) - value);
        viewport()->update();
        return;
    }
    // By the rows that are seen: those above may turn out higher than they were thought to be.
    const int seen = m_row;
    const std::int64_t seenAt = m_y;
    place(seen, seenAt + dy);
    const std::int64_t nowAt = m_y + m_heights.top(seen) - m_heights.top(m_row);
    viewport()->scroll(0, static_cast<int>(nowAt - seenAt));
}

int ChunkListView::verticalOffset() const {
    return verticalScrollBar()->value();
}

QRect ChunkListView::visualRect(const QModelIndex& index) const {
    if (!index.isValid() || index.row() >= m_heights.count()) {
        return {};
    }
    constexpr std::int64_t far = 1'000'000'000;
    const std::int64_t y = m_y + m_heights.top(index.row()) - m_heights.top(m_row);
    return {0, static_cast<int>(std::clamp(y, -far, far)), rowWidth(),
            m_heights.height(index.row())};
}

QModelIndex ChunkListView::indexAt(const QPoint& point) const {
    if (m_heights.count() == 0) {
        return {};
    }
    const std::int64_t y = m_heights.top(m_row) - m_y + point.y();
    return y >= 0 && y < m_heights.total() ? m_model->index(m_heights.rowAt(y)) : QModelIndex();
}

void ChunkListView::scrollTo(const QModelIndex& index, ScrollHint hint) {
    if (!index.isValid() || index.row() >= m_heights.count()) {
        return;
    }
    const int row = index.row();
    measure(row);
    const int room = viewport()->height();
    const int height = m_heights.height(row);
    const QRect rect = visualRect(index);
    std::int64_t y = rect.top();
    switch (hint) {
    case EnsureVisible:
        if (rect.top() >= 0 && rect.bottom() < room) {
            return;
        }
        if (height > room) {
            // A card that is higher than the view is read from its top, and may be read on.
            if (rect.top() <= 0 && rect.bottom() >= room / 2) {
                return;
            }
            y = 0;
        } else {
            y = rect.top() < 0 ? 0 : room - height;
        }
        break;
    case PositionAtTop:
        y = 0;
        break;
    case PositionAtBottom:
        y = room - height;
        break;
    case PositionAtCenter:
        y = std::max(0, (room - height) / 2);
        break;
    }
    place(row, y);
    viewport()->update();
}

void ChunkListView::goTo(int row) {
    const QModelIndex index = m_model->index(row);
    selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
    scrollTo(index, PositionAtCenter);
}

QModelIndex ChunkListView::moveCursor(CursorAction action, Qt::KeyboardModifiers) {
    const int count = m_heights.count();
    if (count == 0) {
        return {};
    }
    const int current = currentIndex().isValid() ? currentIndex().row() : -1;
    const int room = viewport()->height();
    const QRect rect = visualRect(currentIndex());
    QScrollBar* const bar = verticalScrollBar();
    int row = current;
    switch (action) {
    case MoveHome:
        row = 0;
        break;
    case MoveEnd:
        row = count - 1;
        break;
    case MoveUp:
    case MoveLeft:
    case MovePrevious:
        if (current >= 0 && rect.top() < 0 && rect.bottom() > room / 2) {
            bar->setValue(bar->value() - 3 * step); // reads a high card first
        } else {
            row = current - 1;
        }
        break;
    case MoveDown:
    case MoveRight:
    case MoveNext:
        if (current >= 0 && rect.bottom() > room && rect.top() < room / 2) {
            bar->setValue(bar->value() + 3 * step);
        } else {
            row = current + 1;
        }
        break;
    case MovePageUp:
        bar->setValue(bar->value() - bar->pageStep());
        row = m_y < 0 ? m_row + 1 : m_row;
        break;
    case MovePageDown:
        bar->setValue(bar->value() + bar->pageStep());
        row = bar->value() == bar->maximum() ? count - 1 : m_y < 0 ? m_row + 1 : m_row;
        break;
    }
    return m_model->index(std::clamp(row, 0, count - 1));
}

void ChunkListView::setSelection(const QRect& rect, QItemSelectionModel::SelectionFlags flags) {
    QItemSelection selection;
    if (m_heights.count() > 0) {
        const std::int64_t origin = m_heights.top(m_row) - m_y;
        const QRect area = rect.normalized();
        selection.select(m_model->index(m_heights.rowAt(origin + area.top())),
                         m_model->index(m_heights.rowAt(origin + area.bottom())));
    }
    selectionModel()->select(selection, flags);
}

QRegion ChunkListView::visualRegionForSelection(const QItemSelection& selection) const {
    QRegion region;
    for (const QItemSelectionRange& range : selection) {
        const QRect first = visualRect(m_model->index(range.top()));
        const QRect last = visualRect(m_model->index(range.bottom()));
        region += first.united(last).intersected(viewport()->rect());
    }
    return region;
}

// What the user sees and does.

void ChunkListView::paintEvent(QPaintEvent* event) {
    QPainter painter(viewport());
    painter.fillRect(event->rect(), Theme::current().colors().window);
    std::int64_t y = m_y;
    for (int row = m_row; row < m_heights.count() && y < viewport()->height(); ++row) {
        const QRect rect(0, static_cast<int>(y), rowWidth(), m_heights.height(row));
        y += rect.height();
        if (rect.intersects(event->rect())) {
            painter.setClipRect(rect.intersected(event->rect()));
            m_delegate->paint(&painter, optionFor(row, rect), m_model->index(row));
        }
    }
}

void ChunkListView::setMarkedWords(const QString& words) {
    m_delegate->setMarkedWords(words);
    viewport()->update();
}

QString ChunkListView::selectedTexts() const {
    QModelIndexList selected = selectionModel()->selectedIndexes();
    std::sort(selected.begin(), selected.end());
    QString texts;
    for (const QModelIndex& index : selected) {
        if (m_model->kindOf(index.row()) == ChunkListModel::RowKind::card) {
            texts += (texts.isEmpty() ? QString() : QStringLiteral("\n\n")) +
                     toQt(m_model->cardOf(index.row()).chunk.text);
        }
    }
    return texts;
}

void ChunkListView::copy() const {
    if (const QString texts = selectedTexts(); !texts.isEmpty()) {
        QGuiApplication::clipboard()->setText(texts);
    }
}

void ChunkListView::keyPressEvent(QKeyEvent* event) {
    const QModelIndex current = currentIndex();
    if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) &&
               current.isValid() &&
               m_model->kindOf(current.row()) == ChunkListModel::RowKind::card) {
        Q_EMIT opened(current.row());
    } else {
        QAbstractItemView::keyPressEvent(event);
    }
}

void ChunkListView::contextMenuEvent(QContextMenuEvent* event) {
    const bool isByKey = event->reason() == QContextMenuEvent::Keyboard;
    const QModelIndex index = isByKey ? currentIndex() : indexAt(event->pos());
    if (!index.isValid() || m_model->kindOf(index.row()) != ChunkListModel::RowKind::card) {
        return;
    }
    const QPoint place =
        isByKey
            ? viewport()->mapToGlobal(visualRect(index).intersected(viewport()->rect()).center())
            : event->globalPos();
    auto* menu = new QMenu(this);
    menu->setObjectName(QStringLiteral("index.menu"));
    menu->setAttribute(Qt::WA_DeleteOnClose);
    const auto add = [menu, this](const char* name, const QString& text, auto action) {
        menu->addAction(text, this, action)->setObjectName(QString::fromUtf8(name));
    };
    const QPersistentModelIndex chosen = index;
    add("index.menu.open", tr("Read Chunk\u2026"), [this, chosen] {
        if (chosen.isValid()) {
            Q_EMIT opened(chosen.row());
        }
    });
    menu->addSeparator();
    add("index.menu.copy", tr("Copy Text"), [this] { copy(); });
    add("index.menu.copyCard", tr("Copy Card"), [this, chosen] {
        if (chosen.isValid()) {
            QGuiApplication::clipboard()->setText(chosen.data().toString());
        }
    });
    menu->popup(place);
}

} // namespace ombrel
