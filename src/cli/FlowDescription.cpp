#include "cli/FlowDescription.h"

#include "cli/Command.h"
#include "cli/FieldArgument.h"
#include "cli/FlowDrawing.h"
#include "core/JsonDecoder.h"
#include "flows/FlowLayout.h"
#include "platform/Text.h"

#include <algorithm>
#include <optional>
#include <vector>

namespace ombrel {

namespace {

struct BranchDescription {
    std::string field;
    WireBranchOperator operation = WireBranchOperator::equals;
    std::string value;

    static constexpr auto keys() {
        return std::tuple(required("field", &BranchDescription::field),
                          defaulted("operator", &BranchDescription::operation),
                          defaulted("value", &BranchDescription::value));
    }
};

struct NodeDescription {
    std::optional<std::string> agent;
    std::optional<std::string> tool;
    std::optional<BranchDescription> branch;
    std::optional<std::string> end;
    std::optional<bool> carriesOutput;
    std::optional<std::string> name;
    std::optional<CanvasPoint> position;

    static constexpr auto keys() {
        return std::tuple(
            optional("agent", &NodeDescription::agent), optional("tool", &NodeDescription::tool),
            optional("branch", &NodeDescription::branch), optional("end", &NodeDescription::end),
            optional("carriesOutput", &NodeDescription::carriesOutput),
            optional("name", &NodeDescription::name),
            optional("position", &NodeDescription::position));
    }
};

struct EdgeDescription {
    std::string from;
    std::string to;

    static constexpr auto elements() {
        return std::tuple(&EdgeDescription::from, &EdgeDescription::to);
    }
};

struct FlowDescription {
    std::optional<std::string> name;
    FlowKind kind = FlowKind::singleShot;
    std::int64_t maxHops = Flow().maxHops;
    std::int64_t maxHistoryTokens = Flow().maxHistoryTokens;
    std::optional<std::vector<std::string>> startInput;
    std::vector<std::string> contextFields;
    std::vector<NodeDescription> nodes;
    std::vector<EdgeDescription> edges;

    static constexpr auto keys() {
        using D = FlowDescription;
        return std::tuple(
            optional("name", &D::name), defaulted("kind", &D::kind),
            defaulted("maxHops", &D::maxHops), defaulted("maxHistoryTokens", &D::maxHistoryTokens),
            optional("startInput", &D::startInput), defaulted("contextFields", &D::contextFields),
            defaulted("nodes", &D::nodes), defaulted("edges", &D::edges));
    }
};

[[noreturn]] void refuse(const std::string& what) {
    throw Failure{"The description of the flow: " + what};
}

// What tells the two forms of text apart.
struct Identified {
    std::optional<std::string> id;
    static constexpr auto keys() { return std::tuple(optional("id", &Identified::id)); }
};

template <class T>
T decoded(JsonReader& reader, bool refusesUnknownKeys) {
    Decoder<JsonReader> decoder(reader);
    T value{};
    if (!decoder.decodeWhole(reader.top(), value)) {
        refuse(decoder.error().text());
    }
    if (refusesUnknownKeys && decoder.unknownKeys().count > 0) {
        refuse("there is nothing called “" + decoder.unknownKeys().paths.front() + "”.");
    }
    return value;
}

FlowNodeKind kindOf(const FlowDrawing& drawing, const NodeDescription& node, std::size_t index) {
    const std::string place = "nodes[" + std::to_string(index) + "]: ";
    const int kinds = node.agent.has_value() + node.tool.has_value() + node.branch.has_value() +
                      node.end.has_value();
    if (kinds != 1) {
        refuse(place + "expected one of the keys \"agent\", \"tool\", \"branch\" and \"end\"");
    }
    if (node.carriesOutput && !node.end) {
        refuse(place + "only an end has \"carriesOutput\"");
    }
    if (node.agent) {
        return drawing.agentNode(*node.agent);
    }
    if (node.tool) {
        return drawing.toolNode(*node.tool);
    }
    if (node.branch) {
        return {
            FlowNodeKind::Branch{node.branch->field, node.branch->operation, node.branch->value}};
    }
    return {FlowNodeKind::End{*node.end, node.carriesOutput.value_or(true)}};
}

Flow described(const AppState& state, const FlowDescription& description) {
    Flow flow(description.name.value_or(""));
    flow.kind = description.kind;
    flow.maxHops = description.maxHops;
    flow.maxHistoryTokens = description.maxHistoryTokens;
    if (description.startInput) {
        flow.startInput = parseFields(*description.startInput);
    }
    flow.contextFields = parseFields(description.contextFields);

    FlowDrawing drawing(state, std::move(flow));
    std::map<Uuid, CanvasPoint> positions;
    for (std::size_t i = 0; i < description.nodes.size(); ++i) {
        const NodeDescription& node = description.nodes[i];
        const Uuid id = drawing.add(kindOf(drawing, node, i), node.name);
        if (node.position) {
            positions[id] = *node.position;
        }
    }
    std::vector<FlowEdge> edges;
    for (const EdgeDescription& edge : description.edges) {
        const auto [from, port] = drawing.findOrAddPort(edge.from);
        const Uuid to = drawing.findOrAdd(edge.to);
        const bool isTaken = std::ranges::any_of(edges, [&](const FlowEdge& other) {
            return other.fromNodeID == from && other.fromPort == port;
        });
        if (isTaken) {
            refuse("“" + edge.from + "” is connected twice.");
        }
        edges.push_back({Uuid::random(), from, port, to});
    }

    flow = drawing.flow();
    flow.edges = std::move(edges);
    const std::vector<CanvasPoint> layout = flowLayout(flow);
    for (std::size_t i = 0; i < flow.nodes.size(); ++i) {
        const auto given = positions.find(flow.nodes[i].id);
        flow.nodes[i].position = given == positions.end() ? layout[i] : given->second;
    }
    return flow;
}

} // namespace

Flow readFlowDescription(const AppState& state, std::string_view json) {
    auto reader = JsonReader::open(json);
    if (!reader) {
        refuse(reader.error().message);
    }
    if (!decoded<Identified>(*reader, false).id) {
        return described(state, decoded<FlowDescription>(*reader, true));
    }
    return decoded<Flow>(*reader, false);
}

} // namespace ombrel
