#include "knowledge/DocumentIngestion.h"

#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestPlatform.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace ombrel {
namespace {

using test::TemporaryFolder;
using Paths = std::vector<std::filesystem::path>;
using Ingested = DocumentIngestion::Ingested;

class DiscoverFiles : public testing::Test {
  protected:
    TemporaryFolder folder;
};

TEST_F(DiscoverFiles, GivesNothingForAPathThatDoesNotExist) {
    EXPECT_EQ(discoverFiles(folder / "missing.md"), Paths{});
}

TEST_F(DiscoverFiles, GivesAFileOfAListedType) {
    for (const char* name : {"a.md", "b.markdown", "c.txt", "d.pdf"}) {
        const auto file = folder.write(name, "x");
        EXPECT_EQ(discoverFiles(file), Paths{file});
    }
}

TEST_F(DiscoverFiles, TakesExtensionsInCapitals) {
    const auto file = folder.write("NOTES.MD", "x");
    EXPECT_EQ(discoverFiles(file), Paths{file});
}

TEST_F(DiscoverFiles, TellsHowManyItHasFoundAndEndsWhenItIsTold) {
    for (int i = 0; i < 600; ++i) {
        folder.write("in/" + std::to_string(i) + ".md", "x");
    }
    std::vector<std::size_t> told;
    const auto all = discoverFiles(folder.path(), [&](std::size_t found) {
        told.push_back(found);
        return true;
    });
    EXPECT_EQ(all, discoverFiles(folder.path()));
    EXPECT_EQ(all.size(), 600U);
    ASSERT_FALSE(told.empty());
    EXPECT_TRUE(std::ranges::is_sorted(told));
    EXPECT_GT(told.back(), 0U);
    std::size_t asked = 0;
    EXPECT_EQ(discoverFiles(folder.path(),
                            [&](std::size_t) {
                                asked += 1;
                                return false;
                            }),
              Paths{});
    EXPECT_EQ(asked, 1U);
}

TEST_F(DiscoverFiles, SkipsAFileOfAnotherType) {
    EXPECT_EQ(discoverFiles(folder.write("a.html", "x")), Paths{});
    EXPECT_EQ(discoverFiles(folder.write("md", "x")), Paths{});
    EXPECT_EQ(discoverFiles(folder.write("a.md.bak", "x")), Paths{});
}

TEST_F(DiscoverFiles, WalksFoldersSortedByNameAndSkipsHiddenAndOtherFiles) {
    const auto b = folder.write("b.md", "x");
    const auto z = folder.write("c/deep/deeper/z.txt", "x");
    const auto a = folder.write("c/a.md", "x");
    const auto d = folder.write("d.pdf", "x");
    folder.write(".hidden.md", "x");
    folder.write(".git/notes.md", "x");
    folder.write("c/picture.png", "x");
    EXPECT_EQ(discoverFiles(folder.path()), (Paths{b, a, z, d}));
}

TEST_F(DiscoverFiles, DoesNotTakeAFolderForAFile) {
    const auto inside = folder.write("chapter.md/text.txt", "x");
    EXPECT_EQ(discoverFiles(folder.path()), Paths{inside});
}

TEST_F(DiscoverFiles, DoesNotFollowLinksToFolders) {
    const auto file = folder.write("inner/a.md", "x");
    std::filesystem::create_directory_symlink(folder.path(), folder / "inner/loop");
    std::filesystem::create_directory_symlink(folder.path(), folder / "inner/loop.md");
    EXPECT_EQ(discoverFiles(folder.path()), Paths{file});
}

TEST_F(DiscoverFiles, FollowsALinkToAFileAndALinkThatIsGivenItself) {
    folder.write("real/a.md", "x");
    std::filesystem::create_symlink(folder / "real/a.md", folder / "link.md");
    std::filesystem::create_directory_symlink(folder / "real", folder / "shortcut");
    EXPECT_EQ(discoverFiles(folder / "link.md"), Paths{folder / "link.md"});
    EXPECT_EQ(discoverFiles(folder / "shortcut"), Paths{folder / "shortcut/a.md"});
}

TEST_F(DiscoverFiles, GivesAbsolutePathsWithoutDots) {
    const auto file = folder.write("a/b.md", "x");
    EXPECT_EQ(discoverFiles(folder / "./a/../a/./b.md"), Paths{file});
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(folder.path());
    const Paths relative = discoverFiles("a");
    std::filesystem::current_path(before);
    EXPECT_EQ(relative, Paths{file});
}

class ReadDocument : public testing::Test {
  protected:
    Result<Ingested> read(const std::filesystem::path& file,
                          std::optional<Uuid> existingID = std::nullopt) {
        return test::run(*platform.executor, DocumentIngestion::readDocument(
                                                 platform.platform, file, settings, existingID));
    }
    std::string errorOf(const std::filesystem::path& file) {
        const auto result = read(file);
        return result ? "no error" : result.error().message;
    }

    TemporaryFolder folder;
    test::TestPlatform platform = test::makeTestPlatform();
    BuildSettings settings;
};

TEST_F(ReadDocument, DescribesAMarkdownFile) {
    const auto file = folder.write("Handbook.md", "# Guide\nSome words here.\n");
    const auto result = read(file);
    ASSERT_TRUE(result);
    EXPECT_EQ(result->document.name, "Handbook.md");
    EXPECT_EQ(result->document.type, SourceType::markdown);
    EXPECT_EQ(result->document.pageCount, std::nullopt);
    EXPECT_EQ(result->document.chunkCount, 1);
    EXPECT_EQ(result->document.tokenCount, 4);
    EXPECT_EQ(result->document.status, SourceStatus{});
    EXPECT_EQ(result->document.fileURL, file);
    EXPECT_EQ(result->document.pastedText, std::nullopt);
    ASSERT_EQ(result->chunks.size(), 1U);
    EXPECT_EQ(result->chunks[0].breadcrumb, std::vector<std::string>{"Guide"});
    EXPECT_EQ(result->chunks[0].text, "Some words here.");
}

TEST_F(ReadDocument, TellsTypesByTheExtension) {
    EXPECT_EQ(read(folder.write("a.txt", "x"))->document.type, SourceType::text);
    EXPECT_EQ(read(folder.write("a.TXT", "x"))->document.type, SourceType::text);
    EXPECT_EQ(read(folder.write("a.md", "x"))->document.type, SourceType::markdown);
    EXPECT_EQ(read(folder.write("a.markdown", "x"))->document.type, SourceType::markdown);
}

TEST_F(ReadDocument, KeepsAnExistingID) {
    const auto file = folder.write("a.md", "x");
    const Uuid id = Uuid::random();
    EXPECT_EQ(read(file, id)->document.id, id);
    EXPECT_NE(read(file)->document.id, read(file)->document.id);
}

TEST_F(ReadDocument, ChunksByTheStrategyInForce) {
    const auto file = folder.write("a.txt", "# One\nfirst\n\nsecond");
    settings.targetChunkSize = 1;
    settings.overlapPercent = 0;
    settings.chunking = ChunkingStrategy::fixed;
    EXPECT_EQ(read(file)->chunks.at(0).text, "# On");
    settings.chunking = ChunkingStrategy::paragraph;
    EXPECT_EQ(read(file)->chunks.at(0).text, "# One\nfirst");
    EXPECT_EQ(read(file)->chunks.at(0).breadcrumb, std::vector<std::string>{"a"});
    settings.chunking = ChunkingStrategy::headingAware;
    EXPECT_EQ(read(file)->chunks.at(0).breadcrumb, std::vector<std::string>{"One"});
}

TEST_F(ReadDocument, DropsAByteOrderMark) {
    const auto result = read(folder.write("a.md", "\xEF\xBB\xBF# Title\nText"));
    ASSERT_TRUE(result);
    ASSERT_EQ(result->chunks.size(), 1U);
    EXPECT_EQ(result->chunks[0].breadcrumb, std::vector<std::string>{"Title"});
    EXPECT_EQ(result->chunks[0].text, "Text");
}

TEST_F(ReadDocument, ShowsAnEmptyTextFileAsOneEmptyPage) {
    const auto result = read(folder.write("a.txt", " \n"));
    ASSERT_TRUE(result);
    EXPECT_EQ(result->document.status, (SourceStatus{SourceStatus::EmptyPage{1}}));
    EXPECT_EQ(result->document.chunkCount, 0);
}

TEST_F(ReadDocument, SaysWhyATextFileCanNotBeRead) {
    EXPECT_EQ(errorOf(folder.write("latin.txt", "caf\xE9")),
              "The file couldn't be opened because it isn't valid UTF-8 text.");
    EXPECT_EQ(errorOf(folder / "gone.md"), "The file couldn't be opened because it doesn't exist.");
    ASSERT_EQ(mkfifo((folder / "pipe.md").c_str(), 0600), 0);
    EXPECT_EQ(errorOf(folder / "pipe.md"),
              "The file couldn't be opened because it isn't a regular file.");
    std::filesystem::create_directory(folder / "folder.md");
    EXPECT_EQ(errorOf(folder / "folder.md"),
              "The file couldn't be opened because it isn't a regular file.");
    std::filesystem::create_symlink("/dev/zero", folder / "endless.txt");
    EXPECT_EQ(errorOf(folder / "endless.txt"),
              "The file couldn't be opened because it isn't a regular file.");
}

TEST_F(ReadDocument, RefusesATextFileOverOneGigabyte) {
    const auto file = folder.write("huge.txt", "");
    std::filesystem::resize_file(file, (std::uintmax_t{1} << 30) + 1);
    EXPECT_EQ(errorOf(file), "The file couldn't be opened because it is larger than 1 GB.");
}

TEST_F(ReadDocument, ReadsAFileThatSaysItIsEmpty) {
    // Files of the process file system have the size 0.
    std::filesystem::create_symlink("/proc/self/limits", folder / "limits.txt");
    const auto result = read(folder / "limits.txt");
    ASSERT_TRUE(result);
    EXPECT_GE(result->document.chunkCount, 1);
}

TEST_F(ReadDocument, ChunksAPdfPageByPageUnderFileNameAndPage) {
    const auto file = folder.write("Report.pdf", "x");
    platform.pdf->setPages(file, {"  First page.\n", "Second page."});
    settings.overlapPercent = 0;
    const auto result = read(file);
    ASSERT_TRUE(result);
    EXPECT_EQ(result->document.type, SourceType::pdf);
    EXPECT_EQ(result->document.pageCount, 2);
    EXPECT_EQ(result->document.status, SourceStatus{});
    ASSERT_EQ(result->chunks.size(), 2U);
    EXPECT_EQ(result->chunks[0].text, "First page.");
    EXPECT_EQ(result->chunks[0].breadcrumb, (std::vector<std::string>{"Report", "Page 1"}));
    EXPECT_EQ(result->chunks[1].breadcrumb, (std::vector<std::string>{"Report", "Page 2"}));
    EXPECT_EQ(result->chunks[1].index, 2);
}

TEST_F(ReadDocument, ChunksAPdfAsParagraphsUnderHeadingAware) {
    const auto file = folder.write("a.pdf", "x");
    platform.pdf->setPages(file, {"# Heading\nwords\n\nmore"});
    settings.targetChunkSize = 1;
    settings.overlapPercent = 0;
    const auto result = read(file);
    ASSERT_EQ(result->chunks.size(), 2U);
    EXPECT_EQ(result->chunks[0].text, "# Heading\nwords");
    EXPECT_EQ(result->chunks[0].breadcrumb, (std::vector<std::string>{"a", "Page 1"}));
    settings.chunking = ChunkingStrategy::fixed;
    EXPECT_EQ(read(file)->chunks.at(0).text, "# He");
}

TEST_F(ReadDocument, CountsTheBlankPagesOfAPdf) {
    const auto file = folder.write("a.pdf", "x");
    std::vector<std::optional<std::string>> pages(10, "Some text.");
    pages[3] = " \n\t";
    pages[7] = "";
    platform.pdf->setPages(file, pages);
    EXPECT_EQ(read(file)->document.status, (SourceStatus{SourceStatus::EmptyPage{2}}));
    EXPECT_EQ(read(file)->chunks.at(3).breadcrumb.at(1), "Page 5");
}

TEST_F(ReadDocument, LetsAnOversizedChunkOutrankBlankPages) {
    const auto file = folder.write("a.pdf", "x");
    settings.targetChunkSize = 10;
    settings.overlapPercent = 0;
    platform.pdf->setPages(file, {"", "", std::string(84, 'x')});
    EXPECT_EQ(read(file)->document.status, (SourceStatus{SourceStatus::Oversized{1}}));
}

TEST_F(ReadDocument, DoesNotCountAPageThatCanNotBeReadAsEmpty) {
    const auto file = folder.write("a.pdf", "x");
    platform.pdf->setPages(file, {std::nullopt, "Text."});
    EXPECT_EQ(read(file)->document.status, SourceStatus{});
    EXPECT_EQ(read(file)->chunks.at(0).breadcrumb.at(1), "Page 2");
}

TEST_F(ReadDocument, AddsAPdfWithoutAnyTextAsEmptyPages) {
    const auto file = folder.write("a.pdf", "x");
    platform.pdf->setPages(file, {"", " ", ""});
    EXPECT_EQ(read(file)->document.status, (SourceStatus{SourceStatus::EmptyPage{3}}));
    platform.pdf->setPages(file, {std::nullopt, std::nullopt});
    EXPECT_EQ(read(file)->document.status, (SourceStatus{SourceStatus::EmptyPage{2}}));
}

TEST_F(ReadDocument, TakesAPdfWithoutPagesAsOneEmptyPage) {
    const auto file = folder.write("a.pdf", "x");
    platform.pdf->setPages(file, {});
    const auto result = read(file);
    EXPECT_EQ(result->document.pageCount, 0);
    EXPECT_EQ(result->document.status, (SourceStatus{SourceStatus::EmptyPage{1}}));
}

TEST_F(ReadDocument, SaysThatAPdfCanNotBeOpened) {
    EXPECT_EQ(errorOf(folder.write("locked.pdf", "x")),
              "The PDF couldn't be opened \u2014 it may be corrupt or password-protected.");
    EXPECT_EQ(errorOf(folder / "gone.PDF"),
              "The PDF couldn't be opened \u2014 it may be corrupt or password-protected.");
}

TEST_F(ReadDocument, PassesOnWhatThePdfReaderSays) {
    const auto file = folder.write("slow.pdf", "x");
    platform.pdf->errors[file] = "The PDF took too long to read.";
    EXPECT_EQ(errorOf(file), "The PDF took too long to read.");
}

TEST_F(ReadDocument, NeverHandsAPipeToThePdfReader) {
    ASSERT_EQ(mkfifo((folder / "pipe.pdf").c_str(), 0600), 0);
    EXPECT_EQ(errorOf(folder / "pipe.pdf"),
              "The file couldn't be opened because it isn't a regular file.");
    EXPECT_TRUE(platform.pdf->reads.empty());
}

TEST(IngestionStatus, NeedsMoreThanTwiceTheTargetForOversized) {
    DocumentChunk chunk;
    chunk.tokenCount = 800;
    EXPECT_EQ(DocumentIngestion::status({chunk}, 400, 0, 1), SourceStatus{});
    chunk.tokenCount = 801;
    EXPECT_EQ(DocumentIngestion::status({chunk, chunk}, 400, 5, 9),
              (SourceStatus{SourceStatus::Oversized{2}}));
}

TEST(IngestionStatus, BearsAnyTarget) {
    DocumentChunk chunk;
    chunk.tokenCount = 1;
    EXPECT_EQ(DocumentIngestion::status({chunk}, std::numeric_limits<std::int64_t>::max(), 0, 1),
              SourceStatus{});
    EXPECT_EQ(DocumentIngestion::status({chunk}, std::numeric_limits<std::int64_t>::min(), 0, 1),
              (SourceStatus{SourceStatus::Oversized{1}}));
}

TEST(ReadPastedText, KeepsTheTextAsGivenAndTrimsTheTitle) {
    const std::string text = "\xEF\xBB\xBF  # A\nwords  \n";
    const Ingested read =
        DocumentIngestion::readPastedText(" Notes \n", text, BuildSettings{}, std::nullopt);
    EXPECT_EQ(read.document.name, "Notes");
    EXPECT_EQ(read.document.type, SourceType::text);
    EXPECT_EQ(read.document.pastedText, SharedText(text));
    EXPECT_EQ(read.document.fileURL, std::nullopt);
    EXPECT_EQ(read.document.pageCount, std::nullopt);
    ASSERT_EQ(read.chunks.size(), 1U);
    EXPECT_EQ(read.chunks[0].breadcrumb, std::vector<std::string>{"Notes"});
    EXPECT_EQ(read.chunks[0].text, "# A\nwords");
}

TEST(ReadPastedText, NamesABlankTitle) {
    EXPECT_EQ(DocumentIngestion::readPastedText(" \n\t", "x", BuildSettings{}, std::nullopt)
                  .document.name,
              "Pasted text");
}

TEST(ReadPastedText, ShowsAnEmptyTextAsOneEmptyPage) {
    EXPECT_EQ(
        DocumentIngestion::readPastedText("a", "", BuildSettings{}, std::nullopt).document.status,
        (SourceStatus{SourceStatus::EmptyPage{1}}));
}

DocumentChunk makeChunk(std::vector<std::string> breadcrumb, std::string text) {
    DocumentChunk chunk;
    chunk.id = Uuid::random();
    chunk.breadcrumb = std::move(breadcrumb);
    chunk.text = std::move(text);
    return chunk;
}

DocumentChunk makeEnriched(std::vector<std::string> breadcrumb, std::string text,
                           std::string note) {
    DocumentChunk chunk = makeChunk(std::move(breadcrumb), std::move(text));
    chunk.contextualNote = std::move(note);
    chunk.generatedQuestions = {"Why?"};
    chunk.embedding = {1, 2};
    chunk.parentText = "old parent";
    chunk.index = 9;
    chunk.tokenCount = 99;
    return chunk;
}

TEST(CarryOverEnrichment, CopiesNoteQuestionsAndEmbeddingOnly) {
    const DocumentChunk old = makeEnriched({"a", "b"}, "text", "note");
    DocumentChunk fresh = makeChunk({"a", "b"}, "text");
    fresh.index = 1;
    fresh.tokenCount = 2;
    const auto result = carryOverEnrichment({fresh}, {old});
    ASSERT_EQ(result.size(), 1U);
    EXPECT_EQ(result[0].id, fresh.id);
    EXPECT_EQ(result[0].index, 1);
    EXPECT_EQ(result[0].tokenCount, 2);
    EXPECT_EQ(result[0].parentText, std::nullopt);
    EXPECT_EQ(result[0].contextualNote, "note");
    EXPECT_EQ(result[0].generatedQuestions, std::vector<std::string>{"Why?"});
    EXPECT_EQ(result[0].embedding, (std::vector<double>{1, 2}));
}

TEST(CarryOverEnrichment, GivesNothingToARenamedSectionOrOtherText) {
    const DocumentChunk old = makeEnriched({"a"}, "text", "note");
    const auto result =
        carryOverEnrichment({makeChunk({"A"}, "text"), makeChunk({"a"}, "texts")}, {old});
    EXPECT_EQ(result[0].contextualNote, std::nullopt);
    EXPECT_EQ(result[0].embedding, std::nullopt);
    EXPECT_EQ(result[1].contextualNote, std::nullopt);
}

TEST(CarryOverEnrichment, TakesTheLastOfRepeatedOldChunks) {
    const auto result = carryOverEnrichment(
        {makeChunk({"a"}, "text"), makeChunk({"a"}, "text")},
        {makeEnriched({"a"}, "text", "first"), makeEnriched({"a"}, "text", "second")});
    EXPECT_EQ(result[0].contextualNote, "second");
    EXPECT_EQ(result[1].contextualNote, "second");
}

TEST(CarryOverEnrichment, ComparesByCanonicalEquivalence) {
    const auto result = carryOverEnrichment({makeChunk({"a"}, "caf\u00e9")},
                                            {makeEnriched({"a"}, "cafe\u0301", "note")});
    EXPECT_EQ(result[0].contextualNote, "note");
}

TEST(CarryOverEnrichment, LeavesNewChunksAloneWithoutOldOnes) {
    const std::vector<DocumentChunk> fresh = {makeChunk({"a"}, "text")};
    EXPECT_EQ(carryOverEnrichment(fresh, {}), fresh);
}

} // namespace
} // namespace ombrel
