// Any bytes read as a file of test questions: every question that comes out has a text and a
// section, and every line was counted once at most.
#include "evaluation/TestQuestionImporter.h"
#include "platform/Text.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const auto parsed = ombrel::TestQuestionImporter::parseText(text);
    if (parsed) {
        for (const ombrel::TestQuestion& question : parsed->questions) {
            if (question.question.empty() || question.expectedBreadcrumb.empty()) {
                std::abort();
            }
        }
        const std::size_t rows =
            parsed->questions.size() + static_cast<std::size_t>(parsed->skipped);
        if (rows == 0 || rows > ombrel::splitNewlines(text).size()) {
            std::abort();
        }
    }
    if (ombrel::TestQuestionImporter::parseCSVLine(text).empty()) {
        std::abort();
    }
    return 0;
}
