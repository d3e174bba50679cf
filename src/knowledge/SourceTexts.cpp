#include "knowledge/SourceTexts.h"

#include "core/SourceStatus.h"
#include "knowledge/RecipeTexts.h"

#include <cstdint>

namespace ombrel {

std::string sourceTypeText(const SourceDocument& source) {
    std::string text(rawValue(source.type));
    if (source.type == SourceType::pdf && source.pageCount) {
        text += " \u00b7 " + std::to_string(*source.pageCount) + " pp";
    }
    return text;
}

std::string averageChunkText(const SourceDocument& source) {
    const std::int64_t mean = source.chunkCount > 0 ? source.tokenCount / source.chunkCount : 0;
    return "avg " + std::to_string(mean) + " tokens / chunk";
}

std::string statusAdvice(const SourceDocument& source, const BuildSettings& settings) {
    if (const auto* oversized = std::get_if<SourceStatus::Oversized>(&source.status.value)) {
        const bool isOne = oversized->count == 1;
        return std::to_string(oversized->count) + (isOne ? " chunk is" : " chunks are") +
               " more than twice the target of " + targetChunkSizeText(settings) +
               ": a paragraph or line that is never cut. Fixed chunking, or blank lines in the "
               "document, would cut " +
               (isOne ? "it." : "them.");
    }
    if (std::holds_alternative<SourceStatus::EmptyPage>(source.status.value)) {
        if (source.type != SourceType::pdf) {
            return "There is no text in it, so nothing can be found in it.";
        }
        return source.chunkCount == 0
                   ? "No page has text: it may be scanned pictures of pages. Make it searchable "
                     "with text recognition, then re-scan."
                   : "Pages without text, such as scanned pictures, can't be found.";
    }
    return {};
}

} // namespace ombrel
