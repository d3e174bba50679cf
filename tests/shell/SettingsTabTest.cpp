#include "knowledge/BuildTexts.h"
#include "knowledge/RecipeTexts.h"
#include "shell/design/Banner.h"
#include "shell/design/ChoiceTile.h"
#include "shell/design/ValueSlider.h"
#include "tests/shell/Studio.h"

#include <QComboBox>
#include <QMouseEvent>
#include <QProgressBar>
#include <QWheelEvent>

#include <cmath>

namespace ombrel {
namespace {

using namespace test;
using namespace std::chrono_literals;

class SettingsTab : public ::testing::Test {
  protected:
    SettingsTab() : window(studio.newDocument()), state(*window.document().state()) {
        window.resize(1280, 800);
        state.setSelectedTab(AppTab::settings);
        // The first refreshes of a new window come at their own pace.
        if (!studio.until([&] { return isShown(window, "recipe.step6.title"); })) {
            throw std::runtime_error("the tab doesn't come");
        }
        studio.settle();
    }

    const BuildSettings& settings() { return state.currentVariant().settings; }
    ChoiceTile& tile(const char* name) { return find<ChoiceTile>(window, name); }
    ValueSlider& slider(const char* name) { return find<ValueSlider>(window, name); }
    void choose(const char* name) {
        click(window, name);
        studio.settle();
    }
    void press(const char* control, int key) {
        pressKey(find<QWidget>(window, control), key);
        studio.settle();
    }
    void change(const std::function<void(Variant&)>& write) {
        Variant variant = state.currentVariant();
        write(variant);
        state.updateVariant(variant);
        studio.settle();
    }
    bool shows(const char* name) {
        return studio.until([&] { return isShown(window, name); });
    }
    bool hides(const char* name) {
        return studio.until([&] { return !isShown(window, name); });
    }
    bool says(const char* name, const std::string& text) {
        return studio.until([&] { return textOf(window, name) == text; });
    }

    Studio studio;
    DocumentWindow& window;
    AppState& state;
};

TEST_F(SettingsTab, ShowsTheRecipeOfTheSelectedVariant) {
    EXPECT_EQ(textOf(find<QWidget>(window, "tab.settings"), "page.subtitle"),
              "Choose how the knowledge is built and how questions are answered. Only valid "
              "combinations can be selected.");
    EXPECT_TRUE(tile("settings.chunking.headingaware").isChecked());
    EXPECT_TRUE(tile("settings.index.hybrid").isChecked());
    EXPECT_TRUE(tile("settings.transform.queryrewrite").isChecked());
    EXPECT_TRUE(tile("settings.enrichment.contextualnotes").isChecked());
    EXPECT_FALSE(tile("settings.enrichment.parentchild").isChecked());
    EXPECT_FALSE(tile("settings.rerank").isChecked());
    EXPECT_EQ(textOf(window, "settings.targetChunkSize.value"), "400 tokens");
    EXPECT_EQ(textOf(window, "settings.overlap.value"), "10%");
    EXPECT_EQ(textOf(window, "settings.topK.value"), "6");
    EXPECT_EQ(textOf(window, "settings.contextBudget.value"), "3,000 of 8,192 tokens");
    EXPECT_EQ(tile("settings.transform.toolagentic").subtitle(),
              QStringLiteral("Model decides when, what, and how many times to search"));
    EXPECT_EQ(tile("settings.rerank").subtitle(),
              QStringLiteral("Reorder the top results; +1 model call"));
}

TEST_F(SettingsTab, WritesEachChoiceToTheSelectedVariant) {
    choose("settings.chunking.paragraph");
    EXPECT_EQ(settings().chunking, ChunkingStrategy::paragraph);
    choose("settings.transform.multiquery");
    EXPECT_EQ(settings().transform, QueryTransform::multiQuery);
    for (const auto& [name, kind] : {std::pair{"settings.index.keyword", IndexKind::keyword},
                                     std::pair{"settings.index.vector", IndexKind::vector},
                                     std::pair{"settings.index.spotlight", IndexKind::spotlight},
                                     std::pair{"settings.index.hybrid", IndexKind::hybrid}}) {
        choose(name);
        EXPECT_EQ(settings().index, kind);
    }
    choose("settings.rerank");
    EXPECT_TRUE(settings().rerank);
    choose("settings.rerank");
    EXPECT_FALSE(settings().rerank);
}

TEST_F(SettingsTab, DisablesATransformThatTheIndexDoesntServeAndSaysWhy) {
    EXPECT_TRUE(tile("settings.transform.hyde").isEnabled());
    EXPECT_EQ(tile("settings.transform.hyde").subtitle(),
              QStringLiteral("Search with a drafted answer"));
    for (const char* index : {"settings.index.keyword", "settings.index.spotlight"}) {
        choose(index);
        EXPECT_TRUE(studio.until([&] { return !tile("settings.transform.hyde").isEnabled(); }));
        EXPECT_EQ(tile("settings.transform.hyde").subtitle(),
                  QStringLiteral("Needs a vector-only index"));
        EXPECT_TRUE(tile("settings.transform.toolagentic").isEnabled());
    }
    choose("settings.index.vector");
    EXPECT_TRUE(studio.until([&] { return tile("settings.transform.hyde").isEnabled(); }));
}

TEST_F(SettingsTab, KeepsTheTransformWhenTheIndexNoLongerServesIt) {
    choose("settings.transform.hyde");
    choose("settings.index.keyword");
    EXPECT_TRUE(studio.until([&] { return !tile("settings.transform.hyde").isEnabled(); }));
    EXPECT_EQ(settings().transform, QueryTransform::hyde);
    EXPECT_TRUE(tile("settings.transform.hyde").isChecked());
    // The keyboard still gets to the others.
    EXPECT_EQ(tile("settings.transform.direct").focusPolicy(), Qt::TabFocus);
    choose("settings.transform.direct");
    EXPECT_EQ(settings().transform, QueryTransform::direct);
}

TEST_F(SettingsTab, MovesAChoiceByTheArrowKeys) {
    auto& hybrid = tile("settings.index.hybrid");
    window.activateWindow();
    hybrid.setFocus(Qt::TabFocusReason);
    ASSERT_TRUE(studio.until([&] { return hybrid.hasFocus(); }));
    pressKey(hybrid, Qt::Key_Left);
    studio.settle();
    EXPECT_EQ(settings().index, IndexKind::vector);
    EXPECT_TRUE(tile("settings.index.vector").hasFocus());
}

TEST_F(SettingsTab, ChecksAndUnchecksEnrichments) {
    choose("settings.enrichment.parentchild");
    EXPECT_EQ(settings().enrichments,
              (std::set{Enrichment::contextualNotes, Enrichment::parentChild}));
    choose("settings.enrichment.contextualnotes");
    EXPECT_EQ(settings().enrichments, std::set{Enrichment::parentChild});
}

TEST_F(SettingsTab, ShowsQuestionsPerChunkWhileQuestionsAreGenerated) {
    EXPECT_FALSE(isShown(window, "settings.questionsPerChunk"));
    choose("settings.enrichment.generatedquestions");
    ASSERT_TRUE(shows("settings.questionsPerChunk"));
    EXPECT_EQ(textOf(window, "settings.questionsPerChunk.value"), "3");
    press("settings.questionsPerChunk", Qt::Key_Right);
    EXPECT_EQ(settings().generatedQuestionsPerChunk, 4);
    choose("settings.enrichment.generatedquestions");
    EXPECT_TRUE(hides("settings.questionsPerChunk"));
}

TEST_F(SettingsTab, SetsEveryNumberWithinItsRange) {
    struct Case {
        const char* name;
        double BuildSettings::*field;
        double least;
        double most;
        const char* mostText;
    };
    choose("settings.enrichment.generatedquestions");
    for (const Case& one :
         {Case{"settings.targetChunkSize", &BuildSettings::targetChunkSize, 100, 1000,
               "1000 tokens"},
          Case{"settings.overlap", &BuildSettings::overlapPercent, 0, 30, "30%"},
          Case{"settings.questionsPerChunk", &BuildSettings::generatedQuestionsPerChunk, 1, 8, "8"},
          Case{"settings.topK", &BuildSettings::topK, 1, 20, "20"},
          Case{"settings.contextBudget", &BuildSettings::contextBudget, 500, 8192,
               "8,192 of 8,192 tokens"}}) {
        press(one.name, Qt::Key_Home);
        EXPECT_EQ(settings().*one.field, one.least) << one.name;
        press(one.name, Qt::Key_Left);
        EXPECT_EQ(settings().*one.field, one.least) << one.name;
        press(one.name, Qt::Key_End);
        EXPECT_EQ(settings().*one.field, one.most) << one.name;
        press(one.name, Qt::Key_Right);
        EXPECT_EQ(settings().*one.field, one.most) << one.name;
        EXPECT_TRUE(says((std::string(one.name) + ".value").c_str(), one.mostText));
    }
}

TEST_F(SettingsTab, LetsThePointerSetAnyNumberAndShowsItTruncated) {
    auto& target = slider("settings.targetChunkSize");
    const QPointF place(target.width() * 0.7, target.height() / 2.0);
    for (const auto type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
        QMouseEvent event(type, place, target.mapToGlobal(place), Qt::LeftButton,
                          type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton,
                          Qt::NoModifier);
        QCoreApplication::sendEvent(&target, &event);
    }
    studio.settle();
    const double value = settings().targetChunkSize;
    EXPECT_NEAR(value, 730, 30);
    EXPECT_NE(value, std::floor(value));
    EXPECT_EQ(target.shownValue(), value);
    EXPECT_TRUE(says("settings.targetChunkSize.value",
                     std::to_string(static_cast<int>(std::floor(value))) + " tokens"));
    press("settings.targetChunkSize", Qt::Key_Right);
    EXPECT_EQ(std::fmod(settings().targetChunkSize, 10), 0);
    EXPECT_GT(settings().targetChunkSize, value);
}

TEST_F(SettingsTab, LeavesTheWheelToThePage) {
    auto& topK = slider("settings.topK");
    auto& variants = find<QComboBox>(window, "settings.variant");
    state.duplicateVariant();
    ASSERT_TRUE(studio.until([&] { return variants.count() == 2; }));
    const Uuid selected = state.currentVariant().id;
    for (QWidget* control : {static_cast<QWidget*>(&topK), static_cast<QWidget*>(&variants)}) {
        const QPointF place(20, 10);
        QWheelEvent event(place, control->mapToGlobal(place), {}, {0, 120}, Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(control, &event);
        studio.settle();
    }
    EXPECT_EQ(settings().topK, 6);
    EXPECT_EQ(state.currentVariant().id, selected);
}

TEST_F(SettingsTab, LeavesANumberOutsideOfTheRangeAsItIsUntilItIsMoved) {
    change([](Variant& variant) { variant.settings.contextBudget = 100'000; });
    EXPECT_TRUE(says("settings.contextBudget.value", "100,000 of 8,192 tokens"));
    EXPECT_EQ(settings().contextBudget, 100'000);
    press("settings.contextBudget", Qt::Key_Left);
    EXPECT_EQ(settings().contextBudget, 8100);
}

TEST_F(SettingsTab, UndoesABurstOfChangesInOneStep) {
    studio.advance(500ms);
    for (int i = 0; i < 5; ++i) {
        press("settings.topK", Qt::Key_Right);
    }
    EXPECT_EQ(settings().topK, 11);
    studio.advance(500ms);
    trigger(window, "command.undo");
    studio.settle();
    EXPECT_EQ(settings().topK, 6);
    EXPECT_TRUE(says("settings.topK.value", "6"));
    EXPECT_EQ(slider("settings.topK").shownValue(), 6);
}

TEST_F(SettingsTab, MakesNoUndoStepOfAChoiceThatChangesNothing) {
    studio.advance(500ms);
    const auto steps = window.document().undoManager()->count();
    choose("settings.index.hybrid");
    press("settings.topK", Qt::Key_Right);
    press("settings.topK", Qt::Key_Left);
    choose("settings.chunking.headingaware");
    EXPECT_TRUE(state.hasPendingCheckpoint());
    studio.advance(500ms);
    EXPECT_EQ(window.document().undoManager()->count(), steps + 1);
    choose("settings.index.hybrid");
    EXPECT_FALSE(state.hasPendingCheckpoint());
}

TEST_F(SettingsTab, TellsOfChangesThatHaventBeenBuilt) {
    auto& note = find<Banner>(window, "settings.staleNote");
    EXPECT_TRUE(shows("settings.staleNote")); // a new project
    EXPECT_EQ(note.text(), desktopText(staleSettingsNote));
    trigger(window, "command.build");
    EXPECT_TRUE(hides("settings.staleNote"));
    press("settings.topK", Qt::Key_Right);
    choose("settings.transform.direct");
    choose("settings.rerank");
    press("settings.contextBudget", Qt::Key_Right);
    EXPECT_FALSE(isShown(window, "settings.staleNote"));
    press("settings.targetChunkSize", Qt::Key_Right);
    EXPECT_TRUE(shows("settings.staleNote"));
    press("settings.targetChunkSize", Qt::Key_Left);
    EXPECT_TRUE(hides("settings.staleNote"));
    choose("settings.index.vector");
    EXPECT_TRUE(shows("settings.staleNote"));
}

TEST_F(SettingsTab, ShowsHowFarEnrichmentIsInPlaceOfTheButton) {
    EXPECT_TRUE(isShown(window, "settings.apply"));
    EXPECT_FALSE(isShown(window, "settings.enrichProgress"));
    {
        const auto index = state.editCurrentIndex();
        index->isEnriching = true;
        index->enrichProgress = Progress{3, 12};
    }
    ASSERT_TRUE(shows("settings.enrichProgress"));
    EXPECT_FALSE(isShown(window, "settings.apply"));
    auto& bar = find<QProgressBar>(window, "settings.enrichProgress");
    EXPECT_EQ(bar.value(), 3);
    EXPECT_EQ(bar.maximum(), 12);
    EXPECT_EQ(textOf(window, "settings.enrichProgressText"), "3/12");
    state.editCurrentIndex()->enrichProgress = Progress{0, 0};
    EXPECT_TRUE(says("settings.enrichProgressText", "0/0"));
    EXPECT_EQ(bar.maximum(), 1);
    state.editCurrentIndex()->isEnriching = false;
    EXPECT_TRUE(shows("settings.apply"));
    EXPECT_TRUE(hides("settings.enrichProgress"));
}

TEST_F(SettingsTab, AppliesEnrichmentToTheChunksThatThereAre) {
    {
        const auto index = state.editCurrentIndex();
        SourceDocument source;
        source.id = Uuid::random();
        source.name = "a.md";
        DocumentChunk chunk;
        chunk.id = Uuid::random();
        chunk.index = 1;
        chunk.text = "Text.";
        chunk.tokenCount = 1;
        chunk.contextualNote = "A note.";
        index->chunksByDocument[source.id] = std::vector{chunk};
        index->sources.push_back(source);
    }
    choose("settings.enrichment.contextualnotes");
    choose("settings.apply");
    EXPECT_TRUE(studio.until([&] { return state.project->lastBuildFinishedAt.has_value(); }));
    const auto& index = state.currentIndex();
    const auto& chunks = index.chunksByDocument.at(index.sources.front().id);
    EXPECT_FALSE(chunks[0].contextualNote);
    EXPECT_TRUE(hides("settings.staleNote"));
}

TEST_F(SettingsTab, ListsTheVariantsAndNamesTheSelectedOne) {
    auto& list = find<QComboBox>(window, "settings.variant");
    EXPECT_EQ(list.count(), 1);
    EXPECT_EQ(list.currentText(), QStringLiteral("Hybrid · Default"));
    type(window, "settings.variantName", QStringLiteral("Fast"));
    studio.settle();
    EXPECT_EQ(state.currentVariant().name, "Fast");
    EXPECT_TRUE(
        studio.until([&] { return list.currentText() == QStringLiteral("Hybrid · Fast"); }));
    studio.advance(500ms);
    trigger(window, "command.undo");
    EXPECT_TRUE(says("settings.variantName", "Default"));
}

TEST_F(SettingsTab, DuplicatesTheVariantAndSwitchesBetweenThem) {
    choose("recipe.duplicateVariant");
    auto& list = find<QComboBox>(window, "settings.variant");
    ASSERT_TRUE(studio.until([&] { return list.count() == 2; }));
    EXPECT_EQ(list.currentIndex(), 1);
    EXPECT_EQ(textOf(window, "settings.variantName"), "Default copy");
    choose("settings.index.keyword");
    EXPECT_EQ(state.currentIndex().variants[0].settings.index, IndexKind::hybrid);
    EXPECT_EQ(state.currentIndex().variants[1].settings.index, IndexKind::keyword);

    list.setCurrentIndex(0);
    Q_EMIT list.activated(0);
    ASSERT_TRUE(studio.until([&] { return tile("settings.index.hybrid").isChecked(); }));
    EXPECT_EQ(state.currentVariant().name, "Default");
    EXPECT_EQ(textOf(window, "settings.variantName"), "Default");

    studio.advance(500ms);
    trigger(window, "command.undo");
    EXPECT_TRUE(studio.until([&] { return list.count() == 1; }));
}

TEST_F(SettingsTab, FollowsTheSelectedIndex) {
    state.addRAGIndex();
    choose("settings.chunking.fixed");
    const Uuid first = state.ragIndexes->front().id;
    state.selectRAGIndex(first);
    EXPECT_TRUE(studio.until([&] { return tile("settings.chunking.headingaware").isChecked(); }));
    EXPECT_EQ(settings().chunking, ChunkingStrategy::headingAware);
}

TEST_F(SettingsTab, TellsTheRecipeStepByStep) {
    const auto expectShown = [&] {
        const auto steps = recipeSteps(settings());
        for (std::size_t i = 0; i < steps.size(); ++i) {
            const std::string name = "recipe.step" + std::to_string(i + 1);
            EXPECT_TRUE(says((name + ".title").c_str(), steps[i].title));
            EXPECT_TRUE(says((name + ".tag").c_str(), steps[i].tag));
            EXPECT_TRUE(says((name + ".example").c_str(), steps[i].example));
        }
    };
    expectShown();
    choose("settings.index.spotlight");
    choose("settings.transform.toolagentic");
    choose("settings.enrichment.contextualnotes");
    press("settings.contextBudget", Qt::Key_End);
    expectShown();
    EXPECT_EQ(textOf(window, "recipe.step4.example"),
              "handed to Apple's on-device Spotlight tool — Tool (agentic) mode only");
}

TEST_F(SettingsTab, NotesWhatTheRecipeLacks) {
    EXPECT_TRUE(shows("recipe.embeddingsNote")); // there is no chunk that has one
    EXPECT_EQ(find<Banner>(window, "recipe.embeddingsNote").text(),
              QStringLiteral("This index needs embeddings for the current chunks — click Build in "
                             "the toolbar."));
    EXPECT_FALSE(isShown(window, "recipe.spotlightNote"));
    choose("settings.index.spotlight");
    EXPECT_TRUE(shows("recipe.spotlightNote"));
    EXPECT_EQ(find<Banner>(window, "recipe.spotlightNote").text(),
              QStringLiteral("Keyword, Vector, and Hybrid have a real implementation — Spotlight "
                             "doesn't yet."));
    EXPECT_TRUE(hides("recipe.embeddingsNote"));
    choose("settings.index.keyword");
    EXPECT_TRUE(hides("recipe.spotlightNote"));
    EXPECT_TRUE(hides("recipe.embeddingsNote"));
}

TEST_F(SettingsTab, ShowsTheMeasuredLatency) {
    EXPECT_EQ(textOf(window, "fact.latency"), "No live runs yet");
    EXPECT_EQ(textOf(window, "fact.contentSize"), "0.00 MB");
    EXPECT_EQ(textOf(window, "fact.minimumOS"), "iOS 27 · macOS 27");
    change([](Variant& variant) { variant.recordedLatencies = {1, 2, 3, 4}; });
    EXPECT_TRUE(says("fact.latency", "3.0s over 4 run(s)"));
}

TEST_F(SettingsTab, LeadsToTheEvaluation) {
    choose("recipe.goToEvaluation");
    EXPECT_EQ(state.selectedTab(), AppTab::evaluation);
}

TEST_F(SettingsTab, PutsTheRecipeBelowTheControlsWhereItIsNarrow) {
    const auto left = [&] {
        return find<QWidget>(window, "recipe").mapTo(&window, QPoint(0, 0)).x();
    };
    const auto controls = [&] {
        return find<QWidget>(window, "settings.chunking").mapTo(&window, QPoint(0, 0)).x();
    };
    EXPECT_GT(left(), controls() + 200);
    window.resize(860, 800);
    EXPECT_TRUE(studio.until([&] { return left() < controls(); }));
}

} // namespace
} // namespace ombrel
