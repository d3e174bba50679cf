#include "shell/NavigatorModel.h"

#include "shell/ThingTitle.h"
#include "shell/design/Icon.h"
#include "shell/design/LongText.h"

#include <algorithm>
#include <utility>

namespace ombrel {

namespace {

template <class Selection, class Thing>
void collect(std::vector<NavigatorModel::Item>& items, const std::vector<Thing>& things,
             const QString& filter) {
    for (const Thing& thing : things) {
        QString title = titleOf(thing);
        if (filter.isEmpty() || title.contains(filter, Qt::CaseInsensitive)) {
            items.push_back({{Selection{thing.id}}, std::move(title), detailOf(thing)});
        }
    }
}

std::vector<NavigatorModel::Item> itemsOf(const AppState& state, Navigator kind,
                                          const QString& filter) {
    std::vector<NavigatorModel::Item> items;
    switch (kind) {
    case Navigator::flows:
        collect<NavigatorSelection::Flow>(items, *state.flows, filter);
        break;
    case Navigator::agents:
        collect<NavigatorSelection::Agent>(items, *state.agents, filter);
        break;
    case Navigator::tools:
        collect<NavigatorSelection::Tool>(items, *state.tools, filter);
        break;
    case Navigator::rags:
        collect<NavigatorSelection::Rag>(items, *state.ragIndexes, filter);
        break;
    }
    return items;
}

} // namespace

Navigator navigatorOf(const NavigatorSelection& selection) {
    if (std::holds_alternative<NavigatorSelection::Flow>(selection.value)) {
        return Navigator::flows;
    }
    if (std::holds_alternative<NavigatorSelection::Agent>(selection.value)) {
        return Navigator::agents;
    }
    if (std::holds_alternative<NavigatorSelection::Tool>(selection.value)) {
        return Navigator::tools;
    }
    return Navigator::rags;
}

QString iconOf(Navigator kind) {
    switch (kind) {
    case Navigator::flows:
        return QStringLiteral("flow");
    case Navigator::agents:
        return QStringLiteral("agent");
    case Navigator::tools:
        return QStringLiteral("tool");
    case Navigator::rags:
        return QStringLiteral("rag");
    }
    return {};
}

int NavigatorModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_items.size());
}

QVariant NavigatorModel::data(const QModelIndex& index, int role) const {
    const Item* shown = item(index);
    if (!shown) {
        return {};
    }
    switch (role) {
    case titleRole:
    case Qt::AccessibleTextRole:
        return shown->title;
    case detailRole:
    case Qt::AccessibleDescriptionRole:
        return shown->detail;
    case Qt::ToolTipRole:
        return toolTipText(shown->title + QLatin1Char('\n') + shown->detail.left(400));
    case Qt::DecorationRole:
        return themeIcon(iconOf(m_kind));
    default:
        return {};
    }
}

void NavigatorModel::show(const AppState& state, Navigator kind, const QString& filter) {
    std::vector<Item> items = itemsOf(state, kind, filter);
    if (items == m_items && kind == m_kind) {
        return;
    }
    const bool sameThings =
        kind == m_kind &&
        std::ranges::equal(items, m_items, {}, &Item::selection, &Item::selection);
    if (sameThings) {
        m_items = std::move(items);
        Q_EMIT dataChanged(index(0), index(rowCount() - 1));
        return;
    }
    beginResetModel();
    m_kind = kind;
    m_items = std::move(items);
    endResetModel();
}

const NavigatorModel::Item* NavigatorModel::item(const QModelIndex& index) const {
    const auto row = static_cast<std::size_t>(index.row());
    return index.isValid() && row < m_items.size() ? &m_items[row] : nullptr;
}

QModelIndex NavigatorModel::indexOf(const NavigatorSelection& selection) const {
    const auto found = std::ranges::find(m_items, selection, &Item::selection);
    return found == m_items.end() ? QModelIndex()
                                  : index(static_cast<int>(found - m_items.begin()));
}

} // namespace ombrel
