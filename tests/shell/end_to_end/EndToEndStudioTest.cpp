#include "core/AppState.h"
#include "flows/FlowValidator.h"
#include "platform/InstalledModels.h"
#include "platform/LocalPlatform.h"
#include "platform/OnDeviceModel.h"
#include "shell/Application.h"
#include "shell/ContentView.h"
#include "shell/DocumentWindow.h"
#include "shell/QtExecutor.h"
#include "shell/QtText.h"
#include "shell/StudioDocument.h"
#include "shell/StudioServices.h"
#include "shell/WelcomeView.h"
#include "shell/flow/CanvasMetrics.h"
#include "shell/flow/FlowCanvas.h"
#include "shell/flow/TraceModel.h"
#include "tests/flows/BuiltTools.h"
#include "tests/shell/end_to_end/Hands.h"

#include <QAbstractButton>
#include <QApplication>
#include <QKeySequence>
#include <QListView>
#include <QListWidget>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

// The whole studio as its user has it: the windows, the model server and models that
// resources/models/install-models installs, and the Swift tool chain of this machine. Only mouse
// and keys change anything; what is looked at is what the windows show, and the project behind
// them. What the model answers is not known, but it has to fit, and the rest has to follow from it.
namespace ombrel {
namespace {

using namespace test;
using NodeState = FlowRunHighlight::NodeState;

class EndToEndStudio : public testing::Test {
  protected:
    void SetUp() override {
        ServiceSettings settings;
        settings.languageModel = starterModelFile;
        const auto executor = std::make_shared<QtExecutor>();
        m_services = std::make_unique<StudioServices>(
            StudioServices::Folders{m_folder / "config", m_folder / "recovery"},
            [=](const ServiceSettings&, const StudioServices::Progress& progress) {
                return makeLocalPlatform(executor, settings, progress);
            });
        ASSERT_TRUE(m_services->platform().model->availability().isAvailable())
            << "Run resources/models/install-models";
        m_tools.use();
        m_studio = std::make_unique<Application>(*m_services);
    }

    // Leaves pictures of what was to be seen when it failed.
    void TearDown() override {
        if (!m_studio) {
            return;
        }
        const auto folder =
            std::filesystem::path(OMBREL_BINARY_DIR).parent_path() / "end-to-end-pictures";
        std::filesystem::create_directories(folder);
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (HasFailure() && widget->isVisible()) {
                const auto file = folder / (fromQt(widget->objectName()) + ".png");
                widget->grab().save(toQt(file));
                std::printf("See %s\n", file.c_str());
            }
        }
        // A flow that is drawn anew is built in a folder of its own.
        if (!m_studio->documentWindows().isEmpty() && !state().flows->empty()) {
            std::filesystem::remove_all(packageDirectory(flow().id));
        }
    }

    DocumentWindow& window() { return *m_studio->documentWindows().last(); }
    AppState& state() { return *window().document().state(); }
    const Flow& flow() { return state().flows->front(); }
    FlowCanvas& canvas() { return static_cast<FlowCanvas&>(reach(window(), "canvas")); }
    static std::string textOf(QWidget& below, const char* name) {
        const auto* found = below.findChild<QWidget*>(QLatin1String(name));
        return found ? fromQt(found->property("text").toString()) : "(none)";
    }
    void waitForText(const char* name, const std::string& text) {
        waitFor(std::string(name) + " “" + text + "”",
                [&] { return textOf(window(), name) == text; });
    }
    bool isShown(const char* name) {
        const auto* found = window().findChild<QWidget*>(QLatin1String(name));
        return found && found->isVisible();
    }
    std::string chosenDebugTab() {
        for (const char* name : {"trace", "console", "issues"}) {
            const auto* tab =
                window().findChild<QAbstractButton*>(QStringLiteral("debug.tabs.") + name);
            if (tab && tab->isChecked()) {
                return name;
            }
        }
        return "";
    }
    QAbstractItemModel& rowsOf(const char* list) {
        return *window().findChild<QListView*>(QLatin1String(list))->model();
    }

    // Makes a thing in the navigator, and waits until its editor's name is there.
    void make(const char* kind, const char* nameField) {
        clickOn(window(), (std::string("navigator.kinds.") + kind).c_str());
        waitFor("the navigator's list", [&] {
            return window().findChild<QAbstractButton*>("navigator.add")->text() ==
                   QStringLiteral("New ") + QString(kind[0]).toUpper() +
                       QString::fromLatin1(kind).mid(1).chopped(1);
        });
        clickOn(window(), "navigator.add");
        reach(window(), nameField);
    }

    // The canvas.
    const CanvasCard& card(const std::string& title) {
        for (const CanvasCard& each : canvas().scene().cards()) {
            if (fromQt(each.title) == title) {
                return each;
            }
        }
        throw std::runtime_error("there is no card " + title);
    }
    void addNode(const char* button, const QString& entry, const std::string& title) {
        const std::size_t before = flow().nodes.size();
        if (entry.isEmpty()) {
            clickOn(window(), button);
        } else {
            pickFromMenu(window(), button, entry);
        }
        waitFor("the card " + title, [&] {
            return canvas().scene().cards().size() == before + 1 &&
                   fromQt(canvas().scene().cards().back().title) == title;
        });
    }
    void addEnd(const QString& caseName) {
        addNode("canvas.add.end", {}, ".result");
        fillIn(window(), "inspector.end.caseName", caseName);
        waitFor("the End's new name", [&] {
            return canvas().scene().cards().back().title == QLatin1Char('.') + caseName;
        });
    }
    void connectByMouse(const std::string& from, const std::string& to, const QString& port = {}) {
        const std::size_t before = flow().edges.size();
        const QPointF handle = canvas().toWidget(canvas::outputHandle(card(from).centre));
        dragOver(canvas(), handle, canvas().toWidget(card(to).centre));
        if (!port.isEmpty()) {
            choosePort("Connect " + from + " → " + to + " as:", port);
        }
        waitFor("the wire from " + from + " to " + to, [&] {
            return flow().edges.size() == before + 1 &&
                   canvas().scene().wires().size() == before + 1;
        });
    }
    void choosePort(const std::string& question, const QString& port) {
        QWidget& dialog = reach(window(), "portChoice");
        EXPECT_EQ(textOf(dialog, "portChoice.question"), question);
        for (auto* button : dialog.findChildren<QAbstractButton*>()) {
            if (button->text() == port) {
                return clickAt(*button, button->rect().center());
            }
        }
        throw std::runtime_error("no port " + port.toStdString());
    }

    // What the steps of the run say about its path: the titles of its nodes.
    std::vector<std::string> tracedPath() {
        auto& steps = static_cast<TraceModel&>(rowsOf("debug.trace"));
        std::vector<std::string> path;
        for (int row = 0; row < steps.rowCount(); ++row) {
            const FlowTraceEvent& event = steps.event(row);
            if (event.kind == "flowStarted") {
                path.emplace_back("Start");
            } else if (event.kind == "nodeEntered" || event.kind == "toolCalled") {
                path.push_back(event.node.value_or("(no name)"));
            } else if (event.kind == "flowFinished") {
                path.push_back(event.detail.substr(0, event.detail.find(": ")));
            }
        }
        return path;
    }
    const FlowTraceEvent& traced(const std::string& kind) {
        auto& steps = static_cast<TraceModel&>(rowsOf("debug.trace"));
        for (int row = 0; row < steps.rowCount(); ++row) {
            if (steps.event(row).kind == kind) {
                return steps.event(row);
            }
        }
        throw std::runtime_error("no step " + kind);
    }
    // Presses Run and follows the run to its end, telling how far it is.
    void run() {
        clickOn(window(), "debug.run");
        waitFor("the start of the run", [&] { return *state().isRunningFlow; });
        EXPECT_EQ(chosenDebugTab(), "console");
        waitFor("the banner", [&] { return isShown("canvas.banner"); });
        EXPECT_EQ(textOf(window(), "canvas.banner.text"), "Starting the run…");
        EXPECT_FALSE(window().findChild<QWidget*>("debug.run")->isEnabled());
        std::string phase;
        waitFor(
            "the end of the run",
            [&] {
                const std::string now = state().flowRunPhase->value_or(phase);
                if (now != phase) {
                    phase = now;
                    std::printf("  %s\n", phase.c_str());
                    std::fflush(stdout);
                }
                return !*state().isRunningFlow;
            },
            std::chrono::minutes(12));
        const auto& outcome = *state().lastFlowRunOutcome;
        ASSERT_TRUE(outcome);
        ASSERT_EQ(outcome->errorMessage, std::nullopt) << outcome->rawOutput;
        waitFor("the steps in the Trace tab", [&] {
            return rowsOf("debug.trace").rowCount() == static_cast<int>(outcome->trace.size());
        });
    }

    TemporaryFolder m_folder;
    BuiltTools m_tools;
    std::unique_ptr<StudioServices> m_services;
    std::unique_ptr<Application> m_studio;
};

TEST_F(EndToEndStudio, GoesFromDocumentsToAFlowThatRunsAndStaysInTheProject) {
    const auto say = [](const char* what) {
        std::printf("%s\n", what);
        std::fflush(stdout);
    };
    say("A new project");
    m_studio->launch({});
    clickOn(*m_studio->welcomeWindow(), "welcome.new");
    waitFor("the new project", [&] {
        return !m_studio->documentWindows().isEmpty() && window().content() &&
               !m_studio->welcomeWindow()->isVisible();
    });
    window().resize(1400, 900);

    say("A recipe that needs no model");
    clickOn(window(), "tabs.settings");
    clickOn(window(), "settings.index.keyword");
    clickOn(window(), "settings.enrichment.contextualnotes");
    clickOn(window(), "settings.transform.direct");
    EXPECT_EQ(state().currentVariant().settings.index, IndexKind::keyword);
    EXPECT_TRUE(state().currentVariant().settings.enrichments.empty());

    say("The sample documents");
    clickOn(window(), "tabs.sources");
    clickOn(window(), "sources.addFolder");
    choosePath("sources.folderPanel", QStringLiteral(OMBREL_SOURCE_DIR "/resources/samples"));
    constexpr int documents = 7;
    waitFor("the documents", [&] {
        return state().currentIndex().sources.size() == documents &&
               !state().currentIndex().importProgress;
    });
    waitFor("their rows", [&] { return isShown("sources.list"); });
    for (const SourceDocument& source : state().currentIndex().sources) {
        EXPECT_EQ(source.status, SourceStatus{SourceStatus::Ready{}}) << source.name;
        EXPECT_GT(source.chunkCount, 0) << source.name;
    }

    say("An agent that chooses, with knowledge");
    make("agents", "agent.name");
    fillIn(window(), "agent.name", QStringLiteral("Sort"));
    fillIn(window(), "agent.instructions", QStringLiteral("Say what the visitor asks about."));
    clickOn(window(), "agent.knowledge.0.attached");
    clickOn(window(), "agent.output.edit");
    clickOn(window(), "output.kind.enum");
    for (const char* name : {"visit", "other"}) {
        const std::size_t number = name == std::string("other");
        clickOn(window(), "output.cases.add");
        fillIn(window(), ("output.cases." + std::to_string(number) + ".name").c_str(),
               QLatin1String(name));
    }
    clickOn(window(), "output.save");
    waitForText("agent.output.summary.heading", "2 cases");

    say("An agent that answers in a type");
    make("agents", "agent.name");
    waitForText("agent.name", "New Agent 2");
    fillIn(window(), "agent.name", QStringLiteral("Desk"));
    fillIn(window(), "agent.instructions", QStringLiteral("Judge what the visitor asks."));
    clickOn(window(), "agent.output.edit");
    clickOn(window(), "output.kind.object");
    clickOn(window(), "output.properties.add");
    fillIn(window(), "output.properties.0.name", QStringLiteral("isFriendly"));
    pickFromList(window(), "output.properties.0.type", QStringLiteral("Bool"));
    clickOn(window(), "output.save");
    waitForText("agent.output.summary.heading", "1 property");

    say("A tool");
    make("tools", "tool.name");
    fillIn(window(), "tool.name", QStringLiteral("bookings"));
    fillIn(window(), "tool.mock", QStringLiteral("{\"free\": 3}"));

    say("A flow, drawn by mouse");
    make("flows", "canvas");
    fillIn(window(), "inspector.flow.name", QStringLiteral("Visitor desk"));
    addNode("canvas.add.agent", QStringLiteral("Sort"), "Sort");
    addNode("canvas.add.agent", QStringLiteral("Desk"), "Desk");
    addNode("canvas.add.tool", QStringLiteral("bookings"), "bookings");
    addEnd(QStringLiteral("answered"));
    addEnd(QStringLiteral("booked"));
    clickOn(window(), "canvas.fit");
    EXPECT_TRUE(card("Sort").drawsOnKnowledge);
    EXPECT_NE(textOf(window(), "flow.readiness"), "Ready to run");
    EXPECT_FALSE(window().findChild<QWidget*>("debug.run")->isEnabled());
    connectByMouse("Start", "Sort");
    connectByMouse("Sort", "Desk", QStringLiteral("visit"));
    connectByMouse("Sort", "bookings", QStringLiteral("other"));
    connectByMouse("Desk", ".answered");
    connectByMouse("bookings", ".booked");
    waitForText("flow.readiness", "Ready to run");
    EXPECT_TRUE(flowIssues(state(), flow().id).empty());
    clickOn(window(), "debug.tabs.issues");
    EXPECT_EQ(rowsOf("debug.issues").rowCount(), 0);
    EXPECT_FALSE(isShown("debug.issues"));

    say("A run");
    clickOn(window(), "debug.tabs.trace");
    fillIn(window(), "debug.input.0", QStringLiteral("When does the last bus leave?"));
    ASSERT_NO_FATAL_FAILURE(run());

    // Which way it went is the model's choice; that it is one, and where it leads, is not.
    const std::string route = traced("routeTaken").detail;
    ASSERT_TRUE(route == "visit" || route == "other") << route;
    const bool isVisit = route == "visit";
    const std::vector<std::string> path =
        isVisit ? std::vector<std::string>{"Start", "Sort", "Desk", ".answered"}
                : std::vector<std::string>{"Start", "Sort", "bookings", ".booked"};
    EXPECT_EQ(tracedPath(), path);
    EXPECT_EQ(traced("flowStarted").detail, "When does the last bus leave?");
    EXPECT_EQ(traced("outputReceived").detail, route);
    EXPECT_EQ(traced("flowFinished").detail,
              (*state().lastFlowRunOutcome)->resultLine.value_or("").substr(8)); // after "RESULT: "
    EXPECT_TRUE(traced("ragRetrieved").detail.find(" passages\n[1] ") != std::string::npos)
        << traced("ragRetrieved").detail;

    // The result is of the last agent's type: Desk's object, or the case that Sort chose.
    const std::string result = (*state().lastFlowRunOutcome)->resultLine.value_or("");
    const std::string prefix = "RESULT: " + path.back() + ": ";
    ASSERT_TRUE(result.starts_with(prefix)) << result;
    const std::string value = result.substr(prefix.size());
    if (isVisit) {
        EXPECT_TRUE(value == "isFriendly: true" || value == "isFriendly: false") << value;
    } else {
        EXPECT_EQ(value, route);
        EXPECT_EQ(traced("toolCalled").detail, "{\"free\": 3}");
    }

    // The canvas shows the path, and nothing else as reached.
    waitForText("canvas.banner.text", "Run path · 4 steps");
    for (const CanvasCard& each : canvas().scene().cards()) {
        const auto place = std::ranges::find(path, fromQt(each.title));
        const bool isOn = place != path.end();
        EXPECT_EQ(each.runState, isOn ? NodeState::visited : NodeState::notReached)
            << fromQt(each.title);
        EXPECT_EQ(each.step, isOn ? place - path.begin() + 1 : 0) << fromQt(each.title);
    }
    std::set<std::string> taken;
    for (const CanvasWire& wire : canvas().scene().wires()) {
        if (wire.isTaken) {
            taken.insert(fromQt(canvas().scene().cards()[wire.from].title + " → " +
                                canvas().scene().cards()[wire.to].title + " " + wire.port));
        }
    }
    EXPECT_EQ(taken, (std::set<std::string>{"Start → Sort ", "Sort → " + path[2] + " " + route,
                                            path[2] + " → " + path[3] + " "}));

    // The debug area came to the console for the run, and back to the trace after it.
    EXPECT_EQ(chosenDebugTab(), "trace");
    waitForText("debug.outcome", "Succeeded");
    EXPECT_TRUE(window().findChild<QWidget*>("debug.run")->isEnabled());
    const auto& lines = *state().flowConsoleLines;
    ASSERT_GE(lines.size(), 3U);
    EXPECT_TRUE(lines.front().text.starts_with("Run of “Visitor desk” started at "));
    EXPECT_EQ(lines.back().kind, FlowConsoleLine::Kind::success);
    EXPECT_TRUE(lines.back().text.ends_with("the result is in the Trace tab."))
        << lines.back().text;
    EXPECT_TRUE(std::ranges::any_of(lines, [](const FlowConsoleLine& line) {
        return line.kind == FlowConsoleLine::Kind::step && line.text == "Running…";
    }));
    clickOn(window(), "debug.tabs.console");
    waitFor("the lines of the console",
            [&] { return rowsOf("debug.console").rowCount() == static_cast<int>(lines.size()); });
    // A step that is clicked shows its node.
    clickOn(window(), "debug.tabs.trace");
    auto& steps = static_cast<QListView&>(reach(window(), "debug.trace"));
    const int entered = [&] {
        auto& model = static_cast<TraceModel&>(*steps.model());
        int row = 0;
        while (model.event(row).kind != "nodeEntered") {
            ++row;
        }
        return row;
    }();
    clickAt(*steps.viewport(), steps.visualRect(steps.model()->index(entered, 0)).center());
    waitForText("inspector.node.name", "Sort");

    say("Undo");
    const QPointF desk = canvas().toWidget(card("Desk").centre);
    clickAt(canvas(), desk.toPoint());
    waitForText("inspector.node.name", "Desk");
    pressKeys(window(), Qt::Key_Delete);
    waitFor("the deletion", [&] { return canvas().scene().cards().size() == 5; });
    EXPECT_EQ(canvas().scene().wires().size(), 3U);
    pressKeys(window(), Qt::Key_Z, Qt::ControlModifier);
    waitFor("the card again", [&] { return canvas().scene().cards().size() == 6; });
    EXPECT_EQ(canvas().scene().wires().size(), 5U);
    pressKeys(window(), Qt::Key_Escape);
    waitFor("a canvas without a run", [&] { return !isShown("canvas.banner"); });

    say("Saving and opening");
    const Flow drawn = flow();
    const std::string file = (m_folder / "Fernhill.ombrel").string();
    pressKeys(window(), Qt::Key_S, Qt::ControlModifier);
    choosePath("savePanel", toQt(file));
    waitFor("the saved file",
            [&] { return window().document().hasFile() && !window().document().isEdited(); });
    const QKeyCombination close = QKeySequence(QKeySequence::Close)[0];
    pressKeys(window(), close.key(), close.keyboardModifiers());
    waitFor("the window's end", [&] { return m_studio->documentWindows().isEmpty(); });
    m_studio->reopen({}); // what a click on the studio's icon does
    auto& recents = static_cast<QListWidget&>(reach(*m_studio->welcomeWindow(), "welcome.recents"));
    doubleClickAt(*recents.viewport(), recents.visualItemRect(recents.item(0)).center());
    waitFor("the project",
            [&] { return !m_studio->documentWindows().isEmpty() && window().content(); });
    EXPECT_EQ(window().path(), std::filesystem::path(file));
    EXPECT_EQ(state().currentIndex().sources.size(), static_cast<std::size_t>(documents));
    ASSERT_EQ(state().flows->size(), 1U);
    EXPECT_EQ(flow(), drawn);
    clickOn(window(), "navigator.kinds.flows");
    auto& things = static_cast<QListView&>(reach(window(), "navigator.list"));
    waitFor("the flow in the navigator", [&] {
        return things.model()->index(0, 0).data().toString() == QStringLiteral("Visitor desk");
    });
    clickAt(*things.viewport(), things.visualRect(things.model()->index(0, 0)).center());
    waitForText("flow.readiness", "Ready to run");
    EXPECT_EQ(canvas().scene().cards().size(), 6U);
    EXPECT_EQ(canvas().scene().wires().size(), 5U);
    EXPECT_FALSE(canvas().scene().hasRun());
}

} // namespace
} // namespace ombrel
