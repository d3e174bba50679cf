#include "shell/tabs/SourceList.h"

#include "shell/design/Named.h"
#include "shell/design/Spacing.h"
#include "shell/design/Theme.h"
#include "shell/tabs/SourceDelegate.h"
#include "shell/tabs/SourcesModel.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMimeData>
#include <QUrl>

namespace ombrel {

SourceList::SourceList(QWidget* parent) : QTreeView(parent) {
    named(this, QStringLiteral("sources.list"), tr("Sources"));
    setItemDelegate(new SourceDelegate(this));
    setRootIsDecorated(false);
    setItemsExpandable(false);
    setUniformRowHeights(true);
    setAllColumnsShowFocus(true);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setContextMenuPolicy(Qt::CustomContextMenu);
    setMouseTracking(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setTabKeyNavigation(false);
    viewport()->setAutoFillBackground(false);
    setSortingEnabled(true);
    header()->setSectionsMovable(false);
    header()->setStretchLastSection(false);
    header()->setSortIndicatorClearable(true);
    header()->setSortIndicator(-1, Qt::AscendingOrder);
    header()->setHighlightSections(false);
    header()->setMinimumSectionSize(56);
}

void SourceList::fitColumns() {
    if (header()->count() <= SourcesModel::lastColumn) {
        return;
    }
    const QFontMetrics metrics(Theme::current().font(TextRole::body));
    const auto width = [&](const QString& widest) {
        return metrics.horizontalAdvance(widest) + 3 * spacing::small;
    };
    header()->setSectionResizeMode(QHeaderView::Fixed);
    header()->setSectionResizeMode(SourcesModel::document, QHeaderView::Stretch);
    header()->resizeSection(SourcesModel::type, width(QStringLiteral("PDF \u00b7 1,000 pp")));
    header()->resizeSection(SourcesModel::chunks, width(QStringLiteral("100,000")));
    header()->resizeSection(SourcesModel::tokens, width(QStringLiteral("1,000,000")));
    header()->resizeSection(SourcesModel::status, width(QStringLiteral("100 empty pages")));
}

void SourceList::resizeEvent(QResizeEvent* event) {
    QTreeView::resizeEvent(event);
    fitColumns();
}

void SourceList::keyPressEvent(QKeyEvent* event) {
    if (event->matches(QKeySequence::Delete) || event->key() == Qt::Key_Backspace) {
        Q_EMIT removeWanted();
    } else if (event->matches(QKeySequence::Paste)) {
        paste();
    } else {
        QTreeView::keyPressEvent(event);
        return;
    }
    event->accept();
}

void SourceList::paste() {
    const QMimeData* held = QGuiApplication::clipboard()->mimeData();
    if (!held) {
        return;
    }
    QStringList paths;
    const auto urls = held->urls();
    for (const QUrl& url : urls) {
        if (const QString path = url.toLocalFile(); !path.isEmpty()) {
            paths.append(path);
        }
    }
    if (!paths.isEmpty()) {
        Q_EMIT filesPasted(paths);
    } else if (!held->text().trimmed().isEmpty()) {
        Q_EMIT textPasted(held->text());
    }
}

} // namespace ombrel
