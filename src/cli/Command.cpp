#include "cli/Command.h"

namespace ombrel {

CLI::App* addCommand(CLI::App& app, const std::string& name, const std::string& description,
                     const std::string& example, Invocation& invocation) {
    CLI::App* command = app.add_subcommand(name, description);
    command->footer("Example:\n  " + example);
    command->add_flag("--json", invocation.json, "Print the result as JSON");
    return command;
}

void addProjectArgument(CLI::App& command, std::string& project, Invocation& invocation) {
    command.add_option("PROJECT", project, "The project file")->required();
    command.add_option("--rag", invocation.rag,
                       "Name or id of the RAG index to use; the selected one by default");
}

} // namespace ombrel
