#include "knowledge/RecipeTexts.h"

#include <cstddef>

namespace ombrel {

namespace {

std::string integerText(double setting) {
    return std::to_string(truncated(setting));
}

std::string groupedText(double setting) {
    std::string digits = integerText(setting);
    const std::size_t sign = digits.front() == '-' ? 1 : 0;
    for (std::size_t end = digits.size(); end > sign + 3;) {
        end -= 3;
        digits.insert(end, ",");
    }
    return digits;
}

std::string buildExample(const BuildSettings& settings) {
    std::string text = "\"...the battery may drain faster in Low Power Mode...\" \u2192 one ~" +
                       integerText(settings.targetChunkSize) + "-token chunk";
    if (settings.enrichments.contains(Enrichment::contextualNotes)) {
        text += " + a contextual note";
    }
    if (settings.enrichments.contains(Enrichment::generatedQuestions)) {
        text += " + " + integerText(settings.generatedQuestionsPerChunk) + " generated questions";
    }
    if (settings.enrichments.contains(Enrichment::parentChild)) {
        text += " + its parent section";
    }
    return text + ", stored in the " + std::string(rawValue(settings.index)) + " index";
}

std::string_view transformExample(QueryTransform transform) {
    switch (transform) {
    case QueryTransform::direct:
        return "searches exactly: \"Why is my phone hot?\"";
    case QueryTransform::rewrite:
        return "\u2192 \"causes of device overheating\"";
    case QueryTransform::multiQuery:
        return "3 variants: \"device overheating causes\", \"phone runs hot fix\", \"why does "
               "phone get warm\" \u2014 merged";
    case QueryTransform::hyde:
        return "drafts: \"The device may overheat from heavy background processing or a failing "
               "battery\u2026\", searches with that";
    case QueryTransform::tool:
        return "may call search_knowledge_base(\"battery overheating\"), read results, then "
               "search again";
    }
    return {};
}

std::string_view searchExample(IndexKind index) {
    switch (index) {
    case IndexKind::spotlight:
        return "handed to Apple's on-device Spotlight tool \u2014 Tool (agentic) mode only";
    case IndexKind::keyword:
        return "\"battery drain\" only matches chunks with those exact words";
    case IndexKind::vector:
        return "\"vehicle fails to turn on\" matches \"car won't start\" \u2014 same meaning, "
               "different words";
    case IndexKind::hybrid:
        return "keyword and vector hits combined by rank, e.g. #2 + #1 fuse to #1 overall";
    }
    return {};
}

} // namespace

std::vector<RecipeStep> recipeSteps(const BuildSettings& settings) {
    const std::string index(rawValue(settings.index));
    const std::string budget = integerText(settings.contextBudget);
    return {
        {"Index build",
         std::string(rawValue(settings.chunking)) + " chunking \u2192 " + index + " index",
         buildExample(settings)},
        {"Question", "user input", "\"Why is my phone hot?\""},
        {std::string(rawValue(settings.transform)), "on-device model",
         std::string(transformExample(settings.transform))},
        {index + " search", std::string(subtitle(settings.index)),
         std::string(searchExample(settings.index))},
        {"Context packing", budget + "-token budget",
         "top-" + integerText(settings.topK) + " results added in rank order until " + budget +
             " tokens are used"},
        {"Answer", "on-device model",
         "answers from only the packed chunks \u2014 says it doesn't know otherwise"},
    };
}

std::string targetChunkSizeText(const BuildSettings& settings) {
    return integerText(settings.targetChunkSize) + " tokens";
}

std::string overlapPercentText(const BuildSettings& settings) {
    return integerText(settings.overlapPercent) + "%";
}

std::string generatedQuestionsPerChunkText(const BuildSettings& settings) {
    return integerText(settings.generatedQuestionsPerChunk);
}

std::string topKText(const BuildSettings& settings) {
    return integerText(settings.topK);
}

std::string contextBudgetText(const BuildSettings& settings) {
    return groupedText(settings.contextBudget) + " of 8,192 tokens";
}

} // namespace ombrel
