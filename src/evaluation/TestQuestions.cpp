#include "evaluation/TestQuestions.h"

#include "core/FindByID.h"
#include "evaluation/Breadcrumb.h"
#include "platform/Text.h"

#include <algorithm>
#include <set>
#include <utility>

namespace ombrel {

std::vector<const TestQuestion*> failingQuestions(const RAGIndex& index) {
    std::vector<const TestQuestion*> failing;
    for (const TestQuestion& question : index.testQuestions) {
        if (question.status == QuestionStatus::failing) {
            failing.push_back(&question);
        }
    }
    return failing;
}

TestQuestion newTestQuestion(std::string question, std::vector<std::string> expectedBreadcrumb,
                             bool isDrafted) {
    TestQuestion made;
    made.id = Uuid::random();
    made.question = std::move(question);
    made.expectedBreadcrumb = std::move(expectedBreadcrumb);
    made.isDrafted = isDrafted;
    return made;
}

void addTestQuestion(AppState& state, std::string question,
                     std::vector<std::string> expectedBreadcrumb) {
    state.editCurrentIndex()->testQuestions.push_back(
        newTestQuestion(std::move(question), std::move(expectedBreadcrumb), false));
    state.scheduleCheckpoint();
}

bool addTypedQuestion(AppState& state, std::string question, std::string_view breadcrumb) {
    std::vector<std::string> expected;
    for (const std::string_view piece : breadcrumbPieces(breadcrumb)) {
        expected.emplace_back(trimWhitespacesAndNewlines(piece));
    }
    if (question.empty() || expected.empty()) {
        return false;
    }
    addTestQuestion(state, std::move(question), std::move(expected));
    return true;
}

std::vector<std::string> typableBreadcrumbs(const AppState& state) {
    const auto isTypable = [](const std::string& part) {
        return !part.empty() && part.find('>') == std::string::npos &&
               trimWhitespacesAndNewlines(part).size() == part.size();
    };
    std::vector<std::string> texts;
    std::set<std::string> known;
    for (const IndexedDocument& document : state.indexedChunks()) {
        for (const DocumentChunk& chunk : document.chunks) {
            if (!chunk.breadcrumb.empty() && std::ranges::all_of(chunk.breadcrumb, isTypable)) {
                std::string text = breadcrumbText(chunk.breadcrumb);
                if (known.insert(text).second) {
                    texts.push_back(std::move(text));
                }
            }
        }
    }
    return texts;
}

void removeTestQuestion(AppState& state, Uuid id) {
    if (findByID(state.currentIndex().testQuestions, id)) {
        std::erase_if(state.editCurrentIndex()->testQuestions,
                      [&](const TestQuestion& question) { return question.id == id; });
        state.scheduleCheckpoint();
    }
}

void clearTestQuestions(AppState& state) {
    {
        auto index = state.editCurrentIndex();
        index->testQuestions.clear();
        index->selectedFailingQuestionID.reset();
    }
    state.scheduleCheckpoint();
}

void openInPlayground(AppState& state, Uuid id) {
    if (const TestQuestion* question = findByID(state.currentIndex().testQuestions, id)) {
        std::string text = question->question;
        state.editCurrentIndex()->playgroundQuestion = std::move(text);
        state.setSelectedTab(AppTab::playground);
    }
}

} // namespace ombrel
