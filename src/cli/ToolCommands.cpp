#include "agents/OutputTexts.h"
#include "cli/ArgumentText.h"
#include "cli/FieldArgument.h"
#include "cli/FindNamed.h"
#include "cli/OutputOptions.h"
#include "cli/OutputTable.h"
#include "cli/Session.h"
#include "core/JsonEncoder.h"

#include <functional>
#include <utility>

namespace ombrel {

namespace {

struct ToolList {
    std::vector<ToolDefinition> tools;
    static constexpr auto keys() { return std::tuple(required("tools", &ToolList::tools)); }
};

struct Options {
    std::string project;
    std::string tool;
    std::optional<std::string> name;
    std::optional<std::string> description;
    std::vector<std::string> arguments;
    bool hasNoArguments = false;
    OutputOptions output;
    std::optional<std::string> mockResponse;
};

void printTools(const AppState& state, const Invocation& invocation) {
    if (invocation.json) {
        invocation.printJson(encodeJson(ToolList{*state.tools}));
        return;
    }
    if (state.tools->empty()) {
        invocation.print("No tools yet: `ombrel tool PROJECT add NAME` adds one.\n");
        return;
    }
    std::vector<std::vector<std::string>> rows;
    for (const ToolDefinition& tool : *state.tools) {
        rows.push_back({tool.name, oneLine(tool.description, 40),
                        std::string(rawValue(tool.output.kind())),
                        std::string(mockResponseVerdict(tool.mockResponseJSON)), tool.id.text()});
    }
    invocation.print(table({"TOOL", "DESCRIPTION", "OUTPUT", "MOCK RESPONSE", "ID"}, rows));
}

void printTool(const AppState& state, Uuid id, const Invocation& invocation) {
    const ToolDefinition& tool = *state.tool(id);
    if (invocation.json) {
        invocation.printJson(encodeJson(tool));
        return;
    }
    std::string text = tool.name + "\n";
    text += tool.description.empty() ? "" : indented(tool.description);
    text += "  " + attachmentLine(*state.agents, id) + "\n  " + id.text() + "\n\nARGUMENTS\n";
    text += tool.arguments.empty() ? "  No arguments yet\n" : fieldTable(tool.arguments);
    text += "\nOUTPUT\n" + outputTable(tool.output);
    text += "\nMOCK RESPONSE " + std::string(mockResponseVerdict(tool.mockResponseJSON)) + "\n" +
            indented(tool.mockResponseJSON);
    invocation.print(text);
}

void setTool(AppState& state, Uuid id, const Options& options, const Invocation& invocation) {
    ToolDefinition tool = *state.tool(id);
    tool.name = options.name.value_or(tool.name);
    if (options.description) {
        tool.description = argumentText(*options.description);
    }
    if (options.hasNoArguments || !options.arguments.empty()) {
        tool.arguments = parseFields(options.arguments);
    }
    if (auto output = options.output.read(invocation)) {
        tool.output = std::move(*output);
    }
    if (options.mockResponse) {
        tool.mockResponseJSON = argumentText(*options.mockResponse);
    }
    state.updateTool(tool);
}

// Says of a mock response that is no JSON that it is kept all the same.
void checkMockResponse(const ToolDefinition& tool, const Invocation& invocation) {
    if (!isValidMockResponse(tool.mockResponseJSON)) {
        invocation.note(std::string(mockResponseVerdict(tool.mockResponseJSON)) +
                        ": the mock response is kept as it is, but isn't a JSON object or array.");
    }
}

// What a tool is made of, as options of `add` and `set`.
void addToolOptions(CLI::App& command, Options& options) {
    command.add_option("--description", options.description,
                       std::string("What it does, for the model") + argumentTextHelp);
    auto* arguments = command.add_option("--argument", options.arguments,
                                         "An argument, " + std::string(fieldSyntax) +
                                             "; repeat it for more. All that are given replace "
                                             "all that were there");
    arguments->allow_extra_args(false);
    command.add_flag("--no-arguments", options.hasNoArguments, "Take no arguments")
        ->excludes(arguments);
    options.output.addTo(command);
    command.add_option("--mock", options.mockResponse,
                       std::string("The JSON that it answers in studio runs") + argumentTextHelp);
    command.footer(std::string(fieldTypesHelp) +
                   "\nExample:\n"
                   "  ombrel tool handbook.ombrel set lookUpOrder --argument \"number:Int=Of the "
                   "order\" \\\n"
                   "    --output-field status --mock '{\"status\": \"shipped\"}'");
}

} // namespace

void addToolCommands(CLI::App& app, Invocation& invocation) {
    const auto options = std::make_shared<Options>();
    CLI::App* tools = addCommand(app, "tool", "List, make and change the tools of agents",
                                 "ombrel tool handbook.ombrel add lookUpOrder --argument "
                                 "number:Int --mock '{\"status\": \"shipped\"}'",
                                 invocation);
    tools->add_option("PROJECT", options->project, "The project file")->required();
    tools->require_subcommand(0, 1);
    tools->fallthrough();
    tools->add_subcommand("list", "List the tools (the default)");
    const auto onTool = [&](const char* name, const char* description,
                            std::function<void(Session&, Uuid)> action) {
        auto* command = tools->add_subcommand(name, description);
        command->add_option("TOOL", options->tool, "The tool's name or id")->required();
        command->callback([options, &invocation, action] {
            Session session(options->project, invocation);
            action(session, findNamed(*session->tools, options->tool, "tool"));
        });
        return command;
    };
    onTool("show", "Show a tool",
           [&invocation](Session& session, Uuid id) { printTool(*session, id, invocation); });
    const auto change = [options, &invocation](Session& session, Uuid id) {
        setTool(*session, id, *options, invocation);
        session.save();
        printTool(*session, id, invocation);
        checkMockResponse(*session->tool(id), invocation);
    };
    auto* add = tools->add_subcommand("add", "Add a tool");
    add->add_option("NAME", options->name, "Its name, usable as an identifier");
    addToolOptions(*add, *options);
    add->callback([options, &invocation, change] {
        Session session(options->project, invocation);
        change(session, session->addTool().id);
    });
    auto* set = onTool("set", "Change a tool", change);
    set->add_option("--name", options->name, "Its name, usable as an identifier");
    addToolOptions(*set, *options);
    onTool("duplicate", "Copy a tool", [&invocation](Session& session, Uuid id) {
        const Uuid copy = session->duplicateTool(id)->id;
        session.save();
        printTool(*session, copy, invocation);
    });
    onTool("remove", "Remove a tool, also from the agents that have it",
           [&invocation](Session& session, Uuid id) {
               session->deleteTool(id);
               session.save();
               printTools(*session, invocation);
           });
    tools->callback([=, &invocation] {
        const auto chosen = tools->get_subcommands();
        if (chosen.empty() || chosen.front()->get_name() == "list") {
            const Session session(options->project, invocation);
            printTools(*session, invocation);
        }
    });
}

} // namespace ombrel
