#pragma once

#include "platform/MainExecutor.h"
#include "platform/PdfText.h"

#include <chrono>
#include <cstdint>
#include <memory>

namespace ombrel {

// What reading one PDF may take.
struct PdfLimits {
    std::chrono::seconds time{60};
    std::uint64_t memoryBytes = std::uint64_t{1} << 30;
    std::uint64_t textBytes = std::uint64_t{64} << 20;
};

// PDF text by Poppler, in a process of its own for each file, so that the worst that a file can do
// is fail its own import: it takes at most a minute, a gibibyte of memory, 64 MiB of text and
// 100,000 pages. A file at which the process crashes cannot be opened.
//
// A page's text comes in reading order with the columns of a page one after the other, and a blank
// line between the blocks that stand apart on the page, as `pdftotext` gives it without options.
// Chunking by paragraphs lives on those blank lines: the order of the file's own content stream has
// none of them, and the physical layout fills tables and columns with runs of blanks.
class PopplerPdf final : public PdfText {
  public:
    // The helper `ombrel-pdf-helper` is the file named by OMBREL_PDF_HELPER, or stands beside the
    // running executable, or in ../libexec/ombrel from there. Looked for at each reading.
    explicit PopplerPdf(std::shared_ptr<MainExecutor> executor, PdfLimits limits = {});

    Task<Result<std::optional<PdfDocument>>> read(std::filesystem::path file) override;

  private:
    std::shared_ptr<MainExecutor> m_executor;
    PdfLimits m_limits;
};

} // namespace ombrel
