#pragma once

#include "core/AppState.h"
#include "core/TestQuestion.h"

#include <string>
#include <string_view>
#include <vector>

// The test questions of the current index. Main thread; changes are undoable.
namespace ombrel {

// Those with the status `failing`, in order. Good until the questions are changed.
std::vector<const TestQuestion*> failingQuestions(const RAGIndex& index);

// A question without a result yet.
TestQuestion newTestQuestion(std::string question, std::vector<std::string> expectedBreadcrumb,
                             bool isDrafted);

void addTestQuestion(AppState& state, std::string question,
                     std::vector<std::string> expectedBreadcrumb);
// Adds a question as typed, under the parts of a breadcrumb typed as "A > B". False, and nothing
// changes, when there is no question or no part.
bool addTypedQuestion(AppState& state, std::string question, std::string_view breadcrumb);

// The sections of the current index, each once and in order, as they are typed: "A > B". Those that
// can't be typed so are left out.
std::vector<std::string> typableBreadcrumbs(const AppState& state);

void removeTestQuestion(AppState& state, Uuid id);
// Removes them all. The variants keep their scores.
void clearTestQuestions(AppState& state);

// Puts a question into the Playground and shows that.
void openInPlayground(AppState& state, Uuid id);

} // namespace ombrel
