#include "cli/FlowReports.h"

#include "cli/FieldArgument.h"
#include "cli/FlowDrawing.h"
#include "cli/Terminal.h"
#include "core/JsonEncoder.h"
#include "flows/FlowValidator.h"
#include "flows/RunHighlight.h"
#include "platform/Text.h"

#include <algorithm>
#include <array>

namespace ombrel {

namespace {

constexpr std::size_t longestCell = 60; // characters

struct FlowRow {
    Uuid id;
    std::string name;
    FlowKind kind = FlowKind::singleShot;
    std::int64_t nodes = 0;
    std::int64_t edges = 0;
    std::int64_t errors = 0;
    std::int64_t warnings = 0;

    static constexpr auto keys() {
        return std::tuple(required("id", &FlowRow::id), required("name", &FlowRow::name),
                          required("kind", &FlowRow::kind), required("nodes", &FlowRow::nodes),
                          required("edges", &FlowRow::edges), required("errors", &FlowRow::errors),
                          required("warnings", &FlowRow::warnings));
    }
};

std::int64_t countOf(const std::vector<FlowIssue>& issues, FlowIssue::Severity severity) {
    return std::ranges::count(issues, severity, &FlowIssue::severity);
}

std::string kindName(const FlowNode& node) {
    static constexpr std::array<const char*, 5> names{"Start", "Agent", "Branch", "Tool", "End"};
    static_assert(names.size() == std::variant_size_v<decltype(FlowNodeKind::value)>);
    return names[node.kind.value.index()];
}

std::string detail(const FlowNode& node) {
    if (const auto* branch = std::get_if<FlowNodeKind::Branch>(&node.kind.value)) {
        return std::string(rawValue(branch->operation)) +
               (branch->value.empty() ? "" : " " + branch->value);
    }
    if (const auto* end = std::get_if<FlowNodeKind::End>(&node.kind.value)) {
        return end->carriesOutput ? "carries the output" : "";
    }
    return "";
}

std::string fieldsText(const std::vector<AgentProperty>& fields) {
    std::vector<std::string> texts;
    for (const AgentProperty& field : fields) {
        texts.push_back(field.name + ":" + fieldTypeText(field.kind) +
                        (field.isOptional ? "?" : ""));
    }
    return texts.empty() ? "none" : join(texts, ", ");
}

std::string cell(const std::optional<std::string>& text) {
    return text ? oneLine(*text, longestCell) : "";
}

} // namespace

HighlightReport::HighlightReport(const FlowRunHighlight& highlight)
    : flowID(highlight.flowID), banner(bannerText(highlight)),
      visitedNodeIDs(highlight.visitedNodeIDs),
      visitedEdgeIDs(highlight.visitedEdgeIDs.begin(), highlight.visitedEdgeIDs.end()),
      lastEdgeID(highlight.lastEdgeID), activeNodeID(highlight.activeNodeID),
      failedNodeID(highlight.failedNodeID), currentNodeID(highlight.currentNodeID),
      pendingPort(highlight.pendingPort), isLive(highlight.isLive), succeeded(highlight.succeeded) {
    for (const auto& [id, value] : highlight.values) {
        values.emplace(id.text(), value);
    }
}

std::string highlightText(const AppState& state, const FlowRunHighlight& highlight) {
    std::vector<std::vector<std::string>> rows;
    const auto add = [&](const FlowNode& node) {
        const auto found = highlight.values.find(node.id);
        const FlowNodeRunValue value =
            found == highlight.values.end() ? FlowNodeRunValue() : found->second;
        const auto nodeState = ombrel::state(highlight, node.id);
        const bool isFailed = nodeState == FlowRunHighlight::NodeState::failed;
        rows.push_back({value.step > 0 ? std::to_string(value.step) : "", kindName(node),
                        nodeName(state, node), cell(value.input), cell(value.output),
                        cell(value.retrieval), isFailed ? "failed" : ""});
        if (value.error) {
            rows.back().back() = "failed: " + cell(value.error);
        }
    };
    for (const Uuid& id : highlight.visitedNodeIDs) {
        const auto place = highlight.places.find(id);
        if (place != highlight.places.end() && place->second.node) {
            add(highlight.nodes[*place->second.node]);
        }
    }
    return bannerText(highlight) + "\n\n" +
           (rows.empty()
                ? ""
                : table({"STEP", "KIND", "NODE", "INPUT", "OUTPUT", "RETRIEVED", ""}, rows));
}

void printFlows(const AppState& state, const Invocation& invocation) {
    std::vector<FlowRow> list;
    for (const Flow& flow : *state.flows) {
        const auto issues = FlowValidator::validate(flow, *state.agents, *state.tools);
        list.push_back({flow.id, flow.name, flow.kind, static_cast<std::int64_t>(flow.nodes.size()),
                        static_cast<std::int64_t>(flow.edges.size()),
                        countOf(issues, FlowIssue::Severity::error),
                        countOf(issues, FlowIssue::Severity::warning)});
    }
    if (invocation.json) {
        invocation.printJson(encodeJson(list));
        return;
    }
    std::vector<std::vector<std::string>> rows;
    for (const FlowRow& row : list) {
        rows.push_back({row.name, std::string(rawValue(row.kind)), std::to_string(row.nodes),
                        std::to_string(row.edges), std::to_string(row.errors),
                        std::to_string(row.warnings), row.id.text()});
    }
    invocation.print(table({"FLOW", "KIND", "NODES", "EDGES", "ERRORS", "WARNINGS", "ID"}, rows));
}

void printFlow(const AppState& state, Uuid flowID, const Invocation& invocation) {
    const Flow& flow = *state.flow(flowID);
    if (invocation.json) {
        invocation.printJson(encodeJson(flow));
        return;
    }
    std::vector<std::vector<std::string>> nodes;
    for (const FlowNode& node : flow.nodes) {
        nodes.push_back({kindName(node), nodeName(state, node), detail(node), node.id.text()});
    }
    std::vector<std::vector<std::string>> edges;
    for (const FlowEdge& edge : flow.edges) {
        const FlowNode* from = flow.node(edge.fromNodeID);
        const FlowNode* to = flow.node(edge.toNodeID);
        edges.push_back({from ? portName(state, *from, edge.fromPort) : edge.fromNodeID.text(),
                         to ? nodeName(state, *to) : edge.toNodeID.text()});
    }
    invocation.print(
        flow.name + " · " + std::string(rawValue(flow.kind)) + " · at most " +
        counted(static_cast<std::size_t>(std::max<std::int64_t>(flow.maxHops, 0)), "agent") +
        "\nInput: " + fieldsText(flow.startInput) + "\nContext: " + fieldsText(flow.contextFields) +
        "\n\n" + table({"NODE", "NAME", "", "ID"}, nodes) + "\n" + table({"FROM", "TO"}, edges));
    const auto issues = flowIssues(state, flowID);
    if (!issues.empty()) {
        invocation.note("\n" + counted(issues.size(), "issue") +
                        ": `ombrel flow PROJECT validate` tells what is wrong.");
    }
}

void printIssues(const AppState& state, const Flow& flow, const std::vector<FlowIssue>& issues,
                 const Invocation& invocation) {
    if (invocation.json) {
        invocation.printJson(encodeJson(issues));
        return;
    }
    if (issues.empty()) {
        invocation.print("No issues.\n");
        return;
    }
    std::vector<std::vector<std::string>> rows;
    for (const FlowIssue& issue : issues) {
        const FlowNode* node = flow.node(issue.nodeID);
        rows.push_back({std::string(rawValue(issue.severity)), issue.message,
                        node ? kindName(*node) + " " + nodeName(state, *node) : "",
                        issue.nodeID ? issue.nodeID->text() : ""});
    }
    invocation.print(table({"SEVERITY", "ISSUE", "NODE", "ID"}, rows));
}

} // namespace ombrel
