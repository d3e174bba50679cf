#include "platform/GgufFile.h"

#include "tests/platform/GgufBytes.h"
#include "tests/platform/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <limits>

namespace ombrel {
namespace {

using test::GgufBytes;
using test::TemporaryFolder;

Result<GgufFile> read(const std::string& bytes) {
    const TemporaryFolder folder;
    return GgufFile::read(folder.write("model.gguf", bytes));
}

TEST(GgufFile, ReadsWhatAModelSaysAboutItself) {
    const auto model =
        read(GgufBytes()
                 .text("general.architecture", "bert")
                 .text("general.name", "Small\xFF")
                 .texts("general.languages", {"en", "de"})
                 .real("bert.attention.layer_norm_epsilon", 1e-12F)
                 .texts("tokenizer.ggml.tokens", std::vector<std::string>(40000, "token"))
                 .zeros("tokenizer.ggml.token_type", 5, 40000, 160000)
                 .number("bert.context_length", 512)
                 .number("bert.pooling_type", 2)
                 .boolean("bert.attention.causal", false)
                 .text("tokenizer.chat_template", std::string(10000, '{'))
                 .number("split.no", 1)
                 .bytes());
    ASSERT_TRUE(model) << model.error().message;
    EXPECT_EQ(model->architecture, "bert");
    EXPECT_EQ(model->name, "Small\xEF\xBF\xBD");
    EXPECT_EQ(model->type, "model");
    EXPECT_EQ(model->languages, (std::vector<std::string>{"en", "de"}));
    EXPECT_EQ(model->contextLength, 512);
    EXPECT_EQ(model->pooling, 2);
    EXPECT_FALSE(model->isCausal);
    EXPECT_TRUE(model->hasChatTemplate);
    EXPECT_EQ(model->part, 1);
}

TEST(GgufFile, TellsLanguageModelsFromEmbeddingModels) {
    const auto language = read(test::languageModelBytes());
    EXPECT_TRUE(language->isLanguageModel());
    EXPECT_FALSE(language->isEmbeddingModel());
    const auto embedding = read(test::embeddingModelBytes());
    EXPECT_FALSE(embedding->isLanguageModel());
    EXPECT_TRUE(embedding->isEmbeddingModel());
    // One that is built like a language model but pools.
    const auto pooling = read(GgufBytes()
                                  .text("general.architecture", "qwen3")
                                  .number("qwen3.context_length", 4096)
                                  .number("qwen3.pooling_type", 3)
                                  .bytes());
    EXPECT_FALSE(pooling->isLanguageModel());
    EXPECT_TRUE(pooling->isEmbeddingModel());
}

TEST(GgufFile, TellsWhatIsNeitherFromBoth) {
    for (const auto& bytes : {
             GgufBytes() // a model that scores pairs of texts
                 .text("general.architecture", "bert")
                 .number("bert.context_length", 512)
                 .boolean("bert.attention.causal", false)
                 .number("bert.pooling_type", 4)
                 .bytes(),
             GgufBytes() // what gives a model eyes
                 .text("general.architecture", "clip")
                 .text("general.type", "mmproj")
                 .bytes(),
             GgufBytes() // another part than the first
                 .text("general.architecture", "llama")
                 .number("llama.context_length", 4096)
                 .number("split.no", 1)
                 .bytes(),
             GgufBytes().bytes(),
         }) {
        const auto model = read(bytes);
        ASSERT_TRUE(model);
        EXPECT_FALSE(model->isLanguageModel());
        EXPECT_FALSE(model->isEmbeddingModel());
    }
}

TEST(GgufFile, RefusesWhatIsNotAModel) {
    const TemporaryFolder folder;
    const auto text = folder.write("notes.gguf", "GGML and other things");
    EXPECT_EQ(GgufFile::read(text).error().message, text.string() + " is not a model file (GGUF).");
    const auto missing = folder.path() / "missing.gguf";
    EXPECT_EQ(GgufFile::read(missing).error().message, missing.string() + " is not a file.");
    EXPECT_EQ(GgufFile::read(folder.path()).error().message,
              folder.path().string() + " is not a file.");
    EXPECT_FALSE(read(""));
    EXPECT_FALSE(read("GG"));
    const auto old = folder.write("old.gguf", GgufBytes().bytes(1));
    EXPECT_EQ(GgufFile::read(old).error().message,
              old.string() +
                  " has version 1 of the model format (GGUF), and only 2 and 3 are known.");
}

TEST(GgufFile, RefusesAFileThatEndsTooSoonWhereverItEnds) {
    const std::string whole = GgufBytes()
                                  .text("general.architecture", "bert")
                                  .texts("general.languages", {"en"})
                                  .zeros("x", 5, 2, 8)
                                  .number("bert.context_length", 512)
                                  .bytes();
    ASSERT_TRUE(read(whole));
    for (std::size_t length = 0; length < whole.size(); length++) {
        EXPECT_FALSE(read(whole.substr(0, length))) << length;
    }
}

TEST(GgufFile, RefusesNumbersThatLie) {
    constexpr auto huge = std::numeric_limits<std::uint64_t>::max();
    EXPECT_FALSE(read(GgufBytes().number("a", 1).bytes(3, huge)));
    EXPECT_FALSE(read(GgufBytes().number("a", 1).bytes(3, 2)));
    EXPECT_FALSE(read(GgufBytes().zeros("a", 5, huge, 16).bytes()));
    EXPECT_FALSE(read(GgufBytes().zeros("a", 8, huge, 16).bytes()));
    EXPECT_FALSE(read(GgufBytes().zeros("a", 10, (huge >> 3) + 2, 16).bytes()));
    EXPECT_FALSE(read(GgufBytes().zeros("a", 9, 1, 16).bytes()));  // an array of arrays
    EXPECT_FALSE(read(GgufBytes().zeros("a", 99, 1, 16).bytes())); // no such type
    std::string longKey = "GGUF";
    longKey += std::string("\3\0\0\0", 4) + std::string(8, '\0') +
               std::string("\1\0\0\0\0\0\0\0", 8) + std::string(8, '\xFF') + "key";
    EXPECT_FALSE(read(longKey));
}

} // namespace
} // namespace ombrel
