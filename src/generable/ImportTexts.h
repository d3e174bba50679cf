#pragma once

#include "core/AgentOutputKind.h"
#include "generable/ParsedType.h"

#include <cstddef>
#include <string>
#include <string_view>

// What the faces of the system say about an import of `@Generable` declarations.
namespace ombrel {

inline constexpr std::string_view importTitle = "Import @Generable Type";
inline constexpr std::string_view importExplanation =
    "Paste a Swift `@Generable` struct or enum, or open a .swift file. Nested types declared in "
    "the same code are imported with it; `@Guide` descriptions and doc comments become field "
    "descriptions.";
inline constexpr std::string_view importSample = "@Generable\n"
                                                 "struct TaskSuggestion {\n"
                                                 "    @Guide(description: \"Short task title\")\n"
                                                 "    var title: String\n"
                                                 "    var priority: Priority\n"
                                                 "    var tags: [String]\n"
                                                 "    var dueDate: String?\n"
                                                 "}\n"
                                                 "\n"
                                                 "@Generable\n"
                                                 "enum Priority { case low, normal, high }";
inline constexpr std::string_view emptySourceText =
    "Paste code on the left to preview the output it defines.";
inline constexpr std::string_view noTypesText = "No struct or enum declaration found.";
inline constexpr std::string_view outputTypeHint =
    "The type the agent returns. Other types in the code are only used where this one refers to "
    "them.";
inline constexpr std::string_view importNote =
    "Importing replaces the output you're editing. Nothing is saved until you click Save.";

// A type among those that can be chosen: "Answer (@Generable struct)".
std::string typeChoiceText(const ParsedType& type);
// Above the preview of an output: "Enum · 1 case", "Object · 2 properties".
std::string previewHeading(const AgentOutputKind& output);
// "1 WARNING".
std::string warningsHeading(std::size_t count);
// "Couldn't read Task.swift: " and why.
std::string unreadableFileText(std::string_view fileName, std::string_view reason);

} // namespace ombrel
