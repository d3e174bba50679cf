#include "tests/shell/AgentBuilderFixture.h"

namespace ombrel {
namespace {

using namespace test;
using namespace std::chrono_literals;
using Builder = AgentBuilderFixture;

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

} // namespace
} // namespace ombrel
