#pragma once

#include "cli/Command.h"
#include "platform/Uuid.h"

#include <functional>
#include <memory>
#include <string>

namespace ombrel {

class Session;

// `ombrel flow`, while its subcommands are added.
struct FlowCommand {
    struct Options {
        std::string project;
        std::string flow;
    };

    CLI::App* app;
    std::shared_ptr<Options> options;
    Invocation* invocation;

    // A subcommand with the argument FLOW, which does the action to that flow of the project.
    CLI::App* add(const std::string& name, const std::string& description,
                  std::function<void(Session& session, Uuid flowID)> action) const;
    // The same for an action that changes the flow, which is then saved and shown.
    CLI::App* addChange(const std::string& name, const std::string& description,
                        std::function<void(Session& session, Uuid flowID)> change) const;
};

// Adds `ombrel flow` with all that is done to the drawing of a flow; what runs flows is added to
// what it returns.
FlowCommand addFlowCommands(CLI::App& app, Invocation& invocation);

} // namespace ombrel
