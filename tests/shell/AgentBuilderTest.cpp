#include "agents/AgentEvaluation.h"
#include "shell/agents/AgentBuilderView.h"
#include "shell/design/Banner.h"
#include "shell/design/BusyButton.h"
#include "shell/design/Chip.h"
#include "shell/design/SectionTitle.h"
#include "tests/agents/Knowledge.h"
#include "tests/agents/Properties.h"
#include "tests/shell/Choose.h"
#include "tests/shell/TabOrder.h"

#include <QCheckBox>
#include <QClipboard>
#include <QGuiApplication>
#include <QMenu>
#include <QPointer>
#include <QScrollArea>
#include <QSpinBox>

namespace ombrel {
namespace {

using namespace test;
using namespace std::chrono_literals;

// The builder of a new agent in a window.
struct Builder {
    Builder() : window(studio.newDocument()), id(state().addAgent().id) { show(); }

    AppState& state() { return *window.document().state(); }
    const Agent& agent() { return *state().agent(id); }
    void show() {
        const bool isThere = studio.until([&] {
            const auto* view = window.findChild<AgentBuilderView*>(QStringLiteral("agent"));
            return view && view->id() == id && view->isVisible();
        });
        EXPECT_TRUE(isThere);
        studio.settle();
    }
    template <class Change>
    void edit(Change change) {
        Agent edited = agent();
        change(edited);
        state().updateAgent(edited);
    }
    bool says(const char* name, const std::string& text) {
        return studio.until([&] {
            const auto* found = window.findChild<QWidget*>(QLatin1String(name));
            return found && fromQt(found->property("text").toString()) == text;
        });
    }
    bool becomesEnabled(const char* name, bool isEnabled = true) {
        return studio.until([&] { return find<QWidget>(window, name).isEnabled() == isEnabled; });
    }
    bool shows(const char* name, bool isThere = true) {
        return studio.until([&] { return isShown(window, name) == isThere; });
    }
    QStringList insertMenu() {
        QStringList entries;
        for (const QAction* action : find<QMenu>(window, "agent.insert.menu").actions()) {
            entries.append(action->text());
        }
        return entries;
    }
    void undo() {
        studio.advance(500ms);
        trigger(window, "command.undo");
        studio.settle();
    }
    void tryOn(const QString& input) {
        click(window, "agent.tab.playground");
        type(window, "agent.try.input", input);
        click(window, "agent.try.run");
    }

    Studio studio;
    DocumentWindow& window;
    Uuid id;
};

// Whether nothing of it is cut off.
bool isSeen(const QWidget& widget) {
    return widget.visibleRegion().boundingRect() == widget.rect();
}

TEST(AgentBuilder, EditsTheHeaderUndoably) {
    Builder b;
    EXPECT_EQ(textOf(b.window, "agent.name"), "New Agent 1");
    EXPECT_EQ(find<QLineEdit>(b.window, "agent.name").placeholderText(), "Agent name");
    EXPECT_EQ(find<QLineEdit>(b.window, "agent.summary").placeholderText(), "One-line summary");
    EXPECT_EQ(textOf(b.window, "agent.usage"), "Not used in any flow yet");
    b.studio.advance(500ms);
    type(b.window, "agent.name", QStringLiteral("Triage"));
    type(b.window, "agent.summary", QStringLiteral("Sorts tickets"));
    EXPECT_EQ(b.agent().name, "Triage");
    EXPECT_EQ(b.agent().summary, "Sorts tickets");
    b.undo();
    EXPECT_EQ(b.agent().name, "New Agent 1");
    EXPECT_TRUE(b.says("agent.name", "New Agent 1"));
    EXPECT_TRUE(b.says("agent.summary", ""));
}

TEST(AgentBuilder, CountsAFlowOnceHoweverManyNodesItHas) {
    Builder b;
    for (const int nodes : {2, 1}) {
        const Uuid flow = b.state().addFlow().id;
        for (int i = 0; i < nodes; ++i) {
            b.state().addFlowNode({FlowNodeKind::Agent{b.id}}, flow, 0, 0);
        }
    }
    b.state().setSelectedNavigatorItem({NavigatorSelection::Agent{b.id}});
    EXPECT_TRUE(b.says("agent.usage", "Used in 2 flows"));
}

TEST(AgentBuilder, SaysThatADeletedAgentIsNotFound) {
    Builder b;
    {
        auto agents = b.state().agents.edit();
        agents->clear();
    }
    ASSERT_TRUE(b.shows("notFound"));
    auto& notFound = find<QWidget>(b.window, "notFound");
    EXPECT_EQ(textOf(notFound, "empty.title"), "Agent Not Found");
    EXPECT_EQ(textOf(notFound, "empty.text"), "This agent may have been deleted.");
}

TEST(AgentBuilder, ForgetsWhatWasTriedWhenAnotherAgentIsShown) {
    Builder b;
    click(b.window, "agent.tab.playground");
    type(b.window, "agent.try.input", QStringLiteral("Hello"));
    const Uuid first = b.id;
    b.id = b.state().addAgent().id;
    b.show();
    EXPECT_TRUE(isShown(b.window, "agent.properties"));
    b.state().setSelectedNavigatorItem({NavigatorSelection::Agent{first}});
    b.id = first;
    b.show();
    EXPECT_EQ(find<QPlainTextEdit>(b.window, "agent.try.input").toPlainText(), "");
}

TEST(AgentBuilder, HasThreeTabsInOrder) {
    Builder b;
    const std::vector<std::pair<const char*, const char*>> pages{
        {"agent.tab.properties", "agent.properties"},
        {"agent.tab.playground", "agent.playground"},
        {"agent.tab.evaluation", "agent.evaluation"}};
    for (const auto& [tab, shown] : pages) {
        click(b.window, tab);
        for (const auto& [otherTab, page] : pages) {
            EXPECT_EQ(isShown(b.window, page), page == shown) << page;
        }
    }
    EXPECT_EQ(textOf(b.window, "agent.tab.evaluation"), "Evaluation");
}

TEST(AgentBuilder, CantInsertAPlaceholderWithoutContextFields) {
    Builder b;
    const auto actions = find<QMenu>(b.window, "agent.insert.menu").actions();
    ASSERT_EQ(actions.size(), 1);
    EXPECT_EQ(actions.front()->text(), "Add a Flow Context field below first");
    EXPECT_FALSE(actions.front()->isEnabled());
}

TEST(AgentBuilder, AddsAndRemovesContextFieldsAndInsertsThem) {
    Builder b;
    type(b.window, "agent.instructions", QStringLiteral("Be kind."));
    type(b.window, "agent.context.newName", QStringLiteral(" team "));
    click(b.window, "agent.context.add");
    EXPECT_EQ(b.agent().contextFieldNames, std::vector<std::string>{"team"});
    EXPECT_EQ(textOf(b.window, "agent.context.newName"), "");
    type(b.window, "agent.context.newName", QStringLiteral("team"));
    pressKey(find<QWidget>(b.window, "agent.context.newName"), Qt::Key_Return);
    EXPECT_EQ(b.agent().contextFieldNames.size(), 1U);
    EXPECT_EQ(textOf(b.window, "agent.context.newName"), "");
    type(b.window, "agent.context.newName", QStringLiteral("  "));
    click(b.window, "agent.context.add");
    EXPECT_EQ(textOf(b.window, "agent.context.newName"), "  ");
    ASSERT_TRUE(b.studio.until([&] { return b.insertMenu() == QStringList{"team"}; }));
    find<QMenu>(b.window, "agent.insert.menu").actions().front()->trigger();
    EXPECT_EQ(b.agent().instructions, "Be kind. {{context.team}}");
    EXPECT_TRUE(b.says("agent.diagram.context.0", "{{context.team}}"));
    EXPECT_EQ(find<Chip>(b.window, "agent.context.team").text(), "team");
    click(b.window, "agent.context.team.remove");
    EXPECT_TRUE(b.agent().contextFieldNames.empty());
    EXPECT_EQ(b.agent().instructions, "Be kind. {{context.team}}");
}

TEST(AgentBuilder, HasRoomForSeveralRowsOfContextFields) {
    Builder b;
    b.window.resize(900, 860);
    std::vector<std::string> names;
    for (int i = 0; i < 12; ++i) {
        names.push_back("aContextFieldWithALongName" + std::to_string(i));
    }
    b.edit([&](Agent& agent) { agent.contextFieldNames = names; });
    ASSERT_TRUE(b.shows("agent.context.aContextFieldWithALongName11"));
    b.studio.settle();
    for (const std::string& name : names) {
        const auto& chip = find<QWidget>(b.window, ("agent.context." + name).c_str());
        EXPECT_TRUE(chip.parentWidget()->rect().contains(chip.geometry())) << name;
    }
}

TEST(AgentBuilder, CountsTheTokensOfTheInstructions) {
    Builder b;
    EXPECT_EQ(textOf(b.window, "agent.instructions.tokens"), "~1 tokens");
    b.edit([](Agent& agent) { agent.instructions = std::string(80, 'a'); });
    EXPECT_TRUE(b.says("agent.instructions.tokens", "~20 tokens"));
    EXPECT_TRUE(b.says("agent.diagram.tokens", "~20 instruction tokens"));
}

TEST(AgentBuilder, ChangesTheHeightOfTheInstructionsByKeyboard) {
    Builder b;
    auto& area = find<QWidget>(b.window, "agent.instructions");
    const int height = area.height();
    pressKey(find<QWidget>(b.window, "agent.instructions.handle"), Qt::Key_Down);
    b.studio.settle();
    EXPECT_GT(area.height(), height);
}

TEST(AgentBuilder, HintsHowToGetToolsWhereThereAreNone) {
    Builder b;
    EXPECT_TRUE(isShown(b.window, "agent.tools.empty"));
    EXPECT_EQ(textOf(b.window, "agent.tools.empty"),
              "No tools yet \u2014 create one from the navigator.");
    EXPECT_EQ(b.window.findChild<QCheckBox*>(QStringLiteral("agent.tools.0")), nullptr);
}

TEST(AgentBuilder, GivesAnAgentToolsAndTakesThemAway) {
    Builder b;
    const Uuid tool = b.state().addTool().id;
    b.state().setSelectedNavigatorItem({NavigatorSelection::Agent{b.id}});
    ASSERT_TRUE(b.studio.until(
        [&] { return b.window.findChild<QCheckBox*>(QStringLiteral("agent.tools.0")); }));
    EXPECT_FALSE(isShown(b.window, "agent.tools.empty"));
    EXPECT_EQ(textOf(b.window, "agent.tools.0"), "newTool1");
    click(b.window, "agent.tools.0");
    EXPECT_EQ(b.agent().toolIDs, std::vector<Uuid>{tool});
    EXPECT_TRUE(b.says("agent.diagram.tool.0", "newTool1"));
    click(b.window, "agent.tools.0");
    EXPECT_TRUE(b.agent().toolIDs.empty());
}

TEST(AgentBuilder, AttachesKnowledgeWithItsSettings) {
    Builder b;
    EXPECT_FALSE(isShown(b.window, "agent.knowledge.0.settings"));
    EXPECT_FALSE(isShown(b.window, "agent.knowledge.empty"));
    click(b.window, "agent.knowledge.0.attached");
    ASSERT_EQ(b.agent().ragAttachments.size(), 1U);
    EXPECT_EQ(b.agent().ragAttachments[0].topK, 5);
    ASSERT_TRUE(b.shows("agent.knowledge.0.settings"));
    EXPECT_TRUE(b.says("agent.diagram.knowledge.0.note", "top-5 chunks"));
    auto& topK = find<QSpinBox>(b.window, "agent.knowledge.0.topK");
    EXPECT_EQ(topK.value(), 5);
    topK.stepUp();
    EXPECT_EQ(b.agent().ragAttachments[0].topK, 6);
    topK.setValue(99);
    EXPECT_EQ(b.agent().ragAttachments[0].topK, 20);
    type(b.window, "agent.knowledge.0.threshold", QStringLiteral("-2.5"));
    EXPECT_EQ(b.agent().ragAttachments[0].threshold, -2.5);
    type(b.window, "agent.knowledge.0.threshold", QStringLiteral("much"));
    EXPECT_EQ(b.agent().ragAttachments[0].threshold, -2.5);
    click(b.window, "agent.knowledge.0.attached");
    EXPECT_TRUE(b.agent().ragAttachments.empty());
    EXPECT_TRUE(b.shows("agent.knowledge.0.settings", false));
}

TEST(AgentBuilder, EditsTheInputAndTheDiagramFollows) {
    Builder b;
    EXPECT_EQ(textOf(b.window, "agent.diagram.input.text"), "No input fields yet");
    EXPECT_EQ(textOf(b.window, "agent.diagram.title"), "HOW THIS AGENT RUNS");
    EXPECT_EQ(textOf(b.window, "agent.diagram.name"), "New Agent 1");
    EXPECT_EQ(textOf(b.window, "agent.diagram.output.text"), "Plain text");
    click(b.window, "agent.input.add");
    type(b.window, "agent.input.0.name", QStringLiteral("ticket"));
    choose(b.window, "agent.input.0.type", "Int");
    EXPECT_EQ(b.agent().input[0].name, "ticket");
    EXPECT_TRUE(b.says("agent.diagram.input.0.name", "ticket"));
    EXPECT_EQ(textOf(b.window, "agent.diagram.input.0.type"), "Int");
}

TEST(AgentBuilder, SaysWhatAnOutputWithoutContentLacks) {
    Builder b;
    b.edit([](Agent& agent) { agent.output = enumerationOutput({}); });
    EXPECT_TRUE(b.says("agent.diagram.output.text", "No cases yet"));
    EXPECT_TRUE(
        b.says("agent.output.summary.placeholder", "No cases yet \u2014 click Edit to add some."));
    EXPECT_EQ(textOf(b.window, "agent.output.summary.heading"), "0 cases");
    b.edit([](Agent& agent) { agent.output = objectOutput({}); });
    EXPECT_TRUE(b.says("agent.diagram.output.text", "No properties yet"));
    EXPECT_TRUE(b.says("agent.output.summary.placeholder",
                       "No properties yet \u2014 click Edit to add some."));
    b.edit([](Agent& agent) { agent.output = enumerationOutput({"bug"}); });
    EXPECT_TRUE(b.says("agent.diagram.output.0.name", ".bug"));
    EXPECT_TRUE(b.says("agent.output.summary.heading", "1 case"));
    EXPECT_FALSE(isShown(b.window, "agent.output.summary.placeholder"));
}

TEST(AgentBuilder, MakesEveryEditOneUndoStep) {
    Builder b;
    b.state().addTool();
    b.state().setSelectedNavigatorItem({NavigatorSelection::Agent{b.id}});
    b.edit([&](Agent& agent) {
        agent.instructions = "Be kind.";
        agent.contextFieldNames = {"team"};
        agent.output = objectOutput({property("done", boolKind())});
        agent.ragAttachments.push_back({Uuid::random(), b.state().ragIndexes->front().id, 5, 0.5});
        AgentEvaluationCase& one = agent.evaluationCases.emplace_back();
        one.id = Uuid::random();
        one.input = "Hello";
    });
    ASSERT_TRUE(b.shows("agent.tools.0"));
    ASSERT_TRUE(b.shows("agent.context.team"));
    b.studio.advance(500ms);
    const Agent before = b.agent();
    const std::vector<std::pair<std::string, std::function<void()>>> edits{
        {"name", [&] { type(b.window, "agent.name", QStringLiteral("Triage")); }},
        {"summary", [&] { type(b.window, "agent.summary", QStringLiteral("Sorts")); }},
        {"instructions", [&] { type(b.window, "agent.instructions", QStringLiteral("Go.")); }},
        {"placeholder",
         [&] { find<QMenu>(b.window, "agent.insert.menu").actions()[0]->trigger(); }},
        {"new context field",
         [&] {
             type(b.window, "agent.context.newName", QStringLiteral("tier"));
             click(b.window, "agent.context.add");
         }},
        {"no context field", [&] { click(b.window, "agent.context.team.remove"); }},
        {"new input", [&] { click(b.window, "agent.input.add"); }},
        {"tool", [&] { click(b.window, "agent.tools.0"); }},
        {"knowledge", [&] { click(b.window, "agent.knowledge.0.attached"); }},
        {"top-k", [&] { find<QSpinBox>(b.window, "agent.knowledge.0.topK").stepUp(); }},
        {"threshold",
         [&] { type(b.window, "agent.knowledge.0.threshold", QStringLiteral("0.25")); }},
        {"new case", [&] { click(b.window, "agent.cases.add"); }},
        {"input of a case", [&] { type(b.window, "agent.cases.0.input", QStringLiteral("Hi")); }},
        {"expectation", [&] { choose(b.window, "agent.cases.0.field.0.menu", "true"); }},
        {"no case", [&] { click(b.window, "agent.cases.0.remove"); }},
    };
    click(b.window, "agent.tab.evaluation");
    b.studio.settle();
    for (const auto& [name, edit] : edits) {
        edit();
        EXPECT_NE(b.agent(), before) << name;
        b.undo();
        EXPECT_EQ(b.agent(), before) << name;
        for (const char* tab : {"agent.tab.properties", "agent.tab.evaluation"}) {
            click(b.window, tab); // brings its page up to date
            b.studio.settle();
        }
    }
}

TEST(AgentBuilder, ShowsItsSectionsInOrder) {
    Builder b;
    std::vector<std::string> titles;
    for (const auto* label :
         find<QWidget>(b.window, "agent.properties").findChildren<SectionTitle*>()) {
        titles.push_back(fromQt(label->findChild<TextLabel*>()->text()));
    }
    EXPECT_EQ(titles, (std::vector<std::string>{"INSTRUCTIONS", "FLOW CONTEXT", "INPUT", "OUTPUT",
                                                "TOOLS", "KNOWLEDGE (RAG)"}));
}

TEST(AgentBuilder, IsReachedByTabFromTopToBottom) {
    Builder b;
    b.state().addTool();
    b.state().setSelectedNavigatorItem({NavigatorSelection::Agent{b.id}});
    b.edit([](Agent& agent) {
        agent.instructions = "Be kind.";
        agent.contextFieldNames = {"team"};
        agent.input = {property("grid", arrayOf(stringKind()))};
    });
    b.state().setRAGAttached(b.id, b.state().ragIndexes->front().id, true);
    ASSERT_TRUE(b.shows("agent.tools.0"));
    ASSERT_TRUE(b.shows("agent.knowledge.0.settings"));
    ASSERT_TRUE(b.becomesEnabled("agent.refine"));
    EXPECT_EQ(tabOrder(find<QWidget>(b.window, "agent"), "agent.name"),
              (std::vector<std::string>{"agent.name",
                                        "agent.summary",
                                        "agent.tab.properties",
                                        "agent.instructions",
                                        "agent.instructions.handle",
                                        "agent.refine",
                                        "agent.insert",
                                        "agent.context.team.remove",
                                        "agent.context.newName",
                                        "agent.context.add",
                                        "agent.input.0.name",
                                        "agent.input.0.type",
                                        "agent.input.0.element",
                                        "agent.input.0.optional",
                                        "agent.input.0.remove",
                                        "agent.input.0.description",
                                        "agent.input.add",
                                        "agent.output.edit",
                                        "agent.tools.0",
                                        "agent.knowledge.0.attached",
                                        "agent.knowledge.0.topK",
                                        "agent.knowledge.0.threshold"}));
    click(b.window, "agent.tab.evaluation");
    click(b.window, "agent.cases.add");
    b.studio.settle();
    EXPECT_EQ(tabOrder(find<QWidget>(b.window, "agent.evaluation"), "agent.cases.runAll"),
              (std::vector<std::string>{"agent.cases.runAll", "agent.cases.0.remove",
                                        "agent.cases.0.input", "agent.cases.add"}));
}

TEST(AgentBuilder, StaysAsWideAsItsPlaceWhateverTheNames) {
    Builder b;
    const std::string endless(3000, 'W');
    b.state().addTool();
    {
        auto tools = b.state().tools.edit();
        tools->back().name = endless;
        tools->back().description = endless;
    }
    {
        auto indexes = b.state().ragIndexes.edit();
        indexes->front().name = endless;
    }
    b.state().setSelectedNavigatorItem({NavigatorSelection::Agent{b.id}});
    b.edit([&](Agent& agent) {
        agent.name = agent.summary = agent.instructions = endless;
        agent.contextFieldNames = {endless};
        agent.input = {property(endless, arrayOf(arrayOf(arrayOf(stringKind())))),
                       property(endless, enumerationOf({endless}))};
        agent.output = objectOutput({property(endless, enumerationOf({endless}))});
        agent.ragAttachments.push_back({Uuid::random(), b.state().ragIndexes->front().id, 5, 0});
        AgentEvaluationCase& one = agent.evaluationCases.emplace_back();
        one.id = Uuid::random();
        one.input = endless;
        one.lastOutput = endless;
        one.expectedObjectFields = {{endless, endless}};
    });
    ASSERT_TRUE(b.shows("agent.knowledge.0.settings"));
    b.studio.platform.model->queue.push_back(R"({"instructions": ")" + endless +
                                             R"(", "summary": ")" + endless + R"("})");
    ASSERT_TRUE(b.becomesEnabled("agent.refine"));
    click(b.window, "agent.refine");
    ASSERT_TRUE(b.shows("agent.refine.proposal"));
    b.studio.platform.model->queue.push_back("{\"" + endless + "\": \"" + endless + "\"}");
    b.tryOn(QStringLiteral("Hello"));
    ASSERT_TRUE(b.shows("agent.result.table"));
    const auto& area = find<QScrollArea>(b.window, "agent.scroll");
    for (const int width : {1320, 900}) {
        b.window.resize(width, 860);
        for (const char* tab :
             {"agent.tab.properties", "agent.tab.playground", "agent.tab.evaluation"}) {
            click(b.window, tab);
            b.studio.settle();
            EXPECT_LE(area.widget()->width(), area.viewport()->width()) << width << " " << tab;
        }
    }
}

TEST(AgentBuilder, KeepsTopKBetweenOneAndTwenty) {
    Builder b;
    const Uuid index = b.state().ragIndexes->front().id;
    b.state().setRAGAttached(b.id, index, true);
    for (const auto& [stored, stepped] :
         std::vector<std::pair<int, int>>{{50, 20}, {0, 1}, {-3, 1}}) {
        b.state().setRAGTopK(b.id, index, stored);
        auto& topK = find<QSpinBox>(b.window, "agent.knowledge.0.topK");
        ASSERT_TRUE(b.studio.until([&] { return topK.value() == stored; }));
        stored > 20 ? topK.stepDown() : topK.stepUp();
        EXPECT_EQ(b.agent().ragAttachments[0].topK, stepped);
    }
}

TEST(AgentBuilder, ShowsTheThresholdThatIsStoredWhenWhatWasTypedIsNoNumber) {
    Builder b;
    b.state().setRAGAttached(b.id, b.state().ragIndexes->front().id, true);
    ASSERT_TRUE(b.shows("agent.knowledge.0.threshold"));
    for (const auto& [typed, stored] : std::vector<std::pair<const char*, double>>{
             {"1e300", 1e300}, {"0,5", 0.5}, {"-2", -2.0}, {"nan", -2.0}, {"", -2.0}}) {
        type(b.window, "agent.knowledge.0.threshold", QString::fromLatin1(typed));
        EXPECT_EQ(b.agent().ragAttachments[0].threshold, stored) << typed;
    }
    b.studio.settle();
    Q_EMIT find<QLineEdit>(b.window, "agent.knowledge.0.threshold").editingFinished();
    EXPECT_TRUE(b.says("agent.knowledge.0.threshold", "-2"));
}

TEST(AgentRefiner, IsOffForBlankInstructions) {
    Builder b;
    EXPECT_FALSE(find<QWidget>(b.window, "agent.refine").isEnabled());
    type(b.window, "agent.instructions", QStringLiteral("  "));
    b.studio.settle();
    EXPECT_FALSE(find<QWidget>(b.window, "agent.refine").isEnabled());
}

TEST(AgentRefiner, ProposesARewriteThatIsTakenUndoably) {
    Builder b;
    type(b.window, "agent.instructions", QStringLiteral("Be kind."));
    b.studio.advance(500ms);
    ASSERT_TRUE(b.becomesEnabled("agent.refine"));
    b.studio.platform.model->gate.close();
    b.studio.platform.model->queue.push_back(
        R"({"instructions": "Always be kind.", "summary": "Said when."})");
    click(b.window, "agent.refine");
    EXPECT_TRUE(find<BusyButton>(b.window, "agent.refine").isBusy());
    EXPECT_FALSE(find<QWidget>(b.window, "agent.refine").isEnabled());
    type(b.window, "agent.instructions", QStringLiteral("Be nice."));
    b.studio.platform.model->gate.open();
    ASSERT_TRUE(b.shows("agent.refine.proposal"));
    EXPECT_EQ(textOf(b.window, "agent.refine.text"), "Always be kind.");
    EXPECT_EQ(textOf(b.window, "agent.refine.summary"), "Said when.");
    EXPECT_EQ(b.agent().instructions, "Be nice.");
    b.studio.advance(500ms);
    type(b.window, "agent.instructions", QStringLiteral("Be fair."));
    b.studio.settle();
    EXPECT_TRUE(isShown(b.window, "agent.refine.proposal"));
    b.studio.advance(500ms);
    click(b.window, "agent.refine.use");
    EXPECT_EQ(b.agent().instructions, "Always be kind.");
    EXPECT_FALSE(isShown(b.window, "agent.refine.proposal"));
    b.undo();
    EXPECT_EQ(b.agent().instructions, "Be fair.");
}

TEST(AgentRefiner, DiscardsAProposal) {
    Builder b;
    b.edit([](Agent& agent) { agent.instructions = "Be kind."; });
    ASSERT_TRUE(b.becomesEnabled("agent.refine"));
    b.studio.platform.model->queue.push_back(R"({"instructions": "X", "summary": "Y"})");
    click(b.window, "agent.refine");
    ASSERT_TRUE(b.shows("agent.refine.proposal"));
    click(b.window, "agent.refine.discard");
    EXPECT_FALSE(isShown(b.window, "agent.refine.proposal"));
    EXPECT_EQ(b.agent().instructions, "Be kind.");
}

TEST(AgentRefiner, SaysWhyItFailedUntilTheNextPress) {
    Builder b;
    b.edit([](Agent& agent) { agent.instructions = "Be kind."; });
    ASSERT_TRUE(b.becomesEnabled("agent.refine"));
    b.studio.platform.model->unavailableReason = "off";
    click(b.window, "agent.refine");
    ASSERT_TRUE(b.shows("agent.refine.error"));
    EXPECT_EQ(fromQt(find<Banner>(b.window, "agent.refine.error").text()),
              "On-device model unavailable \u2014 enable Apple Intelligence to refine "
              "instructions.");
    b.studio.platform.model->unavailableReason.reset();
    b.studio.platform.model->queue.push_back(ModelAnswer::fails("Too long."));
    ASSERT_TRUE(b.becomesEnabled("agent.refine"));
    click(b.window, "agent.refine");
    EXPECT_TRUE(b.studio.until(
        [&] { return find<Banner>(b.window, "agent.refine.error").text() == "Too long."; }));
    EXPECT_EQ(b.agent().instructions, "Be kind.");
}

TEST(AgentTry, IsOffForABlankInput) {
    Builder b;
    click(b.window, "agent.knowledge.0.attached");
    click(b.window, "agent.tab.playground");
    EXPECT_FALSE(find<QWidget>(b.window, "agent.try.run").isEnabled());
    type(b.window, "agent.try.input", QStringLiteral(" \n "));
    EXPECT_FALSE(find<QWidget>(b.window, "agent.try.run").isEnabled());
    type(b.window, "agent.try.input", QStringLiteral("Hi"));
    EXPECT_TRUE(find<QWidget>(b.window, "agent.try.run").isEnabled());
}

TEST(AgentTry, ShowsTheAnswerAndHowLongItTook) {
    Builder b;
    ModelAnswer answer("Hello yourself");
    answer.takes = 1250ms;
    b.studio.platform.model->queue.push_back(answer);
    b.studio.platform.model->gate.close();
    b.tryOn(QStringLiteral("Hello"));
    EXPECT_TRUE(find<BusyButton>(b.window, "agent.try.run").isBusy());
    EXPECT_FALSE(isShown(b.window, "agent.result"));
    b.studio.platform.model->gate.open();
    EXPECT_TRUE(b.says("agent.try.status", "1.25s"));
    EXPECT_EQ(textOf(b.window, "agent.result.text"), "Hello yourself");
    EXPECT_EQ(b.window.findChild<QWidget*>(QStringLiteral("agent.result.context")), nullptr);
    EXPECT_TRUE(find<QWidget>(b.window, "agent.try.run").isEnabled());
}

TEST(AgentTry, SaysThatARunFailed) {
    Builder b;
    b.studio.platform.model->queue.push_back(ModelAnswer::fails("Out of memory."));
    b.tryOn(QStringLiteral("Hello"));
    EXPECT_TRUE(b.says("agent.try.status", "Failed"));
    EXPECT_EQ(textOf(b.window, "agent.result.text"), "The on-device model failed: Out of memory.");
    b.edit([](Agent& agent) { agent.output = enumerationOutput({}); });
    click(b.window, "agent.try.run");
    ASSERT_TRUE(b.studio.until([&] {
        return isShown(b.window, "agent.result") &&
               textOf(b.window, "agent.result.text") ==
                   "This output type has no cases/properties to generate yet.";
    }));
}

TEST(AgentTry, ShowsAnObjectAsATable) {
    Builder b;
    b.edit([](Agent& agent) {
        PropertyKind mood = enumerationOf({"calm"});
        std::get<PropertyKind::Enumeration>(mood.value).cases[0].description = "Without haste";
        agent.output = objectOutput({property("title", stringKind()), property("mood", mood),
                                     property("year", intKind(), true)});
    });
    b.studio.platform.model->queue.push_back(R"({"title": "Dune", "mood": "calm"})");
    b.tryOn(QStringLiteral("A book"));
    ASSERT_TRUE(b.shows("agent.result.table"));
    EXPECT_EQ(textOf(b.window, "agent.result.0.name"), "title");
    EXPECT_EQ(textOf(b.window, "agent.result.0.type"), "String");
    EXPECT_EQ(textOf(b.window, "agent.result.0.value"), "Dune");
    EXPECT_EQ(textOf(b.window, "agent.result.1.value"), "calm");
    EXPECT_EQ(textOf(b.window, "agent.result.1.value.description"), "Without haste");
    EXPECT_EQ(textOf(b.window, "agent.result.2.value"), "\u2014");
}

TEST(AgentTry, ShowsWhatTheModelWasGivenToKnow) {
    Builder b;
    const RAGIndex plants = knowledge("Plants", {"Ferns like shade."});
    const RAGIndex empty = knowledge("Empty", {});
    {
        auto indexes = b.state().ragIndexes.edit();
        indexes->push_back(plants);
        indexes->push_back(empty);
    }
    b.state().setRAGAttached(b.id, plants.id, true);
    b.state().setRAGAttached(b.id, empty.id, true);
    b.studio.platform.model->queue.push_back("In the shade");
    b.tryOn(QStringLiteral("Where do ferns grow?"));
    ASSERT_TRUE(b.shows("agent.result.context"));
    EXPECT_EQ(textOf(b.window, "agent.result.context.0"), "Plants");
    EXPECT_EQ(textOf(b.window, "agent.result.context.0.0.breadcrumb"), "Plants > Part 1");
    EXPECT_EQ(textOf(b.window, "agent.result.context.0.0.text"), "Ferns like shade.");
    EXPECT_EQ(textOf(b.window, "agent.result.context.0.0.score"), "1.00");
    EXPECT_EQ(textOf(b.window, "agent.result.context.1"), "Empty");
    EXPECT_EQ(textOf(b.window, "agent.result.context.1.empty"),
              "No chunks cleared this attachment's threshold \u2014 nothing from this index made "
              "it into the prompt.");
}

TEST(AgentTry, RunsTheAgentAsItWasWhenTheButtonWasPressed) {
    Builder b;
    b.edit([](Agent& agent) { agent.instructions = "Before"; });
    b.studio.platform.model->gate.close();
    b.studio.platform.model->queue.push_back("Done");
    b.tryOn(QStringLiteral("Hello"));
    b.edit([](Agent& agent) { agent.instructions = "After"; });
    b.studio.platform.model->gate.open();
    ASSERT_TRUE(b.shows("agent.result"));
    EXPECT_EQ(b.studio.platform.model->calls.back().instructions, "Before");
}

TEST(AgentTry, SaysThatThereIsNoModel) {
    Builder b;
    b.studio.platform.model->unavailableReason = "off";
    b.tryOn(QStringLiteral("Hello"));
    EXPECT_TRUE(b.says("agent.try.status", "Failed"));
    EXPECT_EQ(textOf(b.window, "agent.result.text"),
              "On-device model unavailable \u2014 enable Apple Intelligence to run this agent.");
}

TEST(AgentTry, CopiesTheAnswer) {
    Builder b;
    b.studio.platform.model->queue.push_back("Hello yourself");
    b.tryOn(QStringLiteral("Hello"));
    ASSERT_TRUE(b.shows("agent.result.copy"));
    click(b.window, "agent.result.copy");
    EXPECT_EQ(QGuiApplication::clipboard()->text(), "Hello yourself");
}

TEST(AgentTry, ForgetsTheLastResultWhenItRunsAgain) {
    Builder b;
    b.studio.platform.model->queue.push_back("One");
    b.tryOn(QStringLiteral("Hello"));
    ASSERT_TRUE(b.shows("agent.result"));
    b.studio.platform.model->gate.close();
    b.studio.platform.model->queue.push_back("Two");
    ASSERT_TRUE(b.becomesEnabled("agent.try.run"));
    click(b.window, "agent.try.run");
    EXPECT_FALSE(isShown(b.window, "agent.result"));
    EXPECT_FALSE(isShown(b.window, "agent.try.status"));
    b.studio.platform.model->gate.open();
    ASSERT_TRUE(b.shows("agent.result"));
    EXPECT_EQ(textOf(b.window, "agent.result.text"), "Two");
}

TEST(AgentTry, EndsQuietlyWhenItsWindowIsClosed) {
    Builder b;
    b.edit([](Agent& agent) {
        agent.instructions = "Be kind.";
        AgentEvaluationCase& one = agent.evaluationCases.emplace_back();
        one.id = Uuid::random();
        one.input = "Hello";
    });
    ASSERT_TRUE(b.becomesEnabled("agent.refine"));
    b.studio.platform.model->gate.close();
    click(b.window, "agent.refine");
    b.tryOn(QStringLiteral("Hello"));
    click(b.window, "agent.tab.evaluation");
    ASSERT_TRUE(b.becomesEnabled("agent.cases.runAll"));
    click(b.window, "agent.cases.runAll");
    b.studio.settle();
    EXPECT_EQ(b.studio.platform.model->gate.waiting(), 3U);
    const QPointer<DocumentWindow> window = &b.window;
    b.window.dismiss();
    b.studio.settle();
    EXPECT_EQ(window, nullptr);
    for (int i = 0; i < 3; ++i) {
        b.studio.platform.model->queue.push_back("Done");
    }
    b.studio.platform.model->gate.open();
    b.studio.settle();
    EXPECT_EQ(b.studio.platform.model->gate.waiting(), 0U);
}

TEST(AgentTry, SurvivesTheEndOfItsView) {
    Builder b;
    b.studio.platform.model->gate.close();
    b.studio.platform.model->queue.push_back("Done");
    b.tryOn(QStringLiteral("Hello"));
    b.id = b.state().addAgent().id;
    b.show();
    b.studio.platform.model->gate.open();
    b.studio.settle();
    EXPECT_FALSE(isShown(b.window, "agent.result"));
}

TEST(AgentCases, HintWhatTheyAreForWhereThereAreNone) {
    Builder b;
    click(b.window, "agent.tab.evaluation");
    EXPECT_EQ(textOf(b.window, "agent.cases.empty"),
              "No test inputs yet \u2014 add one to try this agent against a fixed set of "
              "examples.");
    EXPECT_FALSE(find<QWidget>(b.window, "agent.cases.runAll").isEnabled());
    click(b.window, "agent.cases.add");
    EXPECT_TRUE(b.shows("agent.cases.empty", false));
    ASSERT_EQ(b.agent().evaluationCases.size(), 1U);
    EXPECT_TRUE(b.becomesEnabled("agent.cases.runAll"));
    EXPECT_FALSE(find<QWidget>(b.window, "agent.cases.0.run").isEnabled());
    EXPECT_FALSE(isShown(b.window, "agent.cases.0.expected"));
    click(b.window, "agent.cases.0.remove");
    EXPECT_TRUE(b.agent().evaluationCases.empty());
    EXPECT_TRUE(b.shows("agent.cases.empty"));
}

TEST(AgentCases, JudgeAnEnumeration) {
    Builder b;
    b.edit([](Agent& agent) { agent.output = enumerationOutput({"Bug", "Question"}); });
    click(b.window, "agent.tab.evaluation");
    click(b.window, "agent.cases.add");
    type(b.window, "agent.cases.0.input", QStringLiteral("It crashes"));
    ASSERT_TRUE(b.becomesEnabled("agent.cases.0.run"));
    auto& menu = find<QComboBox>(b.window, "agent.cases.0.enumCase");
    EXPECT_EQ(fromQt(menu.currentText()), "\u2014 no expectation \u2014");
    b.studio.platform.model->answer = [](const ModelCall&) { return ModelAnswer("\"Bug\""); };
    click(b.window, "agent.cases.0.run");
    ASSERT_TRUE(b.shows("agent.cases.0.output"));
    EXPECT_FALSE(isShown(b.window, "agent.cases.0.verdict"));
    choose(b.window, "agent.cases.0.enumCase", "Question");
    EXPECT_EQ(b.agent().evaluationCases[0].expectedEnumCase, "Question");
    ASSERT_TRUE(b.becomesEnabled("agent.cases.0.run"));
    click(b.window, "agent.cases.0.run");
    ASSERT_TRUE(b.shows("agent.cases.0.verdict"));
    EXPECT_EQ(find<QWidget>(b.window, "agent.cases.0.verdict").accessibleName(), "Failed");
    choose(b.window, "agent.cases.0.enumCase", "Bug");
    click(b.window, "agent.cases.0.run");
    EXPECT_TRUE(b.studio.until([&] {
        return find<QWidget>(b.window, "agent.cases.0.verdict").accessibleName() == "Passed";
    }));
}

TEST(AgentCases, AskForEachPropertyOfAnObject) {
    Builder b;
    b.edit([](Agent& agent) {
        agent.output = objectOutput({property("title", stringKind()), property("done", boolKind()),
                                     property("mood", enumerationOf({"calm"}))});
    });
    click(b.window, "agent.tab.evaluation");
    click(b.window, "agent.cases.add");
    ASSERT_TRUE(b.shows("agent.cases.0.field.0.text"));
    EXPECT_EQ(textOf(b.window, "agent.cases.0.field.0.title"), "title");
    EXPECT_FALSE(isShown(b.window, "agent.cases.0.field.1.text"));
    type(b.window, "agent.cases.0.field.0.text", QStringLiteral("Dune"));
    choose(b.window, "agent.cases.0.field.1.menu", "true");
    choose(b.window, "agent.cases.0.field.2.menu", "calm");
    const std::map<std::string, std::string> expected{
        {"title", "Dune"}, {"done", "true"}, {"mood", "calm"}};
    EXPECT_EQ(b.agent().evaluationCases[0].expectedObjectFields, expected);
    EXPECT_EQ(find<QComboBox>(b.window, "agent.cases.0.field.2.menu")
                  .findText(QString::fromUtf8("\u2014 no expectation \u2014")),
              0);
}

TEST(AgentCases, OfferTrueAndFalseForABool) {
    Builder b;
    b.edit([](Agent& agent) { agent.output = objectOutput({property("done", boolKind())}); });
    click(b.window, "agent.tab.evaluation");
    click(b.window, "agent.cases.add");
    ASSERT_TRUE(b.shows("agent.cases.0.field.0.menu"));
    const auto& menu = find<QComboBox>(b.window, "agent.cases.0.field.0.menu");
    ASSERT_EQ(menu.count(), 2);
    EXPECT_EQ(menu.itemText(0), "true");
    EXPECT_EQ(menu.itemText(1), "false");
    EXPECT_EQ(menu.currentIndex(), -1);
    EXPECT_EQ(fromQt(menu.placeholderText()), "\u2014 no expectation \u2014");
}

TEST(AgentCases, KeepTheLastResultWhileTheyAreEdited) {
    Builder b;
    b.edit([](Agent& agent) {
        agent.output = enumerationOutput({"Bug", "Question"});
        AgentEvaluationCase& one = agent.evaluationCases.emplace_back();
        one.id = Uuid::random();
        one.input = "It crashes";
        one.expectedEnumCase = "Bug";
        one.lastOutput = "\"Bug\"";
        one.lastPassed = true;
    });
    click(b.window, "agent.tab.evaluation");
    ASSERT_TRUE(b.shows("agent.cases.0.verdict"));
    type(b.window, "agent.cases.0.input", QStringLiteral("It works"));
    choose(b.window, "agent.cases.0.enumCase", "Question");
    b.studio.settle();
    EXPECT_EQ(find<QWidget>(b.window, "agent.cases.0.verdict").accessibleName(), "Passed");
    EXPECT_EQ(textOf(b.window, "agent.cases.0.output"), "\"Bug\"");
    b.edit([](Agent& agent) { agent.output = objectOutput({property("a", stringKind())}); });
    EXPECT_TRUE(b.shows("agent.cases.0.enumCase", false));
    EXPECT_EQ(b.agent().evaluationCases[0].expectedEnumCase, "Question");
}

TEST(AgentCases, ShowAnExpectationThatIsNoCaseAnyMore) {
    Builder b;
    b.edit([](Agent& agent) {
        agent.output = enumerationOutput({"Bug"});
        AgentEvaluationCase& one = agent.evaluationCases.emplace_back();
        one.id = Uuid::random();
        one.expectedEnumCase = "Wish";
    });
    click(b.window, "agent.tab.evaluation");
    ASSERT_TRUE(b.shows("agent.cases.0.enumCase"));
    const auto& menu = find<QComboBox>(b.window, "agent.cases.0.enumCase");
    EXPECT_EQ(menu.currentIndex(), -1);
    EXPECT_EQ(menu.placeholderText(), "Wish");
}

TEST(AgentCases, DropTheResultOfACaseThatWasRemovedMeanwhile) {
    Builder b;
    click(b.window, "agent.tab.evaluation");
    click(b.window, "agent.cases.add");
    type(b.window, "agent.cases.0.input", QStringLiteral("Hello"));
    ASSERT_TRUE(b.becomesEnabled("agent.cases.0.run"));
    b.studio.platform.model->gate.close();
    b.studio.platform.model->queue.push_back("Hi");
    click(b.window, "agent.cases.0.run");
    EXPECT_FALSE(isShown(b.window, "agent.cases.0.run"));
    EXPECT_TRUE(isShown(b.window, "agent.cases.0.spinner"));
    click(b.window, "agent.cases.0.remove");
    b.studio.platform.model->gate.open();
    b.studio.settle();
    EXPECT_TRUE(b.agent().evaluationCases.empty());
    EXPECT_TRUE(b.shows("agent.cases.empty"));
}

TEST(AgentCases, ManyAreShownInPages) {
    Builder b;
    b.edit([](Agent& agent) {
        for (int i = 0; i < 90; ++i) {
            AgentEvaluationCase& each = agent.evaluationCases.emplace_back();
            each.id = Uuid::random();
            each.input = "Case " + std::to_string(i);
        }
    });
    click(b.window, "agent.tab.evaluation");
    EXPECT_TRUE(b.says("agent.cases.pages", "1\u201340 of 90"));
    click(b.window, "agent.cases.next");
    EXPECT_EQ(find<QPlainTextEdit>(b.window, "agent.cases.0.input").toPlainText(), "Case 40");
    type(b.window, "agent.cases.1.input", QStringLiteral("Changed"));
    EXPECT_EQ(b.agent().evaluationCases[41].input, "Changed");
    click(b.window, "agent.cases.0.remove");
    EXPECT_EQ(b.agent().evaluationCases.size(), 89U);
    EXPECT_EQ(b.agent().evaluationCases[40].input, "Changed");
}

TEST(AgentCases, ComeIntoViewWhenTheyAreAdded) {
    Builder b;
    b.window.activateWindow();
    click(b.window, "agent.tab.evaluation");
    for (int i = 0; i < 12; ++i) {
        click(b.window, "agent.cases.add");
    }
    b.studio.settle();
    const auto& input = find<QWidget>(b.window, "agent.cases.11.input");
    EXPECT_EQ(QApplication::focusWidget(), &input);
    EXPECT_TRUE(isSeen(input));
}

TEST(AgentCases, RunAllWaitsForTheLast) {
    Builder b;
    b.edit([](Agent& agent) {
        for (int i = 0; i < 5; ++i) {
            AgentEvaluationCase& each = agent.evaluationCases.emplace_back();
            each.id = Uuid::random();
            each.input = i == 4 ? "" : "Case " + std::to_string(i);
        }
    });
    b.studio.platform.model->answer = [](const ModelCall& call) {
        return ModelAnswer("Answer to " + call.prompt);
    };
    b.studio.platform.model->gate.close();
    click(b.window, "agent.tab.evaluation");
    ASSERT_TRUE(b.becomesEnabled("agent.cases.runAll"));
    click(b.window, "agent.cases.runAll");
    b.studio.settle();
    EXPECT_EQ(b.studio.platform.model->gate.waiting(), 5U);
    for (int left = 5; left > 0; --left) {
        EXPECT_FALSE(find<QWidget>(b.window, "agent.cases.runAll").isEnabled());
        const auto name = "agent.cases." + std::to_string(5 - left) + ".spinner";
        EXPECT_TRUE(b.shows(name.c_str()));
        b.studio.platform.model->gate.letOne();
        b.studio.settle();
    }
    EXPECT_TRUE(b.becomesEnabled("agent.cases.runAll"));
    EXPECT_TRUE(b.says("agent.cases.0.output", "Answer to Case 0"));
    EXPECT_FALSE(isShown(b.window, "agent.cases.0.verdict"));
    EXPECT_FALSE(isShown(b.window, "agent.cases.0.spinner"));
}

TEST(AgentCases, WriteTheirResultAfterTheBuilderIsClosed) {
    Builder b;
    click(b.window, "agent.tab.evaluation");
    click(b.window, "agent.cases.add");
    type(b.window, "agent.cases.0.input", QStringLiteral("Hello"));
    ASSERT_TRUE(b.becomesEnabled("agent.cases.0.run"));
    b.studio.platform.model->gate.close();
    b.studio.platform.model->queue.push_back("Hi");
    click(b.window, "agent.cases.0.run");
    const Uuid first = b.id;
    b.id = b.state().addAgent().id;
    b.show();
    b.studio.platform.model->gate.open();
    EXPECT_TRUE(b.studio.until(
        [&] { return b.state().agent(first)->evaluationCases[0].lastOutput == "Hi"; }));
}

} // namespace
} // namespace ombrel
