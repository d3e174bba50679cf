#include "shell/flow/ConsolePage.h"

#include "flows/FlowDebugTabs.h"
#include "shell/QtText.h"
#include "shell/design/Button.h"
#include "shell/design/EmptyState.h"
#include "shell/design/Named.h"
#include "shell/design/Spacing.h"
#include "shell/design/Theme.h"
#include "shell/flow/ConsoleDelegate.h"
#include "shell/flow/ConsoleModel.h"

#include <QAction>
#include <QClipboard>
#include <QGuiApplication>
#include <QListView>
#include <QScrollBar>
#include <QStackedLayout>
#include <QToolButton>

#include <algorithm>
#include <utility>

namespace ombrel {

ConsolePage::ConsolePage(std::shared_ptr<AppState> shownState, QWidget* parent)
    : StateView(std::move(shownState), parent), m_model(new ConsoleModel(this)),
      m_list(named(new QListView, QStringLiteral("debug.console"), tr("Console"))),
      m_jump(named(makeIconButton(QStringLiteral("arrow-down"), tr("Go to the end"), m_list),
                   QStringLiteral("debug.console.end"), tr("Go to the end"))),
      m_stack(new QStackedLayout(this)) {
    m_list->setItemDelegate(new ConsoleDelegate(*m_model, m_list));
    m_list->setModel(m_model);
    m_list->setUniformItemSizes(true);
    m_list->setSelectionMode(QListView::ExtendedSelection);
    m_list->setVerticalScrollMode(QListView::ScrollPerPixel);
    m_list->setHorizontalScrollMode(QListView::ScrollPerPixel);
    m_list->setEditTriggers(QListView::NoEditTriggers);
    m_list->setContextMenuPolicy(Qt::ActionsContextMenu);
    auto* copy = new QAction(tr("Copy"), m_list);
    copy->setObjectName(QStringLiteral("debug.console.copy"));
    connect(copy, &QAction::triggered, this, &ConsolePage::copySelected);
    auto* all = new QAction(tr("Select All"), m_list);
    connect(all, &QAction::triggered, m_list, &QListView::selectAll);
    m_list->addActions({copy, all});
    m_stack->addWidget(new EmptyState(QStringLiteral("terminal"), toQt(noRunText)));
    m_stack->addWidget(m_list);
    m_jump->hide();

    QScrollBar* const bar = m_list->verticalScrollBar();
    connect(m_jump, &QToolButton::clicked, this, [this] {
        m_follows = true;
        goToEnd();
    });
    // New lines and another size move the range; only the user moves the value away from the end.
    connect(bar, &QScrollBar::rangeChanged, this, [this] {
        if (m_follows) {
            goToEnd();
        }
        showJump();
    });
    connect(bar, &QScrollBar::valueChanged, this, [this] {
        m_follows = isAtEnd();
        showJump();
    });
    connect(&Theme::current(), &Theme::changed, m_list, [this] { m_list->viewport()->update(); });
    watch(state().flowConsoleLines);
}

void ConsolePage::refresh() {
    const auto& lines = *state().flowConsoleLines;
    if (lines.size() <= 1) {
        m_follows = true; // another run
    }
    const bool follows = m_follows;
    m_model->show(lines);
    m_stack->setCurrentIndex(lines.empty() ? 0 : 1);
    m_follows = follows;
    if (m_follows) {
        goToEnd();
    }
    showJump();
}

bool ConsolePage::isAtEnd() const {
    const QScrollBar* bar = m_list->verticalScrollBar();
    return bar->value() >= bar->maximum();
}

void ConsolePage::goToEnd() {
    QScrollBar* const bar = m_list->verticalScrollBar();
    bar->setValue(bar->maximum());
}

void ConsolePage::showJump() {
    m_jump->setVisible(!m_follows && !isAtEnd());
    const QRect room = m_list->viewport()->geometry();
    const QSize size = m_jump->sizeHint();
    m_jump->setGeometry(room.right() - size.width() - spacing::small,
                        room.bottom() - size.height() - spacing::small, size.width(),
                        size.height());
    m_jump->raise();
}

void ConsolePage::resizeEvent(QResizeEvent* event) {
    StateView::resizeEvent(event);
    showJump();
}

void ConsolePage::copySelected() {
    QModelIndexList rows = m_list->selectionModel()->selectedIndexes();
    std::ranges::sort(rows, {}, &QModelIndex::row);
    QStringList texts;
    for (const QModelIndex& index : std::as_const(rows)) {
        texts.append(toQt(m_model->line(index.row()).text));
    }
    QGuiApplication::clipboard()->setText(texts.join(QLatin1Char('\n')));
}

} // namespace ombrel
