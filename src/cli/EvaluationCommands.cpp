#include "cli/Session.h"
#include "core/JsonEncoder.h"
#include "evaluation/EvaluationTexts.h"
#include "evaluation/QuestionDrafting.h"
#include "evaluation/RetrievalEvaluation.h"
#include "evaluation/TestQuestionImporter.h"
#include "evaluation/TestQuestions.h"
#include "platform/FixedPoint.h"

#include <algorithm>
#include <vector>

namespace ombrel {

namespace {

struct QuestionList {
    std::vector<TestQuestion> testQuestions;
    std::optional<std::int64_t> imported; // of an import
    std::optional<std::int64_t> skipped;

    static constexpr auto keys() {
        return std::tuple(required("testQuestions", &QuestionList::testQuestions),
                          optional("imported", &QuestionList::imported),
                          optional("skipped", &QuestionList::skipped));
    }
};

struct EvaluationResult {
    std::vector<Uuid> evaluatedVariantIDs; // in the order of the variants
    std::vector<Variant> variants;
    std::vector<TestQuestion> testQuestions;

    static constexpr auto keys() {
        return std::tuple(required("evaluatedVariantIDs", &EvaluationResult::evaluatedVariantIDs),
                          required("variants", &EvaluationResult::variants),
                          required("testQuestions", &EvaluationResult::testQuestions));
    }
};

void printQuestions(const RAGIndex& index, const std::optional<ImportCounts>& counts,
                    const Invocation& invocation) {
    if (invocation.json) {
        QuestionList list{index.testQuestions, std::nullopt, std::nullopt};
        if (counts) {
            list.imported = counts->imported;
            list.skipped = counts->skipped;
        }
        invocation.printJson(encodeJson(list));
        return;
    }
    if (counts) {
        invocation.print(importResultText(*counts).value_or("") + "\n\n");
    }
    if (index.testQuestions.empty()) {
        invocation.print("No test questions yet.\n");
        return;
    }
    std::vector<std::vector<std::string>> rows;
    for (const TestQuestion& question : index.testQuestions) {
        rows.push_back({std::to_string(rows.size() + 1), oneLine(question.question, 60),
                        std::string(question.isDrafted ? draftBadge : ""),
                        oneLine(breadcrumbText(question.expectedBreadcrumb), 60),
                        std::string(rawValue(question.status)),
                        question.lastRank ? std::to_string(*question.lastRank) : ""});
    }
    invocation.print(questionListTitle(index) + "\n\n" +
                     table({"#", "QUESTION", "", "EXPECTED", "STATUS", "RANK"}, rows));
}

void draft(Session& session, std::int64_t limit, const Invocation& invocation) {
    const ModelAvailability availability = session->platform().model->availability();
    if (!availability.isAvailable()) {
        throw Failure{"On-device model unavailable (" + *availability.unavailableReason +
                      "). No questions were drafted."};
    }
    const std::size_t before = session->currentIndex().testQuestions.size();
    session.run(draftQuestions(session.state(), limit));
    invocation.note("Drafted " +
                    counted(session->currentIndex().testQuestions.size() - before, "question") +
                    ".");
}

// Scores the variants one after the other. The one that was selected comes last, so that the
// results of the questions are its own, and stays selected.
void evaluate(Session& session, std::vector<Uuid> variants) {
    const Uuid selected = session->currentVariant().id;
    std::ranges::stable_partition(variants, [&](const Uuid& id) { return id != selected; });
    const auto select = [&](Uuid id) { session->editCurrentIndex()->selectedVariantID = id; };
    try {
        for (const Uuid& id : variants) {
            select(id);
            const auto banner = evaluationBanner(*session);
            if (!canEvaluate(*session)) {
                throw Failure{banner.value_or("There is nothing to evaluate.")};
            }
            session.run(runEvaluation(session.state()));
        }
    } catch (const Failure&) {
        // What was scored before stays.
        select(selected);
        session.save();
        throw;
    }
    select(selected);
    session.save();
}

void printEvaluation(const RAGIndex& index, const std::vector<Uuid>& evaluated,
                     const Invocation& invocation) {
    if (invocation.json) {
        invocation.printJson(
            encodeJson(EvaluationResult{evaluated, index.variants, index.testQuestions}));
        return;
    }
    std::vector<std::vector<std::string>> rows;
    for (const Variant& variant : index.variants) {
        rows.push_back(variantTableRow(variant));
    }
    std::string text =
        variantTableTitle(index) + "\n\n" + table(variantTableHeadings(), rows) + "\n";
    text += questionListTitle(index) + "\n";
    for (const TestQuestion* question : failingQuestions(index)) {
        text += "\n" + oneLine(question->question, 300) + "\n  Expected  " +
                breadcrumbText(question->expectedBreadcrumb) + "\n  Got       " +
                (question->lastGotBreadcrumb ? breadcrumbText(*question->lastGotBreadcrumb)
                                             : "nothing") +
                "\n";
    }
    invocation.print(text);
}

void requireRecall(const RAGIndex& index, const std::vector<Uuid>& evaluated, double least) {
    std::string below;
    for (const Variant& variant : index.variants) {
        const double recall = variant.recallAt5.value_or(0);
        if (std::ranges::find(evaluated, variant.id) != evaluated.end() && !(recall >= least)) {
            below += (below.empty() ? "" : ", ") + variant.summaryLabel() + " (" +
                     fixedPoint(recall, 2) + ")";
        }
    }
    if (!below.empty()) {
        throw Failure{"Recall@5 is below " + fixedPoint(least, 2) + ": " + below + "."};
    }
}

void addQuestionsCommand(CLI::App& app, Invocation& invocation) {
    struct Options {
        std::string project;
        std::string file;
        std::string question;
        std::string breadcrumb;
        std::int64_t limit = draftLimit;
    };
    const auto options = std::make_shared<Options>();
    auto* questions =
        addCommand(app, "questions", "List, import, add, draft and clear test questions",
                   "ombrel questions handbook.ombrel import questions.csv\n"
                   "  ombrel questions handbook.ombrel add --question \"When does the last bus "
                   "leave?\" --breadcrumb \"visiting > Getting here\"",
                   invocation);
    addProjectArgument(*questions, options->project, invocation);
    questions->require_subcommand(0, 1);
    questions->fallthrough();
    questions->add_subcommand("list", "List the questions with their last results (the default)");
    auto* import = questions->add_subcommand(
        "import", "Add the questions of a CSV file: question,expected breadcrumb");
    import->add_option("FILE", options->file, "The CSV file")->required();
    auto* add = questions->add_subcommand("add", "Add one question");
    add->add_option("--question", options->question, "The question")->required();
    add->add_option("--breadcrumb", options->breadcrumb,
                    "The breadcrumb of the chunk to find, as \"A > B\"")
        ->required();
    auto* draftSome = questions->add_subcommand(
        "draft", "Let the model write questions for sections that have none");
    draftSome->add_option("N", options->limit, "How many chunks to draft for; 15 by default")
        ->check(CLI::Range(std::int64_t{1}, std::int64_t{1'000'000}));
    auto* clear = questions->add_subcommand("clear", "Remove all questions");
    questions->callback([=, &invocation] {
        Session session(options->project, invocation);
        std::optional<ImportCounts> counts;
        if (*import) {
            counts = importTestCases(*session, options->file);
            session.throwImportError();
        } else if (*add) {
            if (!addTypedQuestion(*session, options->question, options->breadcrumb)) {
                throw Failure{"A test question needs a text and a breadcrumb.", true};
            }
        } else if (*draftSome) {
            draft(session, options->limit, invocation);
        } else if (*clear) {
            clearTestQuestions(*session);
        }
        if (*import || *add || *draftSome || *clear) {
            session.save();
        }
        printQuestions(session->currentIndex(), counts, invocation);
    });
}

void addEvaluateCommand(CLI::App& app, Invocation& invocation) {
    struct Options {
        std::string project;
        std::string variant;
        bool all = false;
        double minRecall = 0;
    };
    const auto options = std::make_shared<Options>();
    auto* command =
        addCommand(app, "evaluate", "Score the retrieval of a variant on the test questions",
                   "ombrel evaluate handbook.ombrel --all --min-recall 0.8", invocation);
    addProjectArgument(*command, options->project, invocation);
    auto* variant = command->add_option("--variant", options->variant,
                                        "Name or id of the variant; the selected one by default");
    command->add_flag("--all", options->all, "Score every variant")->excludes(variant);
    auto* minRecall = command
                          ->add_option("--min-recall", options->minRecall,
                                       "Fail when the recall of a scored variant is below this")
                          ->check(CLI::Range(0.0, 1.0));
    command->callback([=, &invocation] {
        Session session(options->project, invocation);
        if (session->currentIndex().testQuestions.empty()) {
            throw Failure{"No test questions yet: `ombrel questions` adds some."};
        }
        std::vector<Uuid> evaluated;
        if (options->all) {
            for (const Variant& each : session->currentIndex().variants) {
                evaluated.push_back(each.id);
            }
        } else {
            evaluated.push_back(*variant ? findVariant(*session, options->variant)
                                         : session->currentVariant().id);
        }
        if (const auto banner = evaluationBanner(*session)) {
            invocation.note(*banner);
        }
        evaluate(session, evaluated);
        printEvaluation(session->currentIndex(), evaluated, invocation);
        if (*minRecall) {
            requireRecall(session->currentIndex(), evaluated, options->minRecall);
        }
    });
}

} // namespace

void addEvaluationCommands(CLI::App& app, Invocation& invocation) {
    addQuestionsCommand(app, invocation);
    addEvaluateCommand(app, invocation);
}

} // namespace ombrel
