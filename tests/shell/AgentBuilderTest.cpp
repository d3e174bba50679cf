#include "tests/shell/AgentBuilderFixture.h"

namespace ombrel {
namespace {

using namespace test;
using namespace std::chrono_literals;
using Builder = AgentBuilderFixture;

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

} // namespace
} // namespace ombrel
