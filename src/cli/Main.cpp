#include "cli/Command.h"
#include "cli/FlowRunCommands.h"

#include <csignal>
#include <exception>
#include <poll.h>
#include <unistd.h>

namespace {

constexpr const char* about =
    "Builds on-device AI features from your own documents, without a server.\n"
    "This is the studio without a window: the same projects, for scripts and continuous "
    "integration.";
constexpr const char* firstSteps =
    "A first session:\n"
    "  ombrel model --install                 fetch the default model server and models\n"
    "  ombrel new handbook.ombrel             make a project\n"
    "  ombrel import handbook.ombrel docs/    read a folder of Markdown, text and PDF files\n"
    "  ombrel ask handbook.ombrel \"When does the last bus leave?\"\n\n"
    "Results go to standard output, progress and remarks to standard error. The exit status is\n"
    "0 when all went well, 1 when the operation failed, 2 when the arguments were wrong.";

// Whether whoever read the results has gone, as `head` does when it has seen enough.
bool readerHasGone() {
    pollfd output{STDOUT_FILENO, POLLOUT, 0};
    return poll(&output, 1, 0) > 0 && (output.revents & POLLERR) != 0;
}

} // namespace

int main(int argc, char** argv) {
    std::signal(SIGPIPE, SIG_IGN);
    CLI::App app(about, "ombrel");
    app.footer(firstSteps);
    app.require_subcommand(1);
    app.set_version_flag("--version", OMBREL_VERSION);
    ombrel::Invocation invocation;
    ombrel::addProjectCommands(app, invocation);
    ombrel::addSourceCommands(app, invocation);
    ombrel::addRecipeCommands(app, invocation);
    ombrel::addQuestionCommands(app, invocation);
    ombrel::addEvaluationCommands(app, invocation);
    ombrel::addExportCommands(app, invocation);
    ombrel::addAgentCommands(app, invocation);
    ombrel::addToolCommands(app, invocation);
    ombrel::addFlowRunCommands(ombrel::addFlowCommands(app, invocation));
    ombrel::addGenerableCommand(app, invocation);
    ombrel::addModelCommand(app, invocation);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? ombrel::succeeded : ombrel::wrongUse;
    } catch (const ombrel::Failure& failure) {
        std::cerr << "ombrel: " << failure.message << "\n";
        return failure.isUsage ? ombrel::wrongUse : ombrel::operationFailed;
    } catch (const std::exception& error) {
        std::cerr << "ombrel: " << error.what() << "\n";
        return ombrel::operationFailed;
    }
    std::cout.flush();
    if (!std::cout && !readerHasGone()) {
        std::cerr << "ombrel: The result couldn't be written to standard output.\n";
        return ombrel::operationFailed;
    }
    return ombrel::succeeded;
}
