#pragma once

#include "core/AppState.h"
#include "core/Record.h"
#include "export/ExportAlert.h"
#include "export/PackageForm.h"
#include "platform/Result.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// What the user is told about the package before it is written, of the current index with the
// settings in force. Only having no chunks at all blocks an export. Main thread.
namespace ombrel {

inline constexpr std::string_view exportTitle = "Export";
inline constexpr std::string_view exportIntroduction =
    "Generates a standalone Swift package containing your chunks and a working search/answer API. "
    "Add it to your app as a local package dependency.";
inline constexpr std::string_view exportSummaryKind = "Swift package";
inline constexpr std::string_view checklistTitle = "Before you export";
inline constexpr std::string_view destinationTitle = "DESTINATION";
inline constexpr std::string_view exportButton = "Export Package";
inline constexpr std::string_view previewTitle = "Generated API";
inline constexpr std::string_view previewNote = "real code \u2014 written on export";
inline constexpr std::string_view usageIntroduction =
    "A real, standalone package \u2014 add it in Xcode with File \u25b8 Add Package Dependencies "
    "\u25b8 Add Local, then:";

// The recall from which on the evaluation passes.
inline constexpr double recallBaseline = 0.8;

enum class ChecklistRowState { ok, warning, info };

constexpr auto rawValues(ChecklistRowState) {
    using enum ChecklistRowState;
    return std::array{RawValue<ChecklistRowState>{ok, "ok"},
                      RawValue<ChecklistRowState>{warning, "warning"},
                      RawValue<ChecklistRowState>{info, "info"}};
}

struct ChecklistRow {
    std::string title;
    ChecklistRowState state = ChecklistRowState::info;
    std::string detail;
    bool operator==(const ChecklistRow&) const = default;
};
std::vector<ChecklistRow> exportChecklist(const AppState& state);

// "12 chunks".
std::string exportSummary(const AppState& state);
// The bytes of all chunks' texts in millions.
double indexedContentMB(const AppState& state);
// Over the sources, as they say it themselves.
std::int64_t totalChunkCount(const AppState& state);
// Whether the index kind uses vectors and not every chunk has one.
bool needsEmbeddings(const AppState& state);

// Why nothing can be exported; nothing when it can.
std::optional<std::string> exportBlockedText(const AppState& state);

// A file of the package to be, below the package's folder.
struct PreviewFile {
    std::string path;
    std::optional<std::string> size; // "0.25 MB", of the chunks' text
    bool operator==(const PreviewFile&) const = default;
};
std::vector<PreviewFile> previewFiles(const AppState& state);
// Code that uses the package, as an example.
std::string usageText(const AppState& state);

// What the export screen holds; it is not saved.
struct ExportScreen {
    std::optional<std::filesystem::path> destinationURL;
    bool isChoosingDestination = false;
    bool isCompact = false;
    std::optional<ExportAlert> exportAlert;
};
// The folder's path, or that there is none.
std::string destinationText(const ExportScreen& screen);
// What pressing the button starts: writes the package into the destination. It holds all that it
// needs, so it may be called once on any thread, and outlives screen and state. Empty, for nothing
// is to be done, without a destination or chunks.
using ExportWork = std::function<Result<std::filesystem::path>()>;
ExportWork exportWork(const ExportScreen& screen, const AppState& state);
// Tells how it went.
void endExport(ExportScreen& screen, const Result<std::filesystem::path>& package);
// Both, at once.
void pressExport(ExportScreen& screen, const AppState& state);

} // namespace ombrel
