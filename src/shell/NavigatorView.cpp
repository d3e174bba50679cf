#include "shell/NavigatorView.h"

#include "shell/QtText.h"
#include "shell/StudioServices.h"
#include "shell/TwoLineDelegate.h"
#include "shell/design/Button.h"
#include "shell/design/EmptyState.h"
#include "shell/design/Icon.h"
#include "shell/design/Named.h"
#include "shell/design/Prompt.h"
#include "shell/design/SegmentedControl.h"
#include "shell/design/Spacing.h"
#include "shell/design/Theme.h"

#include <QItemSelectionModel>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QPointer>
#include <QShortcut>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <utility>

namespace ombrel {

namespace {

QString explanationOf(Navigator kind) {
    switch (kind) {
    case Navigator::flows:
        return NavigatorView::tr(
            "A flow wires agents, tools and branches into one runnable pipeline.");
    case Navigator::agents:
        return NavigatorView::tr(
            "An agent is a model with instructions, a typed input and a typed output.");
    case Navigator::tools:
        return NavigatorView::tr("A tool is a function an agent can call, with typed arguments.");
    case Navigator::rags:
        return NavigatorView::tr(
            "A RAG index holds your sources, chunked and embedded for retrieval.");
    }
    return {};
}

QString addTextOf(Navigator kind) {
    switch (kind) {
    case Navigator::flows:
        return NavigatorView::tr("New Flow");
    case Navigator::agents:
        return NavigatorView::tr("New Agent");
    case Navigator::tools:
        return NavigatorView::tr("New Tool");
    case Navigator::rags:
        return NavigatorView::tr("New RAG");
    }
    return {};
}

} // namespace

NavigatorView::NavigatorView(std::shared_ptr<AppState> shownState, StudioServices& services,
                             QWidget* parent)
    : StateView(std::move(shownState), parent), m_services(services),
      m_kind(navigatorOf(state().selectedNavigatorItem())),
      m_followed(state().selectedNavigatorItem()),
      m_kinds(named(new SegmentedControl, QStringLiteral("navigator.kinds"), tr("Kind"))),
      m_filter(named(new QLineEdit, QStringLiteral("navigator.filter"), tr("Filter"))),
      m_model(new NavigatorModel(this)),
      m_list(named(new QListView, QStringLiteral("navigator.list"), tr("Navigator"))),
      m_empty(new EmptyState(iconOf(Navigator::rags), {})), m_body(new QStackedWidget),
      m_add(named(makeButton({}, ButtonKind::plain), QStringLiteral("navigator.add"), tr("Add"))) {
    setObjectName(QStringLiteral("navigator"));
    setAutoFillBackground(true);
    setMinimumWidth(248);
    setMaximumWidth(420);
    const std::string stored = fromQt(services.settings().navigatorSelectedNavigator());
    for (const auto& [kind, label] : rawValues(Navigator{})) {
        m_kinds->add(toQt(label).toLower(), toQt(label));
        if (label == stored) {
            m_kind = kind;
        }
    }
    m_filter->setPlaceholderText(tr("Filter"));
    m_filter->setClearButtonEnabled(true);
    m_filter->addAction(themeIcon(QStringLiteral("search")), QLineEdit::LeadingPosition);
    m_list->setModel(m_model);
    m_list->setItemDelegate(new TwoLineDelegate(m_list));
    m_list->setContextMenuPolicy(Qt::CustomContextMenu);
    m_list->setMouseTracking(true);
    m_list->setUniformItemSizes(true);
    m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_list->setSelectionMode(QAbstractItemView::SingleSelection);
    m_list->viewport()->setAutoFillBackground(false);
    m_empty->setObjectName(QStringLiteral("navigator.empty"));
    m_body->addWidget(m_list);
    m_body->addWidget(m_empty);
    m_add->setIcon(themeIcon(QStringLiteral("plus"), Tone::accent));

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(spacing::medium, spacing::medium, spacing::medium, spacing::small);
    column->setSpacing(spacing::small);
    column->addWidget(m_kinds);
    column->addWidget(m_filter);
    column->addWidget(m_body, 1);
    column->addWidget(m_add, 0, Qt::AlignLeft);

    connect(m_kinds, &SegmentedControl::chosen, this, [this](int index) {
        m_followed = state().selectedNavigatorItem(); // what the user chose last wins
        setKind(static_cast<Navigator>(index));
    });
    connect(m_filter, &QLineEdit::textChanged, this, [this] { refreshLater(); });
    connect(m_add, &QPushButton::clicked, this, &NavigatorView::add);
    connect(m_list, &QWidget::customContextMenuRequested, this, &NavigatorView::openMenu);
    connect(m_list->selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this](const QModelIndex& current) { choose(current); });
    auto* del = new QShortcut(QKeySequence::Delete, m_list, nullptr, nullptr, Qt::WidgetShortcut);
    connect(del, &QShortcut::activated, this, [this] {
        if (const auto* item = m_model->item(m_list->currentIndex())) {
            askToDelete(*item);
        }
    });
    const auto applyTheme = [this] {
        QPalette colored = palette();
        colored.setColor(QPalette::Window, Theme::current().colors().sidebar);
        setPalette(colored);
    };
    connect(&Theme::current(), &Theme::changed, this, applyTheme);
    applyTheme();
    watchNavigatorItem();
    watchIndex();
    watch(state().agents);
    watch(state().tools);
    watch(state().flows);
}

void NavigatorView::focusFilter() {
    m_filter->setFocus();
    m_filter->selectAll();
}

void NavigatorView::setKind(Navigator kind) {
    if (m_kind != kind) {
        m_kind = kind;
        m_services.settings().setNavigatorSelectedNavigator(toQt(rawValue(kind)));
    }
    refreshLater();
}

void NavigatorView::refresh() {
    const NavigatorSelection& selected = state().selectedNavigatorItem();
    if (!(selected == m_followed)) {
        m_followed = selected;
        setKind(navigatorOf(selected));
    }
    m_kinds->setCurrentIndex(static_cast<int>(m_kind));
    m_ignoreNextSelectionChange = true;
    m_model->show(state(), m_kind, m_filter->text());
    const QModelIndex row = m_model->indexOf(selected);
    if (row.isValid()) {
        m_list->setCurrentIndex(row);
    } else {
        m_list->selectionModel()->clear();
    }
    m_ignoreNextSelectionChange = false;
    // A filter that leaves nothing shows no row; a kind without things says what they are.
    const bool isEmpty = m_model->rowCount() == 0 && m_filter->text().isEmpty();
    if (isEmpty) {
        m_empty->setIcon(iconOf(m_kind));
        m_empty->setTexts(tr("No %1 yet").arg(toQt(rawValue(m_kind))), explanationOf(m_kind));
    }
    m_body->setCurrentWidget(isEmpty ? static_cast<QWidget*>(m_empty) : m_list);
    m_add->setText(addTextOf(m_kind));
    m_add->setAccessibleName(addTextOf(m_kind));
}

void NavigatorView::choose(const QModelIndex& index) {
    const auto* item = m_model->item(index);
    if (!item || m_ignoreNextSelectionChange) {
        return;
    }
    const NavigatorSelection selection = item->selection;
    m_followed = selection;
    if (const auto* rag = std::get_if<NavigatorSelection::Rag>(&selection.value)) {
        state().selectRAGIndex(rag->id);
    } else {
        state().setSelectedNavigatorItem(selection);
    }
}

void NavigatorView::add() {
    m_filter->clear();
    switch (m_kind) {
    case Navigator::flows:
        state().addFlow();
        break;
    case Navigator::agents:
        state().addAgent();
        break;
    case Navigator::tools:
        state().addTool();
        break;
    case Navigator::rags:
        state().addRAGIndex();
        break;
    }
}

void NavigatorView::openMenu(const QPoint& where) {
    const auto* item = m_model->item(m_list->indexAt(where));
    if (!item) {
        return;
    }
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->setObjectName(QStringLiteral("navigator.menu"));
    auto* copy = menu->addAction(themeIcon(QStringLiteral("copy")), tr("Duplicate"));
    copy->setObjectName(QStringLiteral("navigator.duplicate"));
    auto* del = menu->addAction(themeIcon(QStringLiteral("trash")), tr("Delete"));
    del->setObjectName(QStringLiteral("navigator.delete"));
    del->setEnabled(canDelete(item->selection));
    connect(copy, &QAction::triggered, this,
            [this, selection = item->selection] { duplicate(selection); });
    connect(del, &QAction::triggered, this, [this, held = *item] { askToDelete(held); });
    menu->popup(m_list->viewport()->mapToGlobal(where));
}

void NavigatorView::duplicate(const NavigatorSelection& selection) {
    const auto& value = selection.value;
    if (const auto* flow = std::get_if<NavigatorSelection::Flow>(&value)) {
        state().duplicateFlow(flow->id);
    } else if (const auto* agent = std::get_if<NavigatorSelection::Agent>(&value)) {
        state().duplicateAgent(agent->id);
    } else if (const auto* tool = std::get_if<NavigatorSelection::Tool>(&value)) {
        state().duplicateTool(tool->id);
    } else if (const auto* rag = std::get_if<NavigatorSelection::Rag>(&value)) {
        state().duplicateRAGIndex(rag->id);
    }
}

bool NavigatorView::canDelete(const NavigatorSelection& selection) const {
    // A project always keeps one index.
    return !std::holds_alternative<NavigatorSelection::Rag>(selection.value) ||
           state().ragIndexes->size() > 1;
}

void NavigatorView::askToDelete(const NavigatorModel::Item& item) {
    if (!canDelete(item.selection)) {
        return;
    }
    m_pendingDeletion = Deletion{item.selection, item.title};
    const Confirmation question{fromQt(tr("Delete \"%1\"?").arg(item.title)),
                                fromQt(tr("You can undo this with \u2318Z.")), fromQt(tr("Delete")),
                                fromQt(tr("Cancel"))};
    confirm(window(), question, [guarded = QPointer<NavigatorView>(this)] {
        if (guarded && guarded->m_pendingDeletion) {
            guarded->remove(std::exchange(guarded->m_pendingDeletion, std::nullopt)->selection);
        }
    });
}

void NavigatorView::remove(const NavigatorSelection& selection) {
    const auto& value = selection.value;
    if (const auto* flow = std::get_if<NavigatorSelection::Flow>(&value)) {
        state().deleteFlow(flow->id);
    } else if (const auto* agent = std::get_if<NavigatorSelection::Agent>(&value)) {
        state().deleteAgent(agent->id);
    } else if (const auto* tool = std::get_if<NavigatorSelection::Tool>(&value)) {
        state().deleteTool(tool->id);
    } else if (const auto* rag = std::get_if<NavigatorSelection::Rag>(&value)) {
        state().deleteRAGIndex(rag->id);
    }
}

} // namespace ombrel
