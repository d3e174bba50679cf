#include "evaluation/QuestionDrafting.h"

#include "evaluation/TestQuestions.h"
#include "platform/Text.h"

#include <cstddef>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

namespace ombrel {

namespace {

constexpr std::string_view draftInstructions =
    "Given a passage, write exactly one short, natural question that the passage directly answers. "
    "Reply with only the question text, no preamble or quotation marks.";

// The same value for breadcrumbs that match.
std::vector<std::string> matchKey(const std::vector<std::string>& breadcrumb) {
    std::vector<std::string> key;
    for (const std::string& part : breadcrumb) {
        key.push_back(canonicalKey(part));
    }
    return key;
}

// The first `limit` chunks whose section no test question expects.
std::vector<DocumentChunk> uncoveredChunks(const AppState& state, std::int64_t limit) {
    std::set<std::vector<std::string>> covered;
    for (const TestQuestion& question : state.currentIndex().testQuestions) {
        covered.insert(matchKey(question.expectedBreadcrumb));
    }
    std::vector<DocumentChunk> candidates;
    for (const IndexedDocument& document : state.indexedChunks()) {
        for (const DocumentChunk& chunk : document.chunks) {
            if (static_cast<std::int64_t>(candidates.size()) >= limit) {
                return candidates;
            }
            if (!covered.contains(matchKey(chunk.breadcrumb))) {
                candidates.push_back(chunk);
            }
        }
    }
    return candidates;
}

} // namespace

Task<void> draftQuestions(std::shared_ptr<AppState> state, std::int64_t limit) {
    if (state->currentIndex().isDrafting) {
        co_return;
    }
    const std::vector<DocumentChunk> candidates = uncoveredChunks(*state, limit);
    if (candidates.empty()) {
        co_return;
    }
    const Uuid indexID = state->currentIndex().id;
    const std::shared_ptr<OnDeviceModel> model = state->platform().model;
    const auto total = static_cast<std::int64_t>(candidates.size());
    state->editIndex(indexID, [&](RAGIndex& index) {
        index.isDrafting = true;
        index.draftProgress = Progress{0, total};
    });
    for (std::size_t i = 0; i < candidates.size(); ++i) {
        std::optional<std::string> text = co_await draftQuestion(model, candidates[i]);
        state->editIndex(indexID, [&](RAGIndex& index) {
            if (text) {
                index.testQuestions.push_back(
                    newTestQuestion(std::move(*text), candidates[i].breadcrumb, true));
            }
            index.draftProgress = Progress{static_cast<std::int64_t>(i) + 1, total};
        });
    }
    state->editIndex(indexID, [](RAGIndex& index) {
        index.isDrafting = false;
        index.draftProgress.reset();
    });
    state->scheduleCheckpoint();
}

Task<std::optional<std::string>> draftQuestion(std::shared_ptr<OnDeviceModel> model,
                                               DocumentChunk chunk) {
    std::optional<std::string> question;
    if (!model->availability().isAvailable()) {
        co_return question;
    }
    const std::shared_ptr<LanguageModelSession> session =
        model->makeSession(std::string(draftInstructions));
    std::string prompt = "Passage:\n" + chunk.text;
    const Result<std::string> answer = co_await session->respond(std::move(prompt));
    if (answer) {
        const std::string_view trimmed = trimWhitespacesAndNewlines(*answer);
        if (!trimmed.empty()) {
            question = std::string(trimmed);
        }
    }
    co_return question;
}

} // namespace ombrel
