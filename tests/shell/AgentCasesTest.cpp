#include "tests/shell/AgentBuilderFixture.h"

namespace ombrel {
namespace {

using namespace test;
using namespace std::chrono_literals;
using Builder = AgentBuilderFixture;

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
