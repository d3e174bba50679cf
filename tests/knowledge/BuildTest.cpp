#include "knowledge/Build.h"

#include "knowledge/Ingestion.h"
#include "tests/core/Workspace.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace ombrel {
namespace {

using test::ModelAnswer;
using test::ModelCall;
using Texts = std::vector<std::string>;

class Build : public testing::Test {
  protected:
    Build() {
        setSettings([](BuildSettings& settings) {
            settings.index = IndexKind::keyword;
            settings.enrichments.clear();
        });
    }

    template <class Change>
    void setSettings(Change change) {
        Variant variant = state->currentVariant();
        change(variant.settings);
        state->updateVariant(variant);
    }
    void want(std::set<Enrichment> enrichments) {
        setSettings([&](BuildSettings& settings) { settings.enrichments = enrichments; });
    }
    Uuid addSource(const std::string& name, const Texts& texts) {
        SourceDocument source;
        source.id = Uuid::random();
        source.name = name;
        std::vector<DocumentChunk> made;
        for (const std::string& text : texts) {
            DocumentChunk chunk;
            chunk.id = Uuid::random();
            chunk.index = static_cast<std::int64_t>(made.size()) + 1;
            chunk.breadcrumb = {name};
            chunk.tokenCount = 1;
            chunk.text = text;
            made.push_back(std::move(chunk));
        }
        auto index = state->editCurrentIndex();
        index->chunksByDocument[source.id] = std::move(made);
        index->sources.push_back(source);
        return source.id;
    }
    const RAGIndex& index() const { return state->currentIndex(); }
    const ChunkArray& chunks(Uuid source) const { return index().chunksByDocument.at(source); }
    template <class Change>
    void editChunks(Uuid source, Change change) {
        auto edit = state->editCurrentIndex();
        for (DocumentChunk& chunk : edit->chunksByDocument.at(source).edit()) {
            change(chunk);
        }
    }
    void apply() { test::run(*platform.executor, applyEnrichment(state)); }
    std::shared_ptr<bool> startApplying() {
        return test::start(*platform.executor, applyEnrichment(state));
    }
    void fill() { test::run(*platform.executor, fillEmbeddings(state)); }
    // The model answers each request with what it is about.
    void answerWithPrompts() {
        platform.model->answer = [](const ModelCall& call) {
            return ModelAnswer("on " + call.prompt.substr(call.prompt.rfind('\n') + 1));
        };
    }
    void letOneAnswer() {
        platform.model->gate.letOne();
        platform.executor->runAll();
    }
    std::size_t embedded(Uuid source) const {
        return static_cast<std::size_t>(
            std::ranges::count_if(chunks(source).values(), [](const DocumentChunk& chunk) {
                return chunk.embedding.has_value();
            }));
    }

    test::Workspace workspace;
    test::TestPlatform& platform = workspace.platform;
    std::shared_ptr<AppState> state = workspace.state;
};

TEST_F(Build, SucceedsWithoutSourcesAndWithoutAModelCall) {
    want({Enrichment::contextualNotes, Enrichment::generatedQuestions});
    apply();
    EXPECT_EQ(state->project->lastBuiltDescription, "Build Succeeded");
    EXPECT_EQ(state->project->lastBuiltSettings, state->currentVariant().settings);
    EXPECT_TRUE(state->project->lastBuildFinishedAt);
    EXPECT_EQ(platform.model->sessionCount, 0U);
}

TEST_F(Build, IsStaleBeforeTheFirstBuildAndAfterChangesThatShapeIt) {
    EXPECT_TRUE(settingsChangedSinceBuild(*state));
    apply();
    EXPECT_FALSE(settingsChangedSinceBuild(*state));
    setSettings([](BuildSettings& settings) { settings.topK = 12; });
    EXPECT_FALSE(settingsChangedSinceBuild(*state));
    setSettings([](BuildSettings& settings) { settings.index = IndexKind::vector; });
    EXPECT_TRUE(settingsChangedSinceBuild(*state));
}

TEST_F(Build, ComparesAnotherVariantWithTheLastBuildOfTheProject) {
    apply();
    state->duplicateVariant();
    EXPECT_FALSE(settingsChangedSinceBuild(*state));
    setSettings([](BuildSettings& settings) { settings.targetChunkSize += 0.5; });
    EXPECT_TRUE(settingsChangedSinceBuild(*state));
    state->addRAGIndex();
    EXPECT_TRUE(settingsChangedSinceBuild(*state));
}

TEST_F(Build, FillsMissingEmbeddingsAfterAChangeToVector) {
    const Uuid a = addSource("a.md", {"one", "two"});
    apply();
    EXPECT_EQ(embedded(a), 0U);
    setSettings([](BuildSettings& settings) { settings.index = IndexKind::vector; });
    apply();
    EXPECT_EQ(embedded(a), 2U);
    EXPECT_TRUE(state->hasEmbeddingsForAllChunks());
}

TEST_F(Build, SchedulesACheckpoint) {
    EXPECT_TRUE(workspace.schedules([this] { apply(); }));
}

TEST_F(Build, WritesANoteOnEveryChunkThatHasNone) {
    const Uuid a = addSource("a.md", {"one", "two"});
    editChunks(a, [](DocumentChunk& chunk) { chunk.embedding = {1.0}; });
    state->editCurrentIndex()->chunksByDocument.at(a).edit()[0].contextualNote = "kept";
    want({Enrichment::contextualNotes});
    answerWithPrompts();
    apply();
    EXPECT_EQ(chunks(a)[0].contextualNote, "kept");
    EXPECT_EQ(chunks(a)[0].embedding, std::vector<double>{1.0});
    EXPECT_EQ(chunks(a)[1].contextualNote, "on two");
    EXPECT_EQ(chunks(a)[1].embedding, std::nullopt);
    EXPECT_EQ(platform.model->prompts(), Texts{"Document: a.md\nSection: a.md\nPassage:\ntwo"});
    EXPECT_FALSE(index().isEnriching);
    EXPECT_EQ(index().enrichProgress, std::nullopt);
}

TEST_F(Build, AsksForNoteThenQuestionsOfEachChunkInOrder) {
    addSource("a.md", {"one", "two"});
    addSource("b.md", {"three"});
    want({Enrichment::contextualNotes, Enrichment::generatedQuestions});
    answerWithPrompts();
    apply();
    EXPECT_EQ(platform.model->prompts(),
              (Texts{"Document: a.md\nSection: a.md\nPassage:\none", "Passage:\none",
                     "Document: a.md\nSection: a.md\nPassage:\ntwo", "Passage:\ntwo",
                     "Document: b.md\nSection: b.md\nPassage:\nthree", "Passage:\nthree"}));
}

TEST_F(Build, RemovesNotesWithoutAModelCallAndEmbedsAgain) {
    const Uuid a = addSource("a.md", {"one", "two"});
    editChunks(a, [](DocumentChunk& chunk) {
        chunk.contextualNote = "note";
        chunk.embedding = {1.0};
    });
    setSettings([](BuildSettings& settings) { settings.index = IndexKind::hybrid; });
    apply();
    for (const DocumentChunk& chunk : chunks(a)) {
        EXPECT_EQ(chunk.contextualNote, std::nullopt);
        EXPECT_EQ(chunk.embedding, test::bagOfWords(chunk.text));
    }
    EXPECT_EQ(platform.model->sessionCount, 0U);
    EXPECT_EQ(state->project->lastBuiltDescription, "Build Succeeded");
}

TEST_F(Build, RemovesQuestionsThatAreNotWanted) {
    const Uuid a = addSource("a.md", {"one", "two"});
    editChunks(a, [](DocumentChunk& chunk) {
        chunk.generatedQuestions = chunk.text == "one" ? Texts{"Q?"} : Texts{};
        chunk.embedding = {1.0};
    });
    apply();
    EXPECT_EQ(chunks(a)[0].generatedQuestions, std::nullopt);
    EXPECT_EQ(chunks(a)[0].embedding, std::nullopt);
    EXPECT_EQ(chunks(a)[1].generatedQuestions, Texts{});
    EXPECT_EQ(chunks(a)[1].embedding, std::vector<double>{1.0});
}

TEST_F(Build, KeepsTheFirstQuestionsWhenFewerAreWanted) {
    const Uuid a = addSource("a.md", {"one"});
    editChunks(a, [](DocumentChunk& chunk) {
        chunk.generatedQuestions = {"1", "2", "3", "4", "5"};
        chunk.embedding = {1.0};
    });
    want({Enrichment::generatedQuestions});
    setSettings([](BuildSettings& settings) { settings.generatedQuestionsPerChunk = 3.9; });
    apply();
    EXPECT_EQ(chunks(a)[0].generatedQuestions, (Texts{"1", "2", "3"}));
    EXPECT_EQ(chunks(a)[0].embedding, std::nullopt);
    EXPECT_EQ(platform.model->sessionCount, 0U);
}

TEST_F(Build, ReplacesTheQuestionsWhenMoreAreWanted) {
    const Uuid a = addSource("a.md", {"one", "two"});
    editChunks(a, [](DocumentChunk& chunk) {
        chunk.generatedQuestions = {"1", "2", "3"};
        chunk.embedding = {1.0};
    });
    state->editCurrentIndex()->chunksByDocument.at(a).edit()[1].generatedQuestions = {"1", "2", "3",
                                                                                      "4", "5"};
    want({Enrichment::generatedQuestions});
    setSettings([](BuildSettings& settings) { settings.generatedQuestionsPerChunk = 5; });
    platform.model->queue.push_back("a\nb\nc\nd\ne\nf");
    apply();
    EXPECT_EQ(chunks(a)[0].generatedQuestions, (Texts{"a", "b", "c", "d", "e"}));
    EXPECT_EQ(chunks(a)[0].embedding, std::nullopt);
    EXPECT_EQ(chunks(a)[1].generatedQuestions, (Texts{"1", "2", "3", "4", "5"}));
    EXPECT_EQ(platform.model->calls.size(), 1U);
}

TEST_F(Build, AsksAgainWhereTheModelGaveTooFewQuestions) {
    const Uuid a = addSource("a.md", {"one"});
    want({Enrichment::generatedQuestions});
    platform.model->answer = [](const ModelCall&) { return ModelAnswer("only one?"); };
    apply();
    EXPECT_EQ(chunks(a)[0].generatedQuestions, Texts{"only one?"});
    apply();
    EXPECT_EQ(platform.model->calls.size(), 2U);
}

TEST_F(Build, AsksForOneQuestionAtLeast) {
    addSource("a.md", {"one"});
    want({Enrichment::generatedQuestions});
    setSettings([](BuildSettings& settings) { settings.generatedQuestionsPerChunk = -4; });
    platform.model->queue.push_back("a?\nb?");
    apply();
    EXPECT_TRUE(platform.model->calls.at(0).instructions.starts_with(
        "Given a passage, write up to 1 short"));
}

TEST_F(Build, GroupsParentsByFourTimesTheTarget) {
    const Uuid a = addSource("a.md", {"one", "two", "three"});
    editChunks(a, [](DocumentChunk& chunk) {
        chunk.tokenCount = 600;
        chunk.embedding = {1.0};
    });
    want({Enrichment::parentChild});
    apply();
    EXPECT_EQ(chunks(a)[0].parentText, "one\n\ntwo");
    EXPECT_EQ(chunks(a)[1].parentText, "one\n\ntwo");
    EXPECT_EQ(chunks(a)[2].parentText, "three");
    EXPECT_EQ(embedded(a), 3U);
    EXPECT_EQ(platform.model->sessionCount, 0U);
}

TEST_F(Build, ClearsParentsAndLeavesEmbeddingsAlone) {
    const Uuid a = addSource("a.md", {"one", "two"});
    editChunks(a, [](DocumentChunk& chunk) {
        chunk.parentText = "parent";
        chunk.embedding = {1.0};
    });
    apply();
    EXPECT_EQ(chunks(a)[0].parentText, std::nullopt);
    EXPECT_EQ(chunks(a)[1].parentText, std::nullopt);
    EXPECT_EQ(embedded(a), 2U);
}

TEST_F(Build, LeavesTheArraysAloneWhereNothingChanges) {
    const Uuid a = addSource("a.md", {"one"});
    const void* before = chunks(a).identity();
    apply();
    EXPECT_EQ(chunks(a).identity(), before);
}

TEST_F(Build, SucceedsWithoutAModelAndLeavesTheChunksPending) {
    const Uuid a = addSource("a.md", {"one", "two"});
    want({Enrichment::contextualNotes, Enrichment::generatedQuestions});
    platform.model->unavailableReason = "modelNotInstalled";
    apply();
    EXPECT_EQ(state->project->lastBuiltDescription, "Build Succeeded");
    EXPECT_EQ(chunks(a)[0].contextualNote, std::nullopt);
    EXPECT_EQ(chunks(a)[0].generatedQuestions, std::nullopt);
    platform.model->unavailableReason.reset();
    answerWithPrompts();
    apply();
    EXPECT_EQ(chunks(a)[0].contextualNote, "on one");
    EXPECT_EQ(chunks(a)[1].generatedQuestions, Texts{"on two"});
}

TEST_F(Build, LeavesAChunkAsItWasWhenItsCallFails) {
    const Uuid a = addSource("a.md", {"one", "two"});
    editChunks(a, [](DocumentChunk& chunk) { chunk.embedding = {1.0}; });
    want({Enrichment::contextualNotes});
    platform.model->queue = {ModelAnswer::fails("busy"), ModelAnswer("note")};
    apply();
    EXPECT_EQ(chunks(a)[0].contextualNote, std::nullopt);
    EXPECT_EQ(chunks(a)[0].embedding, std::vector<double>{1.0});
    EXPECT_EQ(chunks(a)[1].contextualNote, "note");
    EXPECT_EQ(state->project->lastBuiltDescription, "Build Succeeded");
}

TEST_F(Build, ShowsHowFarAPassIs) {
    addSource("a.md", {"one", "two", "three"});
    want({Enrichment::contextualNotes});
    answerWithPrompts();
    platform.model->gate.close();
    const auto done = startApplying();
    EXPECT_TRUE(index().isEnriching);
    EXPECT_EQ(index().enrichProgress, (Progress{0, 3}));
    letOneAnswer();
    EXPECT_EQ(index().enrichProgress, (Progress{1, 3}));
    EXPECT_EQ(platform.model->gate.waiting(), 1U);
    platform.model->gate.open();
    platform.executor->runAll();
    EXPECT_TRUE(*done);
    EXPECT_FALSE(index().isEnriching);
    EXPECT_EQ(index().enrichProgress, std::nullopt);
}

TEST_F(Build, DoesNotStartASecondPass) {
    addSource("a.md", {"one"});
    want({Enrichment::contextualNotes});
    answerWithPrompts();
    platform.model->gate.close();
    startApplying();
    want({});
    apply();
    EXPECT_EQ(platform.model->calls.size(), 1U);
    EXPECT_TRUE(index().isEnriching);
    EXPECT_EQ(state->project->lastBuiltDescription, "Not built yet");
    platform.model->gate.open();
    platform.executor->runAll();
    EXPECT_EQ(state->project->lastBuiltDescription, "Build Succeeded");
}

TEST_F(Build, LosesWhatIsWrittenOnAChunkThatARescanReplaces) {
    const Uuid a = addSource("a.md", {"one", "two"});
    {
        auto edit = state->editCurrentIndex();
        edit->sources.front().pastedText = "fresh text";
    }
    want({Enrichment::contextualNotes});
    answerWithPrompts();
    platform.model->gate.close();
    const auto done = startApplying();
    test::run(*platform.executor, rescanAll(state));
    ASSERT_EQ(chunks(a).size(), 1U);
    EXPECT_EQ(chunks(a)[0].text, "fresh text");
    EXPECT_EQ(platform.model->calls.size(), 1U);
    platform.model->gate.open();
    platform.executor->runAll();
    EXPECT_TRUE(*done);
    EXPECT_EQ(platform.model->calls.size(), 2U);
    EXPECT_EQ(chunks(a)[0].contextualNote, std::nullopt);
    EXPECT_FALSE(index().isEnriching);
    EXPECT_EQ(state->project->lastBuiltDescription, "Build Succeeded");
}

TEST_F(Build, FindsAChunkThatMovedWithinItsDocument) {
    const Uuid a = addSource("a.md", {"one", "two", "three"});
    want({Enrichment::contextualNotes});
    answerWithPrompts();
    platform.model->gate.close();
    startApplying();
    {
        auto edit = state->editCurrentIndex();
        std::ranges::reverse(edit->chunksByDocument.at(a).edit());
    }
    platform.model->gate.open();
    platform.executor->runAll();
    EXPECT_EQ(chunks(a)[0].contextualNote, "on three");
    EXPECT_EQ(chunks(a)[1].contextualNote, "on two");
    EXPECT_EQ(chunks(a)[2].contextualNote, "on one");
}

TEST_F(Build, StoresNothingInAnIndexThatIsSwitchedAwayFrom) {
    const Uuid a = addSource("a.md", {"one", "two"});
    want({Enrichment::contextualNotes});
    answerWithPrompts();
    const Uuid first = index().id;
    platform.model->gate.close();
    const auto done = startApplying();
    letOneAnswer();
    const Uuid second = state->addRAGIndex().id;
    platform.model->gate.open();
    platform.executor->runAll();
    EXPECT_TRUE(*done);
    EXPECT_FALSE(state->ragIndex(second)->isEnriching);
    EXPECT_TRUE(state->ragIndex(second)->chunksByDocument.empty());
    const RAGIndex& left = *state->ragIndex(first);
    EXPECT_FALSE(left.isEnriching);
    EXPECT_EQ(left.enrichProgress, std::nullopt);
    EXPECT_EQ(left.chunksByDocument.at(a)[0].contextualNote, "on one");
    EXPECT_EQ(left.chunksByDocument.at(a)[1].contextualNote, std::nullopt);
}

TEST_F(Build, StoresAgainAfterComingBack) {
    const Uuid a = addSource("a.md", {"one", "two", "three"});
    want({Enrichment::contextualNotes});
    answerWithPrompts();
    const Uuid first = index().id;
    platform.model->gate.close();
    startApplying();
    state->addRAGIndex();
    letOneAnswer();
    state->selectRAGIndex(first);
    EXPECT_EQ(index().enrichProgress, (Progress{1, 3}));
    platform.model->gate.open();
    platform.executor->runAll();
    EXPECT_EQ(chunks(a)[0].contextualNote, std::nullopt);
    EXPECT_EQ(chunks(a)[1].contextualNote, "on two");
    EXPECT_EQ(chunks(a)[2].contextualNote, "on three");
}

TEST_F(Build, EndsThePassOfADeletedIndex) {
    addSource("a.md", {"one", "two"});
    want({Enrichment::contextualNotes});
    answerWithPrompts();
    const Uuid first = index().id;
    platform.model->gate.close();
    const auto done = startApplying();
    state->addRAGIndex();
    state->deleteRAGIndex(first);
    platform.model->gate.open();
    platform.executor->runAll();
    EXPECT_TRUE(*done);
    EXPECT_FALSE(index().isEnriching);
    EXPECT_EQ(index().enrichProgress, std::nullopt);
}

TEST_F(Build, StoresOnTheLiveChunkWhatThePassBeganWith) {
    // What needs writing is told from the chunk as it was when the pass began.
    const Uuid a = addSource("a.md", {"one", "two"});
    want({Enrichment::contextualNotes});
    answerWithPrompts();
    platform.model->gate.close();
    startApplying();
    editChunks(a, [](DocumentChunk& chunk) { chunk.contextualNote = "meanwhile"; });
    platform.model->gate.open();
    platform.executor->runAll();
    EXPECT_EQ(chunks(a)[1].contextualNote, "on two");
}

TEST_F(Build, RunsNoPassOnACopyThatIsMadeMeanwhile) {
    addSource("a.md", {"one", "two"});
    want({Enrichment::contextualNotes});
    answerWithPrompts();
    platform.model->gate.close();
    const auto done = startApplying();
    const Uuid original = index().id;
    const Uuid copy = state->duplicateRAGIndex(original)->id;
    EXPECT_FALSE(state->ragIndex(copy)->isEnriching);
    EXPECT_EQ(state->ragIndex(copy)->enrichProgress, std::nullopt);
    EXPECT_TRUE(state->ragIndex(original)->isEnriching);
    platform.model->gate.open();
    platform.executor->runAll();
    EXPECT_TRUE(*done);
    EXPECT_FALSE(state->ragIndex(original)->isEnriching);
    EXPECT_FALSE(state->ragIndex(copy)->isEnriching);
}

TEST_F(Build, GoesOnAfterAnUndo) {
    const Uuid a = addSource("a.md", {"one", "two"});
    want({Enrichment::contextualNotes});
    answerWithPrompts();
    const PersistedProject before = state->makeSnapshot();
    platform.model->gate.close();
    const auto done = startApplying();
    letOneAnswer();
    EXPECT_EQ(chunks(a)[0].contextualNote, "on one");
    state->applySnapshot(before);
    EXPECT_EQ(chunks(a)[0].contextualNote, std::nullopt);
    platform.model->gate.open();
    platform.executor->runAll();
    EXPECT_TRUE(*done);
    EXPECT_EQ(chunks(a)[0].contextualNote, std::nullopt);
    EXPECT_EQ(chunks(a)[1].contextualNote, "on two");
    EXPECT_FALSE(index().isEnriching);
    EXPECT_EQ(index().enrichProgress, std::nullopt);
}

TEST_F(Build, CopiesADocumentOnceThoughASnapshotSharesIt) {
    const Uuid a = addSource("a.md", {"one", "two", "three"});
    want({Enrichment::contextualNotes});
    answerWithPrompts();
    const PersistedProject snapshot = state->makeSnapshot();
    std::set<const void*> identities;
    const auto subscription =
        state->ragIndexes.observe([&] { identities.insert(chunks(a).identity()); });
    apply();
    EXPECT_EQ(identities.size(), 2U);
}

TEST_F(Build, GoesOnWhenTheWindowIsClosed) {
    addSource("a.md", {"one", "two"});
    want({Enrichment::contextualNotes});
    answerWithPrompts();
    platform.model->gate.close();
    const auto done = startApplying();
    const std::weak_ptr<AppState> weak = state;
    state.reset();
    workspace.state.reset();
    EXPECT_FALSE(weak.expired());
    platform.model->gate.open();
    platform.executor->runAll();
    EXPECT_TRUE(*done);
    EXPECT_EQ(platform.model->calls.size(), 2U);
    EXPECT_TRUE(weak.expired());
}

class FillEmbeddings : public Build {
  protected:
    FillEmbeddings() {
        setSettings([](BuildSettings& settings) { settings.index = IndexKind::hybrid; });
    }
};

TEST_F(FillEmbeddings, LeavesEveryEmbeddingAbsentUnderKeywordAndSpotlight) {
    const Uuid a = addSource("a.md", {"one"});
    for (const IndexKind kind : {IndexKind::keyword, IndexKind::spotlight}) {
        setSettings([&](BuildSettings& settings) { settings.index = kind; });
        fill();
    }
    EXPECT_EQ(embedded(a), 0U);
    EXPECT_TRUE(platform.embedder->calls.empty());
}

TEST_F(FillEmbeddings, EmbedsTheSearchTextOfChunksThatHaveNone) {
    const Uuid a = addSource("a.md", {"one", "two"});
    {
        auto edit = state->editCurrentIndex();
        auto& made = edit->chunksByDocument.at(a).edit();
        made[0].embedding = {1.0};
        made[1].contextualNote = "a note";
        made[1].generatedQuestions = {"What?"};
        made[1].parentText = "parent";
    }
    fill();
    EXPECT_EQ(platform.embedder->texts(), Texts{"two\na note\nWhat?"});
    EXPECT_EQ(chunks(a)[0].embedding, std::vector<double>{1.0});
    EXPECT_EQ(chunks(a)[1].embedding, test::bagOfWords("two\na note\nWhat?"));
}

TEST_F(FillEmbeddings, ComputesNothingTheSecondTime) {
    addSource("a.md", {"one", "two"});
    fill();
    EXPECT_EQ(platform.embedder->calls.size(), 1U);
    fill();
    EXPECT_EQ(platform.embedder->calls.size(), 1U);
}

TEST_F(FillEmbeddings, TellsTheLanguageFromTheFirstThreeChunks) {
    addSource("a.md", {"one", "two", "three", "four"});
    fill();
    EXPECT_EQ(platform.languages->texts(), Texts{"one\ntwo\nthree"});
}

TEST_F(FillEmbeddings, TellsTheLanguageOfADocumentOfOneChunkFromThatChunk) {
    const Uuid a = addSource("a.md", {"un"});
    editChunks(a, [](DocumentChunk& chunk) { chunk.contextualNote = "a note"; });
    platform.embedder->languages = {"fr"};
    platform.languages->languageOf = [](std::string_view) { return "fr"; };
    fill();
    EXPECT_EQ(platform.languages->texts(), Texts{"un"});
    ASSERT_EQ(platform.embedder->calls.size(), 1U);
    EXPECT_EQ(platform.embedder->calls[0].language, "fr");
    EXPECT_EQ(embedded(a), 1U);
}

TEST_F(FillEmbeddings, TakesEnglishWhereNoLanguageIsRecognised) {
    addSource("a.md", {"12 34"});
    platform.languages->languageOf = [](std::string_view) { return std::nullopt; };
    fill();
    EXPECT_EQ(platform.embedder->calls.at(0).language, "en");
}

TEST_F(FillEmbeddings, UsesTheLanguageOfEachDocument) {
    const Uuid a = addSource("a.md", {"one"});
    const Uuid b = addSource("b.md", {"un"});
    const Uuid c = addSource("c.md", {"odin"});
    platform.embedder->languages = {"en", "fr"};
    platform.languages->languageOf = [](std::string_view text) {
        return text == "un" ? "fr" : text == "odin" ? "ru" : "en";
    };
    fill();
    for (const auto& call : platform.embedder->calls) {
        EXPECT_EQ(call.texts, call.language == "fr" ? Texts{"un"} : Texts{"one"});
    }
    EXPECT_EQ(embedded(a), 1U);
    EXPECT_EQ(embedded(b), 1U);
    EXPECT_EQ(embedded(c), 0U);
    EXPECT_FALSE(state->hasEmbeddingsForAllChunks());
    EXPECT_EQ(index().embedProgress, std::nullopt);
}

TEST_F(FillEmbeddings, LeavesOnlyTheChunkWithoutForWhichTheServiceGivesNothing) {
    Texts texts;
    for (int i = 0; i < 1000; ++i) {
        texts.push_back("word" + std::to_string(i));
    }
    const Uuid a = addSource("a.md", texts);
    platform.embedder->vectorOf = [](std::string_view text) {
        return text == "word500" ? std::nullopt : test::bagOfWords(text);
    };
    fill();
    EXPECT_EQ(embedded(a), 999U);
    EXPECT_EQ(chunks(a)[500].embedding, std::nullopt);
    EXPECT_EQ(platform.embedder->calls.size(), 32U);
    EXPECT_EQ(platform.embedder->calls[0].texts.size(), 32U);
}

TEST_F(FillEmbeddings, SharesARequestBetweenSmallDocuments) {
    addSource("a.md", {"one"});
    addSource("b.md", {"two"});
    fill();
    EXPECT_EQ(platform.embedder->calls.size(), 1U);
    EXPECT_TRUE(state->hasEmbeddingsForAllChunks());
}

TEST_F(FillEmbeddings, ShowsHowFarItIsBetweenBatches) {
    const Uuid a = addSource("a.md", {"one", "two", "three"});
    platform.embedder->batch = 2;
    platform.embedder->gate.close();
    const auto done = test::start(*platform.executor, fillEmbeddings(state));
    EXPECT_EQ(index().embedProgress, (Progress{0, 3}));
    platform.embedder->gate.letOne();
    platform.executor->runAll();
    EXPECT_EQ(index().embedProgress, (Progress{2, 3}));
    EXPECT_EQ(embedded(a), 2U);
    platform.embedder->gate.open();
    platform.executor->runAll();
    EXPECT_TRUE(*done);
    EXPECT_EQ(index().embedProgress, std::nullopt);
    EXPECT_EQ(embedded(a), 3U);
}

TEST_F(FillEmbeddings, DoesNotStoreTheVectorOfATextThatChangedMeanwhile) {
    const Uuid a = addSource("a.md", {"one", "two"});
    platform.embedder->gate.close();
    test::start(*platform.executor, fillEmbeddings(state));
    state->editCurrentIndex()->chunksByDocument.at(a).edit()[0].contextualNote = "new";
    platform.embedder->gate.open();
    platform.executor->runAll();
    EXPECT_EQ(chunks(a)[0].embedding, std::nullopt);
    EXPECT_EQ(chunks(a)[1].embedding, test::bagOfWords("two"));
}

TEST_F(FillEmbeddings, StoresNothingInAnIndexThatIsSwitchedAwayFrom) {
    const Uuid a = addSource("a.md", {"one", "two", "three"});
    const Uuid first = index().id;
    platform.embedder->batch = 1;
    platform.embedder->gate.close();
    const auto done = test::start(*platform.executor, fillEmbeddings(state));
    state->addRAGIndex();
    platform.embedder->gate.open();
    platform.executor->runAll();
    EXPECT_TRUE(*done);
    EXPECT_EQ(platform.embedder->calls.size(), 1U);
    const RAGIndex& left = *state->ragIndex(first);
    EXPECT_EQ(left.embedProgress, std::nullopt);
    for (const DocumentChunk& chunk : left.chunksByDocument.at(a)) {
        EXPECT_EQ(chunk.embedding, std::nullopt);
    }
}

TEST_F(FillEmbeddings, BearsAServiceThatGivesFewerVectorsThanTexts) {
    class ShortEmbedder : public SentenceEmbedder {
        bool supports(std::string_view) override { return true; }
        Task<std::vector<std::optional<Vector>>> vectors(std::string,
                                                         std::vector<std::string>) override {
            std::vector<std::optional<Vector>> result(1, Vector{1.0});
            co_return result;
        }
    };
    Platform given = platform.platform;
    given.embedder = std::make_shared<ShortEmbedder>();
    state = AppState::make(given);
    setSettings([](BuildSettings& settings) { settings.index = IndexKind::vector; });
    const Uuid a = addSource("a.md", {"one", "two"});
    fill();
    EXPECT_EQ(embedded(a), 1U);
}

} // namespace
} // namespace ombrel
