#include "knowledge/Ingestion.h"

#include "tests/core/Workspace.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace ombrel {
namespace {

using test::TemporaryFolder;

class Ingestion : public testing::Test {
  protected:
    Ingestion() {
        setSettings([](BuildSettings& settings) { settings.enrichments.clear(); });
    }

    template <class Change>
    void setSettings(Change change) {
        Variant variant = state->currentVariant();
        change(variant.settings);
        state->updateVariant(variant);
    }
    void import(std::vector<std::filesystem::path> urls) {
        test::run(*platform.executor, importFiles(state, std::move(urls)));
    }
    void rescan() { test::run(*platform.executor, rescanAll(state)); }
    void paste(std::optional<Uuid> id, std::string title, std::string text, bool defer = false) {
        test::run(*platform.executor,
                  addPastedText(state, id, std::move(title), std::move(text), defer));
    }
    const RAGIndex& index() const { return state->currentIndex(); }
    const SourceDocument& source(std::size_t i = 0) const { return index().sources.at(i); }
    const ChunkArray& chunks(std::size_t i = 0) const {
        return index().chunksByDocument.at(source(i).id);
    }
    std::vector<std::string> names() const {
        std::vector<std::string> result;
        for (const SourceDocument& document : index().sources) {
            result.push_back(document.name);
        }
        return result;
    }
    // Writes a note to every chunk of a source.
    void addNotes(std::size_t i = 0) {
        const Uuid id = source(i).id;
        auto edit = state->editCurrentIndex();
        for (DocumentChunk& chunk : edit->chunksByDocument.at(id).edit()) {
            chunk.contextualNote = "note on " + chunk.text;
        }
    }

    TemporaryFolder folder;
    test::Workspace workspace;
    test::TestPlatform& platform = workspace.platform;
    std::shared_ptr<AppState> state = workspace.state;
};

TEST_F(Ingestion, StoresDocumentsAndSelectsTheLast) {
    const auto a = folder.write("a.md", "alpha");
    const auto b = folder.write("b.txt", "beta");
    import({b, a});
    EXPECT_EQ(names(), (std::vector<std::string>{"b.txt", "a.md"}));
    EXPECT_EQ(index().selectedSourceID, source(1).id);
    EXPECT_EQ(chunks(1)[0].text, "alpha");
    EXPECT_EQ(index().importError, std::nullopt);
    EXPECT_EQ(index().importProgress, std::nullopt);
}

TEST_F(Ingestion, FilesThatWereFoundGoToTheirIndexUnderItsOwnSettings) {
    setSettings([](BuildSettings& settings) { settings.targetChunkSize = 2; });
    const Uuid first = index().id;
    state->addRAGIndex();
    const auto file = folder.write("a.md", "alpha alpha.\n\nbeta beta.");
    test::run(*platform.executor, importDiscovered(state, first, {file}));
    EXPECT_TRUE(index().sources.empty());
    const RAGIndex& filled = *state->ragIndex(first);
    ASSERT_EQ(filled.sources.size(), 1U);
    EXPECT_GT(filled.chunksByDocument.at(filled.sources[0].id).size(), 1U);
    EXPECT_EQ(filled.importProgress, std::nullopt);
}

TEST_F(Ingestion, FilesThatWereFoundForAnIndexThatIsGoneAreDropped) {
    const auto file = folder.write("a.md", "alpha");
    test::run(*platform.executor, importDiscovered(state, Uuid::random(), {file}));
    EXPECT_TRUE(index().sources.empty());
}

TEST_F(Ingestion, ImportsOnlyListedVisibleFilesOfADroppedFolder) {
    folder.write("a.md", "alpha");
    folder.write(".b.md", "beta");
    folder.write("c.png", "gamma");
    import({folder.path(), folder / "missing.md"});
    EXPECT_EQ(names(), std::vector<std::string>{"a.md"});
    EXPECT_EQ(index().importError, std::nullopt);
}

TEST_F(Ingestion, ReplacesAFileThatIsImportedAgain) {
    const auto a = folder.write("a.md", "alpha");
    const auto b = folder.write("b.md", "beta");
    import({a, b});
    const Uuid first = source(0).id;
    addNotes(0);
    import({folder / "./a.md"});
    EXPECT_EQ(names(), (std::vector<std::string>{"b.md", "a.md"}));
    EXPECT_NE(source(1).id, first);
    EXPECT_EQ(index().selectedSourceID, source(1).id);
    EXPECT_TRUE(index().chunksByDocument.contains(first));
}

TEST_F(Ingestion, LosesNotesAndQuestionsOfAFileThatIsImportedAgain) {
    const auto a = folder.write("a.md", "alpha");
    import({a});
    setSettings(
        [](BuildSettings& settings) { settings.enrichments = {Enrichment::contextualNotes}; });
    addNotes();
    platform.model->unavailableReason = "modelNotInstalled";
    import({a});
    EXPECT_EQ(chunks()[0].contextualNote, std::nullopt);
    platform.model->unavailableReason.reset();
    platform.model->queue.push_back("A new note.");
    rescan();
    EXPECT_EQ(chunks()[0].contextualNote, "A new note.");
}

TEST_F(Ingestion, NamesTheLastFileThatCouldNotBeReadAndGoesOn) {
    const auto bad = folder.write("bad.txt", "\xFF");
    const auto locked = folder.write("locked.pdf", "x");
    const auto good = folder.write("good.md", "fine");
    import({bad, locked, good});
    EXPECT_EQ(names(), std::vector<std::string>{"good.md"});
    EXPECT_EQ(index().importError, "Couldn't read locked.pdf: The PDF couldn't be opened \u2014 it "
                                   "may be corrupt or password-protected.");
    import({bad});
    EXPECT_EQ(index().importError, "Couldn't read bad.txt: The file couldn't be opened because it "
                                   "isn't valid UTF-8 text.");
}

TEST_F(Ingestion, ClearsAnEarlierErrorWithACleanImport) {
    import({folder.write("bad.txt", "\xFF")});
    ASSERT_TRUE(index().importError);
    import({folder.write("good.md", "fine")});
    EXPECT_EQ(index().importError, std::nullopt);
}

TEST_F(Ingestion, KeepsTheOldSourceWhenItsFileCanNoLongerBeRead) {
    const auto a = folder.write("a.md", "alpha");
    import({a});
    folder.write("a.md", "\xFF");
    import({a});
    EXPECT_EQ(names(), std::vector<std::string>{"a.md"});
    EXPECT_EQ(chunks()[0].text, "alpha");
}

TEST_F(Ingestion, BuildsAndSchedulesACheckpoint) {
    const auto a = folder.write("a.md", "alpha");
    EXPECT_TRUE(workspace.schedules([&] { import({a}); }));
    EXPECT_EQ(state->project->lastBuiltDescription, "Build Succeeded");
    EXPECT_TRUE(state->hasEmbeddingsForAllChunks());
}

TEST_F(Ingestion, ShowsHowManyFilesAreReadWhileAPdfIsRead) {
    const auto a = folder.write("a.md", "alpha");
    const auto b = folder.write("b.pdf", "x");
    platform.pdf->setPages(b, {"page"});
    platform.pdf->gate.close();
    const auto done = test::start(*platform.executor, importFiles(state, {a, b}));
    EXPECT_FALSE(*done);
    EXPECT_EQ(index().importProgress, (Progress{1, 2}));
    platform.pdf->gate.open();
    platform.executor->runAll();
    EXPECT_TRUE(*done);
    EXPECT_EQ(index().importProgress, std::nullopt);
    EXPECT_EQ(names(), (std::vector<std::string>{"a.md", "b.pdf"}));
}

TEST_F(Ingestion, StoresWhereItBeganWhenAnotherIndexIsSelectedMeanwhile) {
    const Uuid first = index().id;
    const auto b = folder.write("b.pdf", "x");
    platform.pdf->setPages(b, {"page"});
    platform.pdf->gate.close();
    const auto done = test::start(*platform.executor, importFiles(state, {b}));
    const Uuid second = state->addRAGIndex().id;
    state->editIndex(second, [](RAGIndex& other) { other.importError = "old"; });
    platform.pdf->gate.open();
    platform.executor->runAll();
    EXPECT_TRUE(*done);
    EXPECT_TRUE(index().sources.empty());
    EXPECT_EQ(index().importError, std::nullopt);
    EXPECT_EQ(state->ragIndex(first)->sources.size(), 1U);
    EXPECT_EQ(state->ragIndex(first)->importProgress, std::nullopt);
    EXPECT_EQ(state->project->lastBuiltDescription, "Not built yet");
}

TEST_F(Ingestion, SetsTheErrorOnTheIndexThatIsCurrentAtTheEnd) {
    const auto b = folder.write("b.pdf", "x");
    platform.pdf->gate.close();
    test::start(*platform.executor, importFiles(state, {b}));
    const Uuid first = index().id;
    state->addRAGIndex();
    platform.pdf->gate.open();
    platform.executor->runAll();
    EXPECT_TRUE(index().importError);
    EXPECT_EQ(state->ragIndex(first)->importError, std::nullopt);
}

TEST_F(Ingestion, StopsWhenItsIndexIsDeleted) {
    const Uuid first = index().id;
    const auto a = folder.write("a.pdf", "x");
    const auto b = folder.write("b.pdf", "x");
    platform.pdf->setPages(a, {"page"});
    platform.pdf->setPages(b, {"page"});
    platform.pdf->gate.close();
    const auto done = test::start(*platform.executor, importFiles(state, {a, b}));
    state->addRAGIndex();
    state->deleteRAGIndex(first);
    platform.pdf->gate.open();
    platform.executor->runAll();
    EXPECT_TRUE(*done);
    EXPECT_TRUE(index().sources.empty());
    EXPECT_EQ(platform.pdf->reads.size(), 1U);
    EXPECT_EQ(state->project->lastBuiltDescription, "Not built yet");
}

TEST_F(Ingestion, GivesWayToOtherWorkWhileManyFilesAreRead) {
    std::vector<std::filesystem::path> files;
    for (int i = 0; i < 3; ++i) {
        const auto file = folder.write("f" + std::to_string(i) + ".pdf", "x");
        platform.pdf->setPages(file, {"page"});
        files.push_back(file);
    }
    // Every document that is stored takes its time.
    const auto subscription = state->ragIndexes.observe(
        [this] { platform.executor->moveClock(std::chrono::milliseconds(15)); });
    platform.executor->spawn(importFiles(state, files));
    platform.executor->runOne();
    EXPECT_LT(index().sources.size(), 3U);
    platform.executor->runAll();
    EXPECT_EQ(index().sources.size(), 3U);
}

TEST_F(Ingestion, KeepsIdsAndPlacesInARescan) {
    import({folder.write("a.md", "alpha"), folder.write("b.md", "beta")});
    paste(std::nullopt, "Paste", "gamma");
    const auto before = index().sources;
    folder.write("a.md", "alpha and more");
    rescan();
    ASSERT_EQ(index().sources.size(), 3U);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(source(i).id, before[i].id);
        EXPECT_EQ(source(i).name, before[i].name);
    }
    EXPECT_EQ(chunks(0)[0].text, "alpha and more");
    EXPECT_EQ(chunks(2)[0].text, "gamma");
    EXPECT_EQ(source(2).pastedText, SharedText("gamma"));
    // A pasted text becomes the selected source when it is read again.
    EXPECT_EQ(index().selectedSourceID, before[2].id);
}

TEST_F(Ingestion, KeepsTheNotesOfChunksThatComeOutTheSame) {
    setSettings([](BuildSettings& settings) {
        settings.enrichments = {Enrichment::contextualNotes};
        settings.chunking = ChunkingStrategy::paragraph;
        settings.targetChunkSize = 1;
        settings.overlapPercent = 0;
    });
    platform.model->unavailableReason = "modelNotInstalled";
    const std::string longer(40, 'x');
    import({folder.write("a.md", longer + "\n\nsmall\n\ntiny")});
    addNotes();
    setSettings([](BuildSettings& settings) { settings.targetChunkSize = 2; });
    rescan();
    ASSERT_EQ(chunks().size(), 2U);
    EXPECT_EQ(chunks()[0].contextualNote, "note on " + longer);
    EXPECT_EQ(chunks()[1].text, "small\n\ntiny");
    EXPECT_EQ(chunks()[1].contextualNote, std::nullopt);
}

TEST_F(Ingestion, LosesTheNotesOfARenamedSection) {
    setSettings(
        [](BuildSettings& settings) { settings.enrichments = {Enrichment::contextualNotes}; });
    platform.model->unavailableReason = "modelNotInstalled";
    import({folder.write("a.md", "# One\nwords")});
    addNotes();
    rescan();
    EXPECT_EQ(chunks()[0].contextualNote, "note on words");
    folder.write("a.md", "# Two\nwords");
    rescan();
    EXPECT_EQ(chunks()[0].text, "words");
    EXPECT_EQ(chunks()[0].contextualNote, std::nullopt);
}

TEST_F(Ingestion, RecomputesTheStatusUnderTheSettingsThenInForce) {
    setSettings([](BuildSettings& settings) { settings.chunking = ChunkingStrategy::paragraph; });
    import({folder.write("a.md", std::string(400, 'x'))});
    EXPECT_EQ(source().status, SourceStatus{});
    setSettings([](BuildSettings& settings) { settings.targetChunkSize = 10; });
    rescan();
    EXPECT_EQ(source().status.label(), "1 oversized");
}

TEST_F(Ingestion, KeepsTheChunksOfAFileThatVanished) {
    const auto a = folder.write("a.md", "alpha");
    import({a});
    const SourceDocument before = source();
    std::filesystem::remove(a);
    rescan();
    EXPECT_EQ(index().importError,
              "Couldn't re-scan a.md: The file couldn't be opened because it doesn't exist.");
    EXPECT_EQ(source(), before);
    EXPECT_EQ(chunks()[0].text, "alpha");
}

TEST_F(Ingestion, SkipsASourceWhoseFileIsUnknownWithoutAMessage) {
    import({folder.write("a.md", "alpha")});
    state->editCurrentIndex()->sources.front().fileURL.reset();
    rescan();
    EXPECT_EQ(index().importError, std::nullopt);
    EXPECT_EQ(names(), std::vector<std::string>{"a.md"});
    EXPECT_EQ(chunks()[0].text, "alpha");
}

TEST_F(Ingestion, DoesNotBringBackASourceThatIsRemovedDuringARescan) {
    const auto a = folder.write("a.pdf", "x");
    platform.pdf->setPages(a, {"page"});
    import({a});
    paste(std::nullopt, "Paste", "gamma");
    const Uuid pdf = source(0).id;
    const Uuid pasted = source(1).id;
    platform.pdf->gate.close();
    const auto done = test::start(*platform.executor, rescanAll(state));
    removeSource(*state, pdf);
    removeSource(*state, pasted);
    platform.pdf->gate.open();
    platform.executor->runAll();
    EXPECT_TRUE(*done);
    EXPECT_TRUE(index().sources.empty());
    EXPECT_TRUE(index().chunksByDocument.empty());
    EXPECT_EQ(index().selectedSourceID, std::nullopt);
}

TEST_F(Ingestion, KeepsANoteThatIsStoredWhileAPdfIsReadAgain) {
    setSettings(
        [](BuildSettings& settings) { settings.enrichments = {Enrichment::contextualNotes}; });
    platform.model->unavailableReason = "modelNotInstalled";
    const auto a = folder.write("a.pdf", "x");
    platform.pdf->setPages(a, {"page"});
    import({a});
    platform.pdf->gate.close();
    test::start(*platform.executor, rescanAll(state));
    addNotes();
    platform.pdf->gate.open();
    platform.executor->runAll();
    EXPECT_EQ(chunks()[0].contextualNote, "note on page");
}

TEST_F(Ingestion, AddsPastedTextSelectsItAndBuilds) {
    EXPECT_TRUE(workspace.schedules([&] { paste(std::nullopt, " ", "some words"); }));
    EXPECT_EQ(names(), std::vector<std::string>{"Pasted text"});
    EXPECT_EQ(index().selectedSourceID, source().id);
    EXPECT_EQ(state->project->lastBuiltDescription, "Build Succeeded");
    const Uuid id = source().id;
    rescan();
    EXPECT_EQ(source().id, id);
    EXPECT_EQ(source().name, "Pasted text");
}

TEST_F(Ingestion, ReplacesAPastedTextAtItsPlaceAndKeepsItsEnrichment) {
    setSettings([](BuildSettings& settings) {
        settings.enrichments = {Enrichment::contextualNotes};
        settings.chunking = ChunkingStrategy::paragraph;
        settings.targetChunkSize = 1;
        settings.overlapPercent = 0;
    });
    platform.model->unavailableReason = "modelNotInstalled";
    paste(std::nullopt, "One", "first\n\nsecond");
    paste(std::nullopt, "Two", "other");
    addNotes(0);
    const Uuid id = source(0).id;
    paste(id, "One", "first\n\nchanged");
    EXPECT_EQ(names(), (std::vector<std::string>{"One", "Two"}));
    EXPECT_EQ(source(0).id, id);
    EXPECT_EQ(index().selectedSourceID, id);
    EXPECT_EQ(chunks(0)[0].contextualNote, "note on first");
    EXPECT_EQ(chunks(0)[1].contextualNote, std::nullopt);
}

TEST_F(Ingestion, LeavesTheBuildToTheCallerOfADeferredPaste) {
    EXPECT_FALSE(workspace.schedules([&] { paste(std::nullopt, "a", "text", true); }));
    EXPECT_EQ(names(), std::vector<std::string>{"a"});
    EXPECT_EQ(state->project->lastBuiltDescription, "Not built yet");
}

TEST_F(Ingestion, KeepsTheTextThatIsEditedWhileItsSourceIsRemoved) {
    const Uuid gone = Uuid::random();
    paste(gone, "a", "typed");
    EXPECT_EQ(source().id, gone);
    EXPECT_EQ(chunks()[0].text, "typed");
}

TEST_F(Ingestion, RemovesASourceWithItsChunksAndBuildsNothing) {
    import({folder.write("a.md", "alpha"), folder.write("b.md", "beta"),
            folder.write("c.md", "gamma")});
    const auto before = state->project->lastBuildFinishedAt;
    const Uuid last = source(2).id;
    EXPECT_TRUE(workspace.schedules([&] { removeSource(*state, last); }));
    EXPECT_EQ(names(), (std::vector<std::string>{"a.md", "b.md"}));
    EXPECT_FALSE(index().chunksByDocument.contains(last));
    EXPECT_EQ(index().selectedSourceID, source(0).id);
    EXPECT_EQ(state->project->lastBuildFinishedAt, before);
}

TEST_F(Ingestion, KeepsTheSelectionWhenAnotherSourceIsRemoved) {
    import({folder.write("a.md", "alpha"), folder.write("b.md", "beta")});
    removeSource(*state, source(0).id);
    EXPECT_EQ(index().selectedSourceID, source(0).id);
    removeSource(*state, source(0).id);
    EXPECT_EQ(index().selectedSourceID, std::nullopt);
}

} // namespace
} // namespace ombrel
