#include "knowledge/DocumentIngestion.h"

#include "knowledge/Chunking.h"
#include "platform/PdfText.h"
#include "platform/Text.h"
#include "platform/TextFile.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <limits>
#include <system_error>
#include <unordered_map>
#include <utility>

namespace ombrel {

namespace {

namespace fs = std::filesystem;
using Ingested = DocumentIngestion::Ingested;

std::string lowercasedExtension(const fs::path& file) {
    const std::string extension = file.extension().string();
    return extension.empty() ? extension : lowercased(std::string_view(extension).substr(1));
}

bool isTakenIn(const fs::path& file) {
    static constexpr std::array<std::string_view, 4> extensions = {"md", "markdown", "txt", "pdf"};
    return std::ranges::find(extensions, lowercasedExtension(file)) != extensions.end();
}

fs::path absoluteNormal(const fs::path& path) {
    std::error_code error;
    fs::path absolute = fs::absolute(path, error);
    if (error) {
        return path.lexically_normal();
    }
    if (std::ranges::find(absolute, fs::path("..")) != absolute.end()) {
        // Where ".." leads behind a link only the file system can tell.
        fs::path resolved = fs::weakly_canonical(absolute, error);
        if (!error) {
            return resolved;
        }
    }
    return absolute.lexically_normal();
}

// A walk through folders that can be told to end.
class Search {
  public:
    explicit Search(const std::function<bool(std::size_t)>& goesOn) : m_goesOn(goesOn) {}

    bool isOver() const { return m_isOver; }
    std::vector<fs::path> files;

    // Entries of a folder sorted by name, hidden ones left out; none when it can't be listed.
    std::vector<fs::directory_entry> visibleEntries(const fs::path& folder) {
        std::vector<fs::directory_entry> entries;
        std::error_code error;
        for (fs::directory_iterator entry(folder, error), end; !error && entry != end && !m_isOver;
             entry.increment(error)) {
            if (entry->path().filename().native().front() != '.') {
                entries.push_back(*entry);
            }
            step();
        }
        std::ranges::sort(entries, [](const fs::directory_entry& a, const fs::directory_entry& b) {
            return a.path().native() < b.path().native();
        });
        return entries;
    }
    // Asks once in many steps, since asking may cost.
    void step() {
        constexpr std::size_t stepsBetween = 256;
        if (m_goesOn && ++m_steps % stepsBetween == 0 && !m_goesOn(files.size())) {
            m_isOver = true;
        }
    }

  private:
    const std::function<bool(std::size_t)>& m_goesOn;
    std::size_t m_steps = 0;
    bool m_isOver = false;
};

std::vector<DocumentChunk> chunkText(std::string_view text, const std::string& name,
                                     const BuildSettings& settings) {
    const std::string_view content = withoutByteOrderMark(text);
    const std::int64_t target = truncated(settings.targetChunkSize);
    const std::int64_t overlap = truncated(settings.overlapPercent);
    switch (settings.chunking) {
    case ChunkingStrategy::fixed:
        return chunkFixed(content, {name}, target, overlap, 0).chunks;
    case ChunkingStrategy::paragraph:
        return chunkParagraphs(content, {name}, target, overlap, 0).chunks;
    case ChunkingStrategy::headingAware:
        break;
    }
    return chunkHeadingAware(content, name, target, overlap);
}

// Chunks of the pages, numbered through; counts the pages without text.
std::vector<DocumentChunk> chunkPages(const PdfDocument& pdf, const std::string& name,
                                      const BuildSettings& settings, std::int64_t& emptyPages) {
    const std::int64_t target = truncated(settings.targetChunkSize);
    const std::int64_t overlap = truncated(settings.overlapPercent);
    std::vector<DocumentChunk> chunks;
    std::int64_t lastIndex = 0;
    for (std::size_t page = 0; page < pdf.pages.size(); ++page) {
        if (!pdf.pages[page]) {
            continue;
        }
        const std::string_view text = trimWhitespacesAndNewlines(*pdf.pages[page]);
        if (text.empty()) {
            ++emptyPages;
            continue;
        }
        const std::vector<std::string> breadcrumb = {name, "Page " + std::to_string(page + 1)};
        Chunked made = settings.chunking == ChunkingStrategy::fixed
                           ? chunkFixed(text, breadcrumb, target, overlap, lastIndex)
                           : chunkParagraphs(text, breadcrumb, target, overlap, lastIndex);
        lastIndex = made.lastIndex;
        std::ranges::move(made.chunks, std::back_inserter(chunks));
    }
    return chunks;
}

Ingested makeIngested(std::string name, SourceType type, std::vector<DocumentChunk> chunks,
                      std::optional<Uuid> existingID) {
    Ingested made;
    made.document.id = existingID ? *existingID : Uuid::random();
    made.document.name = std::move(name);
    made.document.type = type;
    made.document.chunkCount = static_cast<std::int64_t>(chunks.size());
    for (const DocumentChunk& chunk : chunks) {
        made.document.tokenCount += chunk.tokenCount;
    }
    made.chunks = std::move(chunks);
    return made;
}

// What decides whether a chunk's enrichment is still valid.
std::string enrichmentKey(const DocumentChunk& chunk) {
    std::string key = join(chunk.breadcrumb, "\x01");
    key += '\x02';
    key += chunk.text;
    return canonicalKey(key);
}

} // namespace

std::string_view localizedDescription(DocumentIngestion::IngestionError) {
    return "The PDF couldn't be opened \u2014 it may be corrupt or password-protected.";
}

Task<Result<Ingested>> DocumentIngestion::readDocument(Platform platform, fs::path file,
                                                       BuildSettings settings,
                                                       std::optional<Uuid> existingID) {
    const std::string baseName = repairUtf8(file.stem().string());
    const std::string name = repairUtf8(file.filename().string());
    const std::string extension = lowercasedExtension(file);
    const std::int64_t target = truncated(settings.targetChunkSize);

    Ingested made;
    if (extension == "pdf") {
        std::error_code error;
        const fs::file_status found = fs::status(file, error);
        if (fs::exists(found) && !fs::is_regular_file(found)) {
            co_return failure(notARegularFile);
        }
        const Result<std::optional<PdfDocument>> read = co_await platform.pdf->read(file);
        if (!read) {
            co_return failure(read.error().message);
        }
        const std::optional<PdfDocument>& pdf = *read;
        if (!pdf) {
            co_return failure(std::string(localizedDescription(IngestionError::unreadablePDF)));
        }
        std::int64_t emptyPages = 0;
        std::vector<DocumentChunk> chunks = chunkPages(*pdf, baseName, settings, emptyPages);
        const std::int64_t pages = std::max<std::int64_t>(pdf->pageCount, 1);
        const SourceStatus pdfStatus = status(chunks, target, emptyPages, pages);
        made = makeIngested(name, SourceType::pdf, std::move(chunks), existingID);
        made.document.pageCount = pdf->pageCount;
        made.document.status = pdfStatus;
    } else {
        const Result<std::string> text = readTextFile(file);
        if (!text) {
            co_return failure(text.error().message);
        }
        const SourceType type = extension == "txt" ? SourceType::text : SourceType::markdown;
        made = makeIngested(name, type, chunkText(*text, baseName, settings), existingID);
        made.document.status = status(made.chunks, target, 0, 1);
    }
    made.document.fileURL = std::move(file);
    co_return made;
}

Ingested DocumentIngestion::readPastedText(std::string_view title, const std::string& text,
                                           const BuildSettings& settings,
                                           std::optional<Uuid> existingID) {
    std::string name(trimWhitespacesAndNewlines(title));
    if (name.empty()) {
        name = "Pasted text";
    }
    std::vector<DocumentChunk> chunks = chunkText(text, name, settings);
    Ingested made = makeIngested(std::move(name), SourceType::text, std::move(chunks), existingID);
    made.document.status = status(made.chunks, truncated(settings.targetChunkSize), 0, 1);
    made.document.pastedText = text;
    return made;
}

SourceStatus DocumentIngestion::status(const std::vector<DocumentChunk>& chunks,
                                       std::int64_t target, std::int64_t emptyPages,
                                       std::int64_t pages) {
    constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max() / 2;
    const std::int64_t limit = 2 * std::clamp(target, -largest, largest);
    const std::int64_t oversized = std::ranges::count_if(
        chunks, [&](const DocumentChunk& chunk) { return chunk.tokenCount > limit; });
    if (oversized > 0) {
        return {SourceStatus::Oversized{oversized}};
    }
    if (emptyPages > 0) {
        return {SourceStatus::EmptyPage{emptyPages}};
    }
    if (chunks.empty()) {
        return {SourceStatus::EmptyPage{pages}};
    }
    return {SourceStatus::Ready{}};
}

std::vector<fs::path> discoverFiles(const fs::path& url) {
    return discoverFiles(url, {});
}

std::vector<fs::path> discoverFiles(const fs::path& url,
                                    const std::function<bool(std::size_t found)>& goesOn) {
    const fs::path root = absoluteNormal(url);
    std::error_code error;
    const fs::file_status found = fs::status(root, error);
    if (!fs::exists(found)) {
        return {};
    }
    Search search(goesOn);
    if (!fs::is_directory(found)) {
        if (isTakenIn(root)) {
            search.files.push_back(root);
        }
        return std::move(search.files);
    }
    // What is still to be looked at, the next one last.
    std::vector<fs::directory_entry> pending = search.visibleEntries(root);
    std::ranges::reverse(pending);
    while (!pending.empty() && !search.isOver()) {
        const fs::directory_entry entry = std::move(pending.back());
        pending.pop_back();
        if (entry.is_directory(error)) {
            if (!entry.is_symlink(error)) {
                std::vector<fs::directory_entry> inside = search.visibleEntries(entry.path());
                std::ranges::reverse(inside);
                std::ranges::move(inside, std::back_inserter(pending));
            }
        } else if (isTakenIn(entry.path())) {
            search.files.push_back(entry.path());
        }
        search.step();
    }
    if (search.isOver()) {
        return {};
    }
    return std::move(search.files);
}

std::vector<DocumentChunk> carryOverEnrichment(std::vector<DocumentChunk> newChunks,
                                               const std::vector<DocumentChunk>& oldChunks) {
    if (oldChunks.empty()) {
        return newChunks;
    }
    std::unordered_map<std::string, const DocumentChunk*> old;
    for (const DocumentChunk& chunk : oldChunks) {
        old[enrichmentKey(chunk)] = &chunk;
    }
    for (DocumentChunk& chunk : newChunks) {
        const auto same = old.find(enrichmentKey(chunk));
        if (same != old.end()) {
            chunk.contextualNote = same->second->contextualNote;
            chunk.generatedQuestions = same->second->generatedQuestions;
            chunk.embedding = same->second->embedding;
        }
    }
    return newChunks;
}

} // namespace ombrel
