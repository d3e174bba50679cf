#include "core/AppState.h"

#include "tests/core/Workspace.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace ombrel {
namespace {

using namespace test;

// A file that is there for the length of a test.
class ScratchFile {
  public:
    ScratchFile()
        : m_path(std::filesystem::temp_directory_path() / ("ombrel-" + Uuid::random().text())) {
        std::ofstream(m_path) << "text";
    }
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;
    ~ScratchFile() { remove(); }
    const std::filesystem::path& path() const { return m_path; }
    void remove() const { std::filesystem::remove(m_path); }

  private:
    std::filesystem::path m_path;
};

DocumentChunk chunk(std::string text) {
    DocumentChunk result;
    result.id = Uuid::random();
    result.text = std::move(text);
    result.embedding = {0.5, 0.25};
    return result;
}

SourceDocument fileSource(const std::filesystem::path& path) {
    SourceDocument source;
    source.id = Uuid::random();
    source.name = path.filename();
    source.type = SourceType::pdf;
    source.pageCount = 3;
    source.chunkCount = 2;
    source.tokenCount = 40;
    source.status.value = SourceStatus::EmptyPage{1};
    source.fileURL = path;
    return source;
}

// A workspace with something in every field that is saved.
void fill(AppState& state, const std::filesystem::path& file) {
    state.project.edit()->name = "Field Station";
    state.project.edit()->lastBuiltSettings = BuildSettings();
    const SourceDocument source = fileSource(file);
    SourceDocument pasted;
    pasted.id = Uuid::random();
    pasted.name = "Pasted";
    pasted.pastedText = SharedText("The text itself");
    {
        auto index = state.editCurrentIndex();
        index->sources = {source, pasted};
        index->chunksByDocument[source.id] = {chunk("a"), chunk("b")};
        index->chunksByDocument[pasted.id] = {chunk("c")};
        index->selectedSourceID = pasted.id;
        index->playgroundQuestion = "Why?";
        TestQuestion question;
        question.id = Uuid::random();
        question.question = "How?";
        index->testQuestions = {question};
    }
    state.duplicateVariant();
    state.addAgent();
    state.addTool();
    state.addFlow();
}

TEST(MakeSnapshot, HoldsEverythingThatIsSaved) {
    const Workspace workspace;
    const ScratchFile file;
    fill(*workspace.state, file.path());
    workspace->addRAGIndex();
    const PersistedProject snapshot = workspace->makeSnapshot();
    EXPECT_EQ(snapshot.formatVersion, 2);
    EXPECT_EQ(snapshot.project, *workspace->project);
    EXPECT_EQ(snapshot.selectedRAGIndexID, *workspace->selectedRAGIndexID);
    EXPECT_EQ(snapshot.agents, *workspace->agents);
    EXPECT_EQ(snapshot.tools, *workspace->tools);
    EXPECT_EQ(snapshot.flows, *workspace->flows);
    EXPECT_EQ(snapshot.selectedNavigatorItem, workspace->selectedNavigatorItem());
    ASSERT_EQ(snapshot.ragIndexes.size(), 2u);
    const RAGIndex& index = workspace->ragIndexes->front();
    const PersistedRAGIndex& saved = snapshot.ragIndexes[0];
    EXPECT_EQ(saved.id, index.id);
    EXPECT_EQ(saved.name, "Default");
    EXPECT_EQ(saved.chunksByDocument, index.chunksByDocument);
    EXPECT_EQ(saved.variants, index.variants);
    EXPECT_EQ(saved.variants.size(), 2u);
    EXPECT_EQ(saved.selectedVariantID, index.selectedVariantID);
    EXPECT_EQ(saved.selectedSourceID, index.selectedSourceID);
    EXPECT_EQ(saved.testQuestions, index.testQuestions);
    EXPECT_EQ(saved.playgroundQuestion, "Why?");
    ASSERT_EQ(saved.sources.size(), 2u);
    EXPECT_EQ(saved.sources[0].id, index.sources[0].id);
    EXPECT_EQ(saved.sources[0].name, index.sources[0].name);
    EXPECT_EQ(saved.sources[0].type, SourceType::pdf);
    EXPECT_EQ(saved.sources[0].pageCount, 3);
    EXPECT_EQ(saved.sources[0].chunkCount, 2);
    EXPECT_EQ(saved.sources[0].tokenCount, 40);
    EXPECT_EQ(saved.sources[0].status, index.sources[0].status);
    EXPECT_EQ(saved.sources[0].bookmarkData, Data{file.path().native()});
    EXPECT_EQ(saved.sources[0].pastedText, std::nullopt);
    EXPECT_EQ(saved.sources[1].bookmarkData, std::nullopt);
    EXPECT_EQ(saved.sources[1].pastedText, SharedText("The text itself"));
}

TEST(MakeSnapshot, SharesTheMemoryOfAllChunks) {
    const Workspace workspace;
    const ScratchFile file;
    fill(*workspace.state, file.path());
    const PersistedProject snapshot = workspace->makeSnapshot();
    ASSERT_EQ(snapshot.ragIndexes[0].chunksByDocument.size(), 2u);
    for (const auto& [id, chunks] : snapshot.ragIndexes[0].chunksByDocument) {
        EXPECT_EQ(chunks.identity(), workspace->currentIndex().chunksByDocument.at(id).identity());
    }
    const Workspace other;
    other->applySnapshot(snapshot);
    for (const auto& [id, chunks] : snapshot.ragIndexes[0].chunksByDocument) {
        EXPECT_EQ(chunks.identity(), other->currentIndex().chunksByDocument.at(id).identity());
    }
}

TEST(MakeSnapshot, IsNotChangedByLaterEdits) {
    const Workspace workspace;
    const ScratchFile file;
    fill(*workspace.state, file.path());
    const PersistedProject snapshot = workspace->makeSnapshot();
    const PersistedProject copy = snapshot;
    const Uuid source = workspace->currentIndex().sources[0].id;
    workspace->editCurrentIndex()->chunksByDocument[source].edit()[0].text = "changed";
    workspace->agents.edit()->clear();
    EXPECT_EQ(snapshot.ragIndexes[0].chunksByDocument.at(source)[0].text, "a");
    EXPECT_EQ(snapshot, copy);
    EXPECT_NE(snapshot, workspace->makeSnapshot());
}

TEST(ApplySnapshot, BringsBackEverythingThatWasSaved) {
    const Workspace workspace;
    const ScratchFile file;
    fill(*workspace.state, file.path());
    const PersistedProject snapshot = workspace->makeSnapshot();
    const Workspace other;
    other->applySnapshot(snapshot);
    EXPECT_EQ(other->makeSnapshot(), snapshot);
    EXPECT_EQ(*other->ragIndexes, *workspace->ragIndexes);
    EXPECT_EQ(other->currentIndex().sources[0].fileURL, file.path());
    EXPECT_FALSE(other->hasPendingCheckpoint());
}

TEST(ApplySnapshot, PutsTransientFieldsBackToTheirStart) {
    const Workspace workspace;
    {
        auto index = workspace->editCurrentIndex();
        index->playgroundQuestion = "Why?";
        index->importError = "Could not read it";
        index->selectedFailingQuestionID = Uuid::random();
        index->playgroundResult.emplace();
        index->isAsking = index->isWarmingUp = index->isDrafting = true;
        index->isEnriching = index->isEvaluating = true;
        index->warmUpStatus = "Warm";
        index->draftProgress = index->enrichProgress = index->evaluateProgress = Progress{1, 2};
        index->importProgress = index->embedProgress = Progress{1, 2};
    }
    workspace->setSelectedTab(AppTab::evaluation);
    workspace->applySnapshot(workspace->makeSnapshot());
    RAGIndex expected(workspace->currentIndex().id, "Default");
    expected.variants = workspace->currentIndex().variants;
    expected.selectedVariantID = workspace->currentIndex().selectedVariantID;
    expected.playgroundQuestion = "Why?";
    EXPECT_EQ(workspace->currentIndex(), expected);
    EXPECT_EQ(workspace->selectedTab(), AppTab::evaluation);
}

TEST(ApplySnapshot, LeavesTheFileOutWhenItIsGoneAndKeepsItsChunks) {
    const Workspace workspace;
    const ScratchFile file;
    fill(*workspace.state, file.path());
    file.remove();
    const PersistedProject snapshot = workspace->makeSnapshot();
    EXPECT_TRUE(snapshot.ragIndexes[0].sources[0].bookmarkData);
    workspace->applySnapshot(snapshot);
    EXPECT_EQ(workspace->currentIndex().sources[0].fileURL, std::nullopt);
    EXPECT_EQ(chunkCount(workspace->indexedChunks()), 3u);
    // The link is lost for good.
    EXPECT_EQ(workspace->makeSnapshot().ragIndexes[0].sources[0].bookmarkData, std::nullopt);
}

TEST(ApplySnapshot, ResolvesNothingButAnAbsolutePath) {
    const ScratchFile file;
    for (const std::string& bytes :
         {std::string(), std::string("."), std::string("book\0\x01", 6),
          file.path().native() + std::string("\0x", 2), file.path().native() + "/x"}) {
        const Workspace workspace;
        fill(*workspace.state, file.path());
        PersistedProject snapshot = workspace->makeSnapshot();
        snapshot.ragIndexes[0].sources[0].bookmarkData = Data{bytes};
        workspace->applySnapshot(snapshot);
        EXPECT_EQ(workspace->currentIndex().sources[0].fileURL, std::nullopt) << bytes;
    }
}

TEST(ApplySnapshot, SelectsTheFirstIndexForADeletedOneAndTheNavigatorFollows) {
    const Workspace workspace;
    const Uuid first = workspace->ragIndexes->front().id;
    workspace->addRAGIndex();
    PersistedProject snapshot = workspace->makeSnapshot();
    snapshot.selectedRAGIndexID = Uuid::random();
    snapshot.selectedNavigatorItem = showsIndex(Uuid::random());
    workspace->applySnapshot(snapshot);
    EXPECT_EQ(*workspace->selectedRAGIndexID, first);
    EXPECT_EQ(workspace->selectedNavigatorItem(), showsIndex(first));
}

TEST(ApplySnapshot, ShowsTheSelectedIndexWhateverIndexTheNavigatorNamed) {
    const Workspace workspace;
    const Uuid first = workspace->ragIndexes->front().id;
    workspace->addRAGIndex();
    PersistedProject snapshot = workspace->makeSnapshot();
    snapshot.selectedNavigatorItem = showsIndex(first);
    workspace->applySnapshot(snapshot);
    EXPECT_EQ(workspace->selectedNavigatorItem(), showsIndex(snapshot.selectedRAGIndexID));
}

TEST(ApplySnapshot, KeepsANavigatorSelectionOfAFlowThatIsNotThere) {
    const Workspace workspace;
    PersistedProject snapshot = workspace->makeSnapshot();
    const Uuid missing = Uuid::random();
    snapshot.selectedNavigatorItem = showsFlow(missing);
    workspace->applySnapshot(snapshot);
    EXPECT_EQ(workspace->selectedNavigatorItem(), showsFlow(missing));
}

TEST(ApplySnapshot, AddsAnIndexWhenThereIsNone) {
    const Workspace workspace;
    PersistedProject snapshot = workspace->makeSnapshot();
    snapshot.ragIndexes.clear();
    workspace->applySnapshot(snapshot);
    ASSERT_EQ(workspace->ragIndexes->size(), 1u);
    EXPECT_EQ(workspace->currentIndex().name, "Default");
    EXPECT_NE(workspace->currentIndex().id, snapshot.selectedRAGIndexID);
    EXPECT_EQ(*workspace->selectedRAGIndexID, workspace->currentIndex().id);
    EXPECT_EQ(workspace->selectedNavigatorItem(), showsIndex(workspace->currentIndex().id));
}

TEST(ApplySnapshot, GivesAnIndexWithoutVariantsTheDefaultOne) {
    const Workspace workspace;
    PersistedProject snapshot = workspace->makeSnapshot();
    snapshot.ragIndexes[0].variants.clear();
    workspace->applySnapshot(snapshot);
    EXPECT_EQ(workspace->currentVariant().name, "Default");
    EXPECT_EQ(workspace->currentVariant().id, workspace->currentIndex().selectedVariantID);
}

TEST(ApplySnapshot, BringsBackAFlowOfOneStartUnchanged) {
    const Workspace workspace;
    const Flow flow = workspace->addFlow();
    const PersistedProject snapshot = workspace->makeSnapshot();
    workspace->deleteFlow(flow.id);
    workspace->applySnapshot(snapshot);
    EXPECT_EQ(*workspace->flows, std::vector<Flow>{flow});
}

} // namespace
} // namespace ombrel
