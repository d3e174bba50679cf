#pragma once

#include "core/AppState.h"
#include "core/TestQuestion.h"
#include "platform/Result.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ombrel {

// Reads test questions from lines of "question,breadcrumb". Any thread.
struct TestQuestionImporter {
    struct Parsed {
        std::vector<TestQuestion> questions;
        std::int64_t skipped = 0; // lines that are no question with a breadcrumb
    };

    // Fails when the file can't be read as UTF-8 or has no rows at all.
    static Result<Parsed> parse(const std::filesystem::path& file);
    // The same of the text of a file.
    static Result<Parsed> parseText(std::string_view text);

    // The columns of one row. A quote stands anywhere in a field; two in a quoted run are one.
    static std::vector<std::string> parseCSVLine(std::string_view line);
};

// How many questions an import added and how many lines it passed over.
struct ImportCounts {
    std::int64_t imported = 0;
    std::int64_t skipped = 0;
    bool operator==(const ImportCounts&) const = default;
};

// Adds the questions of a file to the current index as one undoable change. Nothing, and the
// failure is the `importError` of the index, when it can't be read. Main thread.
std::optional<ImportCounts> importTestCases(AppState& state, const std::filesystem::path& file);

} // namespace ombrel
