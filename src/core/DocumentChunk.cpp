#include "core/DocumentChunk.h"

#include "platform/Text.h"

namespace ombrel {

std::string DocumentChunk::searchText() const {
    std::string result = text;
    if (contextualNote) {
        result += '\n';
        result += *contextualNote;
    }
    if (generatedQuestions) {
        for (const auto& question : *generatedQuestions) {
            result += '\n';
            result += question;
        }
    }
    return result;
}

std::string breadcrumbText(const std::vector<std::string>& breadcrumb) {
    return join(breadcrumb, " > ");
}

} // namespace ombrel
