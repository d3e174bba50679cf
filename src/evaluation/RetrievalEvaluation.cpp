#include "evaluation/RetrievalEvaluation.h"

#include "core/FindByID.h"
#include "evaluation/Scoring.h"
#include "retrieval/AgenticSearch.h"
#include "retrieval/CompositeSearcher.h"
#include "retrieval/QueryPipeline.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace ombrel {

namespace {

// What a run works with, as it was at its start.
struct Run {
    std::shared_ptr<AppState> state;
    Uuid indexID;
    BuildSettings settings;
    IndexedChunks pairs;
    CompositeSearcher searcher;
    std::vector<TestQuestion> questions; // with their scores as the run goes on

    std::int64_t topK() const { return truncated(settings.topK); }
};

struct Scores {
    std::int64_t passing = 0;
    double reciprocalRanks = 0; // their sum

    void score(TestQuestion& question, const std::vector<SearchHit>& hits) {
        reciprocalRanks += scoreHits(question, hits);
        passing += question.status == QuestionStatus::passing ? 1 : 0;
    }
};

// Writes the score of a question to where it stands in the index by now, if it still does.
// `place` is where it stood at the start.
void storeScore(RAGIndex& index, std::size_t place, const TestQuestion& scored) {
    std::vector<TestQuestion>& questions = index.testQuestions;
    TestQuestion* question = place < questions.size() && questions[place].id == scored.id
                                 ? &questions[place]
                                 : findByID(questions, scored.id);
    if (question) {
        question->lastGotBreadcrumb = scored.lastGotBreadcrumb;
        question->lastRank = scored.lastRank;
        question->status = scored.status;
    }
}

// All vectors first, then all searches at once.
Task<Scores> runDirect(std::shared_ptr<Run> run) {
    std::vector<std::string> texts;
    for (const TestQuestion& question : run->questions) {
        texts.push_back(question.question);
    }
    auto asked = run->searcher.queryVectors(std::move(texts));
    const std::vector<std::optional<Vector>> vectors = co_await asked;
    Scores scores;
    for (std::size_t i = 0; i < run->questions.size(); ++i) {
        TestQuestion& question = run->questions[i];
        scores.score(question,
                     run->searcher.searchWithVector(question.question, vectors[i], run->topK()));
    }
    run->state->editIndex(run->indexID, [&](RAGIndex& index) {
        for (std::size_t i = 0; i < run->questions.size(); ++i) {
            storeScore(index, i, run->questions[i]);
        }
    });
    co_return scores;
}

Task<std::vector<SearchHit>> transformedHits(std::shared_ptr<Run> run, std::string question) {
    const Platform platform = run->state->platform();
    const QueryTransform transform = run->settings.transform;
    std::vector<SearchHit> hits;
    if (transform == QueryTransform::tool) {
        AgenticOutcome outcome =
            co_await runAgenticQuery(platform, std::move(question), run->pairs, run->settings);
        hits = std::move(outcome.hits);
    } else {
        std::vector<std::string> queries =
            co_await transformedQueries(platform.model, transform, std::move(question));
        hits = co_await searchQueries(run->searcher, std::move(queries), transform, run->topK());
    }
    co_return hits;
}

// One question after the other, since each asks the model.
Task<Scores> runTransformed(std::shared_ptr<Run> run) {
    const auto total = static_cast<std::int64_t>(run->questions.size());
    run->state->editIndex(run->indexID, [&](RAGIndex& index) {
        index.isEvaluating = true;
        index.evaluateProgress = Progress{0, total};
    });
    Scores scores;
    for (std::size_t i = 0; i < run->questions.size(); ++i) {
        TestQuestion& question = run->questions[i];
        const std::vector<SearchHit> hits = co_await transformedHits(run, question.question);
        scores.score(question, hits);
        run->state->editIndex(run->indexID, [&](RAGIndex& index) {
            storeScore(index, i, question);
            index.evaluateProgress = Progress{static_cast<std::int64_t>(i) + 1, total};
        });
    }
    co_return scores;
}

// Ends a run on the index where it began, whichever is the current one by now.
void storeScores(const Run& run, const Scores& scores) {
    const auto count = static_cast<double>(run.questions.size());
    const bool stored = run.state->editIndex(run.indexID, [&](RAGIndex& index) {
        Variant* selected = findByID(index.variants, index.selectedVariantID);
        Variant& variant = selected ? *selected : index.variants.front();
        variant.recallAt5 = static_cast<double>(scores.passing) / count;
        variant.mrr = scores.reciprocalRanks / count;
        index.isEvaluating = false;
        index.evaluateProgress.reset();
    });
    if (stored) {
        run.state->scheduleCheckpoint();
    }
}

} // namespace

bool canEvaluate(const AppState& state) {
    const RAGIndex& index = state.currentIndex();
    return canAsk(state) && !index.testQuestions.empty() && !index.isEvaluating;
}

Task<void> runEvaluation(std::shared_ptr<AppState> state) {
    if (!canEvaluate(*state)) {
        co_return;
    }
    const BuildSettings settings = state->currentVariant().settings;
    const IndexedChunks pairs = state->indexedChunks();
    const RAGIndex& index = state->currentIndex();
    const auto run = std::make_shared<Run>(
        Run{state, index.id, settings, pairs,
            buildSearcher(settings.index, pairs, state->platform()), index.testQuestions});
    Scores scores;
    if (settings.transform == QueryTransform::direct) {
        scores = co_await runDirect(run);
    } else {
        scores = co_await runTransformed(run);
    }
    storeScores(*run, scores);
}

} // namespace ombrel
