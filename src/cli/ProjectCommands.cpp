#include "cli/ArgumentText.h"
#include "cli/Session.h"
#include "core/JsonEncoder.h"

namespace ombrel {

namespace {

std::string dateText(const std::optional<Date>& date) {
    if (!date) {
        return "–";
    }
    const auto seconds =
        static_cast<std::time_t>(date->secondsSinceReference + referenceDateSince1970);
    std::tm local{};
    localtime_r(&seconds, &local);
    char text[32];
    return std::string(text, std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &local));
}

std::string summary(const PersistedProject& project) {
    std::string text = project.project.name + "\n";
    text += "  " + project.project.lastBuiltDescription;
    if (project.project.lastBuildFinishedAt) {
        text += ", " + dateText(project.project.lastBuildFinishedAt);
    }
    text += "\n\n";
    for (const PersistedRAGIndex& index : project.ragIndexes) {
        const bool selected = index.id == project.selectedRAGIndexID;
        std::size_t chunks = 0;
        std::size_t embedded = 0;
        std::size_t noted = 0;
        for (const auto& [document, array] : index.chunksByDocument) {
            chunks += array.size();
            for (const DocumentChunk& chunk : array) {
                embedded += chunk.embedding.has_value();
                noted += chunk.contextualNote.has_value();
            }
        }
        text += "RAG index “" + index.name + "”" + (selected ? " (selected)" : "") + "\n";
        text += "  " + counted(index.sources.size(), "source") + ", " + counted(chunks, "chunk") +
                ", " + std::to_string(embedded) + " with an embedding, " + std::to_string(noted) +
                " with a note\n";
        for (const Variant& variant : index.variants) {
            text += "  Variant " + variant.summaryLabel() +
                    (variant.id == index.selectedVariantID ? " (selected)" : "") + "\n";
        }
        text += "  " + counted(index.testQuestions.size(), "test question") + "\n";
        if (!index.sources.empty()) {
            std::vector<std::vector<std::string>> rows;
            for (const PersistedSourceDocument& source : index.sources) {
                rows.push_back({source.name, std::string(rawValue(source.type)),
                                std::to_string(source.chunkCount),
                                std::to_string(source.tokenCount), source.status.label()});
            }
            text += "\n" + table({"DOCUMENT", "TYPE", "CHUNKS", "TOKENS", "STATUS"}, rows);
        }
        text += "\n";
    }
    text += counted(project.agents.size(), "agent") + ", " + counted(project.tools.size(), "tool") +
            ", " + counted(project.flows.size(), "flow") + "\n";
    return text;
}

void create(const std::string& path, const PersistedProject& project, Overwrite overwrite) {
    const auto written = ProjectDocument::create(path, project, overwrite);
    if (!written) {
        throw Failure{path + ": " + written.error().message};
    }
}

} // namespace

void addProjectCommands(CLI::App& app, Invocation& invocation) {
    struct Options {
        std::string project;
        std::string name;
        std::string input;
        bool force = false;
    };
    const auto options = std::make_shared<Options>();

    auto* make = addCommand(app, "new", "Make a new project file",
                            "ombrel new handbook.ombrel --name \"Handbook\"", invocation);
    make->add_option("PROJECT", options->project, "The file to make")->required();
    make->add_option("--name", options->name, "The project's name");
    make->callback([options, &invocation] {
        Runtime runtime;
        const auto state = AppState::make(runtime.platform());
        if (!options->name.empty()) {
            state->project.edit()->name = options->name;
        }
        const PersistedProject project = state->makeSnapshot();
        create(options->project, project, Overwrite::onlyKnown);
        if (invocation.json) {
            invocation.printJson(encodeJson(project));
        } else {
            invocation.print("Made “" + project.project.name + "” in " + options->project + "\n");
        }
    });

    auto* show =
        addCommand(app, "show", "Show what is in a project",
                   "ombrel show handbook.ombrel --json | jq '.ragIndexes[0].sources'", invocation);
    show->add_option("PROJECT", options->project, "The project file")->required();
    show->callback([options, &invocation] {
        const auto opened = ProjectDocument::open(options->project);
        if (!opened) {
            throw Failure{options->project + ": " + opened.error().message};
        }
        if (invocation.json) {
            invocation.printJson(encodeJson(opened->snapshot));
        } else {
            invocation.print(summary(opened->snapshot));
        }
    });

    auto* pack = addCommand(app, "pack", "Make a project file from the JSON that `show` prints",
                            "ombrel pack handbook.json -o handbook.ombrel", invocation);
    pack->add_option("JSON", options->input, "The JSON file, or - for standard input")->required();
    pack->add_option("-o,--output", options->project, "The project file to make")->required();
    pack->add_flag("--force", options->force, "Replace the file if there is one");
    pack->callback([options, &invocation] {
        const auto project = readSnapshotJson(readAll(options->input));
        if (!project) {
            throw Failure{options->input + ": " + project.error().message};
        }
        create(options->project, project->snapshot,
               options->force ? Overwrite::anything : Overwrite::onlyKnown);
        if (project->leftBehind.any()) {
            invocation.note(project->leftBehind.description());
        }
        if (!invocation.json) {
            invocation.print("Packed “" + project->snapshot.project.name + "” into " +
                             options->project + "\n");
        }
    });
}

} // namespace ombrel
