#include "flows/FlowValidator.h"

#include "flows/FlowGraph.h"

#include <algorithm>
#include <cstdlib>
#include <locale.h>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace ombrel {

namespace {

using Place = FlowGraph::Place;
using Severity = FlowIssue::Severity;

std::string inQuotes(const std::string& text) {
    return '"' + text + '"';
}

// Whether the whole text is a floating-point literal as `strtod` reads it in the C locale, without
// white space in front.
bool isNumberText(const std::string& text) {
    static const locale_t cLocale = newlocale(LC_ALL_MASK, "C", nullptr);
    if (text.empty() || std::string_view(" \t\n\v\f\r").find(text.front()) != std::string::npos) {
        return false;
    }
    char* end = nullptr;
    strtod_l(text.c_str(), &end, cLocale);
    return end == text.data() + text.size();
}

template <class Kind>
bool holds(const FlowNode& node) {
    return std::holds_alternative<Kind>(node.kind.value);
}

template <class Entry>
std::unordered_map<Uuid, const Entry*> byID(const std::vector<Entry>& list) {
    std::unordered_map<Uuid, const Entry*> entries;
    entries.reserve(list.size());
    for (const Entry& entry : list) {
        entries.emplace(entry.id, &entry);
    }
    return entries;
}

// What keeps a condition on a field of this kind from being judged; nothing when it can be.
struct ConditionProblem {
    const std::string& field;
    WireBranchOperator operation;
    const std::string& value;

    using Problem = std::optional<std::string>;
    using Operator = WireBranchOperator;

    Problem unless(bool isAllowed, const char* rest) const {
        return isAllowed ? std::nullopt : Problem(inQuotes(field) + rest);
    }
    Problem ofNumber() const {
        switch (operation) {
        case Operator::equals:
            return std::nullopt;
        case Operator::contains:
            return inQuotes(field) + " is a number — contains doesn't apply.";
        case Operator::isEmpty:
            return inQuotes(field) + " is a number — is empty doesn't apply.";
        default:
            return isNumberText(value) ? std::nullopt
                                       : Problem(inQuotes(value) + " isn't a number.");
        }
    }

    Problem operator()(const PropertyKind::String&) const {
        return unless(operation != Operator::greaterThan && operation != Operator::lessThan,
                      " is text — numeric comparisons don't apply.");
    }
    Problem operator()(const PropertyKind::Int&) const { return ofNumber(); }
    Problem operator()(const PropertyKind::Double&) const { return ofNumber(); }
    Problem operator()(const PropertyKind::Bool&) const {
        return unless(operation == Operator::equals, " is a yes/no value — only \"=\" applies.");
    }
    Problem operator()(const PropertyKind::Enumeration&) const {
        return unless(operation == Operator::equals, " is an enum — only \"=\" applies.");
    }
    Problem operator()(const PropertyKind::Array&) const {
        return unless(operation == Operator::isEmpty, " is a list — only \"is empty\" applies.");
    }
    Problem operator()(const PropertyKind::Object&) const {
        return unless(false, " is itself an object — pick one of its properties instead.");
    }
};

std::optional<std::string> conditionProblem(const FlowNodeKind::Branch& branch,
                                            const AgentOutputKind& upstream) {
    const auto* object = std::get_if<AgentOutputKind::Object>(&upstream.value);
    if (!object) {
        return "Branch field " + inQuotes(branch.field) +
               " isn't available here — the preceding agent doesn't return an object.";
    }
    const auto property = std::ranges::find(object->properties, branch.field, &AgentProperty::name);
    if (property == object->properties.end()) {
        return "Branch field " + inQuotes(branch.field) +
               " doesn't exist on the preceding agent's output.";
    }
    return std::visit(ConditionProblem{branch.field, branch.operation, branch.value},
                      property->kind.value);
}

// One validation.
class Validation {
  public:
    Validation(const Flow& flow, const std::vector<Agent>& agents,
               const std::vector<ToolDefinition>& tools)
        : m_flow(flow), m_graph(flow), m_agents(byID(agents)), m_tools(byID(tools)) {}

    std::vector<FlowIssue> issues() {
        checkStarts();
        checkReachability();
        checkIncomingConnections();
        for (std::size_t i = 0; i < m_flow.nodes.size(); ++i) {
            const FlowNode& node = m_flow.nodes[i];
            std::visit([&](const auto& kind) { check(node, m_graph.placeOfNode(i), kind); },
                       node.kind.value);
        }
        checkEndNames();
        checkFinish();
        return std::move(m_issues);
    }

  private:
    void report(Severity severity, std::string message, std::optional<Uuid> nodeID) {
        m_issues.push_back({Uuid::random(), severity, std::move(message), nodeID});
    }
    void error(const FlowNode& node, std::string message) {
        report(Severity::error, std::move(message), node.id);
    }

    const Agent* agentOf(const FlowNode& node) const {
        const auto* reference = std::get_if<FlowNodeKind::Agent>(&node.kind.value);
        const auto found = reference ? m_agents.find(reference->agentID) : m_agents.end();
        return found == m_agents.end() ? nullptr : found->second;
    }

    std::string label(const FlowNode* node) const {
        if (!node) {
            return "This node";
        }
        if (holds<FlowNodeKind::Agent>(*node)) {
            const Agent* agent = agentOf(*node);
            return agent ? inQuotes(agent->name) : "This agent node";
        }
        if (holds<FlowNodeKind::Branch>(*node)) {
            return "This branch";
        }
        if (holds<FlowNodeKind::Tool>(*node)) {
            return "This tool node";
        }
        if (const auto* end = std::get_if<FlowNodeKind::End>(&node->kind.value)) {
            return "End (." + end->caseName + ")";
        }
        return "Start";
    }

    // The agent whose output reaches the place: the nearest one up the first incoming connections,
    // through tools and branches. Null when there is none, as in a loop without an agent.
    const Agent* upstreamAgent(Place place) {
        if (m_upstream.empty()) {
            m_upstream.resize(m_graph.placeCount());
        }
        std::vector<Place> walked; // all of them get the answer
        const Agent* agent = nullptr;
        while (!m_upstream[place]) {
            m_upstream[place] = nullptr; // what a loop comes to
            walked.push_back(place);
            place = m_graph.firstSource(place);
            const FlowNode* node = place == FlowGraph::nowhere ? nullptr : m_graph.node(place);
            if (!node) {
                break;
            }
            if (holds<FlowNodeKind::Agent>(*node)) {
                agent = agentOf(*node);
                break;
            }
            if (!holds<FlowNodeKind::Tool>(*node) && !holds<FlowNodeKind::Branch>(*node)) {
                break;
            }
            agent = m_upstream[place].value_or(nullptr);
        }
        if (walked.empty()) {
            return *m_upstream[place];
        }
        for (const Place passed : walked) {
            m_upstream[passed] = agent;
        }
        return agent;
    }

    void checkStarts() {
        bool isFirst = true;
        for (const FlowNode& node : m_flow.nodes) {
            if (!holds<FlowNodeKind::Start>(node)) {
                continue;
            }
            if (!isFirst) {
                error(node, "A flow can only have one Start node.");
            }
            isFirst = false;
        }
        if (isFirst) {
            report(Severity::error, "This flow has no Start node.", std::nullopt);
        }
    }

    void checkReachability() {
        m_isReachable.resize(m_graph.placeCount());
        if (m_graph.start() != FlowGraph::nowhere) {
            std::vector<Place> work{m_graph.start()};
            m_isReachable[m_graph.start()] = true;
            while (!work.empty()) {
                const Place place = work.back();
                work.pop_back();
                for (const FlowGraph::Arrow& arrow : m_graph.outgoing(place)) {
                    if (!m_isReachable[arrow.to]) {
                        m_isReachable[arrow.to] = true;
                        work.push_back(arrow.to);
                    }
                }
            }
        }
        for (std::size_t i = 0; i < m_flow.nodes.size(); ++i) {
            const FlowNode& node = m_flow.nodes[i];
            if (!holds<FlowNodeKind::Start>(node) && !m_isReachable[m_graph.placeOfNode(i)]) {
                report(Severity::warning, label(&node) + " isn't reachable from Start.", node.id);
            }
        }
    }

    // In the order of the edges that lead to the nodes first.
    void checkIncomingConnections() {
        std::vector<bool> isReported(m_graph.placeCount());
        for (std::size_t i = 0; i < m_flow.edges.size(); ++i) {
            const Place place = m_graph.target(i);
            if (m_graph.incomingCount(place) > 1 && !isReported[place]) {
                isReported[place] = true;
                report(Severity::error,
                       label(m_graph.node(place)) +
                           " has more than one incoming connection — not supported yet.",
                       m_flow.edges[i].toNodeID);
            }
        }
    }

    void check(const FlowNode& node, Place place, const FlowNodeKind::Start&) {
        if (m_graph.outgoing(place).empty()) {
            error(node, "Start isn't connected to anything.");
        }
    }

    void check(const FlowNode& node, Place place, const FlowNodeKind::End&) {
        if (!m_graph.outgoing(place).empty()) {
            error(node, "End can't have outgoing connections.");
        }
    }

    void check(const FlowNode& node, Place place, const FlowNodeKind::Tool& tool) {
        if (!m_tools.contains(tool.toolID)) {
            error(node, "This node references a deleted tool.");
        } else if (m_graph.outgoing(place).empty()) {
            error(node, "This tool node needs a connection to continue the flow.");
        } else if (m_graph.outgoing(place).size() > 1) {
            error(node, "A tool node has a single output — only one connection is allowed.");
        }
    }

    void check(const FlowNode& node, Place place, const FlowNodeKind::Agent&) {
        const Agent* agent = agentOf(node);
        if (!agent) {
            error(node, "This node references a deleted agent.");
        } else if (agent->output.kind() == AgentOutputKind::Kind::enumeration) {
            return; // a case that is not connected finishes the flow
        } else if (m_graph.outgoing(place).empty()) {
            error(node, inQuotes(agent->name) + " needs a connection to continue the flow.");
        } else if (m_graph.outgoing(place).size() > 1) {
            error(node,
                  inQuotes(agent->name) + " has a single output — only one connection is allowed.");
        }
    }

    void check(const FlowNode& node, Place place, const FlowNodeKind::Branch& branch) {
        for (const char* outcome : {"true", "false"}) {
            const bool isConnected =
                std::ranges::any_of(m_graph.outgoing(place), [&](const FlowGraph::Arrow& arrow) {
                    return arrow.edge->fromPort == outcome;
                });
            if (!isConnected) {
                error(node, "Branch's " + inQuotes(outcome) + " outcome has no connection.");
            }
        }
        const Agent* upstream = upstreamAgent(place);
        if (!upstream) {
            error(node, "Branch has nothing upstream to read " + inQuotes(branch.field) + " from.");
        } else if (auto problem = conditionProblem(branch, upstream->output)) {
            error(node, std::move(*problem));
        }
    }

    // In the order of the nodes.
    void checkEndNames() {
        std::unordered_map<std::string_view, const Agent*> firstAgents; // by the End's case name
        for (std::size_t i = 0; i < m_flow.nodes.size(); ++i) {
            const auto* end = std::get_if<FlowNodeKind::End>(&m_flow.nodes[i].kind.value);
            const Place place = m_graph.placeOfNode(i);
            if (!end || !end->carriesOutput || !m_isReachable[place]) {
                continue;
            }
            const Agent* agent = upstreamAgent(place);
            if (!agent || agent->output.kind() == AgentOutputKind::Kind::text) {
                continue;
            }
            const Agent* first = firstAgents.emplace(end->caseName, agent).first->second;
            if (first->id != agent->id) {
                error(m_flow.nodes[i], "Two End nodes both named \"." + end->caseName +
                                           "\" carry different agents' output (" +
                                           inQuotes(first->name) + " and " + inQuotes(agent->name) +
                                           ") — rename one of the End nodes.");
            }
        }
    }

    bool hasUnconnectedCase(const AgentOutputKind::Enumeration& output, Place place) const {
        std::unordered_set<std::string_view> ports;
        for (const FlowGraph::Arrow& arrow : m_graph.outgoing(place)) {
            if (arrow.edge->fromPort) {
                ports.insert(*arrow.edge->fromPort);
            }
        }
        return std::ranges::any_of(output.cases, [&](const AgentEnumCase& oneCase) {
            return !ports.contains(oneCase.name);
        });
    }

    bool canFinish() const {
        for (std::size_t i = 0; i < m_flow.nodes.size(); ++i) {
            const FlowNode& node = m_flow.nodes[i];
            const Place place = m_graph.placeOfNode(i);
            if (!m_isReachable[place]) {
                continue;
            }
            if (holds<FlowNodeKind::End>(node)) {
                return true;
            }
            const Agent* agent = agentOf(node);
            const auto* output =
                agent ? std::get_if<AgentOutputKind::Enumeration>(&agent->output.value) : nullptr;
            if (output && hasUnconnectedCase(*output, place)) {
                return true;
            }
        }
        return false;
    }

    void checkFinish() {
        if (m_graph.start() != FlowGraph::nowhere && !canFinish()) {
            report(Severity::warning,
                   "No End node is reachable from Start — this flow can never finish.",
                   std::nullopt);
        }
    }

    const Flow& m_flow;
    FlowGraph m_graph;
    std::unordered_map<Uuid, const Agent*> m_agents;
    std::unordered_map<Uuid, const ToolDefinition*> m_tools;
    std::vector<bool> m_isReachable;                     // by place
    std::vector<std::optional<const Agent*>> m_upstream; // by place; none: not looked for yet
    std::vector<FlowIssue> m_issues;
};

} // namespace

std::vector<FlowIssue> FlowValidator::validate(const Flow& flow, const std::vector<Agent>& agents,
                                               const std::vector<ToolDefinition>& tools) {
    return Validation(flow, agents, tools).issues();
}

std::vector<FlowIssue> flowIssues(const AppState& state, Uuid flowID) {
    const Flow* flow = state.flow(flowID);
    return flow ? FlowValidator::validate(*flow, *state.agents, *state.tools)
                : std::vector<FlowIssue>();
}

bool canRunFlow(const AppState& state, Uuid flowID) {
    return state.flow(flowID) &&
           std::ranges::none_of(flowIssues(state, flowID), [](const FlowIssue& issue) {
               return issue.severity == Severity::error;
           });
}

} // namespace ombrel
