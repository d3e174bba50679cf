#pragma once

#include "platform/Result.h"
#include "platform/Task.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace ombrel {

struct PdfDocument {
    std::int64_t pageCount = 0;
    // One entry a page: its text, or nothing where the page cannot be read.
    std::vector<std::optional<std::string>> pages;
};

// Reads the text of PDF files. Main thread; suspends while a file is read.
class PdfText {
  public:
    virtual ~PdfText() = default;
    // Nothing when the file cannot be opened as a PDF (missing, malformed, encrypted). A file that
    // asks for more time or memory than one document may have is an error that says so.
    virtual Task<Result<std::optional<PdfDocument>>> read(std::filesystem::path file) = 0;
};

} // namespace ombrel
