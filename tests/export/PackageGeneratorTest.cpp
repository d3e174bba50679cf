#include "export/PackageGenerator.h"

#include "export/CompactChunks.h"
#include "export/PackageSources.h"
#include "tests/export/ExportSamples.h"
#include "tests/export/SwiftReader.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestPlatform.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <system_error>

namespace ombrel {
namespace {

namespace fs = std::filesystem;
using test::chunkOf;
using test::documentOf;

std::string contentsOf(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

std::vector<std::string> filesBelow(const fs::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        if (!entry.is_directory()) {
            names.push_back(fs::relative(entry.path(), folder).string());
        }
    }
    std::ranges::sort(names);
    return names;
}

const std::vector<std::string> notesFiles = {
    "NotesRAG/Package.swift", "NotesRAG/Sources/NotesRAG/Chunks.swift",
    "NotesRAG/Sources/NotesRAG/KeywordIndex.swift", "NotesRAG/Sources/NotesRAG/NotesRAG.swift",
    "NotesRAG/Sources/NotesRAG/VectorIndex.swift"};

class PackageGenerator : public testing::Test {
  protected:
    Result<fs::path> generate(FileOperations& files = FileOperations::system()) {
        return generatePackage("NotesRAG", settings, pairs, folder.path(), languages,
                               PackageForm::arrayLiteral, files);
    }

    test::TemporaryFolder folder;
    test::ScriptedRecognizer languages;
    BuildSettings settings;
    IndexedChunks pairs = {documentOf("a.md", {chunkOf("one"), chunkOf("two")})};
};

TEST_F(PackageGenerator, WritesFiveFiles) {
    const auto package = generate();
    ASSERT_TRUE(package);
    EXPECT_EQ(*package, folder / "NotesRAG");
    EXPECT_EQ(filesBelow(folder.path()), notesFiles);
    const fs::path sources = *package / "Sources" / "NotesRAG";
    EXPECT_EQ(contentsOf(*package / "Package.swift"), manifestSource("NotesRAG"));
    EXPECT_EQ(contentsOf(sources / "Chunks.swift"), chunksSource(pairs));
    EXPECT_EQ(contentsOf(sources / "KeywordIndex.swift"), keywordIndexSource());
    EXPECT_EQ(contentsOf(sources / "VectorIndex.swift"), vectorIndexSource());
    EXPECT_EQ(contentsOf(sources / "NotesRAG.swift"), interfaceSource("NotesRAG", settings, "en"));
}

TEST_F(PackageGenerator, WritesBothIndexesWhateverTheKind) {
    for (const IndexKind kind : {IndexKind::spotlight, IndexKind::keyword, IndexKind::vector}) {
        settings.index = kind;
        ASSERT_TRUE(generate());
        EXPECT_EQ(filesBelow(folder.path()), notesFiles);
    }
}

TEST_F(PackageGenerator, DiffersOnlyInTheChunksInTheCompactForm) {
    ASSERT_TRUE(generate());
    const auto compact = generatePackage("NotesRAG", settings, pairs, folder / "compact", languages,
                                         PackageForm::compact);
    ASSERT_TRUE(compact);
    for (const std::string& file : notesFiles) {
        const std::string literal = contentsOf(folder / file);
        const std::string packed = contentsOf(folder / "compact" / file);
        EXPECT_EQ(literal == packed, !file.ends_with("Chunks.swift")) << file;
    }
    EXPECT_EQ(contentsOf(*compact / "Sources/NotesRAG/Chunks.swift"), compactChunksSource(pairs));
}

TEST_F(PackageGenerator, ReplacesItsFilesAndLeavesOthers) {
    ASSERT_TRUE(generate());
    const fs::path notes = folder.write("NotesRAG/Sources/NotesRAG/Mine.swift", "// mine");
    folder.write("NotesRAG/Package.swift", "// an edit");
    pairs = {documentOf("b.md", {chunkOf("three")})};
    ASSERT_TRUE(generate());
    EXPECT_EQ(contentsOf(folder / "NotesRAG/Package.swift"), manifestSource("NotesRAG"));
    EXPECT_EQ(contentsOf(folder / "NotesRAG/Sources/NotesRAG/Chunks.swift"), chunksSource(pairs));
    EXPECT_EQ(contentsOf(notes), "// mine");
    EXPECT_EQ(filesBelow(folder.path()).size(), notesFiles.size() + 1);
}

TEST_F(PackageGenerator, RecognisesTheLanguageOfTheFirstThreeChunks) {
    languages.languageOf = [](std::string_view) { return std::optional<std::string>("fr"); };
    settings.index = IndexKind::vector;
    pairs = {documentOf("a.md", {chunkOf("Bonjour")}), documentOf("none.md", {}),
             documentOf("b.md", {chunkOf("le monde"), chunkOf("et vous"), chunkOf("four")})};
    ASSERT_TRUE(generate());
    EXPECT_EQ(languages.texts(), std::vector<std::string>{"Bonjour\nle monde\net vous"});
    EXPECT_NE(contentsOf(folder / "NotesRAG/Sources/NotesRAG/NotesRAG.swift")
                  .find("NLLanguage(rawValue: \"fr\")"),
              std::string::npos);
}

TEST_F(PackageGenerator, IsEnglishWhereNoLanguageIsRecognised) {
    languages.languageOf = [](std::string_view) { return std::optional<std::string>(); };
    settings.index = IndexKind::hybrid;
    pairs = {};
    ASSERT_TRUE(generate());
    EXPECT_EQ(languages.texts(), std::vector<std::string>{""});
    EXPECT_NE(contentsOf(folder / "NotesRAG/Sources/NotesRAG/NotesRAG.swift")
                  .find("NLLanguage(rawValue: \"en\")"),
              std::string::npos);
}

TEST_F(PackageGenerator, WritesEmptyVectorsForChunksWithoutOne) {
    settings.index = IndexKind::hybrid;
    pairs = {documentOf("a.md", {chunkOf("a", std::vector<double>{0.5}), chunkOf("b")})};
    ASSERT_TRUE(generate());
    const auto read =
        test::readArrayLiteral(contentsOf(folder / "NotesRAG/Sources/NotesRAG/Chunks.swift"));
    ASSERT_EQ(read.size(), 2U);
    EXPECT_EQ(read[0].embedding, std::vector<double>{0.5});
    EXPECT_TRUE(read[1].embedding.empty());
}

TEST_F(PackageGenerator, MakesADestinationThatIsMissing) {
    const auto package =
        generatePackage("NotesRAG", settings, pairs, folder / "new/folder", languages);
    ASSERT_TRUE(package);
    EXPECT_TRUE(fs::exists(*package / "Package.swift"));
}

TEST_F(PackageGenerator, TellsTheSystemsDescriptionWhereNothingCanBeMade) {
    // Nobody, not even root, makes folders there.
    const auto package = generatePackage("NotesRAG", settings, pairs, "/proc/self", languages);
    ASSERT_FALSE(package);
    EXPECT_TRUE(package.error().message.starts_with("/proc/self/NotesRAG"))
        << package.error().message;
    EXPECT_TRUE(package.error().message.ends_with(": No such file or directory") ||
                package.error().message.ends_with(": Permission denied") ||
                package.error().message.ends_with(": Operation not permitted"))
        << package.error().message;
}

TEST_F(PackageGenerator, RefusesAFileWhereAFolderMustBe) {
    folder.write("NotesRAG", "a file");
    const auto package = generate();
    ASSERT_FALSE(package);
    EXPECT_TRUE(package.error().message.ends_with(": Not a directory")) << package.error().message;
    EXPECT_EQ(contentsOf(folder / "NotesRAG"), "a file");
    EXPECT_EQ(filesBelow(folder.path()), std::vector<std::string>{"NotesRAG"});
}

TEST_F(PackageGenerator, RefusesAFolderWhereAFileMustBe) {
    folder.write("NotesRAG/Sources/NotesRAG/KeywordIndex.swift/inside", "");
    const auto package = generate();
    ASSERT_FALSE(package);
    EXPECT_NE(package.error().message.find("KeywordIndex.swift: "), std::string::npos);
    EXPECT_EQ(filesBelow(folder.path()),
              (std::vector<std::string>{"NotesRAG/Package.swift",
                                        "NotesRAG/Sources/NotesRAG/Chunks.swift",
                                        "NotesRAG/Sources/NotesRAG/KeywordIndex.swift/inside"}));
}

TEST_F(PackageGenerator, RefusesANameThatNoFileCanHave) {
    const auto package =
        generatePackage(std::string(300, 'x'), settings, pairs, folder.path(), languages);
    ASSERT_FALSE(package);
    EXPECT_TRUE(package.error().message.ends_with(": File name too long"));
    EXPECT_TRUE(filesBelow(folder.path()).empty());
}

// A disk that is full after so many bytes.
class FullDisk : public FileOperations {
  public:
    explicit FullDisk(std::size_t free) : m_free(free) {}
    ssize_t write(int descriptor, const void* bytes, std::size_t count) override {
        if (m_free == 0) {
            errno = ENOSPC;
            return -1;
        }
        const std::size_t taken = std::min(count, m_free);
        m_free -= taken;
        return FileOperations::write(descriptor, bytes, taken);
    }

  private:
    std::size_t m_free;
};

TEST_F(PackageGenerator, LeavesWhatWasWrittenBeforeTheDiskWasFull) {
    ASSERT_TRUE(generate());
    const std::string before = contentsOf(folder / "NotesRAG/Sources/NotesRAG/Chunks.swift");
    const fs::path mine = folder.write("NotesRAG/mine.txt", "mine");
    pairs = {documentOf("b.md", {chunkOf(std::string(5000, 'x'))})};
    FullDisk disk(manifestSource("NotesRAG").size() + 2000);
    const auto package = generate(disk);
    ASSERT_FALSE(package);
    EXPECT_EQ(package.error().message,
              (folder / "NotesRAG/Sources/NotesRAG/Chunks.swift").string() +
                  ": No space left on device");
    EXPECT_EQ(contentsOf(folder / "NotesRAG/Sources/NotesRAG/Chunks.swift"), before);
    EXPECT_EQ(contentsOf(mine), "mine");
    EXPECT_EQ(filesBelow(folder.path()).size(), notesFiles.size() + 1);
}

TEST(ExportPackage, TakesTheSelectedVariantOfTheCurrentIndex) {
    test::TemporaryFolder folder;
    test::TestPlatform platform = test::makeTestPlatform();
    const auto state = AppState::make(platform.platform);
    state->project.edit()->name = "2024 Notes";
    Variant variant = state->currentVariant();
    variant.settings.index = IndexKind::vector;
    variant.settings.topK = 9;
    state->updateVariant(variant);
    const IndexedDocument document = documentOf("a.md", {chunkOf("one")});
    test::addTo(*state, document);
    const auto package = exportPackage(*state, folder.path());
    ASSERT_TRUE(package);
    EXPECT_EQ(*package, folder / "P2024NotesRAG");
    EXPECT_EQ(contentsOf(*package / "Sources/P2024NotesRAG/P2024NotesRAG.swift"),
              interfaceSource("P2024NotesRAG", variant.settings, "en"));
    EXPECT_EQ(contentsOf(*package / "Sources/P2024NotesRAG/Chunks.swift"),
              chunksSource({document}));

    ASSERT_TRUE(exportPackage(*state, folder.path(), PackageForm::compact));
    EXPECT_EQ(contentsOf(*package / "Sources/P2024NotesRAG/Chunks.swift"),
              compactChunksSource({document}));
}

} // namespace
} // namespace ombrel
