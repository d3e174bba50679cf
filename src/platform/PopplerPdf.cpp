#include "platform/PopplerPdf.h"

#include "platform/PopplerPdfProtocol.h"
#include "platform/Process.h"
#include "platform/Text.h"

#include <csignal>
#include <cstdlib>
#include <string_view>
#include <system_error>

namespace ombrel {

namespace {

constexpr const char* helperName = "ombrel-pdf-helper";

std::optional<std::filesystem::path> findHelper() {
    if (const char* const named = std::getenv("OMBREL_PDF_HELPER")) {
        return std::filesystem::path(named);
    }
    std::error_code error;
    const auto folder = std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
    for (const auto& candidate :
         {folder / helperName, folder.parent_path() / "libexec" / "ombrel" / helperName}) {
        if (std::filesystem::exists(candidate, error)) {
            return candidate;
        }
    }
    return std::nullopt;
}

// Takes apart what the helper wrote.
class Frames {
  public:
    explicit Frames(std::string_view bytes) : m_rest(bytes) {}

    bool number(std::size_t length, std::uint64_t& value) {
        std::string_view taken;
        if (!bytes(length, taken)) {
            return false;
        }
        value = 0;
        for (std::size_t i = 0; i < length; ++i) {
            value |= std::uint64_t{static_cast<unsigned char>(taken[i])} << (8 * i);
        }
        return true;
    }
    bool bytes(std::uint64_t length, std::string_view& taken) {
        if (length > m_rest.size()) {
            return false;
        }
        taken = m_rest.substr(0, length);
        m_rest.remove_prefix(length);
        return true;
    }
    bool isAtEnd() const { return m_rest.empty(); }

  private:
    std::string_view m_rest;
};

// Nothing when the helper was cut off in the middle.
std::optional<PdfDocument> decode(std::string_view output) {
    Frames frames(output);
    std::uint64_t count = 0;
    if (!frames.number(8, count) || count > pdf::maximumPages) {
        return std::nullopt;
    }
    PdfDocument document;
    document.pageCount = static_cast<std::int64_t>(count);
    document.pages.reserve(count);
    for (std::uint64_t page = 0; page < count; ++page) {
        std::uint64_t isThere = 0;
        std::uint64_t length = 0;
        std::string_view text;
        if (!frames.number(1, isThere)) {
            return std::nullopt;
        }
        if (isThere == 0) {
            document.pages.emplace_back();
            continue;
        }
        if (!frames.number(4, length) || !frames.bytes(length, text)) {
            return std::nullopt;
        }
        document.pages.emplace_back(repairUtf8(text));
    }
    return frames.isAtEnd() ? std::optional(std::move(document)) : std::nullopt;
}

std::string megabytes(std::uint64_t bytes) {
    return std::to_string(bytes >> 20) + " MB";
}

Result<std::optional<PdfDocument>> outcome(const ProcessOutput& run, const PdfLimits& limits) {
    // The kernel counts the processor's time; the two kinds of time are one to the user.
    if (run.ending == ProcessOutput::Ending::outOfTime || run.exit.signal == SIGXCPU) {
        return failure("Reading the PDF took longer than " + std::to_string(limits.time.count()) +
                       " seconds.");
    }
    if (run.ending == ProcessOutput::Ending::tooMuchOutput) {
        return failure("The PDF holds more than " + megabytes(limits.textBytes) + " of text.");
    }
    if (run.exit.status == pdf::statusOutOfMemory) {
        return failure("Reading the PDF took more than " + megabytes(limits.memoryBytes) +
                       " of memory.");
    }
    if (run.exit.status == pdf::statusTooManyPages) {
        return failure("The PDF has more than " + std::to_string(pdf::maximumPages) + " pages.");
    }
    if (run.exit.succeeded()) {
        return decode(run.output);
    }
    return std::optional<PdfDocument>();
}

} // namespace

PopplerPdf::PopplerPdf(std::shared_ptr<MainExecutor> executor, PdfLimits limits)
    : m_executor(std::move(executor)), m_limits(limits) {}

Task<Result<std::optional<PdfDocument>>> PopplerPdf::read(std::filesystem::path file) {
    const PdfLimits limits = m_limits;
    const std::optional<std::filesystem::path> helper = findHelper();
    if (!helper) {
        co_return failure(std::string("The program \"") + helperName +
                          "\", which reads PDFs, wasn't found.");
    }
    ProcessLaunch launch;
    launch.arguments = {helper->string(), file.string()};
    launch.discardsErrors = true;
    launch.limits.addressSpaceBytes = limits.memoryBytes;
    launch.limits.processorSeconds = static_cast<std::uint64_t>(limits.time.count());
    launch.limits.openFiles = 64;
    launch.limits.fileBytes = 0;
    ProcessBounds bounds;
    bounds.time = limits.time;
    bounds.outputBytes = limits.textBytes;
    const Result<ProcessOutput> run = co_await runToEnd(m_executor, std::move(launch), bounds);
    if (!run) {
        co_return tl::unexpected<Error>(run.error());
    }
    co_return outcome(*run, limits);
}

} // namespace ombrel
