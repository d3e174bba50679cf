#include "export/ExportReadiness.h"

#include "export/PackageGenerator.h"
#include "export/PackageName.h"
#include "platform/FixedPoint.h"

#include <algorithm>

namespace ombrel {

namespace {

IndexKind indexKind(const AppState& state) {
    return state.currentIndex().currentSettings().index;
}

ChecklistRow sourcesRow(const AppState& state) {
    return {"Sources", ChecklistRowState::info,
            std::to_string(state.currentIndex().sources.size()) + " documents, " +
                std::to_string(totalChunkCount(state)) + " chunks imported"};
}

ChecklistRow evaluationRow(const AppState& state) {
    const std::optional<double> recall = state.currentVariant().recallAt5;
    return {"Evaluation passes baseline",
            recall && *recall >= recallBaseline ? ChecklistRowState::ok
                                                : ChecklistRowState::warning,
            recall ? "Recall@5 " + fixedPoint(*recall, 2) + " (target \u2265 0.80)"
                   : "Not evaluated yet \u2014 run Evaluation first"};
}

ChecklistRow warningsRow(const AppState& state) {
    const auto warned =
        std::ranges::count_if(state.currentIndex().sources, [](const SourceDocument& source) {
            return !std::holds_alternative<SourceStatus::Ready>(source.status.value);
        });
    return {"Warnings reviewed", warned == 0 ? ChecklistRowState::ok : ChecklistRowState::warning,
            std::to_string(warned) + " source(s) have warnings"};
}

std::string indexDetail(const AppState& state) {
    const IndexKind kind = indexKind(state);
    switch (kind) {
    case IndexKind::spotlight:
        return "Spotlight isn't implemented yet \u2014 export falls back to Keyword BM25";
    case IndexKind::keyword:
        return "Keyword \u2014 has real chunk content";
    case IndexKind::vector:
    case IndexKind::hybrid:
        break;
    }
    return std::string(rawValue(kind)) +
           (needsEmbeddings(state)
                ? " needs embeddings for the current chunks \u2014 click Build first, or the "
                  "export ships empty vectors"
                : " \u2014 exported package includes real embeddings");
}

std::string_view ranking(IndexKind kind) {
    switch (kind) {
    case IndexKind::vector:
        return "cosine similarity";
    case IndexKind::hybrid:
        return "Reciprocal Rank Fusion (keyword + vector)";
    case IndexKind::spotlight:
    case IndexKind::keyword:
        break;
    }
    return "BM25 relevance";
}

} // namespace

std::vector<ChecklistRow> exportChecklist(const AppState& state) {
    return {sourcesRow(state),
            evaluationRow(state),
            warningsRow(state),
            {"Index", needsEmbeddings(state) ? ChecklistRowState::warning : ChecklistRowState::ok,
             indexDetail(state)}};
}

std::string exportSummary(const AppState& state) {
    return std::to_string(chunkCount(state.indexedChunks())) + " chunks";
}

double indexedContentMB(const AppState& state) {
    std::size_t bytes = 0;
    for (const IndexedDocument& entry : state.indexedChunks()) {
        for (const DocumentChunk& chunk : entry.chunks) {
            bytes += chunk.text.size();
        }
    }
    return static_cast<double>(bytes) / 1'000'000;
}

std::int64_t totalChunkCount(const AppState& state) {
    std::int64_t count = 0;
    for (const SourceDocument& source : state.currentIndex().sources) {
        count += source.chunkCount;
    }
    return count;
}

bool needsEmbeddings(const AppState& state) {
    const IndexKind kind = indexKind(state);
    return (kind == IndexKind::vector || kind == IndexKind::hybrid) &&
           !state.hasEmbeddingsForAllChunks();
}

std::optional<std::string> exportBlockedText(const AppState& state) {
    return firstChunk(state.indexedChunks())
               ? std::nullopt
               : std::optional<std::string>("No chunks to export yet \u2014 add sources first.");
}

std::vector<PreviewFile> previewFiles(const AppState& state) {
    const std::string name = packageName(state.project->name);
    const std::string sources = "Sources/" + name + "/";
    return {{"Package.swift", {}},
            {sources + name + ".swift", {}},
            {sources + "KeywordIndex.swift", {}},
            {sources + "VectorIndex.swift", {}},
            {sources + "Chunks.swift", fixedPoint(indexedContentMB(state), 2) + " MB"}};
}

std::string usageText(const AppState& state) {
    const std::string name = packageName(state.project->name);
    std::string text = "import " + name + "\n\n// Full chunks ranked by ";
    text += ranking(indexKind(state));
    text += "\nlet chunks = " + name + ".search(\"How do I get started?\")\n\n";
    text += "// Or pack the chunks and ask the on-device model\n";
    text += "let answer = await " + name + ".answer(\"How do I get started?\")";
    return text;
}

std::string destinationText(const ExportScreen& screen) {
    return screen.destinationURL ? screen.destinationURL->string() : "No folder chosen";
}

ExportWork exportWork(const ExportScreen& screen, const AppState& state) {
    if (!screen.destinationURL || exportBlockedText(state)) {
        return {};
    }
    return [name = packageName(state.project->name),
            settings = state.currentIndex().currentSettings(), pairs = state.indexedChunks(),
            destination = *screen.destinationURL, languages = state.platform().languages,
            form = screen.isCompact ? PackageForm::compact : PackageForm::arrayLiteral] {
        return generatePackage(name, settings, pairs, destination, *languages, form);
    };
}

void endExport(ExportScreen& screen, const Result<std::filesystem::path>& package) {
    if (package) {
        screen.exportAlert = {ExportAlert::Success{*package}};
    } else {
        screen.exportAlert = {ExportAlert::Failure{package.error().message}};
    }
}

void pressExport(ExportScreen& screen, const AppState& state) {
    if (const ExportWork work = exportWork(screen, state)) {
        endExport(screen, work());
    }
}

} // namespace ombrel
