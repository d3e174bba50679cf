#pragma once

#include "shell/NavigatorModel.h"
#include "shell/StateView.h"

#include <optional>

class QLineEdit;
class QListView;
class QPushButton;
class QStackedWidget;

namespace ombrel {

class EmptyState;
class SegmentedControl;
class StudioServices;

// The list at the side of the window: flows, agents, tools and RAG indexes, one kind at a time.
class NavigatorView final : public StateView {
    Q_OBJECT

  public:
    NavigatorView(std::shared_ptr<AppState> state, StudioServices& services,
                  QWidget* parent = nullptr);
    // Puts the keyboard into the filter.
    void focusFilter();

  protected:
    void refresh() override;

  private:
    struct Deletion {
        NavigatorSelection selection;
        QString name;
    };

    void setKind(Navigator kind);
    void add();
    void openMenu(const QPoint& where);
    void duplicate(const NavigatorSelection& selection);
    void askToDelete(const NavigatorModel::Item& item);
    void remove(const NavigatorSelection& selection);
    bool canDelete(const NavigatorSelection& selection) const;
    void choose(const QModelIndex& index);

    StudioServices& m_services;
    Navigator m_kind = Navigator::rags;
    NavigatorSelection m_followed; // the selection that the kind was brought into line with last
    std::optional<Deletion> m_pendingDeletion;
    bool m_ignoreNextSelectionChange = false;
    SegmentedControl* m_kinds;
    QLineEdit* m_filter;
    NavigatorModel* m_model;
    QListView* m_list;
    EmptyState* m_empty;
    QStackedWidget* m_body;
    QPushButton* m_add;
};

} // namespace ombrel
