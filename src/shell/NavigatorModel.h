#pragma once

#include "core/AppState.h"

#include <QAbstractListModel>

#include <memory>
#include <vector>

namespace ombrel {

// The kinds of things that the navigator lists, in the order of its switch.
enum class Navigator { flows, agents, tools, rags };

constexpr auto rawValues(Navigator) {
    using enum Navigator;
    return std::array{RawValue<Navigator>{flows, "Flows"}, RawValue<Navigator>{agents, "Agents"},
                      RawValue<Navigator>{tools, "Tools"}, RawValue<Navigator>{rags, "RAGs"}};
}

// The kind of what is selected.
Navigator navigatorOf(const NavigatorSelection& selection);
// The icon of its things.
QString iconOf(Navigator kind);

// The things of one kind whose title holds the filter, in the order of the workspace.
class NavigatorModel final : public QAbstractListModel {
    Q_OBJECT

  public:
    // A row.
    struct Item {
        NavigatorSelection selection;
        QString title;
        QString detail;
        bool operator==(const Item&) const = default;
    };
    enum Role { titleRole = Qt::DisplayRole, detailRole = Qt::UserRole };

    using QAbstractListModel::QAbstractListModel;

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;

    // Shows the state as it is now. Rows that stay keep their place in views.
    void show(const AppState& state, Navigator kind, const QString& filter);
    const Item* item(const QModelIndex& index) const;
    // The row of a thing; invalid when it isn't listed.
    QModelIndex indexOf(const NavigatorSelection& selection) const;

  private:
    std::vector<Item> m_items;
    Navigator m_kind = Navigator::flows;
};

} // namespace ombrel
