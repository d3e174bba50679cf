#include "evaluation/TestQuestionImporter.h"

#include "evaluation/Breadcrumb.h"
#include "evaluation/TestQuestions.h"
#include "platform/Text.h"
#include "platform/TextFile.h"

#include <iterator>
#include <utility>

namespace ombrel {

namespace {

bool isHeader(const std::vector<std::string>& columns) {
    return columns.size() >= 2 && lowercased(columns[0]).find("question") != std::string::npos;
}

// The question of a row, or nothing when it is to be passed over.
std::optional<TestQuestion> questionOf(const std::vector<std::string>& columns) {
    if (columns.size() < 2) {
        return std::nullopt;
    }
    std::string question(trimWhitespacesAndNewlines(columns[0]));
    std::vector<std::string> expected;
    for (const std::string_view piece : breadcrumbPieces(columns[1])) {
        const std::string_view part = trimWhitespacesAndNewlines(piece);
        if (!part.empty()) {
            expected.emplace_back(part);
        }
    }
    if (question.empty() || expected.empty()) {
        return std::nullopt;
    }
    return newTestQuestion(std::move(question), std::move(expected), false);
}

} // namespace

Result<TestQuestionImporter::Parsed>
TestQuestionImporter::parse(const std::filesystem::path& file) {
    const Result<std::string> text = readTextFile(file);
    if (!text) {
        return tl::unexpected<Error>(text.error());
    }
    return parseText(*text);
}

Result<TestQuestionImporter::Parsed> TestQuestionImporter::parseText(std::string_view text) {
    Parsed parsed;
    bool isFirst = true;
    LineCursor lines(withoutByteOrderMark(text));
    while (const std::optional<std::string_view> piece = lines.next()) {
        const std::string_view line = trimBlanksAndTabs(*piece);
        if (line.empty()) {
            continue;
        }
        const std::vector<std::string> columns = parseCSVLine(line);
        const bool isSkippedHeader = isFirst && isHeader(columns);
        isFirst = false;
        if (isSkippedHeader) {
            continue;
        }
        if (std::optional<TestQuestion> question = questionOf(columns)) {
            parsed.questions.push_back(std::move(*question));
        } else {
            ++parsed.skipped;
        }
    }
    if (parsed.questions.empty() && parsed.skipped == 0) {
        return failure("The file didn't contain any question,breadcrumb rows.");
    }
    return parsed;
}

std::vector<std::string> TestQuestionImporter::parseCSVLine(std::string_view line) {
    std::vector<std::string> columns;
    std::string current;
    bool inQuotes = false;
    CharacterCursor cursor(line);
    std::string_view character = cursor.next();
    while (!character.empty()) {
        const std::string_view following = cursor.next();
        if (inQuotes && character == "\"" && following == "\"") {
            current += '"';
            character = cursor.next();
            continue;
        }
        if (character == "\"") {
            inQuotes = !inQuotes;
        } else if (!inQuotes && character == ",") {
            columns.push_back(std::exchange(current, {}));
        } else {
            current += character;
        }
        character = following;
    }
    columns.push_back(std::move(current));
    return columns;
}

std::optional<ImportCounts> importTestCases(AppState& state, const std::filesystem::path& file) {
    Result<TestQuestionImporter::Parsed> parsed = TestQuestionImporter::parse(file);
    if (!parsed) {
        state.editCurrentIndex()->importError = "Couldn't import test cases from " +
                                                repairUtf8(file.filename().string()) + ": " +
                                                parsed.error().message;
        return std::nullopt;
    }
    const ImportCounts counts{static_cast<std::int64_t>(parsed->questions.size()), parsed->skipped};
    std::ranges::move(parsed->questions,
                      std::back_inserter(state.editCurrentIndex()->testQuestions));
    state.scheduleCheckpoint();
    return counts;
}

} // namespace ombrel
