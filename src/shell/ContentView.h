#pragma once

#include "shell/StateView.h"

class QStackedWidget;

namespace ombrel {

class EmptyState;
class NavigatorView;
class RagView;
class StudioServices;
class SummaryPage;

// The content of a document window: the navigator, and beside it what is selected in it.
class ContentView final : public StateView {
    Q_OBJECT

  public:
    ContentView(std::shared_ptr<AppState> state, StudioServices& services,
                QWidget* parent = nullptr);
    NavigatorView* navigator() const { return m_navigator; }

  protected:
    void refresh() override;

  private:
    NavigatorView* m_navigator;
    QStackedWidget* m_detail;
    RagView* m_rag;
    SummaryPage* m_summary;
    EmptyState* m_notFound;
};

} // namespace ombrel
