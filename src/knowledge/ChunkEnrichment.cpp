#include "knowledge/ChunkEnrichment.h"

#include "platform/Text.h"

#include <utility>

namespace ombrel {

namespace {

// The answer of a new session, or nothing when there is none.
Task<std::optional<std::string>> answerOf(std::shared_ptr<OnDeviceModel> model,
                                          std::string instructions, std::string prompt) {
    if (!model->availability().isAvailable()) {
        co_return std::nullopt;
    }
    const std::shared_ptr<LanguageModelSession> session =
        model->makeSession(std::move(instructions));
    Result<std::string> answer = co_await session->respond(std::move(prompt));
    std::optional<std::string> content;
    if (answer) {
        content = std::move(*answer);
    }
    co_return content;
}

} // namespace

Task<std::optional<std::string>> contextualNote(std::shared_ptr<OnDeviceModel> model,
                                                DocumentChunk chunk, std::string documentName) {
    std::string instructions =
        "Given a passage from a larger document, write one short sentence (max 20 words) "
        "describing what this specific passage is about and where it sits in the document. Reply "
        "with only that sentence, no preamble or quotation marks.";
    std::string prompt = "Document: " + documentName +
                         "\nSection: " + breadcrumbText(chunk.breadcrumb) + "\nPassage:\n" +
                         chunk.text;
    const std::optional<std::string> answer =
        co_await answerOf(std::move(model), std::move(instructions), std::move(prompt));
    std::optional<std::string> note;
    if (answer) {
        const std::string_view trimmed = trimWhitespacesAndNewlines(*answer);
        if (!trimmed.empty()) {
            note = std::string(trimmed);
        }
    }
    co_return note;
}

Task<std::vector<std::string>> generateQuestions(std::shared_ptr<OnDeviceModel> model,
                                                 DocumentChunk chunk, std::int64_t count) {
    std::string instructions =
        "Given a passage, write up to " + std::to_string(count) +
        " short, natural questions that the passage directly answers, each on its own line. Reply "
        "with only the questions, no numbering, no preamble.";
    std::string prompt = "Passage:\n" + chunk.text;
    const std::optional<std::string> answer =
        co_await answerOf(std::move(model), std::move(instructions), std::move(prompt));
    std::vector<std::string> questions;
    if (answer) {
        for (const std::string_view line : splitNewlines(*answer)) {
            const std::string_view question = trimWhitespaces(line);
            if (!question.empty() && static_cast<std::int64_t>(questions.size()) < count) {
                questions.emplace_back(question);
            }
        }
    }
    co_return questions;
}

} // namespace ombrel
