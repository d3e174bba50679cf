#pragma once

#include "platform/PdfText.h"
#include "tests/support/Gate.h"
#include "tests/support/TestExecutor.h"

#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace ombrel::test {

// Gives the pages that the test set for a path; a path without any cannot be opened.
class ScriptedPdf : public PdfText {
  public:
    explicit ScriptedPdf(std::shared_ptr<TestExecutor> executor) : gate(std::move(executor)) {}

    void setPages(const std::filesystem::path& file,
                  std::vector<std::optional<std::string>> pages) {
        PdfDocument document;
        document.pageCount = static_cast<std::int64_t>(pages.size());
        document.pages = std::move(pages);
        documents[file] = std::move(document);
    }

    std::map<std::filesystem::path, PdfDocument> documents;
    std::map<std::filesystem::path, std::string> errors; // reading fails with the message
    std::vector<std::filesystem::path> reads;
    Gate gate; // every call passes it

    Task<Result<std::optional<PdfDocument>>> read(std::filesystem::path file) override {
        reads.push_back(file);
        co_await gate.pass();
        if (const auto error = errors.find(file); error != errors.end()) {
            co_return failure(error->second);
        }
        std::optional<PdfDocument> result;
        if (const auto document = documents.find(file); document != documents.end()) {
            result = document->second;
        }
        co_return result;
    }
};

} // namespace ombrel::test
