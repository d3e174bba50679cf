#include "retrieval/RAGSearchTool.h"

#include "platform/Text.h"

#include <cstddef>
#include <utility>
#include <variant>
#include <vector>

namespace ombrel {

namespace {

constexpr std::size_t passageCharacters = 600; // keeps several passages within the model's context

std::string passages(const std::vector<SearchHit>& hits) {
    if (hits.empty()) {
        return "No results found for that query.";
    }
    std::string text;
    for (std::size_t i = 0; i < hits.size(); ++i) {
        const DocumentChunk& chunk = hits[i].chunk;
        text += i == 0 ? "" : "\n\n";
        text += "[" + std::to_string(i + 1) + "] " + breadcrumbText(chunk.breadcrumb) + ": ";
        text += firstCharacters(chunk.packText(), passageCharacters);
    }
    return text;
}

// Holds what it needs, so that the tool need not outlive it.
Task<std::string> searchAndRecord(CompositeSearcher searcher, std::int64_t topK,
                                  std::shared_ptr<RetrievalLog> log, std::string query) {
    const std::vector<SearchHit> hits = co_await searcher.search(query, topK);
    log->record(std::move(query), hits);
    co_return passages(hits);
}

} // namespace

RAGSearchTool::RAGSearchTool(CompositeSearcher searcher, std::int64_t topK,
                             std::shared_ptr<RetrievalLog> log)
    : m_searcher(std::move(searcher)), m_topK(topK), m_log(std::move(log)) {}

std::string RAGSearchTool::name() const {
    return "search_knowledge_base";
}

std::string RAGSearchTool::description() const {
    return "Searches the indexed knowledge base for passages relevant to a query. Call this as "
           "many times as needed, with focused, specific queries, before answering \u2014 you can "
           "search more than once if the first results aren't enough.";
}

GenerationSchema RAGSearchTool::parameters() const {
    DynamicGenerationSchema::Property query;
    query.name = "query";
    query.description = "A focused search query capturing what information is needed";
    query.schema = std::make_shared<DynamicGenerationSchema>(
        DynamicGenerationSchema{DynamicGenerationSchema::Scalar::string});
    DynamicGenerationSchema::Object arguments{"Arguments", {std::move(query)}};
    return GenerationSchema::make({std::move(arguments)}).value();
}

Task<std::string> RAGSearchTool::call(GeneratedContent arguments) {
    const GeneratedContent* query = arguments.find("query");
    const std::string* text = query ? std::get_if<std::string>(&query->kind) : nullptr;
    return searchAndRecord(m_searcher, m_topK, m_log, text ? *text : std::string());
}

} // namespace ombrel
