#pragma once

#include "shell/StateView.h"

#include <memory>

class QListView;
class QStackedLayout;
class QToolButton;

namespace ombrel {

class ConsoleModel;

// The console of the last run. It follows the end, unless the user reads further up.
class ConsolePage final : public StateView {
    Q_OBJECT

  public:
    explicit ConsolePage(std::shared_ptr<AppState> state, QWidget* parent = nullptr);

  protected:
    void refresh() override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    bool isAtEnd() const;
    void goToEnd();
    void showJump();
    void copySelected();

    ConsoleModel* m_model;
    QListView* m_list;
    QToolButton* m_jump;
    QStackedLayout* m_stack;
    bool m_follows = true;
};

} // namespace ombrel
