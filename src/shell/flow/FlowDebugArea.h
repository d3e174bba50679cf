#pragma once

#include "flows/FlowDebugTabs.h"
#include "shell/StateView.h"

#include <memory>
#include <vector>

class QFrame;
class QPushButton;
class QShortcut;
class QStackedWidget;
class QToolButton;

namespace ombrel {

class Badge;
class ChatPage;
class ConsolePage;
class DebugAreaHandle;
class ElidedLabel;
class IssuesPage;
class MessageBar;
class SegmentedControl;
class StartInputForm;
class StudioServices;
class TracePage;

// The area below the canvas of a flow: the flow is run or talked to here, and the run followed. It
// has a height of its own, which the user drags or types, and can be folded to its bar; both are
// remembered. Put it below what it belongs to, without a splitter.
class FlowDebugArea final : public StateView {
    Q_OBJECT

  public:
    using Tab = FlowDebugTabs::Tab;

    FlowDebugArea(std::shared_ptr<AppState> state, StudioServices& services, Uuid flowID,
                  QWidget* parent = nullptr);

    Tab selectedTab() const { return m_tabs.selected; }
    void selectTab(Tab tab);
    bool isExpanded() const { return m_isExpanded; }
    void setExpanded(bool expanded);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    // Its height is the chosen one, however the texts in it wrap.
    bool hasHeightForWidth() const override { return false; }

  Q_SIGNALS:
    // The user wants to see a node of the flow.
    void nodeChosen(ombrel::Uuid nodeID);

  protected:
    void refresh() override;

  private:
    void fillBar();
    void fillBody();
    void showExpanded();
    void showTab();
    void followRun();
    void run();
    void send(const QString& message);
    void resizeBy(int pixels);

    StudioServices& m_services;
    Uuid m_flowID;
    FlowDebugTabs m_tabs;
    bool m_wasRunning;
    bool m_isExpanded;
    int m_height; // of the pages
    DebugAreaHandle* m_handle;
    QFrame* m_bar;
    QToolButton* m_toggle;
    SegmentedControl* m_segments;
    ElidedLabel* m_status;
    Badge* m_phase;
    Badge* m_outcome;
    QPushButton* m_run;
    QShortcut* m_runKey;
    QPushButton* m_clear;
    MessageBar* m_message;
    QWidget* m_body;
    StartInputForm* m_input;
    QFrame* m_divider = nullptr;
    QStackedWidget* m_pages;
    ChatPage* m_chat;
    TracePage* m_trace;
    ConsolePage* m_console;
    IssuesPage* m_issues;
    Subscription m_running;
};

} // namespace ombrel
