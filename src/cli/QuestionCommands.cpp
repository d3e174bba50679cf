#include "cli/Session.h"
#include "core/JsonEncoder.h"
#include "retrieval/CompositeSearcher.h"
#include "retrieval/PlaygroundTexts.h"
#include "retrieval/QueryPipeline.h"

#include <cstdio>
#include <unistd.h>

namespace ombrel {

namespace {

struct HitRow {
    std::string document;
    DocumentChunk chunk;
    double keywordScore = 0;
    double vectorScore = 0;
    double fusedScore = 0;

    static constexpr auto keys() {
        return std::tuple(required("document", &HitRow::document),
                          required("chunk", &HitRow::chunk),
                          required("keywordScore", &HitRow::keywordScore),
                          required("vectorScore", &HitRow::vectorScore),
                          required("fusedScore", &HitRow::fusedScore));
    }
};

struct HitList {
    std::vector<HitRow> hits;

    static constexpr auto keys() { return std::tuple(required("hits", &HitList::hits)); }
};

std::string score(double value) {
    char text[16];
    std::snprintf(text, sizeof text, "%.2f", value);
    return text;
}

Task<void> searchInto(CompositeSearcher searcher, std::string query, std::int64_t topK,
                      std::vector<SearchHit>& hits) {
    hits = co_await searcher.search(query, topK);
}

// Prints the part of the answer that has come since the last call.
class AnswerPrinter {
  public:
    void operator()(const ModelSnapshot& snapshot) {
        const std::string& content = snapshot.content;
        if (content.size() > m_printed) {
            std::fwrite(content.data() + m_printed, 1, content.size() - m_printed, stdout);
            std::fflush(stdout);
            m_printed = content.size();
        }
    }
    bool printedSomething() const { return m_printed > 0; }

  private:
    std::size_t m_printed = 0;
};

void printResult(const PlaygroundResult& result, const BuildSettings& settings,
                 const Invocation& invocation) {
    std::string text = "\n" + std::string(queryRowTitle(settings.transform)) + ": " +
                       oneLine(result.rewrittenQuery, 300) + "\n\n";
    std::vector<std::vector<std::string>> rows;
    for (const RetrievedChunk& row : result.retrieved) {
        rows.push_back({std::to_string(row.rank), score(row.keywordScore), score(row.vectorScore),
                        score(row.fusedScore), row.inPrompt ? "In prompt" : "Over budget",
                        breadcrumbText(row.breadcrumb)});
    }
    if (!rows.empty()) {
        text += table({"#", "keyword", "vector", "fused", "", "BREADCRUMB"}, rows) + "\n";
    }
    for (const TimingStage& stage : timingStages(result)) {
        text += stage.name + " " + stage.label + "  ";
    }
    text += totalTimeText(result) + "\n" + contextBarText(result, settings) + "\n";
    if (result.answerBreakdown) {
        for (const std::string& line : answerBreakdownLines(*result.answerBreakdown)) {
            text += line + "\n";
        }
    }
    invocation.print(text);
}

} // namespace

void addQuestionCommands(CLI::App& app, Invocation& invocation) {
    struct Options {
        std::string project;
        std::string text;
        std::string kind;
        std::int64_t topK = 0;
    };
    const auto options = std::make_shared<Options>();

    auto* search = addCommand(app, "search", "Search a project's chunks once",
                              "ombrel search handbook.ombrel \"last bus\" --kind keyword --top-k 3",
                              invocation);
    addProjectArgument(*search, options->project, invocation);
    search->add_option("QUERY", options->text, "What to search for")->required();
    const std::map<std::string, std::string> kinds{{"spotlight", "Spotlight"},
                                                   {"keyword", "Keyword"},
                                                   {"vector", "Vector"},
                                                   {"hybrid", "Hybrid"}};
    search->add_option("--kind", options->kind, "keyword, vector or hybrid; else as in the recipe")
        ->transform(CLI::CheckedTransformer(kinds, CLI::ignore_case));
    auto* topK =
        search->add_option("--top-k", options->topK, "How many hits; else as in the recipe")
            ->check(CLI::Range(std::int64_t{0}, std::int64_t{1'000'000}));
    search->callback([options, topK, &invocation] {
        Session session(options->project, invocation);
        BuildSettings settings = session->currentVariant().settings;
        for (const auto& entry : rawValues(IndexKind{})) {
            if (entry.raw == options->kind) {
                settings.index = entry.value;
            }
        }
        const std::int64_t limit = *topK ? options->topK : truncated(settings.topK);
        if (const auto banner = reasonBanner(*session, settings)) {
            invocation.note(*banner);
        }
        const CompositeSearcher searcher =
            buildSearcher(settings.index, session->indexedChunks(), session.runtime().platform());
        std::vector<SearchHit> hits;
        session.run(searchInto(searcher, options->text, limit, hits));
        if (invocation.json) {
            HitList list;
            for (const SearchHit& hit : hits) {
                list.hits.push_back({hit.document.name, hit.chunk, hit.keywordScore,
                                     hit.vectorScore, hit.fusedScore});
            }
            invocation.printJson(encodeJson(list));
            return;
        }
        if (hits.empty()) {
            invocation.print("No results.\n");
            return;
        }
        std::vector<std::vector<std::string>> rows;
        for (std::size_t i = 0; i < hits.size(); ++i) {
            rows.push_back({std::to_string(i + 1), score(hits[i].keywordScore),
                            score(hits[i].vectorScore), score(hits[i].fusedScore),
                            breadcrumbText(hits[i].chunk.breadcrumb),
                            oneLine(hits[i].chunk.text, 60)});
        }
        invocation.print(table({"#", "keyword", "vector", "fused", "BREADCRUMB", "TEXT"}, rows));
    });

    auto* ask =
        addCommand(app, "ask", "Ask a question and show each stage of the answer",
                   "ombrel ask handbook.ombrel \"When does the last bus leave?\"", invocation);
    addProjectArgument(*ask, options->project, invocation);
    ask->add_option("QUESTION", options->text, "The question")->required();
    ask->callback([options, &invocation] {
        Session session(options->project, invocation);
        const BuildSettings settings = session->currentVariant().settings;
        const auto banner = reasonBanner(*session, settings);
        if (!canAsk(*session)) {
            throw Failure{banner.value_or("This index can't be asked.")};
        }
        if (banner) {
            invocation.note(*banner);
        }
        session->editCurrentIndex()->playgroundQuestion = options->text;
        AnswerPrinter printer;
        AnswerObserver observer;
        if (!invocation.json) {
            observer = [&](const ModelSnapshot& snapshot) {
                session.runtime().progress().clear();
                printer(snapshot);
            };
        }
        session.run(ombrel::ask(session.state(), observer));
        const std::optional<PlaygroundResult> result = session->currentIndex().playgroundResult;
        if (!result) {
            throw Failure{"The question got no result."};
        }
        if (invocation.json) {
            invocation.printJson(encodeJson(*result));
        } else {
            if (!result->answerBreakdown) {
                // What was streamed, if anything, is no answer: the message stands in its place.
                std::printf("%s%s", printer.printedSomething() ? "\n\n" : "",
                            result->answer.c_str());
            }
            std::printf("\n");
            std::fflush(stdout);
            printResult(*result, settings, invocation);
        }
        session.save();
    });
}

} // namespace ombrel
