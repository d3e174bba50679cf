#include "cli/Session.h"
#include "core/JsonEncoder.h"
#include "knowledge/Build.h"
#include "knowledge/Ingestion.h"
#include "platform/Text.h"

#include <chrono>
#include <iterator>
#include <tuple>

namespace ombrel {

namespace {

struct SourceRow {
    Uuid id;
    std::string name;
    SourceType type = SourceType::text;
    std::optional<std::int64_t> pageCount;
    std::int64_t chunkCount = 0;
    std::int64_t tokenCount = 0;
    SourceStatus status;
    std::optional<std::string> fileURL;
    std::optional<SharedText> pastedText;

    static constexpr auto keys() {
        return std::tuple(
            required("id", &SourceRow::id), required("name", &SourceRow::name),
            required("type", &SourceRow::type), optional("pageCount", &SourceRow::pageCount),
            required("chunkCount", &SourceRow::chunkCount),
            required("tokenCount", &SourceRow::tokenCount), required("status", &SourceRow::status),
            optional("fileURL", &SourceRow::fileURL),
            optional("pastedText", &SourceRow::pastedText));
    }
};

struct SourceList {
    std::vector<SourceRow> sources;
    std::optional<Uuid> selectedSourceID;
    std::optional<std::string> importError;

    static constexpr auto keys() {
        return std::tuple(required("sources", &SourceList::sources),
                          optional("selectedSourceID", &SourceList::selectedSourceID),
                          optional("importError", &SourceList::importError));
    }
};

struct BuildReport {
    Project project;
    std::int64_t sources = 0;
    std::int64_t chunks = 0;
    std::int64_t chunksWithNote = 0;
    std::int64_t chunksWithQuestions = 0;
    std::int64_t chunksWithParent = 0;
    std::int64_t chunksWithEmbedding = 0;
    double seconds = 0;
    std::optional<std::string> importError;

    static constexpr auto keys() {
        return std::tuple(required("project", &BuildReport::project),
                          required("sources", &BuildReport::sources),
                          required("chunks", &BuildReport::chunks),
                          required("chunksWithNote", &BuildReport::chunksWithNote),
                          required("chunksWithQuestions", &BuildReport::chunksWithQuestions),
                          required("chunksWithParent", &BuildReport::chunksWithParent),
                          required("chunksWithEmbedding", &BuildReport::chunksWithEmbedding),
                          required("seconds", &BuildReport::seconds),
                          optional("importError", &BuildReport::importError));
    }
};

struct ChunkRow {
    std::int64_t index = 0;
    std::vector<std::string> breadcrumb;
    std::int64_t tokenCount = 0;
    std::string text;

    static constexpr auto keys() {
        return std::tuple(
            required("index", &ChunkRow::index), required("breadcrumb", &ChunkRow::breadcrumb),
            required("tokenCount", &ChunkRow::tokenCount), required("text", &ChunkRow::text));
    }
};

struct ChunkedDocument {
    std::string name;
    SourceStatus status;
    std::vector<ChunkRow> chunks;

    static constexpr auto keys() {
        return std::tuple(required("name", &ChunkedDocument::name),
                          required("status", &ChunkedDocument::status),
                          required("chunks", &ChunkedDocument::chunks));
    }
};

struct ChunkedDocuments {
    std::vector<ChunkedDocument> documents;

    static constexpr auto keys() {
        return std::tuple(required("documents", &ChunkedDocuments::documents));
    }
};

SourceList sourceList(const RAGIndex& index) {
    SourceList list;
    list.selectedSourceID = index.selectedSourceID;
    list.importError = index.importError;
    for (const SourceDocument& source : index.sources) {
        std::optional<std::string> fileURL;
        if (source.fileURL) {
            fileURL = source.fileURL->string();
        }
        list.sources.push_back({source.id, source.name, source.type, source.pageCount,
                                source.chunkCount, source.tokenCount, source.status, fileURL,
                                source.pastedText});
    }
    return list;
}

void printSources(const RAGIndex& index, const Invocation& invocation) {
    if (invocation.json) {
        invocation.printJson(encodeJson(sourceList(index)));
        return;
    }
    if (index.sources.empty()) {
        invocation.print("No sources imported yet.\n");
        return;
    }
    std::vector<std::vector<std::string>> rows;
    for (const SourceDocument& source : index.sources) {
        std::string type(rawValue(source.type));
        if (source.pageCount) {
            type += " " + std::to_string(*source.pageCount) + " pp";
        }
        rows.push_back({source.name, type, std::to_string(source.chunkCount),
                        std::to_string(source.tokenCount), source.status.label()});
    }
    invocation.print(table({"DOCUMENT", "TYPE", "CHUNKS", "TOKENS", "STATUS"}, rows));
}

// The source with the name or id; a failure when there is none, or several of that name.
Uuid findSource(const RAGIndex& index, const std::string& nameOrID) {
    const std::optional<Uuid> id = Uuid::parse(nameOrID);
    std::vector<Uuid> found;
    for (const SourceDocument& source : index.sources) {
        if (id == source.id) {
            return source.id;
        }
        if (canonicallyEqual(source.name, nameOrID)) {
            found.push_back(source.id);
        }
    }
    if (found.empty()) {
        throw Failure{"There is no source named “" + nameOrID + "” in “" + index.name +
                      "”. `ombrel show` lists the sources."};
    }
    if (found.size() > 1) {
        std::string message = "Several sources are named “" + nameOrID + "”. Use an id:";
        for (const Uuid& candidate : found) {
            message += "\n  " + candidate.text();
        }
        throw Failure{message};
    }
    return found.front();
}

std::vector<std::filesystem::path> absolutePaths(const std::vector<std::string>& arguments) {
    std::vector<std::filesystem::path> paths;
    for (const std::string& argument : arguments) {
        std::error_code error;
        const std::filesystem::path path = std::filesystem::absolute(argument, error);
        if (error || !std::filesystem::exists(path, error)) {
            throw Failure{"There is nothing at “" + argument + "”."};
        }
        paths.push_back(path.lexically_normal());
    }
    return paths;
}

Task<void> readAll(Platform platform, std::vector<std::filesystem::path> files,
                   BuildSettings settings, ChunkedDocuments& result,
                   std::vector<std::string>& errors) {
    for (const std::filesystem::path& file : files) {
        const auto ingested =
            co_await DocumentIngestion::readDocument(platform, file, settings, std::nullopt);
        if (!ingested) {
            errors.push_back("Couldn't read " + file.filename().string() + ": " +
                             ingested.error().message);
            continue;
        }
        ChunkedDocument document{ingested->document.name, ingested->document.status, {}};
        for (const DocumentChunk& chunk : ingested->chunks) {
            document.chunks.push_back(
                {chunk.index, chunk.breadcrumb, chunk.tokenCount, chunk.text});
        }
        result.documents.push_back(std::move(document));
    }
}

void addChunkCommand(CLI::App& app, Invocation& invocation) {
    struct Options {
        std::vector<std::string> files;
        ChunkingStrategy strategy = ChunkingStrategy::headingAware;
        std::int64_t target = 400;
        std::int64_t overlap = 10;
    };
    const auto options = std::make_shared<Options>();
    auto* chunk =
        addCommand(app, "chunk", "Show how files would be cut into chunks",
                   "ombrel chunk README.md --strategy paragraph --target 200", invocation);
    chunk->add_option("FILE", options->files, "Markdown, text or PDF files, or folders of them")
        ->required();
    const std::map<std::string, ChunkingStrategy> strategies{
        {"fixed", ChunkingStrategy::fixed},
        {"paragraph", ChunkingStrategy::paragraph},
        {"heading-aware", ChunkingStrategy::headingAware}};
    chunk->add_option("--strategy", options->strategy, "fixed, paragraph or heading-aware")
        ->transform(CLI::CheckedTransformer(strategies, CLI::ignore_case));
    chunk->add_option("--target", options->target, "Target size of a chunk in tokens")
        ->check(CLI::Range(std::int64_t{1}, std::int64_t{1'000'000}));
    chunk->add_option("--overlap", options->overlap, "Overlap of neighbouring chunks in per cent")
        ->check(CLI::Range(std::int64_t{0}, std::int64_t{100}));
    chunk->callback([options, &invocation] {
        std::vector<std::filesystem::path> files;
        for (const std::filesystem::path& path : absolutePaths(options->files)) {
            const auto found = discoverFiles(path);
            if (found.empty()) {
                throw Failure{
                    "“" + path.filename().string() +
                    "” holds no Markdown, text or PDF file (.md, .markdown, .txt, .pdf)."};
            }
            files.insert(files.end(), found.begin(), found.end());
        }
        BuildSettings settings;
        settings.chunking = options->strategy;
        settings.targetChunkSize = static_cast<double>(options->target);
        settings.overlapPercent = static_cast<double>(options->overlap);
        Runtime runtime;
        ChunkedDocuments result;
        std::vector<std::string> errors;
        if (!runtime.run(readAll(runtime.platform(), files, settings, result, errors))) {
            throw Failure{"Stopped."};
        }
        if (invocation.json) {
            invocation.printJson(encodeJson(result));
        } else {
            for (const ChunkedDocument& document : result.documents) {
                std::vector<std::vector<std::string>> rows;
                for (const ChunkRow& row : document.chunks) {
                    rows.push_back({std::to_string(row.index), std::to_string(row.tokenCount),
                                    breadcrumbText(row.breadcrumb), oneLine(row.text, 60)});
                }
                invocation.print(document.name + ": " + counted(rows.size(), "chunk") + ", " +
                                 document.status.label() + "\n" +
                                 table({"#", "TOKENS", "BREADCRUMB", "TEXT"}, rows) + "\n");
            }
        }
        if (!errors.empty()) {
            throw Failure{errors.back()};
        }
    });
}

BuildReport buildReport(const AppState& state, double seconds) {
    BuildReport report;
    report.project = *state.project;
    report.seconds = seconds;
    report.importError = state.currentIndex().importError;
    for (const IndexedDocument& pair : state.indexedChunks()) {
        ++report.sources;
        for (const DocumentChunk& chunk : pair.chunks) {
            ++report.chunks;
            report.chunksWithNote += chunk.contextualNote.has_value();
            report.chunksWithQuestions += chunk.generatedQuestions.has_value();
            report.chunksWithParent += chunk.parentText.has_value();
            report.chunksWithEmbedding += chunk.embedding.has_value();
        }
    }
    return report;
}

void addBuildCommand(CLI::App& app, Invocation& invocation) {
    const auto project = std::make_shared<std::string>();
    auto* build = addCommand(app, "build",
                             "Read all sources again and bring notes, questions and "
                             "embeddings up to date",
                             "ombrel build handbook.ombrel", invocation);
    addProjectArgument(*build, *project, invocation);
    build->callback([project, &invocation] {
        Session session(*project, invocation);
        const auto start = std::chrono::steady_clock::now();
        session.run(rescanAll(session.state()));
        const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
        session.save();
        const BuildReport report = buildReport(*session, elapsed.count());
        if (invocation.json) {
            invocation.printJson(encodeJson(report));
        } else {
            char seconds[32];
            std::snprintf(seconds, sizeof seconds, "%.1f s", report.seconds);
            invocation.print(report.project.lastBuiltDescription + " in " + seconds + ": " +
                             std::to_string(report.chunks) + " chunks of " +
                             std::to_string(report.sources) + " sources, " +
                             std::to_string(report.chunksWithNote) + " with a note, " +
                             std::to_string(report.chunksWithQuestions) + " with questions, " +
                             std::to_string(report.chunksWithEmbedding) + " with an embedding\n");
        }
        session.throwImportError();
    });
}

} // namespace

void addSourceCommands(CLI::App& app, Invocation& invocation) {
    struct Options {
        std::string project;
        std::vector<std::string> paths;
        std::string title;
        std::string source;
    };
    const auto options = std::make_shared<Options>();

    addChunkCommand(app, invocation);

    auto* import = addCommand(app, "import", "Read files and folders into a project",
                              "ombrel import handbook.ombrel docs/ notes.txt", invocation);
    addProjectArgument(*import, options->project, invocation);
    import->add_option("PATH", options->paths, "Markdown, text and PDF files, or folders")
        ->required();
    import->callback([options, &invocation] {
        const auto paths = absolutePaths(options->paths);
        Session session(options->project, invocation);
        const std::size_t before = session->currentIndex().sources.size();
        session.run(importFiles(session.state(), paths));
        session.save();
        printSources(session->currentIndex(), invocation);
        session.throwImportError();
        if (before == 0 && session->currentIndex().sources.empty()) {
            throw Failure{"No Markdown, text or PDF file was found "
                          "(.md, .markdown, .txt, .pdf)."};
        }
    });

    auto* paste = addCommand(app, "paste", "Add the text of standard input as a source",
                             "cat rules.txt | ombrel paste handbook.ombrel --title \"House rules\"",
                             invocation);
    addProjectArgument(*paste, options->project, invocation);
    paste->add_option("--title", options->title, "The title of the text")->required();
    paste->callback([options, &invocation] {
        std::string text{std::istreambuf_iterator<char>(std::cin), {}};
        if (!isValidUtf8(text)) {
            throw Failure{"Standard input isn't valid UTF-8 text."};
        }
        Session session(options->project, invocation);
        session.run(addPastedText(session.state(), std::nullopt, options->title, text, false));
        session.save();
        printSources(session->currentIndex(), invocation);
    });

    auto* remove = addCommand(app, "remove", "Remove a source and its chunks",
                              "ombrel remove handbook.ombrel notes.txt", invocation);
    addProjectArgument(*remove, options->project, invocation);
    remove->add_option("SOURCE", options->source, "The source's name or id")->required();
    remove->callback([options, &invocation] {
        Session session(options->project, invocation);
        removeSource(*session, findSource(session->currentIndex(), options->source));
        session.save();
        printSources(session->currentIndex(), invocation);
    });

    auto* rescan = addCommand(app, "rescan", "Read all sources again from their files",
                              "ombrel rescan handbook.ombrel", invocation);
    addProjectArgument(*rescan, options->project, invocation);
    rescan->callback([options, &invocation] {
        Session session(options->project, invocation);
        session.run(rescanAll(session.state()));
        session.save();
        printSources(session->currentIndex(), invocation);
        session.throwImportError();
    });

    addBuildCommand(app, invocation);
}

} // namespace ombrel
