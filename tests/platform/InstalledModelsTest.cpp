#include "platform/InstalledModels.h"

#include "tests/platform/GgufBytes.h"
#include "tests/platform/TemporaryFolder.h"

#include <chrono>
#include <gtest/gtest.h>

namespace ombrel {
namespace {

class InstalledModelsTest : public testing::Test {
  protected:
    void add(const std::string& name, const std::string& bytes, int minutesAgo) {
        const auto file = m_folder.write(name, bytes);
        std::filesystem::last_write_time(file, std::filesystem::file_time_type::clock::now() -
                                                   std::chrono::minutes(minutesAgo));
    }
    std::string language(const std::string& wanted = {}) const {
        const auto model = chooseLanguageModel(installedModels(m_folder.path()), wanted);
        return model ? model->file.filename().string() : "none";
    }
    std::string embedding(const std::string& wanted = {}) const {
        const auto model = chooseEmbeddingModel(installedModels(m_folder.path()), wanted);
        return model ? model->file.filename().string() : "none";
    }

    test::TemporaryFolder m_folder;
    std::string m_starter = std::string(starterModelFile);
};

TEST_F(InstalledModelsTest, AnEmptyOrMissingFolderHoldsNone) {
    EXPECT_EQ(language(), "none");
    EXPECT_EQ(embedding(), "none");
    EXPECT_TRUE(installedModels(m_folder.path() / "missing").empty());
}

TEST_F(InstalledModelsTest, TheStarterIsUsedUntilAnotherIsThere) {
    add(m_starter, test::languageModelBytes(), 0);
    EXPECT_EQ(language(), m_starter);
    add("older.gguf", test::languageModelBytes(), 50);
    EXPECT_EQ(language(), "older.gguf");
    add("newer.gguf", test::languageModelBytes(), 20);
    EXPECT_EQ(language(), "newer.gguf");
}

TEST_F(InstalledModelsTest, AModelThatCanChatGoesBeforeOneThatCannot) {
    add("chats.gguf", test::languageModelBytes(), 50);
    add("base.gguf",
        test::GgufBytes()
            .text("general.architecture", "llama")
            .number("llama.context_length", 4096)
            .bytes(),
        10);
    EXPECT_EQ(language(), "chats.gguf");
}

TEST_F(InstalledModelsTest, TheNamedModelIsUsed) {
    add("a.gguf", test::languageModelBytes(), 50);
    add("b.gguf", test::languageModelBytes(), 20);
    EXPECT_EQ(language("a.gguf"), "a.gguf");
    EXPECT_EQ(language("missing.gguf"), "none");
}

TEST_F(InstalledModelsTest, EachKindIsChosenFromItsOwn) {
    add("language.gguf", test::languageModelBytes(), 10);
    add("old-embedding.gguf", test::embeddingModelBytes(), 9);
    add("embedding.gguf", test::embeddingModelBytes(), 5);
    EXPECT_EQ(language(), "language.gguf");
    EXPECT_EQ(embedding(), "embedding.gguf");
    EXPECT_EQ(embedding("old-embedding.gguf"), "old-embedding.gguf");
}

TEST_F(InstalledModelsTest, OtherFilesAreNoModels) {
    add("NOTICES.txt", test::languageModelBytes(), 1);
    add(".half.gguf", test::languageModelBytes(), 1);
    add("broken.gguf", "GGUF", 1);
    std::filesystem::create_directory(m_folder.path() / "folder.gguf");
    EXPECT_TRUE(installedModels(m_folder.path()).empty());
}

} // namespace
} // namespace ombrel
