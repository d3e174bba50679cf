#pragma once

#include "core/Agent.h"
#include "core/Flow.h"
#include "core/RAGIndex.h"
#include "core/ToolDefinition.h"
#include "flows/ExportOutcome.h"
#include "flows/ToolChain.h"
#include "platform/MainExecutor.h"
#include "platform/Task.h"

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace ombrel {

// One Swift package of all flows of a project: written by ExportCLI, the tool of OmbrelStudioCore.
struct FlowExport {
    std::filesystem::path destination; // the folder that gets the package's folder
    std::string name;                  // of the package
    std::vector<Flow> flows;
    std::vector<Agent> agents;
    std::vector<ToolDefinition> tools;
    std::vector<RAGIndex> ragIndexes;

    // The package's name for a project: its letters, marks and numbers. "My RAG 2!" gives "MyRAG2",
    // "2024 notes" gives "P2024notes" and "!!!" gives "OmbrelProject".
    static std::string packageName(std::string_view projectName);
};

// Exports the flows that have no errors and names the others in the message. Every failure is in
// the outcome. Runs of flows may go on meanwhile. Destroying the task kills what it started.
Task<ExportOutcome> exportFlows(std::shared_ptr<MainExecutor> executor, FlowExport what,
                                std::shared_ptr<ToolChain> toolChain = ToolChain::ofThisProcess());

// The title of the alert that shows the outcome, and what the export's button says.
inline constexpr const char* exportSucceededTitle = "Export Succeeded";
inline constexpr const char* exportFailedTitle = "Export Failed";
inline constexpr const char* exportFlowsHelp =
    "Export every flow in this project to one Swift Package (E1/E2)";

} // namespace ombrel
