#include "shell/tabs/PlaygroundTab.h"

#include "retrieval/PlaygroundTexts.h"
#include "shell/tabs/QuestionHistory.h"
#include "tests/shell/TabWithChunks.h"

#include <QClipboard>
#include <QListView>
#include <QMenu>
#include <QToolButton>

#include <chrono>

namespace ombrel {
namespace {

using namespace test;
using namespace std::chrono_literals;

struct Playground : TabWithChunks {
    Playground() : TabWithChunks(AppTab::playground) {}

    void addBusChunks() const {
        addChunks({makeChunk("The last bus leaves at nine.", {"Travel", "Buses"}),
                   makeChunk("A bus stops at the old mill.", {"Travel", "Stops"})});
    }
    // Asks as a user does, and waits for the result.
    void ask(const QString& question) {
        type(window, "playground.question", question);
        enables("playground.ask", true);
        click(window, "playground.ask");
        const std::string text = fromQt(question);
        studio.until([&] {
            const RAGIndex& index = state.currentIndex();
            return !index.isAsking && index.playgroundResult &&
                   index.playgroundResult->question == text;
        });
        studio.until([&] { return isShown(window, "playground.result"); });
    }
    std::string hit(int row) {
        const auto* model = find<QListView>(window, "playground.hitList").model();
        return fromQt(model->index(row, 0).data().toString());
    }
};

TEST(PlaygroundTab, SaysWhatToDoWhileThereIsNoResult) {
    Playground f;
    EXPECT_TRUE(isShown(f.window, "playground.empty"));
    EXPECT_FALSE(isShown(f.window, "playground.result"));
    EXPECT_EQ(textOf(find<QWidget>(f.window, "playground.empty"), "empty.title"),
              "Ask a question to see retrieval and the answer.");
    EXPECT_EQ(textOf(find<QWidget>(f.window, "playground.reason"), "bannerText"),
              "No sources imported yet \u2014 add documents in Sources first.");
}

TEST(PlaygroundTab, TellsWhyAnIndexGivesLessThanItCould) {
    Playground f;
    f.addBusChunks();
    EXPECT_TRUE(f.hides("playground.reason"));
    auto& banner = find<QWidget>(f.window, "playground.reason");
    f.setIndex(IndexKind::hybrid);
    EXPECT_TRUE(f.studio.until([&] {
        return textOf(banner, "bannerText") == "This index needs embeddings for the current "
                                               "chunks \u2014 click Build in the toolbar first.";
    }));
    f.setIndex(IndexKind::spotlight);
    EXPECT_TRUE(f.studio.until([&] {
        return textOf(banner, "bannerText") ==
               "Live retrieval currently covers Keyword, Vector, and Hybrid \u2014 Spotlight isn't "
               "implemented yet. Switch Settings to try it.";
    }));
}

TEST(PlaygroundTab, EnablesAskingForARawQuestionThatIsNotEmpty) {
    Playground f;
    type(f.window, "playground.question", QStringLiteral("bus"));
    EXPECT_TRUE(f.enables("playground.ask", false)) << "there are no chunks";
    f.addBusChunks();
    EXPECT_TRUE(f.enables("playground.ask", true));
    type(f.window, "playground.question", {});
    EXPECT_TRUE(f.enables("playground.ask", false));
    type(f.window, "playground.question", QStringLiteral("  "));
    EXPECT_TRUE(f.enables("playground.ask", true)) << "blank is not empty";
    EXPECT_TRUE(f.studio.until([&] {
        return !find<QAction>(f.window, "command.runQuery").isEnabled();
    })) << "the command wants more than blanks";
    f.setIndex(IndexKind::spotlight);
    EXPECT_TRUE(f.enables("playground.ask", false));
    // The embeddings that are missing don't keep anyone from asking.
    f.setIndex(IndexKind::vector);
    EXPECT_TRUE(f.enables("playground.ask", true));
}

TEST(PlaygroundTab, LeavesASpotlightVariantAloneOnEnter) {
    Playground f;
    f.addBusChunks();
    f.setIndex(IndexKind::spotlight);
    type(f.window, "playground.question", QStringLiteral("bus"));
    pressKey(find<QWidget>(f.window, "playground.question"), Qt::Key_Return);
    f.studio.settle();
    EXPECT_FALSE(f.state.currentIndex().playgroundResult);
    EXPECT_TRUE(f.state.currentVariant().recordedLatencies.empty());
}

TEST(PlaygroundTab, KeepsTheQuestionAsTypedAndUndoesIt) {
    Playground f;
    type(f.window, "playground.question", QStringLiteral(" last bus "));
    EXPECT_EQ(f.state.currentIndex().playgroundQuestion, " last bus ");
    f.studio.advance(500ms);
    trigger(f.window, "command.undo");
    EXPECT_TRUE(f.shows("playground.question", ""));
}

TEST(PlaygroundTab, ShowsTheAnswerAndEveryStage) {
    Playground f;
    f.addBusChunks();
    const ModelUsage usage{1200, 300, 40};
    f.studio.platform.model->queue.push_back(
        ModelAnswer::streams({{"At", std::nullopt, 800ms}, {"At nine.", usage, 250ms}}));
    f.ask(QStringLiteral("last bus"));

    const PlaygroundResult& result = *f.state.currentIndex().playgroundResult;
    EXPECT_EQ(textOf(f.window, "playground.answer"), "At nine.");
    EXPECT_EQ(textOf(f.window, "playground.askedQuestion"), "last bus");
    EXPECT_EQ(textOf(f.window, "playground.answerHeader"),
              "Live \u00b7 keyword search + on-device model");
    EXPECT_EQ(textOf(f.window, "playground.query.toggle"), "Search query");
    EXPECT_EQ(textOf(f.window, "playground.queryText"), "last bus");
    EXPECT_EQ(textOf(f.window, "playground.times.summary"), "Total 1.05 s");
    EXPECT_EQ(fromQt(find<QWidget>(f.window, "playground.stages").accessibleName()),
              "Rewrite 0 ms, Search 0 ms, Pack 0 ms, Answer 1.05 s");
    EXPECT_EQ(textOf(f.window, "playground.context.toggle"), "Context window");
    EXPECT_EQ(textOf(f.window, "playground.context.summary"), contextBarText(result, f.settings()));
    EXPECT_NE(fromQt(find<QWidget>(f.window, "playground.contextBar").accessibleName())
                  .find("Context 2 chunks: 40 tokens"),
              std::string::npos);
    EXPECT_EQ(textOf(f.window, "playground.hits.summary"), "2 chunks, 2 in the prompt");
    EXPECT_EQ(f.hit(0), "1. Travel > Buses\nIn prompt\nkeyword 1.00\nvector 0.00\nfused 1.00\n"
                        "The last bus leaves at nine.");
    EXPECT_EQ(textOf(f.window, "playground.breakdownLines"),
              "Processing prompt \u00b7 800 ms \u00b7 1200 input tokens (300 cached)\n"
              "Generating reply \u00b7 250 ms \u00b7 40 output tokens");
    EXPECT_FALSE(isShown(f.window, "playground.running"));
    EXPECT_FALSE(isShown(f.window, "playground.empty"));
}

TEST(PlaygroundTab, ShowsWhatIsWrittenWhileTheOldResultStays) {
    Playground f;
    f.addBusChunks();
    ScriptedModel& model = *f.studio.platform.model;
    model.queue.push_back("First.");
    f.ask(QStringLiteral("bus"));

    model.queue.push_back(ModelAnswer::streams({{"Second"}, {"Second answer."}}));
    model.pieceGate.close();
    type(f.window, "playground.question", QStringLiteral("old mill"));
    pressKey(find<QWidget>(f.window, "playground.question"), Qt::Key_Return, Qt::ControlModifier);
    EXPECT_TRUE(f.studio.until([&] { return isShown(f.window, "playground.running"); }));
    EXPECT_TRUE(f.enables("playground.ask", false));
    EXPECT_TRUE(f.enables("playground.warmUp", false));
    EXPECT_EQ(textOf(f.window, "playground.answer"), "First.");
    ASSERT_TRUE(f.studio.until([&] { return model.pieceGate.letOne(); }));
    EXPECT_TRUE(f.shows("playground.written", "Second"));
    EXPECT_EQ(textOf(f.window, "playground.runningTitle"), "Answering\u2026");
    EXPECT_EQ(textOf(f.window, "playground.answer"), "First.");
    model.pieceGate.open();
    EXPECT_TRUE(f.shows("playground.answer", "Second answer."));
    EXPECT_TRUE(f.hides("playground.running"));
    EXPECT_EQ(f.state.currentVariant().recordedLatencies.size(), 2U);
}

TEST(PlaygroundTab, AsksOnceHoweverOftenEnterIsPressed) {
    Playground f;
    f.addBusChunks();
    f.studio.platform.model->answer = [](const ModelCall&) { return ModelAnswer("Nine."); };
    type(f.window, "playground.question", QStringLiteral("bus"));
    f.studio.platform.model->gate.close();
    auto& field = find<QWidget>(f.window, "playground.question");
    pressKey(field, Qt::Key_Return);
    pressKey(field, Qt::Key_Return);
    f.studio.settle();
    pressKey(field, Qt::Key_Return);
    f.studio.platform.model->gate.open();
    EXPECT_TRUE(f.shows("playground.answer", "Nine."));
    EXPECT_EQ(f.studio.platform.model->calls.size(), 1U);
}

TEST(PlaygroundTab, ShowsTheHitsWhenNothingFitsTheBudget) {
    Playground f;
    f.addBusChunks();
    BuildSettings settings = f.settings();
    settings.contextBudget = 100; // less than the reserve of the answer
    f.set(settings);
    f.ask(QStringLiteral("bus"));
    EXPECT_EQ(textOf(f.window, "playground.answer"),
              "Nothing in the indexed content matched this question closely enough to answer.");
    EXPECT_EQ(textOf(f.window, "playground.hits.summary"), "2 chunks, 0 in the prompt");
    EXPECT_NE(f.hit(0).find("\nOver budget\n"), std::string::npos);
    EXPECT_FALSE(isShown(f.window, "playground.breakdown"));
}

TEST(PlaygroundTab, MarksAHitThatSentItsWholeSection) {
    Playground f;
    DocumentChunk chunk = makeChunk("The last bus.", {"Travel"});
    chunk.parentText = "The last bus leaves at nine from the old mill.";
    f.addChunks({chunk});
    f.ask(QStringLiteral("bus"));
    EXPECT_NE(f.hit(0).find("Parent\u2013child: matched here, sent the whole parent section"),
              std::string::npos);
}

TEST(PlaygroundTab, TitlesTheQueryByTheTransform) {
    Playground f;
    f.addBusChunks();
    f.setTransform(QueryTransform::multiQuery);
    f.studio.platform.model->queue = {"bus times\n\nold mill\nlast\nfour\nfive", "Nine."};
    f.ask(QStringLiteral("When?"));
    EXPECT_EQ(textOf(f.window, "playground.query.toggle"), "Query variants, merged by rank");
    EXPECT_EQ(textOf(f.window, "playground.queryText"), "bus times | old mill | last");
    f.setTransform(QueryTransform::hyde);
    EXPECT_TRUE(f.shows("playground.query.toggle", "Drafted hypothetical answer, searched as-is"));
    f.setTransform(QueryTransform::rewrite);
    EXPECT_TRUE(f.shows("playground.query.toggle", "Rewritten query"));
}

TEST(PlaygroundTab, TracesTheSearchesOfTheModel) {
    Playground f;
    f.addBusChunks();
    f.setTransform(QueryTransform::tool);
    ModelAnswer answer("At nine.");
    answer.toolCalls = {{"search_knowledge_base", R"({"query":"bus"})"},
                        {"search_knowledge_base", R"({"query":"bus"})"}};
    answer.takes = 1500ms;
    f.studio.platform.model->queue.push_back(answer);
    f.ask(QStringLiteral("When is the last one?"));
    EXPECT_EQ(textOf(f.window, "playground.query.toggle"), "Search queries issued by the model");
    EXPECT_EQ(textOf(f.window, "playground.queryText"), "bus | bus");
    EXPECT_TRUE(isShown(f.window, "playground.promptText"));
    EXPECT_EQ(fromQt(find<QPlainTextEdit>(f.window, "playground.promptText").toPlainText()),
              "Tool (agentic) \u2014 the model issued 2 search call(s):\n1. bus\n2. bus");
    EXPECT_EQ(textOf(f.window, "playground.hits.summary"), "2 chunks, 2 in the prompt");
    EXPECT_EQ(textOf(f.window, "playground.times.summary"), "Total 1.50 s");
    EXPECT_FALSE(isShown(f.window, "playground.breakdown"));

    f.studio.platform.model->queue.push_back("I don't know.");
    f.ask(QStringLiteral("Why?"));
    EXPECT_TRUE(f.shows("playground.queryText", "Why?"));
    EXPECT_TRUE(isShown(f.window, "playground.noHits"));
    EXPECT_FALSE(find<QWidget>(f.window, "playground.saveTestCase").isEnabled());
}

TEST(PlaygroundTab, TellsOfAModelThatIsMissing) {
    Playground f;
    f.addBusChunks();
    f.studio.platform.model->unavailableReason = "modelNotInstalled";
    f.show(AppTab::sources);
    f.show(AppTab::playground);
    auto& tab = find<QWidget>(f.window, "tab.playground");
    EXPECT_TRUE(f.studio.until([&] { return isShown(tab, "modelSetup"); }));
    EXPECT_TRUE(isShown(tab, "modelSetup.preferences"));
    f.ask(QStringLiteral("bus"));
    EXPECT_EQ(textOf(f.window, "playground.answer"),
              "Retrieved 2 chunk(s). On-device model unavailable (modelNotInstalled) \u2014 enable "
              "Apple Intelligence to generate a real answer.");
    EXPECT_EQ(textOf(f.window, "playground.hits.summary"), "2 chunks, 2 in the prompt");
}

TEST(PlaygroundTab, FoldsEachStage) {
    Playground f;
    f.addBusChunks();
    f.studio.platform.model->queue.push_back("Nine.");
    f.ask(QStringLiteral("bus"));
    const std::pair<const char*, const char*> stages[] = {
        {"playground.query.toggle", "playground.queryText"},
        {"playground.times.toggle", "playground.stages"},
        {"playground.context.toggle", "playground.contextBar"},
        {"playground.hits.toggle", "playground.hitList"},
        {"playground.prompt.toggle", "playground.promptText"}};
    for (const auto& [toggle, body] : stages) {
        const bool shown = isShown(f.window, body);
        pressKey(find<QWidget>(f.window, toggle), Qt::Key_Space);
        EXPECT_NE(isShown(f.window, body), shown) << toggle;
        pressKey(find<QWidget>(f.window, toggle), Qt::Key_Space);
        EXPECT_EQ(isShown(f.window, body), shown) << toggle;
    }
}

TEST(PlaygroundTab, CopiesThePromptAsItWasSent) {
    Playground f;
    f.addBusChunks();
    f.studio.platform.model->queue.push_back("Nine.");
    f.ask(QStringLiteral("bus"));
    click(f.window, "playground.copyPrompt");
    EXPECT_EQ(fromQt(QApplication::clipboard()->text()),
              f.state.currentIndex().playgroundResult->fullPrompt);
    f.state.editCurrentIndex()->playgroundResult->fullPrompt.clear();
    EXPECT_TRUE(f.enables("playground.copyPrompt", false));
}

TEST(PlaygroundTab, SavesWhatWasFoundFirstAsATestCase) {
    Playground f;
    f.addBusChunks();
    f.studio.platform.model->queue.push_back("Nine.");
    f.ask(QStringLiteral("last bus"));
    click(f.window, "playground.saveTestCase");
    const auto& questions = f.state.currentIndex().testQuestions;
    ASSERT_EQ(questions.size(), 1U);
    EXPECT_EQ(questions[0].question, "last bus");
    EXPECT_EQ(questions[0].expectedBreadcrumb, (Texts{"Travel", "Buses"}));
    EXPECT_EQ(questions[0].status, QuestionStatus::notEvaluated);
    EXPECT_FALSE(questions[0].isDrafted);
    EXPECT_NE(textOf(f.window, "playground.saved").find("Travel > Buses"), std::string::npos);
    f.studio.advance(500ms);
    trigger(f.window, "command.undo");
    EXPECT_TRUE(f.state.currentIndex().testQuestions.empty());
}

TEST(PlaygroundTab, WarmsTheModelUp) {
    Playground f;
    f.studio.platform.model->queue.push_back("OK");
    f.studio.platform.model->gate.close();
    click(f.window, "playground.warmUp");
    EXPECT_TRUE(f.enables("playground.warmUp", false));
    EXPECT_TRUE(isShown(f.window, "playground.warmUpStatus"));
    f.studio.platform.model->gate.open();
    EXPECT_TRUE(f.shows("playground.warmUpStatus",
                        "Model warmed up in 0.0s \u2014 the next question should start answering "
                        "sooner."));
    EXPECT_TRUE(f.enables("playground.warmUp", true));
    EXPECT_EQ(find<QWidget>(f.window, "playground.warmUp").toolTip(),
              QStringLiteral("Pre-load the on-device model now, before asking a real question, so "
                             "the first real answer doesn't pay the cold-start cost."));
}

TEST(PlaygroundTab, RemembersTheQuestionsOfTheSession) {
    Playground f;
    f.addBusChunks();
    f.studio.platform.model->answer = [](const ModelCall&) { return ModelAnswer("Nine."); };
    EXPECT_FALSE(find<QWidget>(f.window, "playground.history").isEnabled());
    f.ask(QStringLiteral("first bus"));
    f.ask(QStringLiteral("last bus"));
    auto& field = find<QWidget>(f.window, "playground.question");
    type(f.window, "playground.question", QStringLiteral("half ty"));
    pressKey(field, Qt::Key_Up);
    EXPECT_EQ(textOf(f.window, "playground.question"), "last bus");
    pressKey(field, Qt::Key_Up);
    EXPECT_EQ(f.state.currentIndex().playgroundQuestion, "first bus");
    pressKey(field, Qt::Key_Up);
    EXPECT_EQ(textOf(f.window, "playground.question"), "first bus");
    pressKey(field, Qt::Key_Down);
    pressKey(field, Qt::Key_Down);
    EXPECT_EQ(f.state.currentIndex().playgroundQuestion, "half ty");

    auto& menu = find<QMenu>(f.window, "playground.historyMenu");
    Q_EMIT menu.aboutToShow();
    ASSERT_EQ(menu.actions().size(), 2);
    menu.actions().last()->trigger();
    EXPECT_EQ(f.state.currentIndex().playgroundQuestion, "first bus");
}

TEST(QuestionHistory, HasEachQuestionOnceTheNewestLast) {
    QuestionHistory history;
    history.add(QStringLiteral("a"));
    history.add(QStringLiteral("b"));
    history.add(QStringLiteral("  "));
    history.add(QStringLiteral("a"));
    EXPECT_EQ(history.questions(), (QStringList{QStringLiteral("b"), QStringLiteral("a")}));
    // The newest stands in the field after it was asked: one up is the one before.
    EXPECT_EQ(history.older(QStringLiteral("a")), QStringLiteral("b"));
    EXPECT_EQ(history.newer(QStringLiteral("b")), QStringLiteral("a"));
    EXPECT_EQ(QuestionHistory().older(QStringLiteral("x")), QStringLiteral("x"));
}

} // namespace
} // namespace ombrel
