#pragma once

#include "core/BuildSettings.h"
#include "core/DocumentChunk.h"
#include "core/SourceDocument.h"
#include "platform/Platform.h"
#include "platform/Result.h"
#include "platform/Task.h"
#include "platform/Uuid.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ombrel {

// Reads one document and cuts it into chunks. Touches no workspace.
struct DocumentIngestion {
    struct Ingested {
        SourceDocument document;
        std::vector<DocumentChunk> chunks;
    };
    enum class IngestionError { unreadablePDF };

    // Reads a file that `discoverFiles` gave, under `settings.chunking`, `targetChunkSize` and
    // `overlapPercent`. The document keeps `existingID`, or gets a new id. Text must be UTF-8; a
    // byte order mark at its start is no part of it. Fails with the sentence that says why the
    // file can't be taken in. Suspends while a PDF is read. Main thread.
    static Task<Result<Ingested>> readDocument(Platform platform, std::filesystem::path file,
                                               BuildSettings settings,
                                               std::optional<Uuid> existingID);

    // The document that a pasted text makes. A blank title becomes "Pasted text".
    static Ingested readPastedText(std::string_view title, const std::string& text,
                                   const BuildSettings& settings, std::optional<Uuid> existingID);

    // How a document came out: oversized chunks outrank empty pages. A chunk is oversized when it
    // has more than twice `target` tokens. `emptyPages` and `pages` count a PDF's pages; other
    // documents have 0 and 1.
    static SourceStatus status(const std::vector<DocumentChunk>& chunks, std::int64_t target,
                               std::int64_t emptyPages, std::int64_t pages);
};

// What the user reads of the error.
std::string_view localizedDescription(DocumentIngestion::IngestionError error);

// The files at a path that can be taken in ("md", "markdown", "txt" and "pdf", in any case): the
// file itself, or those in the folder and the folders in it, sorted by name within each folder.
// Hidden files and folders are skipped, and links to folders are not followed. Absolute paths
// without "." and "..". Never fails: what does not exist or can't be listed gives nothing.
std::vector<std::filesystem::path> discoverFiles(const std::filesystem::path& url);
// The same while `goesOn` says so, which is asked now and then with how many were found so far;
// nothing when it ended the search. Any thread.
std::vector<std::filesystem::path>
discoverFiles(const std::filesystem::path& url,
              const std::function<bool(std::size_t found)>& goesOn);

// The new chunks, each with the note, questions and embedding of the last old chunk that has the
// same breadcrumb and text.
std::vector<DocumentChunk> carryOverEnrichment(std::vector<DocumentChunk> newChunks,
                                               const std::vector<DocumentChunk>& oldChunks);

} // namespace ombrel
