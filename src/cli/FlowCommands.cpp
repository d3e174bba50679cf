#include "cli/FlowCommands.h"

#include "cli/ArgumentText.h"
#include "cli/FieldArgument.h"
#include "cli/FindNamed.h"
#include "cli/FlowDescription.h"
#include "cli/FlowDrawing.h"
#include "cli/FlowReports.h"
#include "cli/Session.h"
#include "core/FlowPalette.h"
#include "core/JsonEncoder.h"
#include "flows/FlowLayout.h"
#include "flows/FlowSpecBuilder.h"
#include "flows/FlowValidator.h"
#include "flows/RunHighlight.h"
#include "flows/TraceLine.h"
#include "platform/Text.h"

#include <algorithm>
#include <utility>

namespace ombrel {

namespace {

// What the arguments of the subcommands say.
struct Arguments {
    std::string name;
    std::optional<std::string> from;
    std::string fromPort;
    std::string to;
    std::string node;
    std::string nodeKind;
    std::string nodeName;
    std::string operation = "equals";
    std::string value;
    bool carriesNothing = false;
    std::vector<double> position;
    std::string trace;

    std::optional<std::string> newName;
    std::optional<std::string> kind;
    std::optional<std::int64_t> maxHops;
    std::optional<std::int64_t> maxHistoryTokens;
    std::vector<std::string> input;
    std::vector<std::string> context;
    bool hasNoContext = false;
};

template <RawEnum E>
std::vector<std::string> rawValuesOf() {
    std::vector<std::string> names;
    for (const auto& entry : rawValues(E{})) {
        names.emplace_back(entry.raw);
    }
    return names;
}

template <RawEnum E>
E valueOf(const std::string& raw) { // which the argument parser has checked
    for (const auto& entry : rawValues(E{})) {
        if (entry.raw == raw) {
            return entry.value;
        }
    }
    throw Failure{"“" + raw + "” is none of: " + join(rawValuesOf<E>(), ", ") + ".", true};
}

std::size_t errorCount(const std::vector<FlowIssue>& issues) {
    return static_cast<std::size_t>(
        std::ranges::count(issues, FlowIssue::Severity::error, &FlowIssue::severity));
}

[[noreturn]] void refuseErrors(const Flow& flow, const std::vector<FlowIssue>& issues) {
    throw Failure{"“" + flow.name + "” has " + counted(errorCount(issues), "error") + "."};
}

void addFlow(AppState& state, const Arguments& arguments) {
    std::optional<Flow> described;
    if (arguments.from) {
        described = readFlowDescription(state, readAll(*arguments.from));
    }
    Flow flow = state.addFlow();
    if (described) {
        described->id = flow.id;
        described->name = described->name.empty() ? flow.name : described->name;
        flow = std::move(*described);
    }
    flow.name = arguments.name.empty() ? flow.name : arguments.name;
    state.updateFlow(flow);
}

void setFlow(AppState& state, Uuid id, const Arguments& arguments) {
    Flow flow = *state.flow(id);
    flow.name = arguments.newName.value_or(flow.name);
    if (arguments.kind) {
        flow.kind = valueOf<FlowKind>(*arguments.kind);
    }
    flow.maxHops = arguments.maxHops.value_or(flow.maxHops);
    flow.maxHistoryTokens = arguments.maxHistoryTokens.value_or(flow.maxHistoryTokens);
    if (!arguments.input.empty()) {
        flow.startInput = parseFields(arguments.input);
    }
    if (arguments.hasNoContext || !arguments.context.empty()) {
        flow.contextFields = parseFields(arguments.context);
    }
    state.updateFlow(flow);
}

FlowNodeKind newNodeKind(const AppState& state, const Flow& flow, const Arguments& arguments) {
    const FlowDrawing drawing(state, flow);
    if (arguments.nodeKind == "agent") {
        return drawing.agentNode(arguments.nodeName);
    }
    if (arguments.nodeKind == "tool") {
        return drawing.toolNode(arguments.nodeName);
    }
    if (arguments.nodeKind == "branch") {
        return {FlowNodeKind::Branch{
            arguments.nodeName, valueOf<WireBranchOperator>(arguments.operation), arguments.value}};
    }
    return {FlowNodeKind::End{arguments.nodeName, !arguments.carriesNothing}};
}

void addNode(AppState& state, Uuid id, const Arguments& arguments) {
    const Flow& flow = *state.flow(id);
    const CanvasPoint point = arguments.position.size() == 2
                                  ? CanvasPoint{arguments.position[0], arguments.position[1]}
                                  : palettePosition(flow.nodes.size());
    state.addFlowNode(newNodeKind(state, flow, arguments), id, point.x, point.y);
}

void connect(AppState& state, Uuid id, const Arguments& arguments) {
    const FlowDrawing drawing(state, *state.flow(id));
    const auto [from, port] = drawing.findPort(arguments.fromPort);
    state.connectFlowNodes(from, port, drawing.find(arguments.to), id);
}

// The connections of an output, which need not be one any more that the node has.
std::vector<Uuid> edgesFrom(const AppState& state, const Flow& flow, const std::string& name) {
    std::vector<Uuid> edges;
    for (const FlowEdge& edge : flow.edges) {
        const FlowNode* node = flow.node(edge.fromNodeID);
        const std::string suffix = edge.fromPort ? "." + *edge.fromPort : "";
        if (edge.fromNodeID.text() + suffix == name ||
            (node && canonicallyEqual(portName(state, *node, edge.fromPort), name))) {
            edges.push_back(edge.id);
        }
    }
    return edges;
}

void disconnect(AppState& state, Uuid id, const Arguments& arguments) {
    const std::vector<Uuid> edges = edgesFrom(state, *state.flow(id), arguments.fromPort);
    if (edges.empty()) {
        throw Failure{"“" + arguments.fromPort + "” isn't connected."};
    }
    for (const Uuid& edge : edges) {
        state.deleteFlowEdge(edge, id);
    }
}

void layOut(AppState& state, Uuid id) {
    Flow flow = *state.flow(id);
    const std::vector<CanvasPoint> layout = flowLayout(flow);
    for (std::size_t i = 0; i < flow.nodes.size(); ++i) {
        flow.nodes[i].position = layout[i];
    }
    state.updateFlow(flow);
}

void validate(const AppState& state, Uuid id, const Invocation& invocation) {
    const Flow& flow = *state.flow(id);
    const auto issues = flowIssues(state, id);
    printIssues(state, flow, issues, invocation);
    if (errorCount(issues) > 0) {
        refuseErrors(flow, issues);
    }
}

void printSpec(const AppState& state, Uuid id, const Invocation& invocation) {
    const Flow& flow = *state.flow(id);
    const auto issues = flowIssues(state, id);
    if (errorCount(issues) > 0) {
        refuseErrors(flow, issues);
    }
    const auto spec = FlowSpecBuilder::build(flow, *state.agents, *state.tools, *state.ragIndexes);
    if (!spec) {
        throw Failure{spec.error().message()};
    }
    JsonWriter writer(
        [&invocation](std::string_view bytes) {
            invocation.print(bytes);
            return static_cast<bool>(std::cout);
        },
        invocation.json ? JsonLayout::compact : JsonLayout::indented);
    const bool isWhole = encode(writer, *spec);
    writer.finish();
    invocation.print("\n");
    if (!isWhole) {
        throw Failure{"A field of “" + flow.name + "” is nested too deeply."};
    }
}

// Goes through a recorded trace. The run has ended when the last step says so.
FlowRunHighlight replayed(const AppState& state, const Flow& flow, const std::string& path) {
    FlowRunHighlight highlight(flow, *state.agents, *state.tools);
    const std::string text = readAll(path);
    std::string lastKind;
    for (std::string_view rest = text; !rest.empty();) {
        const std::size_t end = std::min(rest.find('\n'), rest.size());
        if (const auto event = parseTraceLine(repairUtf8(rest.substr(0, end)))) {
            apply(highlight, *event);
            lastKind = event->kind;
        }
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    if (lastKind.empty()) {
        throw Failure{"There is no step of a run in “" + path + "”."};
    }
    if (lastKind == "flowFinished" || lastKind == "error") {
        finish(highlight, lastKind == "flowFinished");
    }
    return highlight;
}

void replay(const AppState& state, Uuid id, const std::string& path, const Invocation& invocation) {
    const FlowRunHighlight highlight = replayed(state, *state.flow(id), path);
    if (invocation.json) {
        invocation.printJson(encodeJson(HighlightReport(highlight)));
    } else {
        invocation.print(highlightText(state, highlight));
    }
}

using Shared = std::shared_ptr<Arguments>;

void addListCommands(const FlowCommand& flows, const Shared& arguments) {
    Invocation& invocation = *flows.invocation;
    flows.app->add_subcommand("list", "List the flows (the default)");
    flows.add("show", "Show a flow; with --json its record, which `add --from` reads",
              [&invocation](Session& session, Uuid id) { printFlow(*session, id, invocation); });
    auto* add = flows.app->add_subcommand("add", "Add a flow, empty or as a file describes it");
    add->footer(
        "FILE.json is a record as `show --json` prints it, or a description:\n"
        "  {\"kind\": \"Single-shot\", \"maxHops\": 6,\n"
        "   \"startInput\": [\"request=What the customer wrote\"], \"contextFields\": [],\n"
        "   \"nodes\": [{\"branch\": {\"field\": \"amount\", \"operator\": \"greaterThan\", "
        "\"value\": \"100\"},\n"
        "              \"name\": \"isLarge\"}, {\"end\": \"done\"}],\n"
        "   \"edges\": [[\"Start\", \"Triage\"], [\"Triage.refund\", \"Refund desk\"],\n"
        "             [\"Refund desk\", \"isLarge\"], [\"isLarge.true\", \"done\"]]}\n"
        "Agents and tools go by their names, and need no node of their own in the list. Nodes\n"
        "without a \"position\" ([x, y]) are laid out. An end takes \"carriesOutput\": false.");
    add->add_option("NAME", arguments->name, "Its name");
    add->add_option("--from", arguments->from, "What it consists of (- for standard input)")
        ->option_text("FILE.json");
    add->callback([flows, arguments] {
        Session session(flows.options->project, *flows.invocation);
        addFlow(*session, *arguments);
        session.save();
        printFlow(*session, session->flows->back().id, *flows.invocation);
    });
    flows.add("duplicate", "Copy a flow", [&invocation](Session& session, Uuid id) {
        const Uuid copy = session->duplicateFlow(id)->id;
        session.save();
        printFlow(*session, copy, invocation);
    });
    flows.add("remove", "Remove a flow", [&invocation](Session& session, Uuid id) {
        session->deleteFlow(id);
        session.save();
        printFlows(*session, invocation);
    });
}

void addSetCommand(const FlowCommand& flows, const Shared& arguments) {
    CLI::App* set = flows.addChange("set", "Change a flow", [arguments](Session& session, Uuid id) {
        setFlow(*session, id, *arguments);
    });
    set->footer(fieldTypesHelp);
    set->add_option("--name", arguments->newName, "Its name");
    set->add_option("--kind", arguments->kind, "What a run is: one answer, or a conversation")
        ->check(CLI::IsMember(rawValuesOf<FlowKind>()));
    set->add_option("--max-hops", arguments->maxHops, "The most agents that a turn goes through")
        ->check(CLI::Range(1, 50));
    set->add_option("--max-history-tokens", arguments->maxHistoryTokens,
                    "The most tokens of a conversation that its agents see")
        ->check(CLI::Range(200, 20000));
    const auto many = [&](const char* flag, std::vector<std::string>& list, const char* what) {
        return set
            ->add_option(flag, list,
                         std::string(what) + ", " + fieldSyntax +
                             "; repeat it for more. All that are given replace all that were there")
            ->allow_extra_args(false);
    };
    many("--input", arguments->input, "A field of the flow's input");
    auto* context = many("--context", arguments->context, "A field of the flow context");
    set->add_flag("--no-context", arguments->hasNoContext, "Have no context fields")
        ->excludes(context);
}

void addDrawingCommands(const FlowCommand& flows, const Shared& arguments) {
    CLI::App* node = flows.addChange("node", "Add a node", [arguments](Session& session, Uuid id) {
        addNode(*session, id, *arguments);
    });
    node->footer("Examples:\n"
                 "  ombrel flow shop.ombrel node Support agent Triage\n"
                 "  ombrel flow shop.ombrel node Support branch amount greaterThan 100\n"
                 "  ombrel flow shop.ombrel node Support end done --no-output");
    node->add_option("KIND", arguments->nodeKind, "What it is")
        ->required()
        ->check(CLI::IsMember({"agent", "tool", "branch", "end"}));
    node->add_option("NAME", arguments->nodeName,
                     "The agent or tool, the field that the branch reads, the end's case name")
        ->required();
    node->add_option("OPERATOR", arguments->operation, "How a branch compares; equals by default")
        ->check(CLI::IsMember(rawValuesOf<WireBranchOperator>()));
    node->add_option("VALUE", arguments->value, "With what a branch compares");
    node->add_flag("--no-output", arguments->carriesNothing,
                   "An end gives its case name only, and no output");
    node->add_option("--at", arguments->position, "Where on the canvas: X Y")->expected(2);

    const auto withNode = [&](CLI::App* command) {
        command->add_option("NODE", arguments->node, "The node's name or id")->required();
        return command;
    };
    withNode(flows.addChange("remove-node", "Remove a node with its connections",
                             [arguments](Session& session, Uuid id) {
                                 const FlowDrawing drawing(*session, *session->flow(id));
                                 const Uuid found = drawing.find(arguments->node);
                                 if (std::holds_alternative<FlowNodeKind::Start>(
                                         drawing.flow().node(found)->kind.value)) {
                                     throw Failure{"Start can't be removed."};
                                 }
                                 session->deleteFlowNode(found, id);
                             }));
    CLI::App* move = withNode(
        flows.addChange("move-node", "Move a node", [arguments](Session& session, Uuid id) {
            const FlowDrawing drawing(*session, *session->flow(id));
            session->moveFlowNode(drawing.find(arguments->node), id, arguments->position[0],
                                  arguments->position[1]);
        }));
    move->add_option("POSITION", arguments->position, "Where to, on the canvas: X Y")
        ->required()
        ->expected(2);

    const auto withOutput = [&](CLI::App* command) {
        command->add_option("FROM", arguments->fromPort, "An output: NODE, or NODE.CASE")
            ->required();
        return command;
    };
    withOutput(flows.addChange(
                   "connect", "Connect an output to a node, in place of what it was connected to",
                   [arguments](Session& session, Uuid id) { connect(*session, id, *arguments); }))
        ->add_option("TO", arguments->to, "The node's name or id")
        ->required();
    withOutput(flows.addChange(
        "disconnect", "Remove the connection of an output",
        [arguments](Session& session, Uuid id) { disconnect(*session, id, *arguments); }));
    flows.addChange("lay-out", "Give every node a new place on the canvas",
                    [](Session& session, Uuid id) { layOut(*session, id); });
}

void addReadingCommands(const FlowCommand& flows, const Shared& arguments) {
    Invocation& invocation = *flows.invocation;
    flows.add("validate", "Tell what is wrong with a flow; fails when it has errors",
              [&invocation](Session& session, Uuid id) { validate(*session, id, invocation); });
    flows.add("spec", "Print the tree that is run, as JSON",
              [&invocation](Session& session, Uuid id) { printSpec(*session, id, invocation); });
    auto* replayCommand =
        flows.add("replay", "Show the path that a recorded trace takes through a flow",
                  [arguments, &invocation](Session& session, Uuid id) {
                      replay(*session, id, arguments->trace, invocation);
                  });
    replayCommand
        ->add_option("TRACE", arguments->trace,
                     "A file of the lines that a run printed (- for standard input)")
        ->required();
}

} // namespace

CLI::App* FlowCommand::add(const std::string& name, const std::string& description,
                           std::function<void(Session& session, Uuid flowID)> action) const {
    CLI::App* command = app->add_subcommand(name, description);
    command->add_option("FLOW", options->flow, "The flow's name or id")->required();
    command->callback([given = options, chosen = invocation, action = std::move(action)] {
        Session session(given->project, *chosen);
        action(session, findNamed(*session->flows, given->flow, "flow"));
    });
    return command;
}

CLI::App* FlowCommand::addChange(const std::string& name, const std::string& description,
                                 std::function<void(Session& session, Uuid flowID)> change) const {
    return add(name, description,
               [change = std::move(change), chosen = invocation](Session& session, Uuid id) {
                   change(session, id);
                   session.save();
                   printFlow(*session, id, *chosen);
               });
}

FlowCommand addFlowCommands(CLI::App& app, Invocation& invocation) {
    const FlowCommand flows{
        addCommand(app, "flow", "List, draw, check and run flows",
                   "ombrel flow shop.ombrel add Support --from support.json\n"
                   "  ombrel flow shop.ombrel connect Support Triage.refund \"Refund desk\"\n"
                   "  ombrel flow shop.ombrel validate Support",
                   invocation),
        std::make_shared<FlowCommand::Options>(), &invocation};
    flows.app->add_option("PROJECT", flows.options->project, "The project file")->required();
    flows.app->require_subcommand(0, 1);
    flows.app->fallthrough();
    const auto arguments = std::make_shared<Arguments>();
    addListCommands(flows, arguments);
    addSetCommand(flows, arguments);
    addDrawingCommands(flows, arguments);
    addReadingCommands(flows, arguments);
    flows.app->callback([flows] {
        const auto chosen = flows.app->get_subcommands();
        if (chosen.empty() || chosen.front()->get_name() == "list") {
            const Session session(flows.options->project, *flows.invocation);
            printFlows(*session, *flows.invocation);
        }
    });
    return flows;
}

} // namespace ombrel
