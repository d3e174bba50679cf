#pragma once

#include "core/AppTab.h"
#include "shell/StateView.h"
#include "shell/design/PageHeader.h"

#include <QVBoxLayout>

#include <memory>

namespace ombrel {

class StudioServices;

// One tab of a RAG index. Its header with the tab's title and subtitle is there; the derived class
// fills `content()` in its constructor and shows the state in `refresh`. A tab lives as long as its
// window, and shows whichever RAG index is the current one. The object name is "tab." and the raw
// value of the tab in lower case.
class TabPage : public StateView {
    Q_OBJECT

  public:
    enum class Body {
        scrolls, // the page scrolls as a whole: forms and reports
        fills,   // the content has the height of the window and scrolls inside: large lists
    };

    AppTab tab() const { return m_tab; }

  protected:
    TabPage(AppTab tab, Body body, std::shared_ptr<AppState> state, StudioServices& services,
            QWidget* parent);

    PageHeader* header() const { return m_header; }
    QVBoxLayout* content() const { return m_content; }
    StudioServices& services() const { return m_services; }

  private:
    AppTab m_tab;
    StudioServices& m_services;
    PageHeader* m_header;
    QVBoxLayout* m_content;
};

// The page of a tab.
TabPage* makeTabPage(AppTab tab, std::shared_ptr<AppState> state, StudioServices& services,
                     QWidget* parent);

// What the header says below the tab's title.
QString pageSubtitle(AppTab tab);

} // namespace ombrel
