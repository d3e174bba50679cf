#include "flows/FlowDebugTabs.h"
#include "tests/flows/FlowWorkspace.h"

#include <gtest/gtest.h>

namespace ombrel {
namespace {

using Tab = FlowDebugTabs::Tab;
using test::FlowWorkspace;

TEST(FlowDebugTabs, AConversationalFlowHasTheChatInFrontOfTheOthers) {
    EXPECT_EQ(FlowDebugTabs::of(FlowKind::singleShot),
              (std::vector{Tab::trace, Tab::console, Tab::issues}));
    EXPECT_EQ(FlowDebugTabs::of(FlowKind::conversational),
              (std::vector{Tab::chat, Tab::trace, Tab::console, Tab::issues}));
    EXPECT_STREQ(FlowDebugTabs::title(Tab::chat), "Chat");
    EXPECT_STREQ(FlowDebugTabs::title(Tab::trace), "Trace");
    EXPECT_STREQ(FlowDebugTabs::title(Tab::console), "Console");
    EXPECT_STREQ(FlowDebugTabs::title(Tab::issues), "Issues");
}

TEST(FlowDebugTabs, FollowARunToTheConsoleAndToTheTraceWhenItSucceeded) {
    FlowDebugTabs tabs(FlowKind::singleShot);
    EXPECT_EQ(tabs.selected, Tab::trace);
    tabs.runBegan();
    EXPECT_EQ(tabs.selected, Tab::console);
    EXPECT_TRUE(tabs.switchedToConsoleForRun);
    tabs.runEnded(FlowRunOutcome());
    EXPECT_EQ(tabs.selected, Tab::trace);
    EXPECT_FALSE(tabs.switchedToConsoleForRun);
}

TEST(FlowDebugTabs, StayInTheConsoleAfterARunThatFailed) {
    for (const auto& outcome :
         {std::optional<FlowRunOutcome>(), std::optional(FlowRunOutcome::failed("no"))}) {
        FlowDebugTabs tabs(FlowKind::singleShot);
        tabs.runBegan();
        tabs.runEnded(outcome);
        EXPECT_EQ(tabs.selected, Tab::console);
        EXPECT_FALSE(tabs.switchedToConsoleForRun);
    }
}

TEST(FlowDebugTabs, LeaveAloneWhatTheUserChose) {
    FlowDebugTabs tabs(FlowKind::singleShot);
    tabs.runBegan();
    tabs.selected = Tab::issues;
    tabs.runEnded(FlowRunOutcome());
    EXPECT_EQ(tabs.selected, Tab::issues);
    tabs.selected = Tab::console; // by the user, not for the run
    tabs.runBegan();
    tabs.runEnded(FlowRunOutcome());
    EXPECT_EQ(tabs.selected, Tab::console);
}

TEST(FlowDebugTabs, NeverLeaveTheChatUnlessTheFlowLosesIt) {
    FlowDebugTabs tabs(FlowKind::conversational);
    EXPECT_EQ(tabs.selected, Tab::chat);
    tabs.runBegan();
    EXPECT_EQ(tabs.selected, Tab::chat);
    tabs.runEnded(FlowRunOutcome());
    EXPECT_EQ(tabs.selected, Tab::chat);
    tabs.kindIs(FlowKind::conversational);
    EXPECT_EQ(tabs.selected, Tab::chat);
    tabs.kindIs(FlowKind::singleShot);
    EXPECT_EQ(tabs.selected, Tab::trace);
    tabs.kindIs(FlowKind::conversational);
    EXPECT_EQ(tabs.selected, Tab::trace);
}

TEST(FlowDebugTexts, TheRunButtonSaysWhatKeepsAFlowFromRunning) {
    FlowWorkspace workspace;
    EXPECT_TRUE(canStartRun(*workspace.state, workspace.flowID));
    EXPECT_EQ(runHelp(*workspace.state, workspace.flowID), "Run this flow (U1)");
    workspace->isRunningFlow = true;
    EXPECT_FALSE(canStartRun(*workspace.state, workspace.flowID));
    EXPECT_EQ(runHelp(*workspace.state, workspace.flowID), "Run this flow (U1)");
    workspace->isRunningFlow = false;
    workspace.editFlow([](Flow& flow) { flow.edges.clear(); });
    EXPECT_FALSE(canStartRun(*workspace.state, workspace.flowID));
    EXPECT_EQ(runHelp(*workspace.state, workspace.flowID),
              "Fix the errors in the Issues tab first");
}

TEST(FlowDebugTexts, TellHowARunGoesAndWent) {
    FlowWorkspace workspace;
    EXPECT_EQ(runStatus(*workspace.state), "");
    EXPECT_EQ(traceNote(*workspace.state),
              "Press Run to follow along here: generating the flow's Swift code, compiling it, "
              "then running it on the on-device model.");
    workspace->isRunningFlow = true;
    EXPECT_EQ(runStatus(*workspace.state), "Run in progress — the Console tab shows each step.");
    EXPECT_EQ(traceNote(*workspace.state),
              "Running… the trace appears here when the run finishes. The Console tab shows each "
              "step as it happens.");
    workspace->isRunningFlow = false;
    workspace->lastFlowRunOutcome = FlowRunOutcome();
    EXPECT_EQ(runStatus(*workspace.state), "Succeeded");
    EXPECT_EQ(traceNote(*workspace.state), "");
    workspace->lastFlowRunOutcome = FlowRunOutcome::failed("no");
    EXPECT_EQ(runStatus(*workspace.state), "Failed");
    EXPECT_EQ(traceNote(*workspace.state), "");
}

TEST(FlowDebugTexts, AResultIsShownWithoutItsMarkAndWithItsLinesApart) {
    EXPECT_EQ(shownResult("RESULT: .done: one\u2028two"), ".done: one\ntwo");
    EXPECT_EQ(shownResult("RESULT:done"), "RESULT:done");
    EXPECT_EQ(shownResult("a\u2028\u2028b\u2028"), "a\n\nb\n");
    EXPECT_EQ(shownResult(""), "");
}

} // namespace
} // namespace ombrel
