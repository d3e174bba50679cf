#include "export/ExportReadiness.h"

#include "tests/export/ExportSamples.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestPlatform.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>

namespace ombrel {
namespace {

using test::chunkOf;
using test::documentOf;
using enum ChecklistRowState;

class ExportReadiness : public testing::Test {
  protected:
    ExportReadiness() { state->project.edit()->name = "My Docs"; }

    void setIndex(IndexKind kind) {
        editVariant([&](Variant& variant) { variant.settings.index = kind; });
    }
    void setRecall(double recall) {
        editVariant([&](Variant& variant) { variant.recallAt5 = recall; });
    }
    template <class Edit>
    void editVariant(Edit edit) {
        Variant variant = state->currentVariant();
        edit(variant);
        state->updateVariant(variant);
    }
    void add(std::vector<DocumentChunk> chunks, SourceStatus status = {}) {
        IndexedDocument document = documentOf("a.md", std::move(chunks));
        document.document.status = status;
        test::addTo(*state, document);
    }
    ChecklistRow row(std::size_t i) { return exportChecklist(*state).at(i); }
    void expectExports() {
        ExportScreen screen;
        screen.destinationURL = folder.path();
        pressExport(screen, *state);
        ASSERT_TRUE(screen.exportAlert);
        EXPECT_EQ(screen.exportAlert->title(), "Package generated");
        EXPECT_EQ(screen.exportAlert->message(), (folder / "MyDocsRAG").string());
        EXPECT_EQ(screen.exportAlert->identity(), "success:" + (folder / "MyDocsRAG").string());
        EXPECT_TRUE(std::filesystem::exists(folder / "MyDocsRAG/Sources/MyDocsRAG/Chunks.swift"));
    }

    test::TemporaryFolder folder;
    test::TestPlatform platform = test::makeTestPlatform();
    std::shared_ptr<AppState> state = AppState::make(platform.platform);
};

const std::vector<double> someVector = {0.5, 1};

TEST_F(ExportReadiness, HasFourRowsInOrder) {
    setIndex(IndexKind::keyword);
    setRecall(0.925);
    add({chunkOf("one"), chunkOf("two")});
    add({chunkOf("three")});
    EXPECT_EQ(exportChecklist(*state),
              (std::vector<ChecklistRow>{
                  {"Sources", info, "2 documents, 3 chunks imported"},
                  {"Evaluation passes baseline", ok, "Recall@5 0.93 (target \u2265 0.80)"},
                  {"Warnings reviewed", ok, "0 source(s) have warnings"},
                  {"Index", ok, "Keyword \u2014 has real chunk content"}}));
    EXPECT_EQ(exportSummary(*state), "3 chunks");
}

TEST_F(ExportReadiness, PassesARecallOfExactlyTheBaseline) {
    setRecall(0.8);
    EXPECT_EQ(row(1).state, ok);
    EXPECT_EQ(row(1).detail, "Recall@5 0.80 (target \u2265 0.80)");
}

TEST_F(ExportReadiness, WarnsOfARecallBelowTheBaselineAndExportsAllTheSame) {
    setRecall(0.79);
    add({chunkOf("one")});
    EXPECT_EQ(row(1).state, warning);
    EXPECT_EQ(row(1).detail, "Recall@5 0.79 (target \u2265 0.80)");
    expectExports();
}

TEST_F(ExportReadiness, ExportsWithoutEvaluationAndWithWarningsOnAllSources) {
    add({chunkOf("one")}, {SourceStatus::Oversized{2}});
    add({chunkOf("two")}, {SourceStatus::EmptyPage{1}});
    EXPECT_EQ(row(1).state, warning);
    EXPECT_EQ(row(1).detail, "Not evaluated yet \u2014 run Evaluation first");
    EXPECT_EQ(row(2).state, warning);
    EXPECT_EQ(row(2).detail, "2 source(s) have warnings");
    expectExports();
}

TEST_F(ExportReadiness, WarnsOfAHybridIndexWithoutAllEmbeddingsAndExportsEmptyVectors) {
    setIndex(IndexKind::hybrid);
    add({chunkOf("one", someVector), chunkOf("two")});
    EXPECT_TRUE(needsEmbeddings(*state));
    EXPECT_EQ(row(3),
              (ChecklistRow{"Index", warning,
                            "Hybrid needs embeddings for the current chunks \u2014 click Build "
                            "first, or the export ships empty vectors"}));
    expectExports();
}

TEST_F(ExportReadiness, TellsThatEmbeddingsAreThere) {
    add({chunkOf("one", someVector), chunkOf("two", std::vector<double>{})});
    for (const auto& [kind, title] :
         {std::pair(IndexKind::vector, "Vector"), std::pair(IndexKind::hybrid, "Hybrid")}) {
        setIndex(kind);
        EXPECT_FALSE(needsEmbeddings(*state));
        EXPECT_EQ(row(3).state, ok);
        EXPECT_EQ(row(3).detail,
                  std::string(title) + " \u2014 exported package includes real embeddings");
    }
}

TEST_F(ExportReadiness, NeedsNoEmbeddingsForKeywordsOrSpotlight) {
    add({chunkOf("one")});
    for (const IndexKind kind : {IndexKind::keyword, IndexKind::spotlight}) {
        setIndex(kind);
        EXPECT_FALSE(needsEmbeddings(*state));
    }
}

TEST_F(ExportReadiness, StatesTheFallbackOfSpotlight) {
    setIndex(IndexKind::spotlight);
    EXPECT_EQ(row(3), (ChecklistRow{"Index", ok,
                                    "Spotlight isn't implemented yet \u2014 export falls back to "
                                    "Keyword BM25"}));
    EXPECT_NE(usageText(*state).find("// Full chunks ranked by BM25 relevance\n"),
              std::string::npos);
}

TEST_F(ExportReadiness, IsSilentWithoutAFolder) {
    add({chunkOf("one")});
    ExportScreen screen;
    EXPECT_EQ(destinationText(screen), "No folder chosen");
    pressExport(screen, *state);
    EXPECT_FALSE(screen.exportAlert);
    screen.destinationURL = folder.path();
    EXPECT_EQ(destinationText(screen), folder.path().string());
}

TEST_F(ExportReadiness, BlocksAProjectWithoutChunks) {
    EXPECT_EQ(exportBlockedText(*state), "No chunks to export yet \u2014 add sources first.");
    EXPECT_EQ(exportSummary(*state), "0 chunks");
    EXPECT_EQ(row(0).detail, "0 documents, 0 chunks imported");
    EXPECT_EQ(indexedContentMB(*state), 0);
    ExportScreen screen;
    screen.destinationURL = folder.path();
    pressExport(screen, *state);
    EXPECT_FALSE(screen.exportAlert);
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));

    add({});
    EXPECT_TRUE(exportBlockedText(*state));
    add({chunkOf("one")});
    EXPECT_FALSE(exportBlockedText(*state));
}

TEST_F(ExportReadiness, ShowsAFailure) {
    add({chunkOf("one")});
    folder.write("MyDocsRAG", "a file");
    ExportScreen screen;
    screen.destinationURL = folder.path();
    pressExport(screen, *state);
    ASSERT_TRUE(screen.exportAlert);
    EXPECT_EQ(screen.exportAlert->title(), "Export failed");
    EXPECT_TRUE(screen.exportAlert->message().ends_with(": Not a directory"));
    EXPECT_EQ(screen.exportAlert->identity(), "failure:" + screen.exportAlert->message());
}

TEST_F(ExportReadiness, ExportsTheCompactFormWhenItIsChosen) {
    add({chunkOf("one")});
    ExportScreen screen;
    screen.destinationURL = folder.path();
    screen.isCompact = true;
    pressExport(screen, *state);
    ASSERT_TRUE(screen.exportAlert);
    std::ifstream file(folder / "MyDocsRAG/Sources/MyDocsRAG/Chunks.swift");
    const std::string source{std::istreambuf_iterator<char>(file), {}};
    EXPECT_NE(source.find("StaticString"), std::string::npos);
}

TEST_F(ExportReadiness, CountsChunksAsTheSourcesSayAndContentInBytesOfText) {
    DocumentChunk chunk = chunkOf(std::string(246'000, 'x') + "é");
    chunk.parentText = std::string(5'000'000, 'x');
    add({chunk});
    state->editCurrentIndex()->sources[0].chunkCount = 5;
    EXPECT_EQ(totalChunkCount(*state), 5);
    EXPECT_EQ(exportSummary(*state), "1 chunks");
    EXPECT_EQ(indexedContentMB(*state), 0.246002);
}

TEST_F(ExportReadiness, PreviewsTheFilesInOrder) {
    add({chunkOf(std::string(246'000, 'x'))});
    EXPECT_EQ(previewFiles(*state),
              (std::vector<PreviewFile>{{"Package.swift", {}},
                                        {"Sources/MyDocsRAG/MyDocsRAG.swift", {}},
                                        {"Sources/MyDocsRAG/KeywordIndex.swift", {}},
                                        {"Sources/MyDocsRAG/VectorIndex.swift", {}},
                                        {"Sources/MyDocsRAG/Chunks.swift", "0.25 MB"}}));
}

TEST_F(ExportReadiness, ShowsHowThePackageIsUsed) {
    setIndex(IndexKind::hybrid);
    EXPECT_EQ(usageText(*state), "import MyDocsRAG\n"
                                 "\n"
                                 "// Full chunks ranked by Reciprocal Rank Fusion (keyword + "
                                 "vector)\n"
                                 "let chunks = MyDocsRAG.search(\"How do I get started?\")\n"
                                 "\n"
                                 "// Or pack the chunks and ask the on-device model\n"
                                 "let answer = await MyDocsRAG.answer(\"How do I get started?\")");
    setIndex(IndexKind::vector);
    EXPECT_NE(usageText(*state).find("ranked by cosine similarity\n"), std::string::npos);
    setIndex(IndexKind::keyword);
    EXPECT_NE(usageText(*state).find("ranked by BM25 relevance\n"), std::string::npos);
}

} // namespace
} // namespace ombrel
