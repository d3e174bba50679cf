#pragma once

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>

#include "platform/Uuid.h"

#include <functional>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace ombrel {

class AppState;

// What an invocation of `ombrel` ends with. 2, for a wrong use, comes from the argument parser and
// from `Failure` with `isUsage`.
enum ExitStatus { succeeded = 0, operationFailed = 1, wrongUse = 2 };

// How a command ends when it cannot do what it was asked. Thrown inside the command line only.
struct Failure {
    std::string message;
    bool isUsage = false;
};

// What the commands share: where the results go and how.
struct Invocation {
    bool json = false;
    std::optional<std::string> rag; // name or id of the RAG index to use

    // A result for people, or for programs.
    void print(std::string_view text) const { std::cout << text; }
    void printJson(std::string_view text) const { std::cout << text << "\n"; }
    // A remark that is not part of the result.
    void note(std::string_view text) const { std::cerr << text << "\n"; }
};

// Adds a subcommand. `action` runs after the arguments have been read; it throws `Failure`.
// `example` is shown below its help.
CLI::App* addCommand(CLI::App& app, const std::string& name, const std::string& description,
                     const std::string& example, Invocation& invocation);

// Adds the arguments of a command that works on one RAG index of a project.
void addProjectArgument(CLI::App& command, std::string& project, Invocation& invocation);

// The RAG index with the name or id. Throws `Failure` when there is not exactly one.
Uuid findRAGIndex(const AppState& state, const std::string& nameOrID);
// The same among the variants of the current index.
Uuid findVariant(const AppState& state, const std::string& nameOrID);

// The commands, by what they are about.
void addProjectCommands(CLI::App& app, Invocation& invocation);
void addSourceCommands(CLI::App& app, Invocation& invocation);
void addRecipeCommands(CLI::App& app, Invocation& invocation);
void addQuestionCommands(CLI::App& app, Invocation& invocation);
void addEvaluationCommands(CLI::App& app, Invocation& invocation);
void addExportCommands(CLI::App& app, Invocation& invocation);
void addAgentCommands(CLI::App& app, Invocation& invocation);
void addToolCommands(CLI::App& app, Invocation& invocation);
void addGenerableCommand(CLI::App& app, Invocation& invocation);
void addModelCommand(CLI::App& app, Invocation& invocation);

} // namespace ombrel
