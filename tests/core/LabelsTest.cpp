// The words of the enumerations: they are stored in files and shown to the user.
#include "core/AgentOutputKind.h"
#include "core/AgentProperty.h"
#include "core/AppTab.h"
#include "core/ChunkingStrategy.h"
#include "core/Enrichment.h"
#include "core/Flow.h"
#include "core/IndexKind.h"
#include "core/ProgressText.h"
#include "core/QueryTransform.h"
#include "core/QuestionStatus.h"
#include "core/SourceStatus.h"
#include "core/SourceType.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace ombrel {
namespace {

template <class E>
std::vector<std::string> raws() {
    std::vector<std::string> result;
    for (const auto& entry : rawValues(E{})) {
        EXPECT_EQ(static_cast<std::size_t>(entry.value), result.size()) << "not in order";
        EXPECT_EQ(rawValue(entry.value), entry.raw);
        result.emplace_back(entry.raw);
    }
    return result;
}

template <class E>
std::vector<std::string> subtitles() {
    std::vector<std::string> result;
    for (const auto& entry : rawValues(E{})) {
        result.emplace_back(subtitle(entry.value));
    }
    return result;
}

using Words = std::vector<std::string>;

TEST(Labels, AreTheStoredWordsInOrder) {
    EXPECT_EQ(raws<ChunkingStrategy>(), (Words{"Fixed", "Paragraph", "Heading-aware"}));
    EXPECT_EQ(raws<IndexKind>(), (Words{"Spotlight", "Keyword", "Vector", "Hybrid"}));
    EXPECT_EQ(raws<Enrichment>(), (Words{"Contextual notes", "Generated questions",
                                         "Parent\xE2\x80\x93"
                                         "child"}));
    EXPECT_EQ(raws<QueryTransform>(),
              (Words{"Direct", "Query rewrite", "Multi-query", "HyDE", "Tool (agentic)"}));
    EXPECT_EQ(raws<SourceType>(), (Words{"Markdown", "PDF", "Text"}));
    EXPECT_EQ(raws<QuestionStatus>(), (Words{"Not evaluated", "Passing", "Failing"}));
    EXPECT_EQ(raws<AppTab>(), (Words{"Project", "Sources", "Settings", "Index", "Evaluation",
                                     "Playground", "Export"}));
    EXPECT_EQ(raws<FlowKind>(), (Words{"Single-shot", "Conversational"}));
    EXPECT_EQ(raws<PropertyKind::BaseKind>(),
              (Words{"String", "Int", "Double", "Bool", "Object", "Array", "Enum"}));
    EXPECT_EQ(raws<AgentOutputKind::Kind>(), (Words{"Text", "Enum", "Object"}));
}

TEST(Labels, HaveTheTilesSubtitles) {
    EXPECT_EQ(subtitles<IndexKind>(), (Words{"Apple's SpotlightSearchTool; Tool mode only",
                                             "BM25 full-text; exact names and codes",
                                             "Embeddings built on Mac, shipped in bundle",
                                             "Keyword + vector, rank fusion"}));
    EXPECT_EQ(subtitles<Enrichment>(),
              (Words{"Model adds a one-line note on where each chunk sits",
                     "Index likely questions that point to each chunk",
                     "Match small chunks, send the whole parent section"}));
    EXPECT_EQ(
        subtitles<QueryTransform>(),
        (Words{"Search with the question as asked", "Model turns the question into a search query",
               "2\xE2\x80\x93"
               "3 variants, results merged",
               "Search with a drafted answer",
               "Model decides when, what, and how many times to search"}));
}

TEST(DisabledReason, IsGivenForADraftedAnswerWithoutVectors) {
    const auto reason = std::optional<std::string_view>("Needs a vector-only index");
    EXPECT_EQ(disabledReason(QueryTransform::hyde, IndexKind::keyword), reason);
    EXPECT_EQ(disabledReason(QueryTransform::hyde, IndexKind::spotlight), reason);
}

TEST(DisabledReason, IsNotGivenForADraftedAnswerWithVectors) {
    EXPECT_EQ(disabledReason(QueryTransform::hyde, IndexKind::hybrid), std::nullopt);
    EXPECT_EQ(disabledReason(QueryTransform::hyde, IndexKind::vector), std::nullopt);
}

TEST(DisabledReason, IsGivenForNothingElse) {
    for (const auto& transform : rawValues(QueryTransform{})) {
        for (const auto& index : rawValues(IndexKind{})) {
            if (transform.value != QueryTransform::hyde) {
                EXPECT_EQ(disabledReason(transform.value, index.value), std::nullopt)
                    << transform.raw << " with " << index.raw;
            }
        }
    }
}

TEST(SourceStatus, TellsHowManyChunksAreOversized) {
    EXPECT_EQ(SourceStatus{SourceStatus::Oversized{1}}.label(), "1 oversized");
    EXPECT_EQ(SourceStatus{SourceStatus::Oversized{12}}.label(), "12 oversized");
}

TEST(SourceStatus, TellsHowManyPagesAreEmpty) {
    EXPECT_EQ(SourceStatus{SourceStatus::EmptyPage{1}}.label(), "1 empty page");
    EXPECT_EQ(SourceStatus{SourceStatus::EmptyPage{2}}.label(), "2 empty pages");
    EXPECT_EQ(SourceStatus{SourceStatus::EmptyPage{0}}.label(), "0 empty pages");
}

TEST(SourceStatus, IsReadyFromTheStart) {
    EXPECT_EQ(SourceStatus().label(), "Ready");
}

TEST(ProgressText, SaysHowManyOfHowMany) {
    EXPECT_EQ(progressText({3, 12}), "3/12");
}

} // namespace
} // namespace ombrel
