#include "knowledge/RecipeTexts.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace ombrel {
namespace {

TEST(RecipeTexts, ListsTheSixStepsOfANewRecipe) {
    const std::vector<RecipeStep> expected = {
        {"Index build", "Heading-aware chunking → Hybrid index",
         "\"...the battery may drain faster in Low Power Mode...\" → one ~400-token chunk + a "
         "contextual note, stored in the Hybrid index"},
        {"Question", "user input", "\"Why is my phone hot?\""},
        {"Query rewrite", "on-device model", "→ \"causes of device overheating\""},
        {"Hybrid search", "Keyword + vector, rank fusion",
         "keyword and vector hits combined by rank, e.g. #2 + #1 fuse to #1 overall"},
        {"Context packing", "3000-token budget",
         "top-6 results added in rank order until 3000 tokens are used"},
        {"Answer", "on-device model",
         "answers from only the packed chunks — says it doesn't know otherwise"},
    };
    EXPECT_EQ(recipeSteps(BuildSettings()), expected);
}

TEST(RecipeTexts, JoinsNothingToTheChunkWithoutEnrichment) {
    BuildSettings settings;
    settings.enrichments = {};
    settings.index = IndexKind::keyword;
    EXPECT_EQ(recipeSteps(settings)[0].example,
              "\"...the battery may drain faster in Low Power Mode...\" → one ~400-token chunk, "
              "stored in the Keyword index");
}

TEST(RecipeTexts, ListsAllThreeEnrichmentsInTheirOrder) {
    BuildSettings settings;
    settings.enrichments = {Enrichment::parentChild, Enrichment::generatedQuestions,
                            Enrichment::contextualNotes};
    EXPECT_NE(recipeSteps(settings)[0].example.find(
                  "chunk + a contextual note + 3 generated questions + its parent section, stored"),
              std::string::npos);
}

TEST(RecipeTexts, TruncatesTheNumbers) {
    BuildSettings settings;
    settings.targetChunkSize = 549.99;
    settings.overlapPercent = 12.8;
    settings.enrichments = {Enrichment::generatedQuestions};
    settings.generatedQuestionsPerChunk = 4.7;
    settings.topK = 7.9;
    settings.contextBudget = 4095.5;
    const auto steps = recipeSteps(settings);
    EXPECT_NE(steps[0].example.find("~549-token chunk + 4 generated questions,"),
              std::string::npos);
    EXPECT_EQ(steps[4].tag, "4095-token budget");
    EXPECT_EQ(steps[4].example, "top-7 results added in rank order until 4095 tokens are used");
    EXPECT_EQ(targetChunkSizeText(settings), "549 tokens");
    EXPECT_EQ(overlapPercentText(settings), "12%");
    EXPECT_EQ(generatedQuestionsPerChunkText(settings), "4");
    EXPECT_EQ(topKText(settings), "7");
    EXPECT_EQ(contextBudgetText(settings), "4,095 of 8,192 tokens");
}

TEST(RecipeTexts, GroupsTheContextBudgetByThousands) {
    const auto shown = [](double budget) {
        BuildSettings settings;
        settings.contextBudget = budget;
        return contextBudgetText(settings);
    };
    EXPECT_EQ(shown(500), "500 of 8,192 tokens");
    EXPECT_EQ(shown(8192), "8,192 of 8,192 tokens");
    EXPECT_EQ(shown(-500), "-500 of 8,192 tokens");
    EXPECT_EQ(shown(-1234567), "-1,234,567 of 8,192 tokens");
    EXPECT_EQ(shown(123456), "123,456 of 8,192 tokens");
}

TEST(RecipeTexts, ShowsEachTransformAtWork) {
    const auto step = [](QueryTransform transform) {
        BuildSettings settings;
        settings.transform = transform;
        return recipeSteps(settings)[2];
    };
    EXPECT_EQ(step(QueryTransform::direct).title, "Direct");
    EXPECT_EQ(step(QueryTransform::direct).example, "searches exactly: \"Why is my phone hot?\"");
    EXPECT_EQ(step(QueryTransform::multiQuery).title, "Multi-query");
    EXPECT_EQ(step(QueryTransform::multiQuery).example,
              "3 variants: \"device overheating causes\", \"phone runs hot fix\", \"why does phone "
              "get warm\" — merged");
    EXPECT_EQ(step(QueryTransform::hyde).title, "HyDE");
    EXPECT_EQ(step(QueryTransform::hyde).example,
              "drafts: \"The device may overheat from heavy background processing or a failing "
              "battery…\", searches with that");
    EXPECT_EQ(step(QueryTransform::tool).title, "Tool (agentic)");
    EXPECT_EQ(step(QueryTransform::tool).example,
              "may call search_knowledge_base(\"battery overheating\"), read results, then search "
              "again");
    EXPECT_EQ(step(QueryTransform::tool).tag, "on-device model");
}

TEST(RecipeTexts, ShowsEachIndexAtWorkAlsoTheOneThatFindsNothing) {
    const auto step = [](IndexKind index) {
        BuildSettings settings;
        settings.index = index;
        return recipeSteps(settings)[3];
    };
    EXPECT_EQ(step(IndexKind::spotlight),
              (RecipeStep{"Spotlight search", "Apple's SpotlightSearchTool; Tool mode only",
                          "handed to Apple's on-device Spotlight tool — Tool (agentic) mode "
                          "only"}));
    EXPECT_EQ(step(IndexKind::keyword).example,
              "\"battery drain\" only matches chunks with those exact words");
    EXPECT_EQ(step(IndexKind::vector).title, "Vector search");
    EXPECT_EQ(step(IndexKind::vector).example,
              "\"vehicle fails to turn on\" matches \"car won't start\" — same meaning, different "
              "words");
}

} // namespace
} // namespace ombrel
