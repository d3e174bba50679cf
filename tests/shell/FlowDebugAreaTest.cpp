#include "shell/flow/FlowDebugArea.h"
#include "flows/Conversation.h"
#include "flows/FlowRun.h"
#include "flows/FlowValidator.h"
#include "shell/Refresher.h"
#include "shell/design/LongTextView.h"
#include "shell/flow/FlowExportDialog.h"
#include "shell/flow/RunDetailPopover.h"
#include "tests/flows/FlowSamples.h"
#include "tests/flows/FlowWorkspace.h"
#include "tests/flows/ScriptedTools.h"
#include "tests/shell/Studio.h"

#include <QComboBox>
#include <QFileDialog>
#include <QListView>
#include <QPointer>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QShortcut>

namespace ombrel {
namespace {

using test::click;
using test::contentsOf;
using test::Drawing;
using test::find;
using test::isShown;
using test::pressKey;
using test::ScriptedTools;
using test::Studio;
using test::textOf;
using test::traceLine;
using test::type;
using Tab = FlowDebugTabs::Tab;

// Start, the agent "Writer" and an End.
Drawing support() {
    Drawing drawing;
    const Uuid writer = drawing.agent("Writer");
    drawing.connect(drawing.start(), writer);
    drawing.connect(writer, drawing.end());
    return drawing;
}

Drawing conversation() {
    Drawing drawing = support();
    drawing.flow.kind = FlowKind::conversational;
    return drawing;
}

// A window that shows a flow, with tools that do what the test says.
struct Debugging {
    explicit Debugging(const Drawing& drawing = support()) : window(studio.newDocument()) {
        window.resize(1300, 900);
        add(drawing);
        show(drawing.flow.id);
        area().setExpanded(true);
        studio.settle();
    }

    void add(const Drawing& drawing) {
        std::ranges::copy(drawing.agents, std::back_inserter(*state().agents.edit()));
        std::ranges::copy(drawing.tools, std::back_inserter(*state().tools.edit()));
        state().flows.edit()->push_back(drawing.flow);
    }
    void show(Uuid id) {
        flowID = id;
        state().setSelectedNavigatorItem({NavigatorSelection::Flow{id}});
        studio.settle();
    }
    void edit(const std::function<void(Flow&)>& write) {
        write(*findByID(*state().flows.edit(), flowID));
        settle();
    }
    AppState& state() { return *window.document().state(); }
    FlowDebugArea& area() { return find<FlowDebugArea>(window, "debug"); }
    QAbstractItemModel& rows(const char* list) { return *find<QListView>(window, list).model(); }
    std::string row(const char* list, int row, int role = Qt::DisplayRole) {
        return fromQt(rows(list).index(row, 0).data(role).toString());
    }
    std::string spoken(const char* list, int row) {
        return this->row(list, row, Qt::AccessibleTextRole);
    }
    bool isEnabled(const char* name) { return find<QWidget>(window, name).isEnabled(); }
    std::string toolTip(const char* name) { return fromQt(find<QWidget>(window, name).toolTip()); }
    void settle() {
        studio.settle();
        std::vector<QPointer<Refresher>> refreshers;
        for (Refresher* refresher : window.findChildren<Refresher*>()) {
            refreshers.emplace_back(refresher);
        }
        for (const auto& refresher : refreshers) {
            if (refresher) {
                refresher->now(); // views are refreshed at their own pace
            }
        }
        studio.settle();
    }
    void awaitEnd() {
        ASSERT_TRUE(studio.until([this] { return !*state().isRunningFlow; }));
        settle();
    }
    void run() {
        click(window, "debug.run");
        ASSERT_TRUE(studio.until([this] { return state().lastFlowRunOutcome->has_value(); }));
        awaitEnd();
    }
    void send(const QString& message) {
        type(window, "debug.message", message);
        settle();
        state().lastFlowRunOutcome = std::nullopt;
        click(window, "debug.send");
        ASSERT_TRUE(studio.until([this] { return state().lastFlowRunOutcome->has_value(); }));
        awaitEnd();
    }
    // The tool goes on until this file is there.
    std::filesystem::path goAhead() const { return tools.folder / "go-ahead"; }
    void setWaitingCLI(const std::string& rest) const {
        tools.setStudioCLI("echo '▸ Compiling…' >&2\nwhile [ ! -e " + goAhead().string() +
                           " ]; do sleep 0.02; done\n" + rest);
    }
    void beginRun() {
        click(window, "debug.run");
        ASSERT_TRUE(studio.until(
            [this] { return *state().flowRunPhase == std::optional<std::string>("Compiling…"); }));
        settle();
    }
    void letItEnd() {
        test::writeContents(goAhead(), "");
        awaitEnd();
    }
    // What the last run was asked for.
    std::string inputOfLastRun() const { return contentsOf(tools.folder / "input"); }
    void setKeepingCLI(const std::string& rest) const {
        tools.setStudioCLI("cp \"$1\" " + (tools.folder / "input").string() + "\necho run >> " +
                           (tools.folder / "runs").string() + "\n" + rest);
    }

    ScriptedTools tools;
    Studio studio;
    DocumentWindow& window;
    Uuid flowID;
};

const std::string goodRun = "echo '" + traceLine("flowStarted", "input: {}") + "'\necho '" +
                            traceLine("nodeEntered", "", R"(,"node":"Writer")") + "'\necho '" +
                            traceLine("nodeEntered", "", R"(,"node":"Ghost")") +
                            "'\necho 'RESULT: .done: one\u2028two'";

// Runs.

TEST(FlowDebugArea, RunsTheFlowAndShowsItsStepsAndItsResult) {
    Debugging debug;
    debug.tools.setStudioCLI("echo 'a word' >&2\n" + goodRun);
    EXPECT_EQ(textOf(debug.window, "debug.run"), "Run");
    EXPECT_EQ(debug.toolTip("debug.run"), "Run this flow (U1)");
    EXPECT_FALSE(isShown(debug.window, "debug.outcome"));
    EXPECT_EQ(textOf(find<QWidget>(debug.window, "debug.trace.note"), "empty.text"),
              "Press Run to follow along here: generating the flow's Swift code, compiling it, "
              "then running it on the on-device model.");
    debug.run();
    EXPECT_EQ(debug.area().selectedTab(), Tab::trace);
    ASSERT_EQ(debug.rows("debug.trace").rowCount(), 3);
    EXPECT_EQ(debug.row("debug.trace", 0), "5 ms  flowStarted  input: {}");
    EXPECT_EQ(debug.row("debug.trace", 1), "5 ms  nodeEntered  Writer  ");
    EXPECT_EQ(textOf(debug.window, "debug.trace.result"), ".done: one\ntwo");
    EXPECT_FALSE(isShown(debug.window, "debug.trace.problem"));
    EXPECT_EQ(textOf(debug.window, "debug.outcome"), "Succeeded");
    debug.area().selectTab(Tab::console);
    debug.settle();
    const int last = debug.rows("debug.console").rowCount() - 1;
    EXPECT_EQ(debug.rows("debug.console").rowCount(),
              static_cast<int>(debug.state().flowConsoleLines->size()));
    EXPECT_EQ(debug.row("debug.console", last), debug.state().flowConsoleLines->back().text);
}

TEST(FlowDebugArea, FollowsARunToTheConsoleAndBackToTheTrace) {
    Debugging debug;
    debug.setWaitingCLI(goodRun);
    debug.beginRun();
    EXPECT_EQ(debug.area().selectedTab(), Tab::console);
    EXPECT_TRUE(find<QAbstractButton>(debug.window, "debug.tabs.console").isChecked());
    EXPECT_EQ(textOf(debug.window, "debug.status"),
              "Run in progress — the Console tab shows each step.");
    EXPECT_EQ(textOf(debug.window, "debug.phase"), "Compiling…");
    EXPECT_FALSE(debug.isEnabled("debug.run"));
    click(debug.window, "debug.tabs.trace");
    click(debug.window, "debug.tabs.console");
    debug.letItEnd();
    EXPECT_EQ(debug.area().selectedTab(), Tab::trace);
    EXPECT_TRUE(debug.isEnabled("debug.run"));
    EXPECT_EQ(textOf(debug.window, "debug.status"), "");
    EXPECT_FALSE(isShown(debug.window, "debug.phase"));
}

TEST(FlowDebugArea, SaysInTheTraceTabThatARunGoesOn) {
    Debugging debug;
    debug.setWaitingCLI(goodRun);
    debug.beginRun();
    click(debug.window, "debug.tabs.trace");
    debug.settle();
    EXPECT_EQ(textOf(find<QWidget>(debug.window, "debug.trace.note"), "empty.text"),
              "Running… the trace appears here when the run finishes. The Console tab shows each "
              "step as it happens.");
    debug.letItEnd();
    EXPECT_EQ(debug.rows("debug.trace").rowCount(), 3);
}

TEST(FlowDebugArea, LeavesTheUserInTheConsoleWhenARunFails) {
    Debugging debug;
    debug.tools.setStudioCLI(goodRun + "\nexit 3");
    debug.run();
    EXPECT_EQ(debug.area().selectedTab(), Tab::console);
    EXPECT_EQ(textOf(debug.window, "debug.outcome"), "Failed");
    click(debug.window, "debug.tabs.trace");
    debug.settle();
    EXPECT_EQ(textOf(find<QWidget>(debug.window, "debug.trace.problem"), "bannerText"),
              "Run failed (exit 3) — see the console tab.");
    EXPECT_EQ(debug.rows("debug.trace").rowCount(), 0);
    EXPECT_FALSE(isShown(debug.window, "debug.trace.result"));
}

TEST(FlowDebugArea, LeavesTheTabThatTheUserChoseDuringARun) {
    Debugging debug;
    debug.setWaitingCLI(goodRun);
    debug.beginRun();
    click(debug.window, "debug.tabs.issues");
    debug.letItEnd();
    EXPECT_EQ(debug.area().selectedTab(), Tab::issues);
}

TEST(FlowDebugArea, CanNotRunAFlowWithErrorsAndSaysWhereTheyAre) {
    Debugging debug;
    debug.edit([](Flow& flow) { flow.edges.clear(); });
    EXPECT_FALSE(debug.isEnabled("debug.run"));
    EXPECT_EQ(debug.toolTip("debug.run"), "Fix the errors in the Issues tab first");
}

TEST(FlowDebugArea, TellsWhyARunFailedWhereItSaysThatItDid) {
    Debugging debug;
    debug.tools.setStudioCLI("exit 3");
    debug.run();
    EXPECT_EQ(debug.toolTip("debug.outcome"), "Run failed (exit 3) — see the console tab.");
    debug.tools.setStudioCLI(goodRun);
    debug.run();
    EXPECT_EQ(debug.toolTip("debug.outcome"), "");
}

TEST(FlowDebugArea, ShowsInTheConsoleWhyTheToolsCanNotBeBuilt) {
    Debugging debug;
    debug.tools.setSwift("echo 'error: no such module'\nexit 1");
    debug.run();
    EXPECT_EQ(debug.area().selectedTab(), Tab::console);
    const auto& lines = *debug.state().flowConsoleLines;
    const int count = debug.rows("debug.console").rowCount();
    ASSERT_EQ(count, static_cast<int>(lines.size()));
    ASSERT_GE(count, 4);
    EXPECT_EQ(debug.row("debug.console", count - 3), "  error: no such module");
    EXPECT_EQ(debug.spoken("debug.console", count - 2),
              "Failure: Ombrel's build tools didn't compile — see the output above.");
    EXPECT_EQ(lines.back().kind, FlowConsoleLine::Kind::failure);
    EXPECT_TRUE(
        lines.back().text.ends_with(": Couldn't build StudioCLI (exit 1) — see the console tab."));
}

TEST(FlowDebugArea, CtrlReturnRunsTheFlowFromAnywhereButNeverAConversation) {
    Debugging debug;
    debug.tools.setStudioCLI(goodRun);
    auto& key = find<QShortcut>(debug.window, "debug.runKey");
    EXPECT_EQ(key.context(), Qt::WindowShortcut);
    Q_EMIT key.activated();
    ASSERT_TRUE(debug.studio.until([&] { return debug.state().lastFlowRunOutcome->has_value(); }));
    debug.awaitEnd();
    EXPECT_TRUE(key.isEnabled());
    debug.edit([](Flow& flow) { flow.kind = FlowKind::conversational; });
    EXPECT_FALSE(key.isEnabled());
}

TEST(FlowDebugArea, TwoQuickClicksRunTheFlowOnce) {
    Debugging debug;
    debug.setKeepingCLI(goodRun);
    auto& run = find<QAbstractButton>(debug.window, "debug.run");
    run.click();
    run.click();
    ASSERT_TRUE(debug.studio.until([&] { return debug.state().lastFlowRunOutcome->has_value(); }));
    debug.awaitEnd();
    EXPECT_EQ(contentsOf(debug.tools.folder / "runs"), "run\n");
}

TEST(FlowDebugArea, ARunUnfoldsIt) {
    Debugging debug;
    debug.area().setExpanded(false);
    debug.tools.setStudioCLI(goodRun);
    debug.run();
    EXPECT_TRUE(debug.area().isExpanded());
}

TEST(FlowDebugArea, SurvivesAWindowThatIsClosedDuringARun) {
    Debugging debug;
    debug.setWaitingCLI("echo end >> " + (debug.tools.folder / "ended").string());
    debug.beginRun();
    debug.window.dismiss();
    debug.studio.settle();
    test::writeContents(debug.goAhead(), "");
    EXPECT_TRUE(
        debug.studio.until([&] { return std::filesystem::exists(debug.tools.folder / "ended"); }));
    debug.studio.settle();
    EXPECT_TRUE(debug.studio.application().documentWindows().isEmpty());
}

// The input of a single-shot run.

TEST(FlowDebugArea, HandsWhatWasTypedToTheRun) {
    Drawing drawing = support();
    drawing.flow.startInput = {test::property("request", PropertyKind::String{}),
                               test::property("count", PropertyKind::Int{})};
    Debugging debug(drawing);
    debug.setKeepingCLI(goodRun);
    type(debug.window, "debug.input.0", QStringLiteral("Hello"));
    type(debug.window, "debug.input.1", QStringLiteral("12a"));
    debug.run();
    EXPECT_NE(debug.inputOfLastRun().find(R"({\"count\":0,\"request\":\"Hello\"})"),
              std::string::npos)
        << debug.inputOfLastRun();
}

TEST(FlowDebugArea, SharesWhatWasTypedForFieldsOfOneName) {
    Debugging debug;
    Drawing other = support();
    debug.add(other);
    type(debug.window, "debug.input.0", QStringLiteral("Hello"));
    debug.show(other.flow.id);
    debug.settle();
    EXPECT_EQ(fromQt(find<QPlainTextEdit>(debug.window, "debug.input.0").toPlainText()), "Hello");
}

TEST(FlowDebugArea, OffersTheCasesOfAnEnumeration) {
    Drawing drawing = support();
    const auto cases = test::enumeration({"low", "high"});
    drawing.flow.startInput = {test::property(
        "priority",
        PropertyKind::Enumeration{std::get<AgentOutputKind::Enumeration>(cases.value).cases})};
    Debugging debug(drawing);
    auto& box = find<QComboBox>(debug.window, "debug.input.0");
    pressKey(box, Qt::Key_Down);
    pressKey(box, Qt::Key_Down);
    EXPECT_EQ(debug.state().flowSampleInputValues->at("priority"), "high");
}

// The chat.

TEST(FlowDebugArea, AConversationalFlowHasAChatInPlaceOfTheRunButton) {
    Debugging debug(conversation());
    EXPECT_EQ(debug.area().selectedTab(), Tab::chat);
    EXPECT_FALSE(isShown(debug.window, "debug.run"));
    EXPECT_FALSE(isShown(debug.window, "debug.input"));
    EXPECT_TRUE(isShown(debug.window, "debug.tabs.chat"));
    EXPECT_TRUE(isShown(debug.window, "debug.clearChat"));
    EXPECT_EQ(textOf(find<QWidget>(debug.window, "debug.chat.empty"), "empty.title"),
              "No messages yet — send one above.");
    debug.edit([](Flow& flow) { flow.kind = FlowKind::singleShot; });
    EXPECT_EQ(debug.area().selectedTab(), Tab::trace);
    EXPECT_TRUE(isShown(debug.window, "debug.run"));
    EXPECT_FALSE(isShown(debug.window, "debug.tabs.chat"));
    EXPECT_FALSE(isShown(debug.window, "debug.message"));
}

TEST(FlowDebugArea, SendsAMessageAndShowsItsReplyInTheChat) {
    Debugging debug(conversation());
    debug.setKeepingCLI("echo 'RESULT: Hi\u2028there'");
    EXPECT_EQ(debug.toolTip("debug.send"), "Send this message (U2)");
    debug.send(QStringLiteral("  hello "));
    EXPECT_EQ(textOf(debug.window, "debug.chat.0.message"), "hello");
    EXPECT_EQ(textOf(debug.window, "debug.chat.0.reply"), "Hi\nthere");
    EXPECT_EQ(textOf(debug.window, "debug.message"), "");
    EXPECT_EQ(debug.area().selectedTab(), Tab::chat);
    EXPECT_FALSE(isShown(debug.window, "debug.chat.0.context"));
}

TEST(FlowDebugArea, CanNotSendToAFlowWithErrorsAndSaysWhereTheyAre) {
    Debugging debug(conversation());
    type(debug.window, "debug.message", QStringLiteral("hello"));
    debug.settle();
    EXPECT_TRUE(debug.isEnabled("debug.send"));
    debug.edit([](Flow& flow) { flow.edges.clear(); });
    EXPECT_FALSE(debug.isEnabled("debug.send"));
    EXPECT_EQ(debug.toolTip("debug.send"), "Fix the errors in the Issues tab first");
    pressKey(find<QWidget>(debug.window, "debug.message"), Qt::Key_Return);
    EXPECT_EQ(textOf(debug.window, "debug.message"), "hello");
}

TEST(FlowDebugArea, ABlankMessageNeitherClearsTheDraftNorRuns) {
    Debugging debug(conversation());
    type(debug.window, "debug.message", QStringLiteral("   "));
    debug.settle();
    EXPECT_FALSE(debug.isEnabled("debug.send"));
    pressKey(find<QWidget>(debug.window, "debug.message"), Qt::Key_Return);
    debug.studio.settle();
    EXPECT_EQ(textOf(debug.window, "debug.message"), "   ");
    EXPECT_FALSE(*debug.state().isRunningFlow);
    EXPECT_TRUE(debug.state().conversationMessages->empty());
}

TEST(FlowDebugArea, TheThirdMessageSendsAllThree) {
    Debugging debug(conversation());
    debug.setKeepingCLI("echo 'RESULT: RESULT: a'\necho 'RESULT:b'");
    debug.send(QStringLiteral("one"));
    debug.send(QStringLiteral("two"));
    debug.send(QStringLiteral("three"));
    EXPECT_NE(debug.inputOfLastRun().find(R"([\"one\",\"two\",\"three\"])"), std::string::npos);
    EXPECT_EQ(textOf(debug.window, "debug.chat.0.reply"), "RESULT: a");
    EXPECT_EQ(textOf(debug.window, "debug.chat.1.reply"), "RESULT:b");
    EXPECT_EQ(textOf(debug.window, "debug.chat.2.message"), "three");
    EXPECT_FALSE(isShown(debug.window, "debug.chat.2.reply"));
    EXPECT_FALSE(isShown(debug.window, "debug.chat.2.running"));
}

TEST(FlowDebugArea, ShowsThatTheLastMessageIsWorkedOnAndNeverLeavesTheChat) {
    Debugging debug(conversation());
    debug.setWaitingCLI("echo 'RESULT: a'");
    type(debug.window, "debug.message", QStringLiteral("one"));
    pressKey(find<QWidget>(debug.window, "debug.message"), Qt::Key_Return);
    ASSERT_TRUE(debug.studio.until(
        [&] { return *debug.state().flowRunPhase == std::optional<std::string>("Compiling…"); }));
    EXPECT_EQ(debug.area().selectedTab(), Tab::chat);
    EXPECT_TRUE(isShown(debug.window, "debug.chat.0.running"));
    type(debug.window, "debug.message", QStringLiteral("two"));
    EXPECT_FALSE(debug.isEnabled("debug.send"));
    EXPECT_FALSE(debug.isEnabled("debug.clearChat"));
    pressKey(find<QWidget>(debug.window, "debug.message"), Qt::Key_Return);
    EXPECT_EQ(textOf(debug.window, "debug.message"), "two");
    debug.letItEnd();
    EXPECT_FALSE(isShown(debug.window, "debug.chat.0.running"));
    EXPECT_EQ(textOf(debug.window, "debug.chat.0.reply"), "a");
    EXPECT_EQ(debug.area().selectedTab(), Tab::chat);
}

TEST(FlowDebugArea, AFailedRunTakesTheRepliesAndKeepsTheMessages) {
    Debugging debug(conversation());
    debug.tools.setStudioCLI("echo 'RESULT: a'");
    debug.send(QStringLiteral("one"));
    debug.tools.setStudioCLI("exit 1");
    debug.send(QStringLiteral("two"));
    EXPECT_EQ(textOf(debug.window, "debug.chat.0.message"), "one");
    EXPECT_EQ(textOf(debug.window, "debug.chat.1.message"), "two");
    EXPECT_FALSE(isShown(debug.window, "debug.chat.0.reply"));
    EXPECT_EQ(debug.area().selectedTab(), Tab::chat);
}

TEST(FlowDebugArea, ClearChatEmptiesTheTabAndTheOutcome) {
    Debugging debug(conversation());
    debug.tools.setStudioCLI("echo 'RESULT: a'");
    EXPECT_FALSE(debug.isEnabled("debug.clearChat"));
    debug.send(QStringLiteral("one"));
    click(debug.window, "debug.clearChat");
    debug.settle();
    EXPECT_TRUE(isShown(debug.window, "debug.chat.empty"));
    EXPECT_FALSE(debug.state().lastFlowRunOutcome->has_value());
    EXPECT_FALSE(isShown(debug.window, "debug.outcome"));
}

TEST(FlowDebugArea, OpensThePromptOfOneTurnAtATime) {
    Debugging debug(conversation());
    debug.tools.setStudioCLI("echo '" + traceLine("promptBuilt", "first", R"(,"tokenEstimate":7)") +
                             "'\necho '" + traceLine("promptBuilt", "second") +
                             "'\necho 'RESULT: a'\necho 'RESULT: b'");
    debug.send(QStringLiteral("one"));
    debug.send(QStringLiteral("two"));
    EXPECT_EQ(textOf(debug.window, "debug.chat.0.context"), "~7 tokens · View Context");
    EXPECT_EQ(textOf(debug.window, "debug.chat.1.context"), "View Context");
    EXPECT_FALSE(isShown(debug.window, "debug.promptSize"));
    click(debug.window, "debug.chat.0.context");
    EXPECT_EQ(textOf(debug.window, "debug.chat.0.context.prompt"), "first");
    click(debug.window, "debug.chat.1.context");
    const auto& prompt = find<QWidget>(debug.window, "debug.chat.1.context.prompt");
    EXPECT_EQ(prompt.visibleRegion().boundingRect().height(), prompt.height());
    EXPECT_FALSE(isShown(debug.window, "debug.chat.0.context.prompt"));
    EXPECT_EQ(textOf(debug.window, "debug.chat.1.context.prompt"), "second");
    click(debug.window, "debug.chat.1.context");
    EXPECT_FALSE(isShown(debug.window, "debug.chat.1.context.prompt"));
}

TEST(FlowDebugArea, TheChatEndsWithItsLastTurnAndABubbleIsAsWideAsItsText) {
    Debugging debug(conversation());
    debug.tools.setStudioCLI("for i in 1 2 3 4 5 6; do echo 'RESULT: " + std::string(600, 'a') +
                             " b'; done");
    for (const char* message : {"1", "2", "3", "4", "5", "6"}) {
        (*debug.state().conversationMessages.edit())[debug.flowID].push_back(message);
    }
    debug.send(QStringLiteral("7"));
    auto& area = find<QScrollArea>(debug.window, "debug.chat");
    const QWidget& page = *area.widget();
    auto& last = find<QWidget>(debug.window, "debug.chat.6.message");
    const QPoint end = last.mapTo(&page, QPoint(last.width(), last.height()));
    EXPECT_LT(page.height() - end.y(), 40);
    EXPECT_GT(end.x(), page.width() - 60);
    EXPECT_LT(last.width(), 60);
    EXPECT_EQ(area.verticalScrollBar()->value(), area.verticalScrollBar()->maximum());
}

TEST(FlowDebugArea, TellsTheSizeOfTheLastPrompt) {
    Debugging debug(conversation());
    debug.tools.setStudioCLI("echo '" + traceLine("promptBuilt", "p", R"(,"tokenEstimate":120)") +
                             "'\necho 'RESULT: a'");
    debug.send(QStringLiteral("one"));
    EXPECT_EQ(textOf(debug.window, "debug.promptSize"), "~120 tokens");
    EXPECT_EQ(debug.toolTip("debug.promptSize"), promptSizeHelp);
}

TEST(FlowDebugArea, ShowsAPromptOfAMegabyte) {
    Debugging debug(conversation());
    for (const bool hasLines : {true, false}) {
        std::string prompt;
        while (prompt.size() < 1'000'000) {
            prompt += hasLines ? "A line of the prompt.\n" : "Words without any end ";
        }
        FlowRunOutcome outcome;
        outcome.trace.push_back({Uuid::random(), 5, "promptBuilt", "Writer", prompt, 250'000});
        (*debug.state().conversationMessages.edit())[debug.flowID] = {"one"};
        debug.state().lastFlowRunOutcome = outcome;
        debug.area().selectTab(Tab::chat);
        debug.settle();
        click(debug.window, "debug.chat.0.context");
        debug.studio.settle();
        EXPECT_EQ(textOf(debug.window, "debug.chat.0.context.prompt"), prompt);
        click(debug.window, "debug.chat.0.context");
        debug.area().selectTab(Tab::trace);
        debug.settle();
        auto& trace = find<QListView>(debug.window, "debug.trace");
        trace.setCurrentIndex(trace.model()->index(0, 0));
        debug.studio.settle();
        EXPECT_EQ(textOf(debug.window, "debug.trace.detail"), prompt);
    }
}

// The trace leads to the nodes.

TEST(FlowDebugArea, ChoosingAStepShowsItsDetailAndSelectsItsNode) {
    Debugging debug;
    debug.tools.setStudioCLI(goodRun);
    debug.run();
    auto& trace = find<QListView>(debug.window, "debug.trace");
    trace.setFocus();
    trace.setCurrentIndex(trace.model()->index(0, 0));
    EXPECT_EQ(textOf(debug.window, "debug.trace.detail"), "input: {}");
    pressKey(trace, Qt::Key_Return);
    EXPECT_FALSE(debug.state().canvasSelection->has_value());
    trace.setCurrentIndex(trace.model()->index(1, 0));
    pressKey(trace, Qt::Key_Return);
    EXPECT_EQ(*debug.state().canvasSelection, CanvasSelection{CanvasSelection::Node{
                                                  debug.state().flow(debug.flowID)->nodes[1].id}});
    click(debug.window, "debug.trace.closeDetail");
    EXPECT_FALSE(isShown(debug.window, "debug.trace.detail"));
}

TEST(FlowDebugArea, AStepThatNamesNothingInTheFlowSelectsNothing) {
    Debugging debug;
    debug.tools.setStudioCLI(goodRun);
    debug.run();
    auto& trace = find<QListView>(debug.window, "debug.trace");
    trace.setCurrentIndex(trace.model()->index(2, 0));
    pressKey(trace, Qt::Key_Return);
    EXPECT_FALSE(debug.state().canvasSelection->has_value());
}

// Issues.

TEST(FlowDebugArea, ListsTheIssuesAndLeadsToTheirNodes) {
    Debugging debug;
    debug.area().selectTab(Tab::issues);
    debug.settle();
    EXPECT_EQ(debug.rows("debug.issues").rowCount(), 0);
    EXPECT_TRUE(debug.window.findChild<QListView*>(QStringLiteral("debug.issues"))->isHidden());
    debug.edit([](Flow& flow) { flow.edges.pop_back(); });
    const auto issues = flowIssues(debug.state(), debug.flowID);
    ASSERT_FALSE(issues.empty());
    ASSERT_EQ(debug.rows("debug.issues").rowCount(), static_cast<int>(issues.size()));
    auto& list = find<QListView>(debug.window, "debug.issues");
    for (int i = 0; i < list.model()->rowCount(); ++i) {
        const FlowIssue& issue = issues[static_cast<std::size_t>(i)];
        EXPECT_EQ(debug.row("debug.issues", i), issue.message);
        debug.state().canvasSelection = std::nullopt;
        list.setCurrentIndex(list.model()->index(i, 0));
        pressKey(list, Qt::Key_Return);
        EXPECT_EQ(debug.state().canvasSelection->has_value(), issue.nodeID.has_value());
    }
}

// The console.

std::vector<FlowConsoleLine> manyLines(int count) {
    std::vector<FlowConsoleLine> lines;
    for (int i = 0; i < count; ++i) {
        lines.push_back(
            {Uuid::random(), "line " + std::to_string(i), FlowConsoleLine::Kind::output});
    }
    return lines;
}

TEST(FlowDebugArea, TheConsoleHoldsAHundredThousandLinesAndFollowsTheEnd) {
    Debugging debug;
    debug.area().selectTab(Tab::console);
    debug.settle();
    debug.state().flowConsoleLines = manyLines(100'000);
    debug.settle();
    auto& list = find<QListView>(debug.window, "debug.console");
    auto& bar = *list.verticalScrollBar();
    EXPECT_EQ(list.model()->rowCount(), 100'000);
    EXPECT_EQ(bar.value(), bar.maximum());
    EXPECT_TRUE(
        list.viewport()->rect().intersects(list.visualRect(list.model()->index(99'999, 0))));
    for (int i = 0; i < 5; ++i) {
        debug.state().flowConsoleLines.edit()->push_back(
            {Uuid::random(), "more", FlowConsoleLine::Kind::step});
        debug.settle();
        EXPECT_EQ(bar.value(), bar.maximum());
    }
    EXPECT_FALSE(isShown(debug.window, "debug.console.end"));
    bar.setValue(bar.maximum() / 2);
    const int read = bar.value();
    debug.state().flowConsoleLines.edit()->push_back(
        {Uuid::random(), "more", FlowConsoleLine::Kind::step});
    debug.settle();
    EXPECT_EQ(bar.value(), read);
    EXPECT_TRUE(isShown(debug.window, "debug.console.end"));
    click(debug.window, "debug.console.end");
    EXPECT_EQ(bar.value(), bar.maximum());
    EXPECT_EQ(list.model()->rowCount(), 100'006);
}

TEST(FlowDebugArea, TheConsoleShowsTheLinesThatAreLeftWhenTheOldestGo) {
    Debugging debug;
    debug.area().selectTab(Tab::console);
    debug.state().flowConsoleLines = manyLines(4000);
    debug.settle();
    {
        auto lines = debug.state().flowConsoleLines.edit();
        lines->push_back({Uuid::random(), "the 4001st", FlowConsoleLine::Kind::output});
        lines->erase(lines->begin(), lines->end() - 3500);
    }
    debug.settle();
    ASSERT_EQ(debug.rows("debug.console").rowCount(), 3500);
    EXPECT_EQ(debug.row("debug.console", 0), "line 501");
    EXPECT_EQ(debug.row("debug.console", 3499), "the 4001st");
}

TEST(FlowDebugArea, TheConsoleSaysThatThereWasNoRun) {
    Debugging debug;
    debug.area().selectTab(Tab::console);
    debug.settle();
    EXPECT_EQ(
        textOf(*debug.window.findChild<QListView*>(QStringLiteral("debug.console"))->parentWidget(),
               "empty.title"),
        "No run yet.");
}

// Its height.

TEST(FlowDebugArea, RemembersItsHeightAndWhetherItIsUnfolded) {
    Debugging debug;
    EXPECT_EQ(debug.toolTip("debug.toggle"), "Hide the debug area");
    auto& handle = find<QWidget>(debug.window, "debug.handle");
    const int before = debug.area().height();
    pressKey(handle, Qt::Key_Up);
    debug.studio.settle();
    EXPECT_EQ(debug.area().height(), before + 24);
    EXPECT_EQ(debug.studio.services().settings().flowDebugAreaHeight(), 284);
    EXPECT_TRUE(debug.studio.services().settings().flowDebugAreaExpanded());
    click(debug.window, "debug.toggle");
    EXPECT_EQ(debug.toolTip("debug.toggle"), "Show the debug area");
    EXPECT_FALSE(debug.studio.services().settings().flowDebugAreaExpanded());
    debug.studio.settle();
    EXPECT_LT(debug.area().height(), 100);
    Drawing other = support();
    debug.add(other);
    debug.show(other.flow.id); // an editor of its own
    EXPECT_FALSE(debug.area().isExpanded());
    click(debug.window, "debug.tabs.console");
    debug.studio.settle();
    EXPECT_TRUE(debug.area().isExpanded());
    EXPECT_EQ(debug.area().selectedTab(), Tab::console);
    EXPECT_EQ(debug.area().height(), before + 24);
}

// What a node saw.

TEST(RunDetailPopover, StaysOnALowScreenHoweverMuchANodeSaw) {
    std::string text;
    while (text.size() < 1'000'000) {
        text += "Words without any end ";
    }
    const char* labels[] = {"Input", "Output", "Retrieved", "Prompt size", "Error"};
    RunBubble bubble{"Step 2", {}};
    for (const char* label : labels) {
        bubble.rows.push_back({label, text});
    }
    auto* popover = new RunDetailPopover(bubble, QString(500, QLatin1Char('W')), nullptr);
    popover->openBeside(QRect(100, 700, 20, 20));
    EXPECT_TRUE(
        QGuiApplication::primaryScreen()->availableGeometry().contains(popover->frameGeometry()));
    int bottom = 0;
    for (int i = 0; i < 5; ++i) {
        const std::string number = std::to_string(i);
        EXPECT_EQ(textOf(*popover, ("runDetail.label." + number).c_str()), labels[i]);
        const auto& value = find<QWidget>(*popover, ("runDetail.value." + number).c_str());
        EXPECT_GT(value.y(), bottom);
        bottom = value.geometry().bottom();
    }
    EXPECT_LT(bottom, popover->height());
    EXPECT_TRUE(popover->rect().contains(find<QWidget>(*popover, "runDetail.node").geometry()));
    pressKey(*popover, Qt::Key_Escape);
    EXPECT_FALSE(popover->isVisible());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

// The export.

struct Exporting : Debugging {
    using Debugging::Debugging;
    void chooseFolder() {
        click(window, "flow.export");
        studio.settle();
        auto& panel = find<QFileDialog>(window, "flowExport.destination");
        Q_EMIT panel.fileSelected(toQt(tools.folder / "out"));
        panel.close();
        studio.settle();
    }
    FlowExportDialog& dialog() { return find<FlowExportDialog>(window, "flowExport"); }
    void awaitExport() {
        ASSERT_TRUE(studio.until([this] { return !dialog().isExporting(); }));
        studio.settle();
    }
    // `swift run` is the tool; it ends when it may.
    void setExportTool(const std::string& rest) const {
        tools.setSwift("while [ ! -e " + goAhead().string() + " ]; do sleep 0.02; done\n" + rest);
    }
};

TEST(FlowExportAction, ExportsToTheChosenFolderAndSaysSo) {
    Exporting test;
    test.state().project.edit()->name = "My RAG 2!";
    test.setExportTool("for last; do :; done\ncp \"$last\" " +
                       (test.tools.folder / "request").string() + "\necho EXPORT_SUCCEEDED");
    EXPECT_EQ(test.toolTip("flow.export"),
              "Export every flow in this project to one Swift Package (E1/E2)");
    test.chooseFolder();
    EXPECT_TRUE(test.dialog().isExporting());
    EXPECT_TRUE(isShown(test.dialog(), "flowExport.progress"));
    EXPECT_FALSE(test.isEnabled("flow.export"));
    test::writeContents(test.goAhead(), "");
    test.awaitExport();
    EXPECT_EQ(textOf(test.window, "flowExport.title"), "Export Succeeded");
    EXPECT_EQ(textOf(test.window, "flowExport.message"), "Export succeeded.");
    EXPECT_FALSE(isShown(test.dialog(), "flowExport.output"));
    EXPECT_EQ(textOf(test.window, "flowExport.ok"), "OK");
    EXPECT_TRUE(test.isEnabled("flow.export"));
    EXPECT_NE(contentsOf(test.tools.folder / "request").find(R"("packageName":"MyRAG2")"),
              std::string::npos);
    click(test.window, "flowExport.ok");
    test.studio.settle();
    EXPECT_EQ(test.window.findChild<FlowExportDialog*>(), nullptr);
}

TEST(FlowExportAction, ShowsTheToolsOutputWhenItFails) {
    Exporting test;
    test.tools.setSwift("echo one\necho two >&2\nexit 1");
    test.chooseFolder();
    test.awaitExport();
    EXPECT_EQ(textOf(test.window, "flowExport.title"), "Export Failed");
    EXPECT_EQ(textOf(test.window, "flowExport.message"), "Export failed — see the details below.");
    EXPECT_TRUE(isShown(test.dialog(), "flowExport.output"));
    EXPECT_EQ(textOf(test.window, "flowExport.output"), "one\n\ntwo\n");
}

TEST(FlowExportAction, NamesTheFlowsThatWereLeftOut) {
    Exporting test;
    Drawing broken;
    broken.flow.name = "Broken";
    test.add(broken);
    test.tools.setSwift("echo EXPORT_SUCCEEDED");
    test.chooseFolder();
    test.awaitExport();
    EXPECT_EQ(textOf(test.window, "flowExport.message"),
              "Export succeeded. (skipped, had errors: Broken)");
}

TEST(FlowExportAction, StartsNothingWhenNoFlowIsReady) {
    Exporting test;
    test.edit([](Flow& flow) { flow.edges.clear(); });
    test.chooseFolder();
    test.awaitExport();
    EXPECT_EQ(textOf(test.window, "flowExport.message"),
              "No flow is ready to export — fix each flow's issues first (see its Issues tab).");
    const auto& message = find<QWidget>(test.window, "flowExport.message");
    EXPECT_GE(message.height(), message.heightForWidth(message.width()));
    EXPECT_EQ(test.tools.swiftCalls(), "");
}

TEST(FlowExportAction, ExportsNothingWhenNoFolderIsChosen) {
    Exporting test;
    click(test.window, "flow.export");
    test.studio.settle();
    find<QFileDialog>(test.window, "flowExport.destination").reject();
    test.studio.settle();
    EXPECT_EQ(test.window.findChild<FlowExportDialog*>(), nullptr);
    EXPECT_EQ(test.tools.swiftCalls(), "");
    EXPECT_TRUE(test.isEnabled("flow.export"));
}

TEST(FlowExportAction, ComesBackWithTheOutcomeWhenItWasPutAway) {
    Exporting test;
    test.setExportTool("echo EXPORT_SUCCEEDED");
    test.chooseFolder();
    click(test.window, "flowExport.background");
    test.studio.settle();
    EXPECT_TRUE(test.dialog().isHidden());
    EXPECT_FALSE(test.isEnabled("flow.export"));
    Drawing other = support();
    test.add(other);
    test.show(other.flow.id); // an editor of its own
    EXPECT_FALSE(test.isEnabled("flow.export"));
    test::writeContents(test.goAhead(), "");
    test.awaitExport();
    EXPECT_FALSE(test.dialog().isHidden());
    EXPECT_TRUE(test.isEnabled("flow.export"));
}

TEST(FlowExportAction, SurvivesAWindowThatIsClosedDuringAnExport) {
    Exporting test;
    test.setExportTool("echo end > " + (test.tools.folder / "ended").string());
    test.chooseFolder();
    ASSERT_TRUE(test.studio.until([&] { return !test.tools.swiftCalls().empty(); }));
    test.window.dismiss();
    test.studio.settle();
    test::writeContents(test.goAhead(), "");
    EXPECT_TRUE(
        test.studio.until([&] { return std::filesystem::exists(test.tools.folder / "ended"); }));
    test.studio.settle();
}

// The model servers of a run.

TEST(SwitchableEndpoints, KeepsTheOldOnesUntilTheRunsThatWereToldOfThemEnd) {
    SwitchableEndpoints endpoints;
    auto first = std::make_shared<test::ScriptedEndpoints>();
    const std::weak_ptr<ModelEndpoints> watched = first;
    endpoints.use(std::move(first));
    auto oneRun = endpoints.hold();
    auto otherRun = endpoints.hold();
    endpoints.use(std::make_shared<test::ScriptedEndpoints>());
    EXPECT_FALSE(watched.expired());
    oneRun.reset();
    EXPECT_FALSE(watched.expired());
    otherRun.reset();
    EXPECT_TRUE(watched.expired());
    endpoints.use(nullptr);
}

} // namespace
} // namespace ombrel
