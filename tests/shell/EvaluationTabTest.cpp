#include "shell/tabs/EvaluationTab.h"

#include "evaluation/TestQuestions.h"
#include "tests/shell/TabWithChunks.h"
#include "tests/support/FileContents.h"

#include <QAbstractItemView>
#include <QCompleter>
#include <QDialog>
#include <QFileDialog>
#include <QTableView>

#include <chrono>

namespace ombrel {
namespace {

using namespace test;
using namespace std::chrono_literals;

struct Evaluation : TabWithChunks {
    Evaluation() : TabWithChunks(AppTab::evaluation) {}

    // Of the sections "1", "2", and so on that "bus" finds in this order.
    void addRankedChunks(int count) const {
        std::vector<DocumentChunk> chunks;
        for (int i = 1; i <= count; ++i) {
            std::string text = "bus";
            for (int word = 0; word < i; ++word) {
                text += " road";
            }
            chunks.push_back(makeChunk(std::move(text), {std::to_string(i)}));
        }
        addChunks(std::move(chunks));
    }
    QAbstractItemView& list() { return find<QAbstractItemView>(window, "evaluation.list"); }
    std::string row(int place) { return fromQt(list().model()->index(place, 0).data().toString()); }
    std::string tile(const char* name) {
        auto& shown = find<QWidget>(window, name);
        return textOf(shown, "value") + " | " + textOf(shown, "subtitle");
    }
    std::string variantRow(int place) {
        const auto* model = find<QTableView>(window, "evaluation.variants").model();
        std::string text;
        for (int column = 0; column < model->columnCount(); ++column) {
            text +=
                (column > 0 ? " | " : "") + fromQt(model->index(place, column).data().toString());
        }
        return text;
    }
    void run() {
        enables("evaluation.run", true);
        click(window, "evaluation.run");
        studio.settle();
    }
    bool listIs(const std::string& title) {
        return studio.until([&] {
            auto& shown = find<QWidget>(window, "evaluation.listTitle");
            return fromQt(shown.findChild<QLabel*>()->text()) == title;
        });
    }
};

TEST(EvaluationTab, SaysWhatToDoWithoutQuestions) {
    Evaluation f;
    EXPECT_EQ(textOf(find<QWidget>(f.window, "evaluation.empty"), "empty.title"),
              "No test questions yet \u2014 add one above, or use \"Save as test case\" in "
              "Playground.");
    EXPECT_EQ(textOf(find<QWidget>(f.window, "evaluation.reason"), "bannerText"),
              "No sources imported yet \u2014 add documents in Sources first.");
    EXPECT_FALSE(find<QWidget>(f.window, "evaluation.run").isEnabled());
    EXPECT_FALSE(find<QWidget>(f.window, "evaluation.draft").isEnabled());
    EXPECT_FALSE(isShown(f.window, "evaluation.detail"));
    EXPECT_FALSE(isShown(f.window, "evaluation.list"));
    EXPECT_EQ(f.tile("evaluation.tile.Recall@5"), "Not evaluated yet | across 0 questions");
    EXPECT_EQ(f.tile("evaluation.tile.Questions"), "0 | 0 passing");
    EXPECT_EQ(f.tile("evaluation.tile.Failing"), "0 | drill in below");
}

TEST(EvaluationTab, EnablesARunWithChunksQuestionsAndAnEngine) {
    Evaluation f;
    f.addRankedChunks(2);
    EXPECT_TRUE(f.enables("evaluation.draft", true));
    EXPECT_TRUE(f.enables("evaluation.run", false)) << "no question";
    addTestQuestion(f.state, "bus", {"1"});
    EXPECT_TRUE(f.enables("evaluation.run", true));
    f.setIndex(IndexKind::vector);
    auto& banner = find<QWidget>(f.window, "evaluation.reason");
    EXPECT_TRUE(f.studio.until([&] {
        return textOf(banner, "bannerText") == "This index needs embeddings for the current "
                                               "chunks \u2014 click Build in the toolbar first.";
    }));
    EXPECT_TRUE(find<QWidget>(f.window, "evaluation.run").isEnabled());
    f.setIndex(IndexKind::spotlight);
    EXPECT_TRUE(f.enables("evaluation.run", false));
    EXPECT_EQ(
        textOf(banner, "bannerText"),
        "Keyword, Vector, and Hybrid have a real implementation \u2014 Spotlight doesn't yet. "
        "Switch Settings to run this for real.");
}

TEST(EvaluationTab, AddsAQuestionAsTyped) {
    Evaluation f;
    f.addRankedChunks(1);
    type(f.window, "evaluation.question", QStringLiteral(" When? "));
    click(f.window, "evaluation.add");
    EXPECT_TRUE(f.state.currentIndex().testQuestions.empty()) << "it expects nothing";
    EXPECT_EQ(textOf(f.window, "evaluation.question"), " When? ");
    type(f.window, "evaluation.breadcrumb", QStringLiteral(" Travel > Buses >"));
    pressKey(find<QWidget>(f.window, "evaluation.breadcrumb"), Qt::Key_Return);
    f.studio.settle();
    const auto& questions = f.state.currentIndex().testQuestions;
    ASSERT_EQ(questions.size(), 1U);
    EXPECT_EQ(questions[0].question, " When? ");
    EXPECT_EQ(questions[0].expectedBreadcrumb, (Texts{"Travel", "Buses"}));
    EXPECT_EQ(textOf(f.window, "evaluation.question"), "");
    EXPECT_EQ(textOf(f.window, "evaluation.breadcrumb"), "");
    EXPECT_TRUE(f.listIs("Test questions \u00b7 1 (0 failing)"));
    EXPECT_EQ(f.row(0), " When? \nExpected Travel > Buses\nNot evaluated");
    f.studio.advance(500ms);
    trigger(f.window, "command.undo");
    EXPECT_TRUE(f.listIs("Test questions \u00b7 0 (0 failing)"));
}

TEST(EvaluationTab, SuggestsTheSectionsThatThereAre) {
    Evaluation f;
    f.addChunks({makeChunk("a", {"Travel", "Buses"}), makeChunk("b", {"Travel", "Buses"}),
                 makeChunk("c", {"Home"}), makeChunk("d", {"x > y"})});
    auto& field = find<QLineEdit>(f.window, "evaluation.breadcrumb");
    QFocusEvent focus(QEvent::FocusIn);
    QCoreApplication::sendEvent(&field, &focus);
    QStringList suggested;
    const auto* model = field.completer()->model();
    for (int i = 0; i < model->rowCount(); ++i) {
        suggested.append(model->index(i, 0).data().toString());
    }
    EXPECT_EQ(suggested, (QStringList{QStringLiteral("Travel > Buses"), QStringLiteral("Home")}));
}

TEST(EvaluationTab, ScoresTheQuestionsAndShowsEachResult) {
    Evaluation f;
    f.addRankedChunks(3);
    addTestQuestion(f.state, "bus", {"3"});
    addTestQuestion(f.state, "nothing like it", {"1"});
    f.run();
    EXPECT_TRUE(f.listIs("Test questions \u00b7 2 (1 failing)"));
    EXPECT_EQ(f.row(0), "bus\nExpected 3\nPassing \u00b7 rank 3");
    EXPECT_EQ(f.row(1), "nothing like it\nExpected 1\nFailing");
    EXPECT_EQ(f.tile("evaluation.tile.Recall@5"), "0.50 | across 2 questions");
    EXPECT_EQ(f.tile("evaluation.tile.MRR"), "0.17 | across 2 questions");
    EXPECT_EQ(f.tile("evaluation.tile.Questions"), "2 | 1 passing");
    EXPECT_EQ(f.tile("evaluation.tile.Failing"), "1 | drill in below");
    // The first that fails, until another is chosen.
    EXPECT_TRUE(f.shows("evaluation.detailQuestion", "nothing like it"));
    EXPECT_EQ(textOf(f.window, "fact.expected"), "1");
    EXPECT_EQ(textOf(f.window, "fact.got"), "\u2014 (not evaluated yet)");
    EXPECT_EQ(textOf(f.window, "evaluation.detailLine"),
              "Expected chunk wasn't in the top-6 results.");
    f.list().setCurrentIndex(f.list().model()->index(0, 0));
    EXPECT_TRUE(f.shows("evaluation.detailQuestion", "bus"));
    EXPECT_EQ(textOf(f.window, "fact.got"), "1");
    EXPECT_FALSE(isShown(f.window, "evaluation.detailLine"));
    EXPECT_EQ(f.state.currentIndex().selectedFailingQuestionID,
              f.state.currentIndex().testQuestions[0].id);
}

TEST(EvaluationTab, FailsAQuestionWhoseSectionIsBelowTheTopK) {
    Evaluation f;
    f.addRankedChunks(4);
    BuildSettings settings = f.settings();
    settings.topK = 3;
    f.set(settings);
    addTestQuestion(f.state, "bus", {"4"});
    f.run();
    EXPECT_TRUE(f.shows("evaluation.detailLine", "Expected chunk wasn't in the top-3 results."));
    EXPECT_EQ(textOf(f.window, "fact.got"), "1");
}

TEST(EvaluationTab, ShowsHowFarARunIs) {
    Evaluation f;
    f.addRankedChunks(2);
    addTestQuestion(f.state, "one", {"1"});
    addTestQuestion(f.state, "two", {"2"});
    f.setTransform(QueryTransform::rewrite);
    ScriptedModel& model = *f.studio.platform.model;
    model.answer = [](const ModelCall&) { return ModelAnswer("bus"); };
    model.gate.close();
    f.run();
    EXPECT_TRUE(f.shows("evaluation.progressText", "0/2"));
    EXPECT_FALSE(isShown(f.window, "evaluation.run"));
    // What the run goes through can't be taken away.
    EXPECT_FALSE(find<QWidget>(f.window, "evaluation.clear").isEnabled());
    EXPECT_FALSE(find<QWidget>(f.window, "evaluation.remove").isEnabled());
    f.list().setCurrentIndex(f.list().model()->index(0, 0));
    pressKey(f.list(), Qt::Key_Delete);
    EXPECT_EQ(f.state.currentIndex().testQuestions.size(), 2U);
    ASSERT_TRUE(model.gate.letOne());
    EXPECT_TRUE(f.shows("evaluation.progressText", "1/2"));
    model.gate.open();
    EXPECT_TRUE(f.hides("evaluation.running"));
    EXPECT_TRUE(isShown(f.window, "evaluation.run"));
    EXPECT_TRUE(find<QWidget>(f.window, "evaluation.clear").isEnabled());
    EXPECT_EQ(f.tile("evaluation.tile.Recall@5"), "1.00 | across 2 questions");
}

TEST(EvaluationTab, ComparesVariantsOnTheSameQuestions) {
    Evaluation f;
    f.addRankedChunks(2);
    addTestQuestion(f.state, "bus", {"2"});
    f.run();
    auto variant = f.state.currentVariant();
    variant.recordedLatencies = {1, 2, 3, 4};
    f.state.updateVariant(variant);
    EXPECT_TRUE(f.studio.until(
        [&] { return f.variantRow(0) == "Keyword \u00b7 Default | 1.00 | 0.50 | 3.0 s (n=4)"; }));
    click(f.window, "evaluation.duplicate");
    EXPECT_TRUE(f.studio.until([&] {
        return f.variantRow(1) == "Keyword \u00b7 Default copy | \u2013 | \u2013 | \u2013";
    })) << "the copy has no scores of its own yet";
    EXPECT_EQ(f.state.currentVariant().name, "Default copy");
    const Uuid first = f.state.currentIndex().variants[0].id;
    auto& table = find<QTableView>(f.window, "evaluation.variants");
    table.setCurrentIndex(table.model()->index(0, 0));
    pressKey(table, Qt::Key_Return);
    EXPECT_EQ(f.state.currentIndex().selectedVariantID, first);
    EXPECT_TRUE(f.studio.until(
        [&] { return f.tile("evaluation.tile.MRR") == "0.50 | across 1 questions"; }));
}

TEST(EvaluationTab, DraftsQuestionsAndShowsHowFarItIs) {
    Evaluation f;
    f.addRankedChunks(20);
    ScriptedModel& model = *f.studio.platform.model;
    model.answer = [](const ModelCall&) { return ModelAnswer("Where is the bus?"); };
    model.gate.close();
    f.enables("evaluation.draft", true);
    click(f.window, "evaluation.draft");
    EXPECT_TRUE(f.shows("evaluation.draft", "0/15"));
    EXPECT_FALSE(find<QWidget>(f.window, "evaluation.draft").isEnabled());
    ASSERT_TRUE(model.gate.letOne());
    EXPECT_TRUE(f.shows("evaluation.draft", "1/15"));
    EXPECT_EQ(f.row(0), "Where is the bus?\nExpected 1\nNot evaluated\nDraft");
    model.gate.open();
    EXPECT_TRUE(f.shows("evaluation.draft", "Draft Questions"));
    EXPECT_TRUE(f.listIs("Test questions \u00b7 15 (0 failing)"));
    f.enables("evaluation.draft", true);
    click(f.window, "evaluation.draft");
    EXPECT_TRUE(f.listIs("Test questions \u00b7 20 (0 failing)"));
    f.studio.settle();
    f.enables("evaluation.draft", true);
    click(f.window, "evaluation.draft");
    f.studio.settle();
    EXPECT_EQ(textOf(f.window, "evaluation.draft"), "Draft Questions") << "all are covered";
}

TEST(EvaluationTab, ImportsACsvFile) {
    Evaluation f;
    const auto file = f.studio.folder / "cases.csv";
    writeContents(file,
                  "question,breadcrumb\n\"Hello, world\",A > B\nno comma\n\"say \"\"hi\"\"\",A\n");
    click(f.window, "evaluation.import");
    auto& panel = find<QFileDialog>(f.window, "evaluation.importPanel");
    Q_EMIT panel.fileSelected(toQt(file));
    panel.close();
    EXPECT_TRUE(f.shows("evaluation.importResult",
                        "Imported 2 question(s), skipped 1 row(s) that didn't match "
                        "\"question,breadcrumb\"."));
    EXPECT_TRUE(f.listIs("Test questions \u00b7 2 (0 failing)"));
    EXPECT_EQ(f.row(0), "Hello, world\nExpected A > B\nNot evaluated");
    EXPECT_EQ(f.row(1), "say \"hi\"\nExpected A\nNot evaluated");
    EXPECT_EQ(find<QWidget>(f.window, "evaluation.import").toolTip(),
              QStringLiteral("Import test cases from a CSV file: question,expected breadcrumb"));
}

TEST(EvaluationTab, TellsOfAnImportThatFails) {
    Evaluation f;
    const auto file = f.studio.folder / "empty.csv";
    writeContents(file, "question,breadcrumb\n");
    click(f.window, "evaluation.import");
    auto& panel = find<QFileDialog>(f.window, "evaluation.importPanel");
    Q_EMIT panel.fileSelected(toQt(file));
    panel.close();
    f.studio.settle();
    EXPECT_EQ(textOf(f.window, "alert.title"), "Import problem");
    EXPECT_EQ(textOf(f.window, "alert.message"),
              "Couldn't import test cases from empty.csv: The file didn't contain any "
              "question,breadcrumb rows.");
    EXPECT_TRUE(f.state.currentIndex().importError);
    click(f.window, "alert.ok");
    f.studio.settle();
    EXPECT_FALSE(f.state.currentIndex().importError);
}

TEST(EvaluationTab, ShowsTheQuestionsOfAKind) {
    Evaluation f;
    f.addRankedChunks(2);
    addTestQuestion(f.state, "bus", {"1"});
    addTestQuestion(f.state, "tram", {"1"});
    f.run();
    EXPECT_TRUE(f.listIs("Test questions \u00b7 2 (1 failing)"));
    click(f.window, "evaluation.filter.failing");
    EXPECT_EQ(f.list().model()->rowCount(), 1);
    EXPECT_EQ(f.row(0), "tram\nExpected 1\nFailing");
    click(f.window, "evaluation.filter.drafts");
    EXPECT_TRUE(isShown(f.window, "evaluation.noMatch"));
    EXPECT_FALSE(isShown(f.window, "evaluation.list"));
    click(f.window, "evaluation.filter.all");
    EXPECT_EQ(f.list().model()->rowCount(), 2);
}

TEST(EvaluationTab, RemovesAndClearsAsUndoableEdits) {
    Evaluation f;
    f.addRankedChunks(2);
    for (const char* text : {"a", "b", "c"}) {
        addTestQuestion(f.state, text, {"1"});
    }
    f.run();
    f.studio.advance(500ms);
    EXPECT_TRUE(f.listIs("Test questions \u00b7 3 (3 failing)"));
    f.list().setCurrentIndex(f.list().model()->index(1, 0));
    click(f.window, "evaluation.remove");
    EXPECT_TRUE(f.listIs("Test questions \u00b7 2 (2 failing)"));
    EXPECT_EQ(f.row(1).substr(0, 1), "c");
    f.studio.advance(500ms);
    click(f.window, "evaluation.clear");
    EXPECT_TRUE(f.listIs("Test questions \u00b7 0 (0 failing)"));
    EXPECT_FALSE(f.state.currentIndex().selectedFailingQuestionID);
    EXPECT_EQ(f.state.currentVariant().recallAt5, 0.0) << "the variants keep their scores";
    f.studio.advance(500ms);
    trigger(f.window, "command.undo");
    EXPECT_TRUE(f.listIs("Test questions \u00b7 2 (2 failing)"));
}

TEST(EvaluationTab, OpensAQuestionInThePlayground) {
    Evaluation f;
    addTestQuestion(f.state, "Which bus?", {"1"});
    f.listIs("Test questions \u00b7 1 (0 failing)");
    f.list().setCurrentIndex(f.list().model()->index(0, 0));
    EXPECT_TRUE(f.shows("evaluation.detailLine", "Not evaluated yet \u2014 click Run Evaluation."));
    pressKey(f.list(), Qt::Key_Return);
    f.studio.settle();
    EXPECT_EQ(f.state.selectedTab(), AppTab::playground);
    EXPECT_TRUE(f.shows("playground.question", "Which bus?"));
}

} // namespace
} // namespace ombrel
