#pragma once

#include "core/AppState.h"
#include "core/RAGIndex.h"
#include "core/TestQuestion.h"
#include "core/Variant.h"
#include "evaluation/TestQuestionImporter.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// What the faces of the system say about test questions and scores.
namespace ombrel {

inline constexpr std::string_view evaluationAbout =
    "Retrieval scored against your test set using the same real search Playground uses.";
inline constexpr std::string_view notEvaluatedYet = "Not evaluated yet";
inline constexpr std::string_view absentValue = "\u2013";
inline constexpr std::string_view noTestQuestionsYet =
    "No test questions yet \u2014 add one above, or use \"Save as test case\" in Playground.";
inline constexpr std::string_view draftBadge = "Draft";
inline constexpr std::string_view breadcrumbPlaceholder =
    "Expected breadcrumb, e.g. Account & security > Passkeys";
inline constexpr std::string_view importTestCasesHelp =
    "Import test cases from a CSV file: question,expected breadcrumb";
inline constexpr std::string_view importProblemTitle = "Import problem";
inline constexpr std::string_view measuredLatencyLabel = "Measured latency (median)";

// Why scoring the current index gives nothing or less than it could; nothing when all is well.
std::optional<std::string> evaluationBanner(const AppState& state);
// Whether the "Run Evaluation" control is enabled.
bool isRunEvaluationEnabled(const AppState& state);

struct EvaluationCard {
    std::string title;
    std::string value;
    std::string detail;
};
// Recall, mean reciprocal rank, questions, failing.
std::vector<EvaluationCard> evaluationCards(const AppState& state);

// "Variants on the same 12 questions".
std::string variantTableTitle(const RAGIndex& index);
std::vector<std::string> variantTableHeadings();
// The cells of a variant under the headings.
std::vector<std::string> variantTableRow(const Variant& variant);

// "Test questions · 12 (3 failing)".
std::string questionListTitle(const RAGIndex& index);

// How a question stands: "Passing \u00b7 rank 3", "Failing" or "Not evaluated".
std::string questionStatusText(const TestQuestion& question);

// What is shown of one question that fails.
struct FailingDetail {
    Uuid questionID;
    std::string question;
    std::string expected;
    std::string got;
    std::string line; // empty when its section was found
};
// Of the selected question, else of the first failing one; nothing when there is neither.
std::optional<FailingDetail> failingDetail(const AppState& state);

// What an import did; nothing when it met no row.
std::optional<std::string> importResultText(const ImportCounts& counts);

// "1.2s over 3 run(s)".
std::string measuredLatencyText(const Variant& variant);

} // namespace ombrel
