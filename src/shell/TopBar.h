#pragma once

#include "shell/StateView.h"

class QPushButton;
class QTimer;

namespace ombrel {

class ElidedLabel;
class IconView;
class SegmentedControl;
class TextLabel;

// The tabs of a RAG index, how its build stands, its totals, and the button that builds. The title
// stands at its head.
class TopBar final : public StateView {
    Q_OBJECT

  public:
    TopBar(std::shared_ptr<AppState> state, QWidget* title, QWidget* parent = nullptr);

  protected:
    void refresh() override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    SegmentedControl* m_tabs;
    IconView* m_mark;
    ElidedLabel* m_status;
    TextLabel* m_totals;
    QPushButton* m_build;
    QTimer* m_clock; // relative dates grow old
};

} // namespace ombrel
