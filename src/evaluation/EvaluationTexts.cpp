#include "evaluation/EvaluationTexts.h"

#include "core/FindByID.h"
#include "evaluation/TestQuestions.h"
#include "platform/FixedPoint.h"
#include "retrieval/QueryPipeline.h"

#include <algorithm>

namespace ombrel {

namespace {

std::string scoreText(const std::optional<double>& score, std::string_view absent) {
    return score ? fixedPoint(*score, 2) : std::string(absent);
}

std::string countText(std::size_t count) {
    return std::to_string(count);
}

} // namespace

std::optional<std::string> evaluationBanner(const AppState& state) {
    const IndexKind kind = state.currentVariant().settings.index;
    if (kind == IndexKind::spotlight) {
        return "Keyword, Vector, and Hybrid have a real implementation \u2014 Spotlight doesn't "
               "yet. Switch Settings to run this for real.";
    }
    const IndexedChunks pairs = state.indexedChunks();
    if (chunkCount(pairs) == 0) {
        return "No sources imported yet \u2014 add documents in Sources first.";
    }
    if (kind != IndexKind::keyword && !allHaveEmbeddings(pairs)) {
        return "This index needs embeddings for the current chunks \u2014 click Build in the "
               "toolbar first.";
    }
    return std::nullopt;
}

bool isRunEvaluationEnabled(const AppState& state) {
    return canAsk(state) && !state.currentIndex().testQuestions.empty();
}

std::vector<EvaluationCard> evaluationCards(const AppState& state) {
    const RAGIndex& index = state.currentIndex();
    const Variant& variant = state.currentVariant();
    const std::string across = "across " + countText(index.testQuestions.size()) + " questions";
    const auto passing =
        std::ranges::count(index.testQuestions, QuestionStatus::passing, &TestQuestion::status);
    return {
        {"Recall@5", scoreText(variant.recallAt5, notEvaluatedYet), across},
        {"MRR", scoreText(variant.mrr, notEvaluatedYet), across},
        {"Questions", countText(index.testQuestions.size()), std::to_string(passing) + " passing"},
        {"Failing", countText(failingQuestions(index).size()), "drill in below"}};
}

std::string variantTableTitle(const RAGIndex& index) {
    return "Variants on the same " + countText(index.testQuestions.size()) + " questions";
}

std::vector<std::string> variantTableHeadings() {
    return {"VARIANT", "RECALL@5", "MRR", "LATENCY"};
}

std::vector<std::string> variantTableRow(const Variant& variant) {
    const std::optional<double> median = variant.medianLatency();
    return {variant.summaryLabel(), scoreText(variant.recallAt5, absentValue),
            scoreText(variant.mrr, absentValue),
            median ? fixedPoint(*median, 1) +
                         " s (n=" + countText(variant.recordedLatencies.size()) + ")"
                   : std::string(absentValue)};
}

std::string questionListTitle(const RAGIndex& index) {
    return "Test questions \u00B7 " + countText(index.testQuestions.size()) + " (" +
           countText(failingQuestions(index).size()) + " failing)";
}

std::string questionStatusText(const TestQuestion& question) {
    std::string text(rawValue(question.status));
    if (question.status == QuestionStatus::passing && question.lastRank) {
        text += " \u00B7 rank " + std::to_string(*question.lastRank);
    }
    return text;
}

std::optional<FailingDetail> failingDetail(const AppState& state) {
    const RAGIndex& index = state.currentIndex();
    const TestQuestion* shown =
        index.selectedFailingQuestionID
            ? findByID(index.testQuestions, *index.selectedFailingQuestionID)
            : nullptr;
    if (!shown) {
        const std::vector<const TestQuestion*> failing = failingQuestions(index);
        if (failing.empty()) {
            return std::nullopt;
        }
        shown = failing.front();
    }
    FailingDetail detail;
    detail.questionID = shown->id;
    detail.question = shown->question;
    detail.expected = breadcrumbText(shown->expectedBreadcrumb);
    detail.got = shown->lastGotBreadcrumb ? breadcrumbText(*shown->lastGotBreadcrumb)
                                          : "\u2014 (not evaluated yet)";
    if (shown->status == QuestionStatus::notEvaluated) {
        detail.line = "Not evaluated yet \u2014 click Run Evaluation.";
    } else if (!shown->lastRank) {
        detail.line = "Expected chunk wasn't in the top-" +
                      std::to_string(truncated(state.currentVariant().settings.topK)) + " results.";
    }
    return detail;
}

std::optional<std::string> importResultText(const ImportCounts& counts) {
    if (counts.imported == 0 && counts.skipped == 0) {
        return std::nullopt;
    }
    std::string text = "Imported " + std::to_string(counts.imported) + " question(s)";
    if (counts.skipped != 0) {
        text += ", skipped " + std::to_string(counts.skipped) +
                " row(s) that didn't match \"question,breadcrumb\"";
    }
    return text + ".";
}

std::string measuredLatencyText(const Variant& variant) {
    const std::optional<double> median = variant.medianLatency();
    return median ? fixedPoint(*median, 1) + "s over " +
                        countText(variant.recordedLatencies.size()) + " run(s)"
                  : "No live runs yet";
}

} // namespace ombrel
