#pragma once

#include "shell/StateView.h"

#include <array>

class QStackedWidget;

namespace ombrel {

class FileDropArea;
class StudioServices;
class TabPage;
class TextField;
class TextLabel;

// The current RAG index: its name and counts, the top bar, and the page of the selected tab. A page
// is made when it is first shown. Files that are dropped anywhere on it become sources.
class RagView final : public StateView {
    Q_OBJECT

  public:
    RagView(std::shared_ptr<AppState> state, StudioServices& services, QWidget* parent = nullptr);

  protected:
    void refresh() override;

  private:
    TabPage* page(AppTab tab);

    StudioServices& m_services;
    TextField* m_name;
    TextLabel* m_counts;
    QStackedWidget* m_pages;
    std::array<TabPage*, 7> m_made{};
    FileDropArea* m_dropArea;
};

} // namespace ombrel
